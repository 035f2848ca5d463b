#include "frame/plan_frame.h"

#include "container/box_layout.h"
#include "format/format_planes.h"
#include "format/picture_layout.h"
#include "rle/rle_params.h"

namespace plenar {

namespace {

bool IsChroma(PlaneType type) {
    const PlaneRole role = RoleOfPlane(type);
    return role == PlaneRole::Cb || role == PlaneRole::Cr;
}

PlaneRecord EmptyRecord(PlaneType type, const UncompressedParams& params) {
    PlaneRecord record;
    record.type = type;
    record.width = IsChroma(type) ? HalfUp(params.width) : params.width;
    record.height = IsChroma(type) ? HalfUp(params.height) : params.height;
    record.frame_layout = static_cast<uint8_t>(params.frameLayout);
    return record;
}

uint64_t PlannedPlaneSize(const PlaneRecord& record, const CompressedParams& compressedParams) {
    if (!IsCodedAlpha(record.type)) {
        return PlainPlaneSize(record);
    }
    return RleMaxCodedSize({.width = record.width,
                            .height = record.height,
                            .bitdepth = PlaneBitDepth(record.type),
                            .band_limit = compressedParams.alphaBandLimit,
                            .row_bytes = 0});
}

}  // namespace

FramePlan PlanFrame(const UncompressedParams& params, const CompressedParams& compressedParams) {
    FramePlan plan;
    for (const PlaneType type : FormatPlanesForFrame(params, compressedParams)) {
        PlaneRecord record = EmptyRecord(type, params);
        record.size = static_cast<uint32_t>(PlannedPlaneSize(record, compressedParams));
        plan.planes.push_back(record);
    }
    CheckPlaneCombination(plan.planes);
    AssignPlaneOffsets(plan.planes);
    plan.total_size = plan.planes.back().offset + plan.planes.back().size;
    return plan;
}

uint64_t PlannedSize(const UncompressedParams& params, const CompressedParams& compressedParams) {
    const PlaneTypeList types = FormatPlanesForFrame(params, compressedParams);
    uint64_t size = kBoxHeaderSize;
    for (const PlaneType type : types) {
        size += PlaneOverhead(types.size() > 1) + PlannedPlaneSize(EmptyRecord(type, params), compressedParams);
    }
    return size;
}

}  // namespace plenar
