#pragma once

#include <cstdint>

#include "frame/codec_state.h"
#include "plenar_sdk.h"

namespace plenar {

// Decodes one frame and returns the bytes of the caller's picture. Throws on failure; `dst` then holds part of a
// picture.
uint64_t DecodeFrameBody(CodecState& state, const UncompressedParams& params, const uint8_t* src, uint32_t srcSize,
                         uint8_t* dst, uint32_t dstSize);

}  // namespace plenar
