#include "conversion/row_kernels.h"

#include <atomic>

#include "plenar/cpu_features.h"

namespace plenar {

namespace {

std::atomic<const RowKernels*> forced{nullptr};

}  // namespace

const RowKernels& ActiveRowKernels() {
    if (const RowKernels* kernels = forced.load(std::memory_order_relaxed)) {
        return *kernels;
    }
    return DetectedCpuFeatures().hasAvx2 ? kAvx2RowKernels : kSsse3RowKernels;
}

void ForceRowKernels(const RowKernels* kernels) {
    forced.store(kernels, std::memory_order_relaxed);
}

}  // namespace plenar
