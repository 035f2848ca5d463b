// All kernels in vectors, for the sources that are compiled for a target.
#pragma once

#include "rle/rle_kernels.h"
#include "rle/vector/band_decoder_kernel.h"
#include "rle/vector/band_encoder_kernel.h"

namespace plenar {
namespace {

template <class Sample>
void OverrideWithVectors(RleBandKernels& kernels) {
    kernels.encode_band = EncodeBand<Sample>;
    kernels.decode_tokens = DecodeTokens<Sample>;
    kernels.decode_tokens_of_two = DecodeTokensOfTwo<Sample>;
    kernels.write_run = WriteRun<Sample>;
}

void OverrideWithVectors(RleKernels& kernels) {
    OverrideWithVectors<uint8_t>(kernels.of_8_bits);
    OverrideWithVectors<uint16_t>(kernels.of_16_bits);
}

}  // namespace
}  // namespace plenar
