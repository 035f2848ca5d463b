#include "container/metadata_checks.h"

#include <algorithm>

#include "base/exceptions.h"
#include "container/box_reader.h"
#include "format/picture_layout.h"

namespace plenar {

namespace {

void CheckAlphaSize(const PlaneRecord& alpha, const PlaneRecord& picture) {
    if (alpha.width != picture.width || alpha.height != picture.height) {
        throw invalid_argument("Alpha plane with different width or height is not supported by this decoder");
    }
}

void CheckChromaSize(const PlaneRecord& chroma, const PlaneRecord& luma, const char* message) {
    if (chroma.width != HalfUp(luma.width) || chroma.height != HalfUp(luma.height)) {
        throw invalid_argument(message);
    }
}

void CheckSameDepthAndLayout(const PlaneRecord& plane, const PlaneRecord& first) {
    if (PlaneBitDepth(plane.type) != PlaneBitDepth(first.type)) {
        throw invalid_argument("planes with different bitdepth is not supported by this decoder");
    }
    if (plane.frame_layout != first.frame_layout) {
        throw invalid_argument("planes with different frame layout is not supported by this decoder");
    }
}

// Planes that serve a request for another plane.
struct Substitute {
    PlaneType requested;
    PlaneType present;
};

constexpr Substitute kSubstitutes[] = {
    {plane::a08, plane::rl08},        {plane::a16, plane::rl16},        {FourCC(" y2f"), FourCC("y2S1")},
    {FourCC(" y4f"), FourCC("y4S1")}, {FourCC(" rgf"), FourCC("rgS1")},
};

bool Holds(const PlaneRecordList& planes, PlaneType type) {
    return std::ranges::count(planes, type, &PlaneRecord::type) != 0;
}

bool Serves(const PlaneRecordList& planes, PlaneType requested) {
    return Holds(planes, requested) || std::ranges::any_of(kSubstitutes, [&](const Substitute& substitute) {
               return substitute.requested == requested && Holds(planes, substitute.present);
           });
}

}  // namespace

PlaneRoles FindPlaneRoles(const PlaneRecordList& planes) {
    PlaneRoles roles;
    for (uint64_t i = 0; i < planes.size(); ++i) {
        switch (RoleOfPlane(planes[i].type)) {
            case PlaneRole::Primary:
                roles.primary = i;
                break;
            case PlaneRole::Cb:
                roles.cb = i;
                break;
            case PlaneRole::Cr:
                roles.cr = i;
                break;
            case PlaneRole::Alpha:
                roles.alpha = i;
                if (planes.size() == 1) {
                    roles.primary = i;
                }
                break;
            case PlaneRole::None:
                throw invalid_argument("unsupported plane type");
        }
    }
    return roles;
}

void CheckPlaneConsistency(const PlaneRecordList& planes) {
    if (planes.size() < 2) {
        return;
    }
    std::for_each(planes.begin() + 1, planes.end(),
                  [&](const PlaneRecord& plane) { CheckSameDepthAndLayout(plane, planes[0]); });
    if (planes.size() == 2) {
        return CheckAlphaSize(planes[1], planes[0]);
    }
    const PlaneRoles roles = FindPlaneRoles(planes);
    const PlaneRecord& luma = planes[roles.primary];
    CheckChromaSize(planes[roles.cb], luma, "Cb plane width and hight should be half of luma");
    CheckChromaSize(planes[roles.cr], luma, "Cr plane width and hight should be half of luma");
    if (planes.size() > 3) {
        CheckAlphaSize(planes[roles.alpha], luma);
    }
}

void CheckPlanesAgainstFormat(const PlaneRecordList& planes, const UncompressedParams& params) {
    if (!std::ranges::all_of(LookupFormatPlanes(params), [&](PlaneType type) { return Serves(planes, type); })) {
        throw invalid_argument("src metadata type is incompatible with color component order or component type");
    }
}

void CheckMetadataAgainstParams(const PlaneRecordList& planes, const UncompressedParams& params) {
    const PlaneRecord& primary = planes[FindPlaneRoles(planes).primary];
    if (primary.width != params.width) {
        throw invalid_argument("width in src metadata is different than width in uncompressed params");
    }
    if (primary.height != params.height) {
        throw invalid_argument("height in src metadata is different than height in uncompressed params");
    }
    const bool fixedToFloat = IsFixedPoint(primary.type) && params.componentType == Float32;
    if (!fixedToFloat && BitDepth(params.componentType) != PlaneBitDepth(primary.type)) {
        throw invalid_argument("bit depth in src metadata is different than bit depth in uncompressed params");
    }
    CheckPlanesAgainstFormat(planes, params);
    if (FindOrder(params.colorComponentOrder).HasAlpha() && params.componentType != Uint8 &&
        params.componentType != Uint16) {
        throw invalid_argument("Only 8 and 16 bit alpha is supported");
    }
}

UncompressedParams ReadFrameMetadata(const uint8_t* buffer, uint64_t size) {
    const FramePlan plan = MetadataParser(buffer, size).ParseMetadata();
    CheckPlaneConsistency(plan.planes);
    const PlaneRecord& primary = plan.planes[FindPlaneRoles(plan.planes).primary];
    UncompressedParams params = {};
    params.size = sizeof params;
    params.colorComponentOrder = PlaneKindToOrder(primary.type, plan.planes.size());
    params.componentType = PlaneTypeToComponentType(primary.type);
    params.width = primary.width;
    params.height = primary.height;
    params.frameLayout = primary.frame_layout;
    return params;
}

}  // namespace plenar
