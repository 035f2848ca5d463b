#include "container/frame_plan.h"

#include <algorithm>

#include "base/exceptions.h"
#include "container/box_layout.h"

namespace plenar {

namespace {

// Planes as bits, by the places of their kinds in the catalogue.
using PlaneSet = uint64_t;

static_assert(kPlaneKinds.size() <= 64, "a PlaneSet has a bit for each kind");

constexpr PlaneSet SetOf(const PlaneKind& kind) {
    return PlaneSet{1} << (&kind - kPlaneKinds.begin());
}

constexpr PlaneSet PictureSetOf(const PlaneKind& primary) {
    PlaneSet set = 0;
    for (const PlaneKind& kind : kPlaneKinds) {
        if (kind.picture == primary.picture && kind.componentType == primary.componentType) {
            set |= SetOf(kind);
        }
    }
    return set;
}

// One picture of one type, alone or with an alpha plane if it takes one; or an alpha plane alone.
constexpr auto kAcceptedPlaneSets = [] {
    FixedList<PlaneSet, 3 * kMaxPlaneKinds> sets;
    for (const PlaneKind& kind : kPlaneKinds) {
        if (kind.role == PlaneRole::Alpha) {
            sets.push_back(SetOf(kind));
        }
    }
    const size_t alphaKinds = sets.size();
    for (const PlaneKind& kind : kPlaneKinds) {
        if (kind.role == PlaneRole::Primary) {
            const PlaneSet picture = PictureSetOf(kind);
            sets.push_back(picture);
            for (size_t alpha = 0; kind.takesAlpha && alpha < alphaKinds; ++alpha) {
                sets.push_back(picture | sets[alpha]);
            }
        }
    }
    std::ranges::sort(sets);
    return sets;
}();

}  // namespace

void CheckPlaneCombination(const PlaneRecordList& planes) {
    PlaneSet set = 0;
    bool twice = false;
    for (const PlaneRecord& plane : planes) {
        const PlaneSet one = SetOf(*plane.kind);
        twice |= (set & one) != 0;
        set |= one;
    }
    if (twice || !std::ranges::binary_search(kAcceptedPlaneSets, set)) {
        throw invalid_argument("Invalid combination of planes");
    }
}

PlaneRoles FindPlaneRoles(const PlaneRecordList& planes) {
    PlaneRoles roles = {.primary = planes.begin()};  // also if it is alpha alone
    for (const PlaneRecord& plane : planes) {
        switch (plane.kind->role) {
            case PlaneRole::Primary:
                roles.primary = &plane;
                break;
            case PlaneRole::Cb:
                roles.cb = &plane;
                break;
            case PlaneRole::Cr:
                roles.cr = &plane;
                break;
            case PlaneRole::Alpha:
                roles.alpha = &plane;
                break;
            case PlaneRole::None:
                throw invalid_argument("unsupported plane type");
        }
    }
    return roles;
}

void AssignPlaneOffsets(FramePlan& plan) {
    const bool multi = plan.planes.size() > 1;
    uint32_t cursor = HeadOverhead(multi);
    for (PlaneRecord& record : plan.planes) {
        if (record.size == 0) {
            record.size = static_cast<uint32_t>(PlainPlaneSize(record));
        }
        if (record.offset == 0) {
            record.offset = cursor;
            cursor = record.offset + record.size + PlaneOverhead(multi);
        } else {
            cursor = record.offset + record.size;
        }
    }
    plan.total_size = plan.planes.back().offset + plan.planes.back().size;
}

}  // namespace plenar
