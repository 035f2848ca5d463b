// The most pixels that a payload's claim is believed for.
#pragma once

#include <plenar_sdk.h>

#include <cstdint>

namespace plenar_tool {

// 8K x 8K.
inline constexpr uint64_t kDefaultMaxPixels = uint64_t{8192} * 8192;

// A few bytes of a coded payload can claim a picture of 4 GiB. Throws std::runtime_error for one of more pixels.
void CheckPixelLimit(const UncompressedParams& params, uint64_t maxPixels);

}  // namespace plenar_tool
