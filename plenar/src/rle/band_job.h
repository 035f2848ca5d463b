#pragma once

#include <array>
#include <cstdint>

#include "rle/rle_defect.h"
#include "rle/rle_params.h"

namespace plenar {

// One band of a plane that is being coded or decoded: what it is made from, and what came of it.
struct RleBandJob {
    RleParams params;     // of the band; `height` is its own rows
    const uint8_t* src;   // its first plain sample, or its stream
    uint8_t* dst;         // its working place, far enough from the next one's for the worst of its samples; or its rows
    uint32_t coded_size;  // set by coding: the bytes of the stream
    uint64_t src_size;    // decoding: how far the stream may reach, though it ends with its last sample
    RleDefect defect;     // set by decoding
};

using RleBandJobs = std::array<RleBandJob, kRleMaxBands>;

}  // namespace plenar
