#include "frame/plan_frame.h"

#include "container/box_layout.h"
#include "format/format_planes.h"
#include "format/picture_layout.h"
#include "rle/rle_params.h"

namespace plenar {

namespace {

PlaneRecord RecordFor(const PlaneKind& kind, const UncompressedParams& params) {
    const bool isChroma = kind.role == PlaneRole::Cb || kind.role == PlaneRole::Cr;
    PlaneRecord record;
    record.type = kind.type;
    record.kind = &kind;
    record.width = isChroma ? HalfUp(params.width) : params.width;
    record.height = isChroma ? HalfUp(params.height) : params.height;
    record.frame_layout = static_cast<uint8_t>(params.frameLayout);
    return record;
}

uint64_t PlannedPlaneSize(const PlaneRecord& record, const CompressedParams& compressedParams) {
    if (!record.kind->isCoded) {
        return PlainPlaneSize(record);
    }
    return RleMaxCodedSize({.width = record.width,
                            .height = record.height,
                            .bitdepth = record.kind->bitDepth,
                            .band_limit = compressedParams.alphaBandLimit,
                            .row_bytes = 0});
}

}  // namespace

FramePlan PlanFrame(const UncompressedParams& params, const CompressedParams& compressedParams) {
    const PlaneKindList& kinds = FormatPlanesForFrame(params, compressedParams);
    FramePlan plan;
    plan.trueSize = kBoxHeaderSize;
    for (const PlaneKind* kind : kinds) {
        PlaneRecord record = RecordFor(*kind, params);
        const uint64_t size = PlannedPlaneSize(record, compressedParams);
        record.size = static_cast<uint32_t>(size);
        plan.planes.push_back(record);
        plan.trueSize += PlaneOverhead(kinds.size() > 1) + size;
    }
    AssignPlaneOffsets(plan);
    return plan;
}

}  // namespace plenar
