// Moves the samples of a row between a caller's order and the order of its plane.
#pragma once

#include <cstddef>
#include <cstdint>

#include "conversion/row_kernels.h"

namespace plenar {

// Whether the caller's order differs from the order of its plane.
bool NeedsReorder(uint32_t colorComponentOrder);

// How the samples of an order stand to those of its plane. Throws invalid_argument for an unknown order.
Reordering ReorderingOf(uint32_t colorComponentOrder);

// One row each; lengths are in bytes. alphaDst may be null: then alpha samples among the others are dropped.
void ReorderRowToPlane(const Reordering& reordering, uint32_t type, const uint8_t* src, size_t srcLength, uint8_t* dst,
                       uint8_t* alphaDst);
void ReorderRowFromPlane(const Reordering& reordering, uint32_t type, const uint8_t* colour, size_t colourLength,
                         const uint8_t* alpha, size_t alphaLength, uint8_t* dst, size_t dstLength);

// A row of Fixed2p14 samples to a row of Float32, reordered (not with alpha).
void FixedRowToFloat(const Reordering& reordering, const uint8_t* fixed, size_t fixedLength, uint8_t* dst,
                     size_t dstLength);

}  // namespace plenar
