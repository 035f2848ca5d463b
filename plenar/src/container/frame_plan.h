// The planes of a frame with their places in a payload, planned for an encode or read from a payload.
#pragma once

#include <cstdint>

#include "base/fixed_list.h"
#include "format/format_planes.h"
#include "format/plane_type.h"

namespace plenar {

// One plane. Offsets and sizes are in bytes and wrap at 32 bits.
struct PlaneRecord {
    PlaneType type = 0;
    const PlaneKind* kind = &kUnknownPlane;  // what the type stands for
    uint32_t width = 0;
    uint32_t height = 0;
    uint8_t frame_layout = 0;
    uint32_t offset = 0;  // from the payload's first byte to the plane's data; 0: not assigned yet
    uint32_t size = 0;    // of the plane's data; 0: not known yet
};

// One more than a legal frame has, so that a payload with too many planes shows.
using PlaneRecordList = FixedList<PlaneRecord, kMaxFormatPlanes + 1>;

struct FramePlan {
    PlaneRecordList planes;
    uint32_t total_size = 0;  // bytes up to the end of the last plane, the outer box included
    uint64_t trueSize = 0;    // of a frame that is to be encoded: the same without the wrap at 32 bits
};

// The planes of a list by their part in the frame. Null where there is none.
struct PlaneRoles {
    const PlaneRecord* primary = nullptr;  // gives the frame its width, height, layout and format
    const PlaneRecord* cb = nullptr;
    const PlaneRecord* cr = nullptr;
    const PlaneRecord* alpha = nullptr;  // an alpha plane alone is primary too
};

// The bytes of a plane's samples.
inline uint64_t PlainPlaneSize(const PlaneRecord& record) {
    return record.height * PlaneRowBytes(*record.kind, record.width);
}

// Throws invalid_argument unless the planes, in any order, are a set that a payload may hold.
void CheckPlaneCombination(const PlaneRecordList& planes);

// For a list that has passed. Throws invalid_argument for a plane that has no role.
PlaneRoles FindPlaneRoles(const PlaneRecordList& planes);

// Fills in the sizes and offsets that are still 0, and total_size.
void AssignPlaneOffsets(FramePlan& plan);

}  // namespace plenar
