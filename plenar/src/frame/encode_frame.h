#pragma once

#include <cstdint>

#include "frame/codec_state.h"
#include "plenar_sdk.h"

namespace plenar {

// Encodes one frame and returns the bytes that it occupies in `dst`. Throws on failure; `dst` then holds part of a
// frame.
uint64_t EncodeFrameBody(CodecState& state, const UncompressedParams& params, const CompressedParams& compressedParams,
                         const uint8_t* src, uint32_t srcSize, uint8_t* dst, uint32_t dstSize);

}  // namespace plenar
