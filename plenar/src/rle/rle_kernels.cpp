#include "rle/rle_kernels.h"

#include <array>

#include "rle/band_encoder.h"

namespace plenar {
namespace {

void LeaveAllTokens(RleDecodeState& /*state*/) {}
RleDecodeState& LeaveFirst(RleDecodeState& first, RleDecodeState& /*second*/) {
    return first;
}

template <class Sample>
constexpr RleBandKernels kPlainKernels = {RleEncodeBandPlain<Sample>, LeaveAllTokens, LeaveFirst,
                                          RleReadTokenPlain<Sample>, RleWriteRunPlain<Sample>};

using KernelsByTarget = std::array<RleKernels, kTargetCount>;

KernelsByTarget KernelsOfRunnableTargets() {
    KernelsByTarget byTarget{};
    RleKernels kernels = {kPlainKernels<uint8_t>, kPlainKernels<uint16_t>};
    for (const Target target : RunnableTargets()) {
        RleOverrideKernels(target, kernels);
        byTarget[static_cast<size_t>(target)] = kernels;
    }
    return byTarget;
}

}  // namespace

const RleKernels& RleKernelsFor(Target target) {
    static const KernelsByTarget kKernels = KernelsOfRunnableTargets();
    return kKernels[static_cast<size_t>(target)];
}

const RleBandKernels& RleActiveKernels(uint32_t bitdepth) {
    const RleKernels& kernels = RleKernelsFor(ActiveTarget());
    return bitdepth == 8 ? kernels.of_8_bits : kernels.of_16_bits;
}

}  // namespace plenar
