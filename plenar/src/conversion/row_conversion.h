// What a row undergoes on its way between the caller and a plane: decided once a plane, so that bands and rows only run
// it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "conversion/row_kernels.h"
#include "format/order.h"

namespace plenar {

// What the rows of a plane have in common. Sizes are those of a row without padding.
struct RowShape {
    const RowKernels& kernels;
    const Order& order;
    size_t sampleBytes;  // of the caller's samples
    size_t width;        // pixels
    size_t callerBytes;
    size_t planeBytes;        // without the alpha samples that stand among the caller's
    const uint8_t* planeEnd;  // a decode's: the end of the readable bytes behind the plane
};

// Runs on one row, or on several rows without padding between them as if they were one.
struct EncodeConversion {
    void (*run)(const RowShape& shape, const uint8_t* caller, uint8_t* plane, uint8_t* alpha, size_t rows);
    bool joinsRows;  // whether rows may be run as one where neither side pads them
};

struct DecodeConversion {
    void (*run)(const RowShape& shape, const uint8_t* plane, const uint8_t* alpha, uint8_t* caller, size_t rows);
    bool joinsRows;
};

// Whether rows of this order and type are the same on both sides, so that they are copied. True for no order or type
// outside the tables of formats.
bool IsCopied(const Order& order, uint32_t componentType);

// For rows that aren't copied. Throw invalid_argument for an order or a type that no conversion is made for.
EncodeConversion EncodeConversionFor(const RowShape& shape, uint32_t componentType);
DecodeConversion DecodeConversionFor(const RowShape& shape, uint32_t componentType);

// From a plane of Fixed2p14 samples into Float32.
DecodeConversion FixedToFloatConversionFor(const RowShape& shape);

}  // namespace plenar
