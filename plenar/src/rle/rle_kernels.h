// The band coders' inner parts in their versions, and the choice among them. All versions give the same bytes.
#pragma once

#include <cstdint>

#include "rle/band_decoder_plain.h"
#include "rle/rle_params.h"
#include "simd/target.h"

namespace plenar {

struct RleKernels {
    // Codes one band and returns the bytes of its stream; writes no more than RleMaxStreamSize.
    uint64_t (*encode_band8)(const RleParams& band, const uint8_t* src, uint8_t* dst);
    uint64_t (*encode_band16)(const RleParams& band, const uint8_t* src, uint8_t* dst);
    // Decode tokens as long as they are sound and far enough from the end of what is readable; what is left then is for
    // RleReadTokenPlain. The end of the stream goes unnoticed if more is readable.
    void (*decode_tokens8)(RleDecodeState& state);
    void (*decode_tokens16)(RleDecodeState& state);
    // The same for two bands in turn, so that one goes on while the other waits for its next token. Returns the band
    // that it can't go on with.
    RleDecodeState& (*decode_tokens_of_two8)(RleDecodeState& first, RleDecodeState& second);
    RleDecodeState& (*decode_tokens_of_two16)(RleDecodeState& first, RleDecodeState& second);
    // What RleWriteRunPlain does.
    void (*write_run8)(RleDecodeState& state, const RleRun& run);
    void (*write_run16)(RleDecodeState& state, const RleRun& run);
};

// The bytes of a stream that must be readable for decode_tokens to decode something.
inline constexpr uint32_t kRleDecodeWindow = 24;

const RleKernels& RleKernelsFor(Target target);

inline const RleKernels& RleActiveKernels() {
    return RleKernelsFor(ActiveTarget());
}

}  // namespace plenar
