#include "plenar/encode_driver.h"

#include "container/box_writer.h"
#include "container/format_map.h"
#include "container/frame_plan.h"
#include "conversion/convert_rows.h"
#include "plenar/exceptions.h"
#include "plenar/params.h"
#include "plenar/picture_planes.h"
#include "rle/plane_encoder.h"

namespace plenar {

namespace {

class FrameEncoder {
public:
    FrameEncoder(CodecState& state, const UncompressedParams& params, const CompressedParams& compressedParams,
                 const uint8_t* src, uint32_t srcSize, uint8_t* dst)
        : state(state),
          params(params),
          compressedParams(compressedParams),
          layout(LayOutPicture(params)),
          plan(PlanFrame(params, compressedParams)),
          hasAlphaPlane(HasAlpha(params.colorComponentOrder) &&
                        FormatHasAlphaPlane(LookupFormatPlanes(params), params.colorComponentOrder)),
          src(src),
          srcSize(srcSize),
          dst(dst) {}

    const FramePlan& Plan() const { return plan; }

    void WritePlanes() {
        if (IsPlanarOrder(params.colorComponentOrder)) {
            WritePlanar();
        } else {
            WriteInterleaved();
        }
    }

private:
    bool CodesAlpha() const { return hasAlphaPlane && compressedParams.alphaRle != 0; }
    uint8_t* PlaneData(const PlaneRecord& plane) const { return dst + plane.offset; }

    // Interleaved alpha goes to its plane right away, or to a buffer where the coder finds it.
    uint8_t* InterleavedAlphaTarget() {
        if (!hasAlphaPlane || !HasInterleavedAlpha(params.colorComponentOrder)) {
            return nullptr;
        }
        return CodesAlpha() ? state.Scratch(AlphaRowBytes(params) * params.height) : PlaneData(plan.planes.back());
    }

    void WriteInterleaved() {
        const bool interleavedAlpha = HasInterleavedAlpha(params.colorComponentOrder);
        const PlaneRecord& picture = plan.planes[0];
        uint8_t* alpha = InterleavedAlphaTarget();
        EncodeRows(state, {.params = params,
                           .src = src,
                           .rowLength = layout.rowLength,
                           .srcStride = layout.stride,
                           .dst = PlaneData(picture),
                           .dstStride = PlaneRowBytes(picture.type, picture.width),
                           .alphaDst = alpha,
                           .alphaStride = interleavedAlpha ? AlphaRowBytes(params) : 0});
        if (CodesAlpha() && interleavedAlpha) {
            CodeAlpha(alpha, AlphaRowBytes(params) * params.height);
        } else if (!interleavedAlpha) {
            WriteAlphaPlane();
        }
    }

    void WritePlanar() {
        if (plan.planes.size() > 1) {
            WritePicturePlane(LumaPlane(params, layout), plan.planes[0]);
            WritePicturePlane(ChromaPlane(params, layout, layout.cb), plan.planes[1]);
            WritePicturePlane(ChromaPlane(params, layout, layout.cr), plan.planes[2]);
        }
        WriteAlphaPlane();
    }

    void WritePicturePlane(const PicturePlane& plane, const PlaneRecord& record) {
        EncodeRows(state, {.params = plane.params,
                           .src = src + plane.offset,
                           .rowLength = plane.rowLength,
                           .srcStride = plane.stride,
                           .dst = PlaneData(record),
                           .dstStride = PlaneRowBytes(record.type, record.width),
                           .alphaDst = nullptr,
                           .alphaStride = 0});
    }

    // Alpha that has a plane of its own in the caller's picture.
    void WriteAlphaPlane() {
        if (!hasAlphaPlane) {
            return;
        }
        if (CodesAlpha()) {
            return CodeAlpha(src + layout.alpha, srcSize - layout.alpha);
        }
        CopyRows(state, {.src = src + layout.alpha,
                         .srcStride = layout.alphaStride,
                         .dst = PlaneData(plan.planes.back()),
                         .dstStride = AlphaRowBytes(params),
                         .rowLength = AlphaRowBytes(params),
                         .rows = params.height});
    }

    // The alpha plane is the last one, so that its true size moves nothing else.
    void CodeAlpha(const uint8_t* alpha, uint64_t alphaSize) {
        PlaneRecord& plane = plan.planes.back();
        const uint64_t coded = RleEncodePlane(state.Pool(), AlphaRleParams(params, compressedParams.alphaBandLimit),
                                              alpha, alphaSize, PlaneData(plane), plane.size);
        plan.total_size -= plane.size - static_cast<uint32_t>(coded);
        plane.size = static_cast<uint32_t>(coded);
    }

    CodecState& state;
    const UncompressedParams& params;
    const CompressedParams& compressedParams;
    const PictureLayout layout;
    FramePlan plan;
    const bool hasAlphaPlane;
    const uint8_t* src;
    uint32_t srcSize;
    uint8_t* dst;
};

}  // namespace

uint64_t EncodeFrameBody(CodecState& state, const UncompressedParams& params, const CompressedParams& compressedParams,
                         const uint8_t* src, uint32_t srcSize, uint8_t* dst, uint32_t dstSize) {
    CheckEncodeParams(params, compressedParams, srcSize);
    FrameEncoder frame(state, params, compressedParams, src, srcSize, dst);
    // The second comparison catches a plan that wrapped at 32 bits.
    if (dstSize < frame.Plan().total_size || dstSize < PlannedSize(params, compressedParams)) {
        throw invalid_argument("dst size is too small");
    }
    frame.WritePlanes();
    return WriteFrameBoxes(BoxWriter(dst, dstSize), frame.Plan());
}

}  // namespace plenar
