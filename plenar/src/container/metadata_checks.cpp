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
    if (plane.kind->bitDepth != first.kind->bitDepth) {
        throw invalid_argument("planes with different bitdepth is not supported by this decoder");
    }
    if (plane.frame_layout != first.frame_layout) {
        throw invalid_argument("planes with different frame layout is not supported by this decoder");
    }
}

// Whether the plane that is there gives what a format asks for. Coded alpha does as well as plain alpha.
bool Serves(const PlaneKind& present, const PlaneKind& requested) {
    return present.role == requested.role && present.picture == requested.picture &&
           (present.componentType == requested.componentType || IsFixedToFloat(present, requested.componentType));
}

}  // namespace

void CheckPlaneConsistency(const PlaneRecordList& planes, const PlaneRoles& roles) {
    for (const PlaneRecord& plane : planes) {
        CheckSameDepthAndLayout(plane, planes[0]);
    }
    if (roles.cb != nullptr && roles.cr != nullptr) {
        CheckChromaSize(*roles.cb, *roles.primary, "Cb plane width and hight should be half of luma");
        CheckChromaSize(*roles.cr, *roles.primary, "Cr plane width and hight should be half of luma");
    }
    if (roles.alpha != nullptr) {
        CheckAlphaSize(*roles.alpha, *roles.primary);
    }
}

void CheckPlanesAgainstFormat(const PlaneRecordList& planes, const UncompressedParams& params) {
    for (const PlaneKind* requested : LookupFormatPlanes(params)) {
        if (std::ranges::none_of(planes, [&](const PlaneRecord& plane) { return Serves(*plane.kind, *requested); })) {
            throw invalid_argument("src metadata type is incompatible with color component order or component type");
        }
    }
}

void CheckMetadataAgainstParams(const PlaneRecordList& planes, const PlaneRoles& roles,
                                const UncompressedParams& params) {
    const PlaneRecord& primary = *roles.primary;
    if (primary.width != params.width) {
        throw invalid_argument("width in src metadata is different than width in uncompressed params");
    }
    if (primary.height != params.height) {
        throw invalid_argument("height in src metadata is different than height in uncompressed params");
    }
    if (BitDepth(params.componentType) != primary.kind->bitDepth &&
        !IsFixedToFloat(*primary.kind, params.componentType)) {
        throw invalid_argument("bit depth in src metadata is different than bit depth in uncompressed params");
    }
    CheckPlanesAgainstFormat(planes, params);
    if (FindOrder(params.colorComponentOrder).HasAlpha() && !FormatHasAlphaPlane(LookupFormatPlanes(params))) {
        throw invalid_argument("Only 8 and 16 bit alpha is supported");
    }
}

UncompressedParams ReadFrameMetadata(const uint8_t* buffer, uint64_t size) {
    const FramePlan plan = MetadataParser(buffer, size).ParseMetadata();
    const PlaneRoles roles = FindPlaneRoles(plan.planes);
    CheckPlaneConsistency(plan.planes, roles);
    return {.size = sizeof(UncompressedParams),
            .colorComponentOrder = PlaneKindToOrder(*roles.primary->kind, plan.planes.size()),
            .componentType = roles.primary->kind->componentType,
            .width = roles.primary->width,
            .height = roles.primary->height,
            .rowBytes = 0,
            .frameLayout = roles.primary->frame_layout,
            .rowBytes2 = 0};
}

}  // namespace plenar
