// What an encode and a decode know in common of the caller's picture.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/fixed_list.h"
#include "container/frame_plan.h"
#include "format/order.h"
#include "format/picture_layout.h"
#include "plenar_sdk.h"
#include "rle/rle_params.h"

namespace plenar {

// A plane of the picture: its size, its place in the caller's buffer, and the plane of the payload.
struct PicturePlane {
    UncompressedParams params;
    size_t rowLength;
    size_t stride;
    size_t offset;
    const PlaneRecord* record;
};

// All planes but one of alpha: none, a single one of interleaved samples, or Y, Cb and Cr.
inline FixedList<PicturePlane, 3> PicturePlanes(const UncompressedParams& params, const PictureLayout& layout,
                                                const PlaneRoles& roles) {
    const Order& order = FindOrder(params.colorComponentOrder);
    FixedList<PicturePlane, 3> planes;
    if (order.picture != PictureKind::None) {
        planes.push_back({params, layout.rowLength, layout.stride, 0, roles.primary});
    }
    if (order.SharesChromaDown()) {
        UncompressedParams chroma = params;
        chroma.width = HalfUp(params.width);
        chroma.height = HalfUp(params.height);
        planes.push_back({chroma, layout.rowLength2, layout.stride2, layout.cb, roles.cb});
        planes.push_back({chroma, layout.rowLength2, layout.stride2, layout.cr, roles.cr});
    }
    return planes;
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
    const Order& order = FindOrder(params.colorComponentOrder);
    const uint32_t planarStride = order.IsPlanar() ? params.rowBytes : 0;
    return {.width = params.width,
            .height = params.height,
            .bitdepth = BitDepth(params.componentType),
            .band_limit = bandLimit,
            .row_bytes = order.HasAlphaBehind() ? params.rowBytes2 : planarStride};
}

}  // namespace plenar
