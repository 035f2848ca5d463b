// The inner parts of the band coders, which each target may have in a version of its own. All versions give the same
// bytes.
#pragma once

#include <cstdint>

#include "rle/band_decoder_plain.h"
#include "rle/band_job.h"
#include "simd/target.h"

namespace plenar {

struct RleBandKernels {
    // Codes one band and returns the bytes of its stream; writes no more than RleMaxStreamSize.
    uint64_t (*encode_band)(const RleBandJob& job);
    // Decodes tokens as long as they are sound and kRleDecodeWindow bytes from the next one on are `readable`; any that
    // it stops at is for read_token. It doesn't look for the end of the stream itself.
    void (*decode_tokens)(RleDecodeState& state);
    // The same for two bands in turn, so that one goes on while the other waits for its next token. Returns the band
    // that it can't go on with.
    RleDecodeState& (*decode_tokens_of_two)(RleDecodeState& first, RleDecodeState& second);
    RleDefect (*read_token)(RleDecodeState& state, RleRun& run);
    void (*write_run)(RleDecodeState& state, const RleRun& run);
};

// The kernels of one target, by the width of a sample.
struct RleKernels {
    RleBandKernels of_8_bits;
    RleBandKernels of_16_bits;
};

inline constexpr uint32_t kRleDecodeWindow = 24;

// Of a target that this processor can run.
const RleKernels& RleKernelsFor(Target target);

// Of the target in use.
const RleBandKernels& RleActiveKernels(uint32_t bitdepth);

// Replaces the kernels that the target has better ones of than all narrower targets. Each processor's folder defines
// it. Call it for runnable targets only, as it runs code that is compiled for the target.
void RleOverrideKernels(Target target, RleKernels& kernels);

}  // namespace plenar
