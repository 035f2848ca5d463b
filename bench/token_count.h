#pragma once

#include <cstdint>
#include <vector>

#include "frame_work.h"

namespace plenar_bench {

// The tokens of a plane coded by itself: `frame` holds alpha alone.
uint64_t CountTokens(const Frame& frame, const std::vector<uint8_t>& plane);

}  // namespace plenar_bench
