#include "rle/band_decoder_kernel.h"
#include "rle/band_encoder_kernel.h"
#include "rle/rle_kernels_targets.h"

namespace plenar {

extern constexpr RleKernels kRleBaselineKernels = {
    EncodeBand<uint8_t>,        EncodeBand<uint16_t>,        DecodeTokens<uint8_t>, DecodeTokens<uint16_t>,
    DecodeTokensOfTwo<uint8_t>, DecodeTokensOfTwo<uint16_t>, WriteRun<uint8_t>,     WriteRun<uint16_t>};

}  // namespace plenar
