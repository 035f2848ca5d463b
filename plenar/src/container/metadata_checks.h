// Whether the planes of a payload agree with one another and with what a caller asks for.
#pragma once

#include <cstdint>

#include "container/frame_plan.h"
#include "plenar_sdk.h"

namespace plenar {

// All failures here are invalid_argument. Lists have passed CheckPlaneCombination, and roles are those of the list.
void CheckPlaneConsistency(const PlaneRecordList& planes, const PlaneRoles& roles);
void CheckPlanesAgainstFormat(const PlaneRecordList& planes, const UncompressedParams& params);
void CheckMetadataAgainstParams(const PlaneRecordList& planes, const PlaneRoles& roles,
                                const UncompressedParams& params);

// The one pair of types that a decode converts: a fixed-point plane for a caller who wants Float32.
constexpr bool IsFixedToFloat(const PlaneKind& plane, uint32_t componentType) {
    return plane.componentType == Fixed2p14 && componentType == Float32;
}

// What a payload holds, as a record with strides of 0.
UncompressedParams ReadFrameMetadata(const uint8_t* buffer, uint64_t size);

}  // namespace plenar
