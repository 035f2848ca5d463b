// What the encode and the decode driver know in common of the caller's picture.
#pragma once

#include <cstddef>
#include <cstdint>

#include "format/order.h"
#include "format/picture_layout.h"
#include "plenar_sdk.h"
#include "rle/rle_params.h"

namespace plenar {

// The Y, Cb or Cr plane of a planar picture: its size, and its place in the caller's buffer.
struct PicturePlane {
    UncompressedParams params;
    size_t rowLength;
    size_t stride;
    size_t offset;
};

inline PicturePlane LumaPlane(const UncompressedParams& params, const PictureLayout& layout) {
    return {params, layout.rowLength, layout.stride, 0};
}

inline PicturePlane ChromaPlane(const UncompressedParams& params, const PictureLayout& layout, uint64_t offset) {
    PicturePlane plane = {params, 0, layout.chromaStride, offset};
    plane.params.width = HalfUp(params.width);
    plane.params.height = HalfUp(params.height);
    plane.rowLength = plane.params.width * SampleBytes(params.componentType);
    return plane;
}

// The bytes of a row's alpha samples without padding.
inline size_t AlphaRowBytes(const UncompressedParams& params) {
    return params.width * SampleBytes(params.componentType);
}

// Alpha samples that stand among the others in the caller's rows, as against those in a plane of their own.
inline bool HasInterleavedAlpha(uint32_t order) {
    return FindOrder(order).alpha == AlphaPlace::Interleaved;
}

// The caller's alpha plane as the coder sees it; alpha among other samples is coded from rows without padding.
inline RleParams AlphaRleParams(const UncompressedParams& params, uint8_t bandLimit) {
    const uint32_t order = params.colorComponentOrder;
    const uint32_t planarStride = FindOrder(order).IsPlanar() ? params.rowBytes : 0;
    return {.width = params.width,
            .height = params.height,
            .bitdepth = BitDepth(params.componentType),
            .band_limit = bandLimit,
            .row_bytes = FindOrder(order).HasAlphaBehind() ? params.rowBytes2 : planarStride};
}

}  // namespace plenar
