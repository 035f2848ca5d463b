#include "frame/encode_frame.h"

#include "base/exceptions.h"
#include "container/box_writer.h"
#include "conversion/convert_rows.h"
#include "format/format_planes.h"
#include "format/picture_layout.h"
#include "frame/picture_planes.h"
#include "frame/plan_frame.h"
#include "rle/plane_encoder.h"

namespace plenar {

namespace {

class FrameEncoder {
public:
    FrameEncoder(CodecState& state, const UncompressedParams& params, const CompressedParams& compressedParams,
                 const uint8_t* src, uint32_t srcSize, uint8_t* dst)
        : state_(state),
          params_(params),
          compressedParams_(compressedParams),
          layout_(LayOutPicture(params)),
          plan_(PlanFrame(params, compressedParams)),
          hasAlphaPlane_(FindOrder(params.colorComponentOrder).HasAlpha() &&
                         FormatHasAlphaPlane(LookupFormatPlanes(params), params.colorComponentOrder)),
          src_(src),
          srcSize_(srcSize),
          dst_(dst) {}

    const FramePlan& Plan() const { return plan_; }

    void WritePlanes() {
        if (FindOrder(params_.colorComponentOrder).IsPlanar()) {
            WritePlanar();
        } else {
            WriteInterleaved();
        }
    }

private:
    bool CodesAlpha() const { return hasAlphaPlane_ && compressedParams_.alphaRle != 0; }
    uint8_t* PlaneData(const PlaneRecord& plane) const { return dst_ + plane.offset; }

    // Interleaved alpha goes to its plane right away, or to a buffer where the coder finds it.
    uint8_t* InterleavedAlphaTarget() {
        if (!hasAlphaPlane_ || !HasInterleavedAlpha(params_.colorComponentOrder)) {
            return nullptr;
        }
        return CodesAlpha() ? state_.Scratch(AlphaRowBytes(params_) * params_.height) : PlaneData(plan_.planes.back());
    }

    void WriteInterleaved() {
        const bool interleavedAlpha = HasInterleavedAlpha(params_.colorComponentOrder);
        const PlaneRecord& picture = plan_.planes[0];
        uint8_t* alpha = InterleavedAlphaTarget();
        EncodeRows(state_.Pool(), {.params = params_,
                                   .src = src_,
                                   .rowLength = layout_.rowLength,
                                   .srcStride = layout_.stride,
                                   .dst = PlaneData(picture),
                                   .dstStride = PlaneRowBytes(picture.type, picture.width),
                                   .alphaDst = alpha,
                                   .alphaStride = interleavedAlpha ? AlphaRowBytes(params_) : 0});
        if (CodesAlpha() && interleavedAlpha) {
            CodeAlpha(alpha, AlphaRowBytes(params_) * params_.height);
        } else if (!interleavedAlpha) {
            WriteAlphaPlane();
        }
    }

    void WritePlanar() {
        if (plan_.planes.size() > 1) {
            WritePicturePlane(LumaPlane(params_, layout_), plan_.planes[0]);
            WritePicturePlane(ChromaPlane(params_, layout_, layout_.cb), plan_.planes[1]);
            WritePicturePlane(ChromaPlane(params_, layout_, layout_.cr), plan_.planes[2]);
        }
        WriteAlphaPlane();
    }

    void WritePicturePlane(const PicturePlane& plane, const PlaneRecord& record) {
        EncodeRows(state_.Pool(), {.params = plane.params,
                                   .src = src_ + plane.offset,
                                   .rowLength = plane.rowLength,
                                   .srcStride = plane.stride,
                                   .dst = PlaneData(record),
                                   .dstStride = PlaneRowBytes(record.type, record.width),
                                   .alphaDst = nullptr,
                                   .alphaStride = 0});
    }

    // Alpha that has a plane of its own in the caller's picture.
    void WriteAlphaPlane() {
        if (!hasAlphaPlane_) {
            return;
        }
        if (CodesAlpha()) {
            return CodeAlpha(src_ + layout_.alpha, srcSize_ - layout_.alpha);
        }
        CopyRows(state_.Pool(), {.src = src_ + layout_.alpha,
                                 .srcStride = layout_.alphaStride,
                                 .dst = PlaneData(plan_.planes.back()),
                                 .dstStride = AlphaRowBytes(params_),
                                 .rowLength = AlphaRowBytes(params_),
                                 .rows = params_.height});
    }

    // The alpha plane is the last one, so that its true size moves nothing else.
    void CodeAlpha(const uint8_t* alpha, uint64_t alphaSize) {
        PlaneRecord& plane = plan_.planes.back();
        const uint64_t coded = RleEncodePlane(state_.Pool(), AlphaRleParams(params_, compressedParams_.alphaBandLimit),
                                              alpha, alphaSize, PlaneData(plane), plane.size);
        plan_.total_size -= plane.size - static_cast<uint32_t>(coded);
        plane.size = static_cast<uint32_t>(coded);
    }

    CodecState& state_;
    const UncompressedParams& params_;
    const CompressedParams& compressedParams_;
    const PictureLayout layout_;
    FramePlan plan_;
    const bool hasAlphaPlane_;
    const uint8_t* src_;
    uint32_t srcSize_;
    uint8_t* dst_;
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
