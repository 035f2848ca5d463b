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

// Writes the caller's picture from planes that passed all checks against it: each plane that the picture needs is
// there, has the size that the picture gives it, and lies within `src`, coded alpha excepted.
class FrameDecoder {
public:
    FrameDecoder(CodecState& state, const UncompressedParams& params, const PlaneRecordList& planes, const uint8_t* src,
                 uint32_t srcSize, uint8_t* dst, uint32_t dstSize)
        : state_(state),
          params_(params),
          planes_(planes),
          roles_(FindPlaneRoles(planes)),
          layout_(LayOutPicture(params)),
          src_(src),
          srcSize_(srcSize),
          dst_(dst),
          dstSize_(dstSize) {}

    void WritePicture() {
        const uint32_t order = params_.colorComponentOrder;
        if (SubsamplingClass(order) == 420) {
            WritePicturePlane(LumaPlane(params_, layout_), planes_[roles_.primary]);
            WritePicturePlane(ChromaPlane(params_, layout_, layout_.cb), planes_[roles_.cb]);
            WritePicturePlane(ChromaPlane(params_, layout_, layout_.cr), planes_[roles_.cr]);
        } else if (order != AlphaOnly) {
            WriteInterleaved();
        }
        if (FindOrder(order).HasAlpha() && !HasInterleavedAlpha(order)) {
            WriteAlphaPlane();
        }
    }

private:
    const uint8_t* PlaneData(const PlaneRecord& plane) const { return src_ + plane.offset; }

    void WritePicturePlane(const PicturePlane& plane, const PlaneRecord& record) {
        DecodeRows(state_.Pool(), {.params = plane.params,
                                   .fixedToFloat = false,
                                   .plane = PlaneData(record),
                                   .planeStride = PlaneRowBytes(record.type, record.width),
                                   .planeEnd = src_ + srcSize_,
                                   .alpha = nullptr,
                                   .alphaStride = 0,
                                   .dst = dst_ + plane.offset,
                                   .rowLength = plane.rowLength,
                                   .dstStride = plane.stride});
    }

    void WriteInterleaved() {
        const bool interleavedAlpha = HasInterleavedAlpha(params_.colorComponentOrder);
        const PlaneRecord& picture = planes_[roles_.primary];
        DecodeRows(state_.Pool(), {.params = params_,
                                   .fixedToFloat = IsFixedPoint(picture.type) && params_.componentType == Float32,
                                   .plane = PlaneData(picture),
                                   .planeStride = PlaneRowBytes(picture.type, picture.width),
                                   .planeEnd = src_ + srcSize_,
                                   .alpha = interleavedAlpha ? InterleavedAlpha() : nullptr,
                                   .alphaStride = interleavedAlpha ? AlphaRowBytes(params_) : 0,
                                   .dst = dst_,
                                   .rowLength = layout_.rowLength,
                                   .dstStride = layout_.stride});
    }

    // The rows of alpha samples that go among the others, without padding.
    const uint8_t* InterleavedAlpha() {
        const PlaneRecord& alpha = planes_[roles_.alpha];
        if (!IsCodedAlpha(alpha.type)) {
            return PlaneData(alpha);
        }
        const uint64_t size = AlphaRowBytes(params_) * params_.height;
        uint8_t* plain = state_.Scratch(size);
        // A plane without bands decodes to nothing, and what an earlier frame left must not come out as its alpha.
        if (RleStatedBands(PlaneData(alpha), CodedSize(alpha)) == 0) {
            std::fill_n(plain, size, uint8_t{0});
        }
        DecodeAlpha(alpha, plain, size);
        return plain;
    }

    void WriteAlphaPlane() {
        const PlaneRecord& alpha = planes_[roles_.alpha];
        if (IsCodedAlpha(alpha.type)) {
            return DecodeAlpha(alpha, dst_ + layout_.alpha, dstSize_ - layout_.alpha);
        }
        CopyRows(state_.Pool(), {.src = PlaneData(alpha),
                                 .srcStride = AlphaRowBytes(params_),
                                 .dst = dst_ + layout_.alpha,
                                 .dstStride = layout_.alphaStride,
                                 .rowLength = AlphaRowBytes(params_),
                                 .rows = params_.height});
    }

    // The size that the box states, as far as the payload reaches.
    uint64_t CodedSize(const PlaneRecord& alpha) const { return std::min(alpha.size, srcSize_ - alpha.offset); }

    void DecodeAlpha(const PlaneRecord& alpha, uint8_t* target, uint64_t targetSize) {
        RleDecodePlane(state_.Pool(), AlphaRleParams(params_, 0), PlaneData(alpha), CodedSize(alpha), target,
                       targetSize);
    }

    CodecState& state_;
    const UncompressedParams& params_;
    const PlaneRecordList& planes_;
    const PlaneRoles roles_;
    const PictureLayout layout_;
    const uint8_t* src_;
    uint32_t srcSize_;
    uint8_t* dst_;
    uint32_t dstSize_;
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
