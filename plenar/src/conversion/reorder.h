// Moves the samples of a row between a caller's order and the order of its plane.
#pragma once

#include <cstddef>
#include <cstdint>

#include "conversion/row_kernels.h"

namespace plenar {

// Throws invalid_argument for an unknown order.
const Order& OrderOf(uint32_t colorComponentOrder);

// One row each; lengths are in bytes. alphaDst may be null: then alpha samples among the others are dropped.
void ReorderRowToPlane(const Order& order, uint32_t type, const uint8_t* src, size_t srcLength, uint8_t* dst,
                       uint8_t* alphaDst);
void ReorderRowFromPlane(const Order& order, uint32_t type, const uint8_t* colour, size_t colourLength,
                         const uint8_t* alpha, size_t alphaLength, uint8_t* dst, size_t dstLength);

// A row of Fixed2p14 samples to a row of Float32, reordered (not with alpha).
void FixedRowToFloat(const Order& order, const uint8_t* fixed, size_t fixedLength, uint8_t* dst, size_t dstLength);

}  // namespace plenar
