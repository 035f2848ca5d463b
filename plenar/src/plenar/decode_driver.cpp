#include "plenar/decode_driver.h"

#include <algorithm>

#include "container/box_reader.h"
#include "container/metadata_checks.h"
#include "conversion/convert_rows.h"
#include "plenar/exceptions.h"
#include "plenar/params.h"
#include "plenar/picture_planes.h"
#include "rle/plane_decoder.h"

namespace plenar {

namespace {

// Writes the caller's picture from planes that passed all checks against it: each plane that the picture needs is
// there, has the size that the picture gives it, and lies within `src`, coded alpha excepted.
class FrameDecoder {
public:
    FrameDecoder(CodecState& state, const UncompressedParams& params, const PlaneRecordList& planes, const uint8_t* src,
                 uint32_t srcSize, uint8_t* dst, uint32_t dstSize)
        : state(state),
          params(params),
          planes(planes),
          roles(FindPlaneRoles(planes)),
          layout(LayOutPicture(params)),
          src(src),
          srcSize(srcSize),
          dst(dst),
          dstSize(dstSize) {}

    void WritePicture() {
        const uint32_t order = params.colorComponentOrder;
        if (SubsamplingClass(order) == 420) {
            WritePicturePlane(LumaPlane(params, layout), planes[roles.primary]);
            WritePicturePlane(ChromaPlane(params, layout, layout.cb), planes[roles.cb]);
            WritePicturePlane(ChromaPlane(params, layout, layout.cr), planes[roles.cr]);
        } else if (order != AlphaOnly) {
            WriteInterleaved();
        }
        if (HasAlpha(order) && !HasInterleavedAlpha(order)) {
            WriteAlphaPlane();
        }
    }

private:
    const uint8_t* PlaneData(const PlaneRecord& plane) const { return src + plane.offset; }

    void WritePicturePlane(const PicturePlane& plane, const PlaneRecord& record) {
        DecodeRows(state, {.params = plane.params,
                           .fixedToFloat = false,
                           .plane = PlaneData(record),
                           .planeStride = PlaneRowBytes(record.type, record.width),
                           .planeEnd = src + srcSize,
                           .alpha = nullptr,
                           .alphaStride = 0,
                           .dst = dst + plane.offset,
                           .rowLength = plane.rowLength,
                           .dstStride = plane.stride});
    }

    void WriteInterleaved() {
        const bool interleavedAlpha = HasInterleavedAlpha(params.colorComponentOrder);
        const PlaneRecord& picture = planes[roles.primary];
        DecodeRows(state, {.params = params,
                           .fixedToFloat = IsFixedPoint(picture.type) && params.componentType == Float32,
                           .plane = PlaneData(picture),
                           .planeStride = PlaneRowBytes(picture.type, picture.width),
                           .planeEnd = src + srcSize,
                           .alpha = interleavedAlpha ? InterleavedAlpha() : nullptr,
                           .alphaStride = interleavedAlpha ? AlphaRowBytes(params) : 0,
                           .dst = dst,
                           .rowLength = layout.rowLength,
                           .dstStride = layout.stride});
    }

    // The rows of alpha samples that go among the others, without padding.
    const uint8_t* InterleavedAlpha() {
        const PlaneRecord& alpha = planes[roles.alpha];
        if (!IsCodedAlpha(alpha.type)) {
            return PlaneData(alpha);
        }
        const uint64_t size = AlphaRowBytes(params) * params.height;
        uint8_t* plain = state.Scratch(size);
        // A plane without bands decodes to nothing, and what an earlier frame left must not come out as its alpha.
        if (RleStatedBands(PlaneData(alpha), CodedSize(alpha)) == 0) {
            std::fill_n(plain, size, uint8_t{0});
        }
        DecodeAlpha(alpha, plain, size);
        return plain;
    }

    void WriteAlphaPlane() {
        const PlaneRecord& alpha = planes[roles.alpha];
        if (IsCodedAlpha(alpha.type)) {
            return DecodeAlpha(alpha, dst + layout.alpha, dstSize - layout.alpha);
        }
        CopyRows(state, {.src = PlaneData(alpha),
                         .srcStride = AlphaRowBytes(params),
                         .dst = dst + layout.alpha,
                         .dstStride = layout.alphaStride,
                         .rowLength = AlphaRowBytes(params),
                         .rows = params.height});
    }

    // The size that the box states, as far as the payload reaches.
    uint64_t CodedSize(const PlaneRecord& alpha) const { return std::min(alpha.size, srcSize - alpha.offset); }

    void DecodeAlpha(const PlaneRecord& alpha, uint8_t* target, uint64_t targetSize) {
        RleDecodePlane(state.Pool(), AlphaRleParams(params, 0), PlaneData(alpha), CodedSize(alpha), target, targetSize);
    }

    CodecState& state;
    const UncompressedParams& params;
    const PlaneRecordList& planes;
    const PlaneRoles roles;
    const PictureLayout layout;
    const uint8_t* src;
    uint32_t srcSize;
    uint8_t* dst;
    uint32_t dstSize;
};

}  // namespace

uint64_t DecodeFrameBody(CodecState& state, const UncompressedParams& params, const uint8_t* src, uint32_t srcSize,
                         uint8_t* dst, uint32_t dstSize) {
    CheckRowBytes(params);
    if (!PictureFits(params, dstSize)) {
        throw invalid_argument("dst size is too small");
    }
    const FramePlan plan = MetadataParser(src, srcSize).ParseMetadata();
    CheckPlaneConsistency(plan.planes);
    CheckMetadataAgainstParams(plan.planes, params);
    FrameDecoder(state, params, plan.planes, src, srcSize, dst, dstSize).WritePicture();
    return UncompressedBufSize(params);
}

}  // namespace plenar
