// Moves the samples of a row between a caller's order and the order of its plane.
#pragma once

#include <cstddef>
#include <cstdint>

namespace plenar {

// Whether the caller's order differs from the order of its plane.
bool NeedsReorder(uint32_t colorComponentOrder);

// One row each; lengths are in bytes. alphaDst may be null: then alpha samples among the others are dropped. Both throw
// invalid_argument for an order that needs no reordering.
void ReorderRowToPlane(uint32_t order, uint32_t type, const uint8_t* src, size_t srcLength, uint8_t* dst,
                       uint8_t* alphaDst);
void ReorderRowFromPlane(uint32_t order, uint32_t type, const uint8_t* colour, size_t colourLength,
                         const uint8_t* alpha, size_t alphaLength, uint8_t* dst, size_t dstLength);

// Reorders a row of samples that already has the caller's length where it stands. Orders without alpha only.
void ReorderRowInPlace(uint32_t order, uint32_t type, uint8_t* row, size_t length);

}  // namespace plenar
