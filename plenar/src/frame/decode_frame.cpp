#include "frame/decode_frame.h"

#include <algorithm>

#include "base/exceptions.h"
#include "container/box_reader.h"
#include "container/metadata_checks.h"
#include "conversion/convert_rows.h"
#include "format/picture_layout.h"
#include "frame/alpha_pieces.h"
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

// The rows of alpha samples that go among the others, without padding; none yet if they are coded.
const uint8_t* InterleavedAlpha(const DecodedFrame& frame) {
    const PlaneRecord& alpha = *frame.roles.alpha;
    return alpha.kind->isCoded ? nullptr : DataOf(frame, alpha);
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

// Coded alpha that goes among the other samples does so a few rows after another.
void DecodeWithCodedAlpha(const DecodedFrame& frame, const PlaneRows& rows) {
    const PlaneRecord& plane = *frame.roles.alpha;
    const RleParams params = AlphaRleParams(frame.params, 0);
    const AlphaPieces alpha(frame.state, rows, params);
    RleDecodePieces(frame.state.pool, alpha.Bytes(), params, DataOf(frame, plane), CodedSize(frame, plane),
                    alpha.Get());
    // A plane without bands decodes to nothing, and what an earlier frame left must not come out as its alpha.
    if (RleStatedBands(DataOf(frame, plane), CodedSize(frame, plane)) == 0) {
        alpha.MoveNothing(params.height, RleTightRowBytes(params));
    }
}

void DecodePlanes(const DecodedFrame& frame) {
    PlaneRowsList rows = PictureRows(frame);
    const AlphaPlace place = FindOrder(frame.params.colorComponentOrder).alpha;
    const bool codesAlpha = place != AlphaPlace::None && frame.roles.alpha->kind->isCoded;
    if (codesAlpha && place == AlphaPlace::Interleaved) {
        return DecodeWithCodedAlpha(frame, rows[0]);
    }
    if (place == AlphaPlace::Apart && !codesAlpha) {
        rows.push_back(AlphaRows(frame));
    }
    ConvertPlanes(frame.state.pool, rows);
    if (codesAlpha) {
        const PlaneRecord& plane = *frame.roles.alpha;
        RleDecodePlane(frame.state.pool, AlphaRleParams(frame.params, 0), DataOf(frame, plane), CodedSize(frame, plane),
                       frame.dst + frame.layout.alpha, frame.dstSize - frame.layout.alpha);
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
