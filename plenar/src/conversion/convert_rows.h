// Moves the samples of a frame's planes between the caller's rows and the planes', in bands of rows on the pool's
// threads.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/fixed_list.h"
#include "conversion/row_conversion.h"
#include "plenar_sdk.h"
#include "pool/work_pool.h"

namespace plenar {

// All rows of a plane with what is done to them. Rows run from top to bottom on both sides, and no row looks at
// another.
struct PlaneRows {
    RowShape shape;
    RowConversion conversion;
    RowSides sides;
    uint32_t rows;
    size_t rowBytes;  // read and written of each
    bool joinsRows;   // whether they can be taken as one long row
};

// Strides and lengths are in bytes.
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

PlaneRows RowsToEncode(const EncodeRowsArgs& args);

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

PlaneRows RowsToDecode(const DecodeRowsArgs& args);

// `rows` rows of `rowLength` bytes as they are. Padding is neither read nor written, unless both sides are alike.
struct CopyRowsArgs {
    const uint8_t* src;
    size_t srcStride;
    uint8_t* dst;
    size_t dstStride;
    size_t rowLength;
    uint32_t rows;
};

PlaneRows RowsToCopy(const CopyRowsArgs& args);

// What these rows read and write.
uint64_t BytesOf(const PlaneRows& plane);

// Some rows of the plane, with their alpha samples from or to `alpha`, where they stand without padding and stay in the
// cache. `stream`: the others are written past it.
void ConvertRows(const PlaneRows& plane, const Band& band, uint8_t* alpha, bool stream);

// Whether so many bytes are more than the last cache keeps. They are written past it then; a smaller result is kept for
// whoever reads it next.
bool OutgrowsCache(uint64_t bytes);

// As one batch, in which each worker has as many bytes to move, of whichever planes.
using PlaneRowsList = FixedList<PlaneRows, 4>;
void ConvertPlanes(WorkPool& pool, const PlaneRowsList& planes);

}  // namespace plenar
