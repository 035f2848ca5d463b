#include "format/picture_layout.h"

#include <algorithm>
#include <string>

#include "base/exceptions.h"
#include "format/packed10.h"
#include "format/plane_type.h"

namespace plenar {

namespace {

// The samples of a row of interleaved samples. A 4:2:2 row of odd width ends on the chroma sample that its last pixel
// shares, or, where luma stands first, on a whole group.
uint64_t RowSamples(const Order& order, uint64_t width) {
    const bool endsInChroma = order.picture == PictureKind::YCbCr422 && width % 2 != 0;
    return order.samples * width + (endsInChroma ? (order.movement == Movement::SwapPairs ? 2U : 1U) : 0U);
}

bool HasCodedAlpha(uint32_t componentType) {
    return std::ranges::any_of(kPlaneKinds, [componentType](const PlaneKind& kind) {
        return kind.isCoded && kind.componentType == componentType;
    });
}

uint64_t OrDefault(uint32_t stride, uint64_t tight) {
    return stride != 0 ? stride : tight;
}

void CheckStride(const char* name, uint64_t stride, uint64_t rowLength) {
    if (stride < rowLength) {
        throw invalid_argument(std::string(name) + " is too small, it should be at least " + std::to_string(rowLength) +
                               " according to uncompressed params");
    }
}

// The bytes of a row of the first plane without the 32-bit wrap of DefaultRowBytes.
uint64_t TrueRowLength(const UncompressedParams& params, const PictureLayout& layout) {
    if (params.componentType != Packed10 || FindOrder(params.colorComponentOrder).IsPlanar()) {
        return layout.rowLength;
    }
    return (uint64_t{params.width} + kPackedGroupPixels - 1) / kPackedGroupPixels * kPackedGroupBytes;
}

}  // namespace

uint64_t DefaultRowBytes(const UncompressedParams& params) {
    if (params.componentType == Packed10) {
        const uint32_t rounded = (params.width + kPackedGroupPixels - 1) / kPackedGroupPixels * kPackedGroupPixels;
        return rounded * kPackedGroupBytes / kPackedGroupPixels;
    }
    return RowSamples(FindOrder(params.colorComponentOrder), params.width) * SampleBytes(params.componentType);
}

PictureLayout LayOutPicture(const UncompressedParams& params) {
    const Order& order = FindOrder(params.colorComponentOrder);
    const uint64_t sampleBytes = SampleBytes(params.componentType);
    const uint64_t height = params.height;
    PictureLayout layout;
    layout.rowLength = order.IsPlanar() ? params.width * sampleBytes : DefaultRowBytes(params);
    layout.stride = OrDefault(params.rowBytes, layout.rowLength);
    layout.alphaStride = layout.stride;
    layout.size = height * layout.stride;
    if (order.SharesChromaDown()) {
        layout.rowLength2 = HalfUp(params.width) * sampleBytes;
        layout.stride2 = OrDefault(params.rowBytes2, layout.rowLength2);
        const uint64_t chromaSize = HalfUp(params.height) * layout.stride2;
        layout.cb = layout.size;
        layout.cr = layout.cb + chromaSize;
        layout.alpha = layout.cr + chromaSize;
        layout.size = layout.alpha + (order.HasAlpha() ? layout.size : 0);
    } else if (order.HasAlphaBehind()) {
        layout.rowLength2 = params.width * sampleBytes;
        layout.stride2 = OrDefault(params.rowBytes2, layout.rowLength2);
        layout.alphaStride = layout.stride2;
        layout.alpha = layout.size;
        layout.size = layout.alpha + height * layout.alphaStride;
    }
    return layout;
}

uint64_t UncompressedBufSize(const UncompressedParams& params) {
    return LayOutPicture(params).size;
}

void CheckRowBytes(const PictureLayout& layout) {
    CheckStride("rowBytes", layout.stride, layout.rowLength);
    CheckStride("rowBytes2", layout.stride2, layout.rowLength2);
}

bool PictureFits(const UncompressedParams& params, const PictureLayout& layout, uint32_t size) {
    if (params.height == 0) {
        return true;
    }
    // Rows that fit have strides below 2^32. Then no sum wraps before a smaller one is found to be too large.
    const bool rowsFit =
        layout.rowLength <= size && layout.rowLength2 <= size && TrueRowLength(params, layout) <= layout.stride;
    return rowsFit && layout.cb <= size && layout.cr <= size && layout.alpha <= size && layout.size <= size;
}

void CheckEncodeParams(const UncompressedParams& params, const CompressedParams& compressedParams,
                       const PictureLayout& layout, uint32_t srcSize) {
    const Order& order = FindOrder(params.colorComponentOrder);
    if (compressedParams.alphaRle != 0 && order.HasAlpha() && !HasCodedAlpha(params.componentType)) {
        throw invalid_argument("Only 8 and 16 bit alpha supported for RLE compression");
    }
    if (order.SharesChromaAcross() && params.width % 2 != 0) {
        throw invalid_argument("Width must be multiple of 2 for 422 and 420 subsampling");
    }
    if (order.SharesChromaDown() && params.height % 2 != 0) {
        throw invalid_argument("Height must be multiple of 2 for 420 subsampling");
    }
    CheckRowBytes(layout);
    if (!PictureFits(params, layout, srcSize)) {
        throw invalid_argument("src size is too small");
    }
}

}  // namespace plenar
