// Moves the samples of a row between the caller's words and the split rows of 10- and 12-bit planes.
//
// A split row has a high part, the top 8 bits of each sample, and behind it a low part with the remaining bits, 4
// samples (10 bits) or 2 (12 bits) to a byte.
#pragma once

#include <cstddef>
#include <cstdint>

#include "conversion/row_kernels.h"

namespace plenar {

// Whether the samples of the type are stored in fewer bits than the caller holds them in.
bool NeedsPacking(uint32_t componentType);

// One row each, of `width` pixels and `samples` samples, alpha left out (`samples` is not used for Packed10, whose rows
// follow from the width and aren't reordered). Both throw invalid_argument for a type that needs no packing.
void PackRow(uint32_t type, const Reordering& reordering, uint32_t width, const uint8_t* src, size_t samples,
             uint8_t* planeRow);

// Rows whose length is one sample more than the plane's (YCbYCr of odd width) ask for one byte behind the plane's row.
// At `planeEnd` and beyond that byte counts as 0.
void UnpackRow(uint32_t type, const Reordering& reordering, uint32_t width, const uint8_t* planeRow,
               const uint8_t* planeEnd, uint8_t* dst, size_t samples);

}  // namespace plenar
