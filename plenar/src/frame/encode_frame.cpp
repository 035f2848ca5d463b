#include "frame/encode_frame.h"

#include "base/exceptions.h"
#include "container/box_writer.h"
#include "conversion/convert_rows.h"
#include "format/picture_layout.h"
#include "frame/alpha_pieces.h"
#include "frame/picture_planes.h"
#include "frame/plan_frame.h"
#include "rle/plane_encoder.h"

namespace plenar {

namespace {

// A frame between the caller's picture and its payload.
struct EncodedFrame {
    CodecState& state;
    const UncompressedParams& params;
    const CompressedParams& compressedParams;
    const PictureLayout& layout;
    FramePlan plan;
    const uint8_t* src;
    uint32_t srcSize;
    uint8_t* dst;
};

uint8_t* DataOf(const EncodedFrame& frame, const PlaneRecord& plane) {
    return frame.dst + plane.offset;
}

// Alpha samples among the others go to `alpha`, or are dropped if it is null.
PlaneRowsList PictureRows(const EncodedFrame& frame, uint8_t* alpha) {
    const bool interleavedAlpha = HasInterleavedAlpha(frame.params.colorComponentOrder);
    PlaneRowsList rows;
    for (const PicturePlane& plane : PicturePlanes(frame.params, frame.layout, FindPlaneRoles(frame.plan.planes))) {
        const PlaneRecord& record = *plane.record;
        rows.push_back(RowsToEncode({.params = plane.params,
                                     .src = frame.src + plane.offset,
                                     .rowLength = plane.rowLength,
                                     .srcStride = plane.stride,
                                     .dst = DataOf(frame, record),
                                     .dstStride = PlaneRowBytes(*record.kind, record.width),
                                     .alphaDst = alpha,
                                     .alphaStride = interleavedAlpha ? AlphaRowBytes(frame.params) : 0}));
    }
    return rows;
}

// The alpha plane is the last one, so that its true size moves nothing else.
void TakeCodedSize(EncodedFrame& frame, uint64_t size) {
    PlaneRecord& plane = frame.plan.planes.back();
    const auto coded = static_cast<uint32_t>(size);
    frame.plan.total_size -= plane.size - coded;
    plane.size = coded;
}

// Alpha among the other samples goes to its plane right away, or is coded a few rows after another.
void EncodeWithInterleavedAlpha(EncodedFrame& frame) {
    const PlaneRecord& plane = frame.plan.planes.back();
    if (!plane.kind->isCoded) {
        return ConvertPlanes(frame.state.pool, PictureRows(frame, DataOf(frame, plane)));
    }
    const PlaneRowsList rows = PictureRows(frame, nullptr);
    const RleParams params = AlphaRleParams(frame.params, frame.compressedParams.alphaBandLimit);
    const AlphaPieces alpha(frame.state, rows[0], params);
    TakeCodedSize(
        frame, RleEncodePieces(frame.state.pool, alpha.Bytes(), params, alpha.Get(), DataOf(frame, plane), plane.size));
}

void CodeAlphaPlane(EncodedFrame& frame) {
    const PlaneRecord& plane = frame.plan.planes.back();
    const RleParams params = AlphaRleParams(frame.params, frame.compressedParams.alphaBandLimit);
    TakeCodedSize(frame, RleEncodePlane(frame.state.pool, params, frame.src + frame.layout.alpha,
                                        frame.srcSize - frame.layout.alpha, DataOf(frame, plane), plane.size));
}

// Of alpha that has a plane of its own in the caller's picture.
PlaneRows AlphaRows(const EncodedFrame& frame) {
    return RowsToCopy({.src = frame.src + frame.layout.alpha,
                       .srcStride = frame.layout.alphaStride,
                       .dst = DataOf(frame, frame.plan.planes.back()),
                       .dstStride = AlphaRowBytes(frame.params),
                       .rowLength = AlphaRowBytes(frame.params),
                       .rows = frame.params.height});
}

void EncodePlanes(EncodedFrame& frame) {
    const bool hasAlphaPlane = frame.plan.planes.back().kind->role == PlaneRole::Alpha;
    if (hasAlphaPlane && HasInterleavedAlpha(frame.params.colorComponentOrder)) {
        return EncodeWithInterleavedAlpha(frame);
    }
    PlaneRowsList rows = PictureRows(frame, nullptr);
    const bool codesAlpha = hasAlphaPlane && frame.plan.planes.back().kind->isCoded;
    if (hasAlphaPlane && !codesAlpha) {
        rows.push_back(AlphaRows(frame));
    }
    ConvertPlanes(frame.state.pool, rows);
    if (codesAlpha) {
        CodeAlphaPlane(frame);
    }
}

}  // namespace

uint64_t EncodeFrameBody(CodecState& state, const UncompressedParams& params, const CompressedParams& compressedParams,
                         const uint8_t* src, uint32_t srcSize, uint8_t* dst, uint32_t dstSize) {
    const PictureLayout layout = LayOutPicture(params);
    CheckEncodeParams(params, compressedParams, layout, srcSize);
    EncodedFrame frame = {.state = state,
                          .params = params,
                          .compressedParams = compressedParams,
                          .layout = layout,
                          .plan = PlanFrame(params, compressedParams),
                          .src = src,
                          .srcSize = srcSize,
                          .dst = dst};
    if (dstSize < frame.plan.trueSize) {
        throw invalid_argument("dst size is too small");
    }
    EncodePlanes(frame);
    return WriteFrameBoxes(BoxWriter(dst, dstSize), frame.plan);
}

}  // namespace plenar
