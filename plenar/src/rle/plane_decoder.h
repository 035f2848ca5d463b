#pragma once

#include <cstdint>

#include "rle/rle_params.h"
#include "rle/row_pieces.h"

namespace plenar {

class WorkPool;

// Decodes a coded plane of `srcSize` bytes and returns its plain size. With two workers or more the bands are jobs of
// the pool, one or two in each; the result is the same without. With padded rows the bytes between them are left with
// parts of the rows or as they were, and those behind the last row aren't touched.
//
// The coded plane is hostile: nothing is read outside it or written outside the rows of `dst`, and the time it takes is
// bounded by its size and theirs. Throws invalid_argument for bad parameters and buffers, and out_of_range for a plane
// that leaves its bounds; what `dst` holds is undefined then. A plane that states no bands is taken, and leaves `dst`
// as it was; see RleStatedBands.
uint64_t RleDecodePlane(WorkPool& pool, const RleParams& params, const uint8_t* src, uint64_t srcSize, uint8_t* dst,
                        uint64_t dstSize);

// The same with rows that are taken by pieces; see RleEncodePieces. A plane that states no bands gives no rows.
void RleDecodePieces(WorkPool& pool, uint64_t bytes, const RleParams& params, const uint8_t* src, uint64_t srcSize,
                     const RleRowPieces& pieces);

// The number of bands that a coded plane states, 0 to 255; also 0 if it is empty. A caller that hands out `dst` must
// know of a 0, as nothing is written then.
uint32_t RleStatedBands(const uint8_t* src, uint64_t srcSize);

}  // namespace plenar
