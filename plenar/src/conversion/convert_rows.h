// Moves the samples of a whole plane between the caller's rows and the plane's, in bands of rows on the pool's
// threads.
#pragma once

#include <cstddef>
#include <cstdint>

#include "plenar_sdk.h"
#include "pool/work_pool.h"

namespace plenar {

// Strides and lengths are in bytes. Rows run from top to bottom on both sides, and no row looks at another.
struct EncodeRowsArgs {
    UncompressedParams params;  // order, type and the size of this plane
    const uint8_t* src;         // the caller's first row
    size_t rowLength;           // of a caller's row without padding
    size_t srcStride;
    uint8_t* dst;  // the plane's first row
    size_t dstStride;
    uint8_t* alphaDst;   // takes the alpha samples that stand among the others; null drops them
    size_t alphaStride;  // what these samples take of a row, also where they are dropped
};

void EncodeRows(WorkPool& pool, const EncodeRowsArgs& args);

struct DecodeRowsArgs {
    UncompressedParams params;  // order, type and the size of this plane
    bool fixedToFloat;          // the plane holds Fixed2p14 samples and the caller wants Float32
    const uint8_t* plane;       // the plane's first row
    size_t planeStride;
    const uint8_t* planeEnd;  // the end of the readable bytes behind the plane
    const uint8_t* alpha;     // alpha samples to be put among the others
    size_t alphaStride;
    uint8_t* dst;      // the caller's first row
    size_t rowLength;  // of a caller's row without padding
    size_t dstStride;
};

void DecodeRows(WorkPool& pool, const DecodeRowsArgs& args);

// Copies `rows` rows of `rowLength` bytes. Padding is neither read nor written, unless both sides are alike.
struct CopyRowsArgs {
    const uint8_t* src;
    size_t srcStride;
    uint8_t* dst;
    size_t dstStride;
    size_t rowLength;
    uint32_t rows;
};

void CopyRows(WorkPool& pool, const CopyRowsArgs& args);

}  // namespace plenar
