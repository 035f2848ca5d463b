#pragma once

#include <cstdint>

#include "rle/rle_params.h"
#include "rle/row_pieces.h"

namespace plenar {

class WorkPool;

// Codes a plane: the rle index table, and behind it one stream for each band. With two workers or more each band is a
// job of the pool; the bytes are the same without. Returns the bytes of the coded plane.
//
// `srcSize` is what can be read at `src`, at least RlePlainSize. `dstSize` is at least RleMaxCodedSize, whatever the
// plane turns out to take, and all of that may be written. Throws invalid_argument for bad parameters and sizes, and
// out_of_range for streams whose sizes the table can't hold.
uint64_t RleEncodePlane(WorkPool& pool, const RleParams& params, const uint8_t* src, uint64_t srcSize, uint8_t* dst,
                        uint64_t dstSize);

// The same of rows that are made by pieces. `bytes` is what making and coding all of them reads and writes.
uint64_t RleEncodePieces(WorkPool& pool, uint64_t bytes, const RleParams& params, const RleRowPieces& pieces,
                         uint8_t* dst, uint64_t dstSize);

}  // namespace plenar
