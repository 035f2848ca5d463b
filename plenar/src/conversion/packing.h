// Moves the samples of a row between the caller's words and the split rows of 10- and 12-bit planes.
//
// A split row has a high part, the top 8 bits of each sample, and behind it a low part with the remaining bits, 4
// samples (10 bits) or 2 (12 bits) to a byte.
#pragma once

#include <cstddef>
#include <cstdint>

#include "conversion/row_kernels.h"

namespace plenar {

// Packs and unpacks the rows of a type: what depends on the type alone is settled once for all of them.
class RowPacker {
public:
    // Throws invalid_argument for a type that needs no packing.
    explicit RowPacker(uint32_t type);

    // One row each, of `width` pixels and `samples` samples, alpha left out (`samples` is not used for Packed10, whose
    // rows follow from the width and aren't reordered).
    void Pack(const Order& order, uint32_t width, const uint8_t* src, size_t samples, uint8_t* planeRow) const;

    // Rows whose length is one sample more than the plane's (YCbYCr of odd width) ask for one byte behind the plane's
    // row. At `planeEnd` and beyond that byte counts as 0.
    void Unpack(const Order& order, uint32_t width, const uint8_t* planeRow, const uint8_t* planeEnd, uint8_t* dst,
                size_t samples) const;

private:
    const RowKernels& kernels_;
    // Null for Packed10.
    decltype(RowKernels::packRow10) pack_ = nullptr;
    decltype(RowKernels::unpackRow10) unpack_ = nullptr;
    size_t lowBits_ = 0;  // of a sample, in the low part
};

}  // namespace plenar
