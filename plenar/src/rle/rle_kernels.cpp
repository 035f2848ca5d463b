#include "rle/rle_kernels.h"

#include "rle/band_encoder_plain.h"
#include "rle/rle_kernels_targets.h"

namespace plenar {
namespace {

void LeaveAllTokens(RleDecodeState& /*state*/) {}
RleDecodeState& LeaveFirst(RleDecodeState& first, RleDecodeState& /*second*/) {
    return first;
}

constexpr RleKernels kPlainKernels = {
    RleEncodeBandPlain<uint8_t>, RleEncodeBandPlain<uint16_t>, LeaveAllTokens, LeaveAllTokens, LeaveFirst, LeaveFirst,
    RleWriteRunPlain<uint8_t>,   RleWriteRunPlain<uint16_t>};

}  // namespace

const RleKernels& RleKernelsFor(Target target) {
    switch (target) {
        case Target::Avx2:
            return kRleAvx2Kernels;
        case Target::Ssse3:
            return kRleBaselineKernels;
        default:
            return kPlainKernels;
    }
}

}  // namespace plenar
