#include "frame/decode_frame.h"

#include <algorithm>

#include "base/exceptions.h"
#include "container/box_reader.h"
#include "container/metadata_checks.h"
#include "conversion/convert_rows.h"
#include "format/picture_layout.h"
#include "frame/picture_planes.h"
#include "rle/plane_decoder.h"

namespace plenar {

namespace {

// A frame between its payload and the caller's picture. Its planes passed all checks against the picture: each one that
// the picture needs is there, has the size that the picture gives it, and lies within `src`, coded alpha excepted.
struct DecodedFrame {
    CodecState& state;
    const UncompressedParams& params;
    const PictureLayout& layout;
    const PlaneRoles& roles;
    const uint8_t* src;
    uint32_t srcSize;
    uint8_t* dst;
    uint32_t dstSize;
};

const uint8_t* DataOf(const DecodedFrame& frame, const PlaneRecord& plane) {
    return frame.src + plane.offset;
}

// The size that the box states, as far as the payload reaches.
uint64_t CodedSize(const DecodedFrame& frame, const PlaneRecord& alpha) {
    return std::min(alpha.size, frame.srcSize - alpha.offset);
}

void DecodeAlpha(const DecodedFrame& frame, uint8_t* target, uint64_t targetSize) {
    const PlaneRecord& alpha = *frame.roles.alpha;
    RleDecodePlane(frame.state.pool, AlphaRleParams(frame.params, 0), DataOf(frame, alpha), CodedSize(frame, alpha),
                   target, targetSize);
}

// The rows of alpha samples that go among the others, without padding.
const uint8_t* InterleavedAlpha(const DecodedFrame& frame) {
    const PlaneRecord& alpha = *frame.roles.alpha;
    if (!alpha.kind->isCoded) {
        return DataOf(frame, alpha);
    }
    const uint64_t size = AlphaRowBytes(frame.params) * frame.params.height;
    uint8_t* samples = Scratch(frame.state, size);
    // A plane without bands decodes to nothing, and what an earlier frame left must not come out as its alpha.
    if (RleStatedBands(DataOf(frame, alpha), CodedSize(frame, alpha)) == 0) {
        std::fill_n(samples, size, uint8_t{0});
    }
    DecodeAlpha(frame, samples, size);
    return samples;
}

PlaneRowsList PictureRows(const DecodedFrame& frame) {
    const bool interleavedAlpha = HasInterleavedAlpha(frame.params.colorComponentOrder);
    PlaneRowsList rows;
    for (const PicturePlane& plane : PicturePlanes(frame.params, frame.layout, frame.roles)) {
        const PlaneRecord& record = *plane.record;
        rows.push_back(RowsToDecode({.params = plane.params,
                                     .fixedToFloat = IsFixedToFloat(*record.kind, plane.params.componentType),
                                     .plane = DataOf(frame, record),
                                     .planeStride = PlaneRowBytes(*record.kind, record.width),
                                     .planeEnd = frame.src + frame.srcSize,
                                     .alpha = interleavedAlpha ? InterleavedAlpha(frame) : nullptr,
                                     .alphaStride = interleavedAlpha ? AlphaRowBytes(frame.params) : 0,
                                     .dst = frame.dst + plane.offset,
                                     .rowLength = plane.rowLength,
                                     .dstStride = plane.stride}));
    }
    return rows;
}

// Of alpha that has a plane of its own in the caller's picture.
PlaneRows AlphaRows(const DecodedFrame& frame) {
    return RowsToCopy({.src = DataOf(frame, *frame.roles.alpha),
                       .srcStride = AlphaRowBytes(frame.params),
                       .dst = frame.dst + frame.layout.alpha,
                       .dstStride = frame.layout.alphaStride,
                       .rowLength = AlphaRowBytes(frame.params),
                       .rows = frame.params.height});
}

void DecodePlanes(const DecodedFrame& frame) {
    PlaneRowsList rows = PictureRows(frame);
    const bool hasAlphaPlane = FindOrder(frame.params.colorComponentOrder).alpha == AlphaPlace::Apart;
    const bool codesAlpha = hasAlphaPlane && frame.roles.alpha->kind->isCoded;
    if (hasAlphaPlane && !codesAlpha) {
        rows.push_back(AlphaRows(frame));
    }
    ConvertPlanes(frame.state.pool, rows);
    if (codesAlpha) {
        DecodeAlpha(frame, frame.dst + frame.layout.alpha, frame.dstSize - frame.layout.alpha);
    }
}

}  // namespace

uint64_t DecodeFrameBody(CodecState& state, const UncompressedParams& params, const uint8_t* src, uint32_t srcSize,
                         uint8_t* dst, uint32_t dstSize) {
    const PictureLayout layout = LayOutPicture(params);
    CheckRowBytes(layout);
    if (!PictureFits(params, layout, dstSize)) {
        throw invalid_argument("dst size is too small");
    }
    const FramePlan plan = MetadataParser(src, srcSize).ParseMetadata();
    const PlaneRoles roles = FindPlaneRoles(plan.planes);
    CheckPlaneConsistency(plan.planes, roles);
    CheckMetadataAgainstParams(plan.planes, roles, params);
    const DecodedFrame frame = {.state = state,
                                .params = params,
                                .layout = layout,
                                .roles = roles,
                                .src = src,
                                .srcSize = srcSize,
                                .dst = dst,
                                .dstSize = dstSize};
    DecodePlanes(frame);
    return layout.size;
}

}  // namespace plenar
