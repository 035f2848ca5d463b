#include "format/picture_layout.h"

#include <limits>
#include <string>

#include "base/exceptions.h"

namespace plenar {

namespace {

// Packed10 holds groups of 6 pixels in 16 bytes.
constexpr uint32_t kPackedGroupPixels = 6;
constexpr uint32_t kPackedGroupBytes = 16;

constexpr uint64_t kNoBufferFits = std::numeric_limits<uint64_t>::max();

uint64_t MultiplyOrSaturate(uint64_t a, uint64_t b) {
    return a != 0 && b > kNoBufferFits / a ? kNoBufferFits : a * b;
}

uint64_t AddOrSaturate(uint64_t a, uint64_t b) {
    return b > kNoBufferFits - a ? kNoBufferFits : a + b;
}

// The samples of a row of interleaved samples. A 4:2:2 row of odd width ends on the chroma sample that its last pixel
// shares, or, where luma stands first, on a whole group.
uint64_t RowSamples(const Order& order, uint64_t width) {
    const bool endsInChroma = order.picture == PictureKind::YCbCr422 && width % 2 != 0;
    return order.samples * width + (endsInChroma ? (order.movement == Movement::SwapPairs ? 2U : 1U) : 0U);
}

// The strides of the first plane and of the second kind of plane, without padding.
struct TightStrides {
    uint64_t first;
    uint64_t second;
};

TightStrides TightStridesFor(const UncompressedParams& params) {
    const uint32_t order = params.colorComponentOrder;
    const uint64_t sample = SampleBytes(params.componentType);
    TightStrides tight = {DefaultRowBytes(params), 0};
    if (FindOrder(order).IsPlanar()) {
        tight.first = params.width * sample;
    }
    if (SubsamplingClass(order) == 420) {
        tight.second = HalfUp(params.width) * sample;
    } else if (FindOrder(order).HasAlphaBehind()) {
        tight.second = params.width * sample;
    }
    return tight;
}

uint64_t OrDefault(uint32_t stride, uint64_t tight) {
    return stride != 0 ? stride : tight;
}

void CheckStride(const char* name, uint32_t stride, uint64_t tight) {
    if (OrDefault(stride, tight) < tight) {
        throw invalid_argument(std::string(name) + " is too small, it should be at least " + std::to_string(tight) +
                               " according to uncompressed params");
    }
}

// The bytes of a row of the first plane without the 32-bit wrap of DefaultRowBytes.
uint64_t TrueRowBytes(const UncompressedParams& params, uint64_t tight) {
    if (params.componentType != Packed10 || FindOrder(params.colorComponentOrder).IsPlanar()) {
        return tight;
    }
    const uint64_t groups = (uint64_t{params.width} + kPackedGroupPixels - 1) / kPackedGroupPixels;
    return groups * kPackedGroupBytes;
}

// UncompressedBufSize without any wrap. Rows longer than their stride overlap, and no buffer holds such a picture.
uint64_t TrueBufSize(const UncompressedParams& params) {
    const PictureLayout layout = LayOutPicture(params);
    if (TrueRowBytes(params, layout.rowLength) > layout.stride) {
        return kNoBufferFits;
    }
    const uint32_t order = params.colorComponentOrder;
    const uint64_t first = MultiplyOrSaturate(params.height, layout.stride);
    if (SubsamplingClass(order) == 420) {
        const uint64_t chroma = MultiplyOrSaturate(2 * uint64_t{HalfUp(params.height)}, layout.chromaStride);
        return AddOrSaturate(AddOrSaturate(first, chroma), FindOrder(order).HasAlpha() ? first : 0);
    }
    return AddOrSaturate(first,
                         FindOrder(order).HasAlphaBehind() ? MultiplyOrSaturate(params.height, layout.alphaStride) : 0);
}

}  // namespace

uint32_t SubsamplingClass(uint32_t colorComponentOrder) {
    const Order& order = FindOrder(colorComponentOrder);
    switch (order.picture) {
        case PictureKind::YCbCr422:
            return 422;
        case PictureKind::YCbCr444:
        case PictureKind::Rgb:
            return 444;
        case PictureKind::Planar420:
            return 420;
        default:
            return order.IsKnown() ? 1 : 0;
    }
}

uint64_t DefaultRowBytes(const UncompressedParams& params) {
    if (params.componentType == Packed10) {
        const uint32_t rounded = (params.width + kPackedGroupPixels - 1) / kPackedGroupPixels * kPackedGroupPixels;
        return rounded * kPackedGroupBytes / kPackedGroupPixels;
    }
    return RowSamples(FindOrder(params.colorComponentOrder), params.width) * SampleBytes(params.componentType);
}

uint64_t UncompressedBufSize(const UncompressedParams& params) {
    const PictureLayout layout = LayOutPicture(params);
    const uint64_t height = params.height;
    const uint64_t first = height * layout.stride;
    switch (params.colorComponentOrder) {
        case YCbCr420Planar:
            return first + 2 * (HalfUp(params.height) * layout.chromaStride);
        case YCbCrA420Planar:
            return 2 * (first + HalfUp(params.height) * layout.chromaStride);
        case YCbYCrPlusAlpha:
        case CbYCrYPlusAlpha:
            return first + height * layout.alphaStride;
        default:
            return first;
    }
}

PictureLayout LayOutPicture(const UncompressedParams& params) {
    const TightStrides tight = TightStridesFor(params);
    const uint64_t stride = OrDefault(params.rowBytes, tight.first);
    const uint64_t stride2 = OrDefault(params.rowBytes2, tight.second);
    const uint64_t first = params.height * stride;
    PictureLayout layout = {tight.first, stride, stride2, stride, first, 0, first};
    if (SubsamplingClass(params.colorComponentOrder) == 420) {
        const uint64_t chroma = HalfUp(params.height) * stride2;
        layout.cr = first + chroma;
        layout.alpha = first + 2 * chroma;
    } else if (params.colorComponentOrder == AlphaOnly) {
        layout.alpha = 0;
    } else {
        layout.alphaStride = stride2;
    }
    return layout;
}

void CheckRowBytes(const UncompressedParams& params) {
    const TightStrides tight = TightStridesFor(params);
    CheckStride("rowBytes", params.rowBytes, tight.first);
    CheckStride("rowBytes2", params.rowBytes2, tight.second);
}

bool PictureFits(const UncompressedParams& params, uint32_t size) {
    return UncompressedBufSize(params) <= size && (params.height == 0 || TrueBufSize(params) <= size);
}

void CheckEncodeParams(const UncompressedParams& params, const CompressedParams& compressedParams, uint32_t srcSize) {
    const uint32_t order = params.colorComponentOrder;
    const uint32_t type = params.componentType;
    if (compressedParams.alphaRle != 0 && FindOrder(order).HasAlpha() && type != Uint8 && type != Uint16) {
        throw invalid_argument("Only 8 and 16 bit alpha supported for RLE compression");
    }
    const uint32_t subsampling = SubsamplingClass(order);
    if ((subsampling == 422 || subsampling == 420) && params.width % 2 != 0) {
        throw invalid_argument("Width must be multiple of 2 for 422 and 420 subsampling");
    }
    if (subsampling == 420 && params.height % 2 != 0) {
        throw invalid_argument("Height must be multiple of 2 for 420 subsampling");
    }
    CheckRowBytes(params);
    if (!PictureFits(params, srcSize)) {
        throw invalid_argument("src size is too small");
    }
}

}  // namespace plenar
