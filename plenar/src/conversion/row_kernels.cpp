#include "conversion/row_kernels.h"

#include <array>

namespace plenar {

namespace {

// One set for each target that the processor runs: the narrower one's, but for what the target has of its own.
std::array<RowKernels, kTargetCount> MakeSets() {
    std::array<RowKernels, kTargetCount> sets;
    RowKernels kernels = kPlainRowKernels;
    for (const Target target : RunnableTargets()) {
        OverrideRowKernels(target, kernels);
        sets[static_cast<size_t>(target)] = kernels;
    }
    return sets;
}

}  // namespace

const RowKernels& RowKernelsFor(Target target) {
    static const std::array<RowKernels, kTargetCount> kSets = MakeSets();
    return kSets[static_cast<size_t>(target)];
}

}  // namespace plenar
