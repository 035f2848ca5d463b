#pragma once

#include <cstdint>

#include "rle/rle_defect.h"
#include "rle/rle_params.h"

namespace plenar {

// A band to decode, and what came of it.
struct RleBandToDecode {
    RleParams band;      // its `height` is the band's own
    const uint8_t* src;  // where the stream begins
    uint64_t src_size;   // what the coded plane holds from there on: a stream ends with the band's last sample
    uint8_t* dst;
    RleDefect defect;
};

// Decodes a band into the RlePlainExtent bytes at its `dst`. With padded rows the bytes between them are left with
// parts of the rows or as they were.
void RleDecodeBand(RleBandToDecode& job);

// Decodes two bands of one plane together, which takes less time than one after the other.
void RleDecodeTwoBands(RleBandToDecode& first, RleBandToDecode& second);

}  // namespace plenar
