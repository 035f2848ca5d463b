// Whether the planes of a payload agree with one another and with what a caller asks for.
#pragma once

#include <cstdint>
#include <limits>

#include "container/frame_plan.h"
#include "plenar_sdk.h"

namespace plenar {

// Indices into a plane list.
struct PlaneRoles {
    static constexpr uint64_t kNone = std::numeric_limits<uint64_t>::max();

    uint64_t primary = kNone;  // gives the frame its width, height, layout and format; alpha alone is primary too
    uint64_t alpha = kNone;
    uint64_t cb = kNone;
    uint64_t cr = kNone;
};

// All failures here are invalid_argument.
PlaneRoles FindPlaneRoles(const PlaneRecordList& planes);
void CheckPlaneConsistency(const PlaneRecordList& planes);
void CheckPlanesAgainstFormat(const PlaneRecordList& planes, const UncompressedParams& params);
void CheckMetadataAgainstParams(const PlaneRecordList& planes, const UncompressedParams& params);

// What a payload holds, as a record with strides of 0.
UncompressedParams ReadFrameMetadata(const uint8_t* buffer, uint64_t size);

}  // namespace plenar
