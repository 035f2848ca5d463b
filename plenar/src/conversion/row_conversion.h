// What a row undergoes on its way between the caller and a plane: decided once a plane, so that bands and rows only run
// it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "conversion/row_kernels.h"
#include "format/order.h"
#include "pool/bands.h"

namespace plenar {

// What the rows of a plane have in common. Sizes are those of a row without padding.
struct RowShape {
    const RowKernels* kernels;
    const Order* order;
    size_t sampleBytes;  // of the caller's samples
    size_t width;        // pixels
    size_t callerBytes;
    size_t planeBytes;        // without the alpha samples that stand among the caller's
    const uint8_t* planeEnd;  // a decode's: the end of the readable bytes behind the plane
};

// The rows of one side of a conversion; a side that isn't there has no first row.
template <class Byte>
struct RowsOf {
    Byte* first;
    size_t stride;

    Byte* At(size_t row) const { return first + row * stride; }
    Byte* IfAnyAt(size_t row) const { return first != nullptr ? At(row) : nullptr; }
};

// Where rows come from and go to: the caller's and the plane's, or the other way round. Alpha samples that stand among
// the caller's have a place of their own, the second one.
struct RowSides {
    RowsOf<const uint8_t> src[2];
    RowsOf<uint8_t> dst[2];
    bool alphaStays = false;  // the target's alpha in the cache, for who reads it next, also where the rest is streamed
};

// What is done to the rows of a band, `together` at a time: 1, or, where no side has padding, all of them as one long
// row.
struct RowConversion {
    using Run = void (*)(const RowShape& shape, const Band& band, size_t together, const RowSides& sides);

    Run run;
    Run stream;      // the same with a target that is written past the caches, where that is to be had
    bool joinsRows;  // whether rows may be taken together
};

// For rows that are the same on both sides.
extern const RowConversion kCopyConversion;

// For rows that aren't copied. Throw invalid_argument for an order or a type that no conversion is made for.
RowConversion EncodeConversionFor(const RowShape& shape, uint32_t componentType);
RowConversion DecodeConversionFor(const RowShape& shape, uint32_t componentType);

// From a plane of Fixed2p14 samples into Float32.
RowConversion FixedToFloatConversionFor(const RowShape& shape);

}  // namespace plenar
