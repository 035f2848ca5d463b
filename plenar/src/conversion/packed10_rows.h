// Rows of Packed10 to and from the split rows of a 10-bit plane. Rows of 4:2:2 pixels, whose length follows from the
// width; they are never reordered.
#pragma once

#include <cstdint>

#include "conversion/row_kernels.h"

namespace plenar {

void PackedRowToPlane(const RowKernels& kernels, size_t width, const uint8_t* src, uint8_t* dst);

// What an unfinished last group doesn't fill keeps the target's bytes, and one word of it may be added to them.
void PlaneRowToPacked(const RowKernels& kernels, size_t width, const uint8_t* src, uint8_t* dst);

}  // namespace plenar
