// What a caller's record says about its picture: strides, the places of planes, sizes, and the checks on them. Pure
// functions; an answer is given for every pair of order and type, supported or not.
#pragma once

#include <cstdint>

#include "format/order.h"
#include "format/sample_type.h"
#include "plenar_sdk.h"

namespace plenar {

// Half a width or a height, rounded up.
inline uint32_t HalfUp(uint32_t size) {
    return (size >> 1) + (size & 1);
}

// The stride that a rowBytes of 0 stands for on an order that isn't planar. Packed10 is worked out in 32 bits and wraps
// from a width of 2^28 up.
uint64_t DefaultRowBytes(const UncompressedParams& params);

// Where the planes of a caller's picture lie, in bytes. There is a second kind of plane in orders with chroma or alpha
// apart from the first plane; where there is none, its rows have a length of 0.
struct PictureLayout {
    uint64_t rowLength = 0;   // of a row of the first plane without padding
    uint64_t stride = 0;      // of the first plane
    uint64_t rowLength2 = 0;  // the same for the second kind of plane
    uint64_t stride2 = 0;
    uint64_t cb = 0;  // offsets of the further planes from the start of the picture
    uint64_t cr = 0;
    uint64_t alpha = 0;
    uint64_t alphaStride = 0;
    uint64_t size = 0;  // of the picture with its padding; wraps at 64 bits
};

PictureLayout LayOutPicture(const UncompressedParams& params);

// The bytes of the picture with its padding; wraps at 64 bits.
uint64_t UncompressedBufSize(const UncompressedParams& params);

// Refuses strides that are too small for a row.
void CheckRowBytes(const PictureLayout& layout);

// Whether the whole picture lies within `size` bytes, with no arithmetic wrapping anywhere. Strides have to be checked
// before.
bool PictureFits(const UncompressedParams& params, const PictureLayout& layout, uint32_t size);

// All that an encode asks of its parameters before it plans the frame.
void CheckEncodeParams(const UncompressedParams& params, const CompressedParams& compressedParams,
                       const PictureLayout& layout, uint32_t srcSize);

}  // namespace plenar
