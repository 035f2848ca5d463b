#pragma once

#include "rle/band_job.h"

namespace plenar {

// Decodes a band into the RlePlainExtent bytes at its `dst`. With padded rows the bytes between them are left with
// parts of the rows or as they were.
void RleDecodeBand(RleBandJob& job);

// Decodes two bands of one plane together, which takes less time than one after the other.
void RleDecodeTwoBands(RleBandJob& first, RleBandJob& second);

}  // namespace plenar
