#include "container/frame_plan.h"

#include <algorithm>
#include <array>
#include <initializer_list>

#include "base/exceptions.h"
#include "container/box_layout.h"

namespace plenar {

namespace {

// The pictures that a payload may hold, one or three planes, and whether an alpha plane may stand beside them.
struct PictureSet {
    std::array<PlaneType, 3> planes;
    bool takesAlpha;
};

constexpr PictureSet kPictureSets[] = {
    {{FourCC("y208")}, true},
    {{FourCC("y408")}, true},
    {{FourCC("y210")}, true},
    {{FourCC("y410")}, true},
    {{FourCC("y212")}, true},
    {{FourCC("y412")}, true},
    {{FourCC("y216")}, true},
    {{FourCC("y416")}, true},
    {{FourCC("rg08")}, true},
    {{FourCC("rg10")}, true},
    {{FourCC("rg12")}, true},
    {{FourCC("rg16")}, true},
    {{FourCC(" y08"), FourCC("cb08"), FourCC("cr08")}, true},
    {{FourCC(" y10"), FourCC("cb10"), FourCC("cr10")}, true},
    {{FourCC(" y12"), FourCC("cb12"), FourCC("cr12")}, true},
    {{FourCC(" y16"), FourCC("cb16"), FourCC("cr16")}, true},
    {{FourCC("y2S1")}, false},
    {{FourCC("y4S1")}, false},
    {{FourCC("rgS1")}, false},
    {{FourCC(" y2h")}, false},
    {{FourCC(" y4h")}, false},
    {{FourCC(" y2f")}, false},
    {{FourCC(" y4f")}, false},
    {{FourCC(" rgh")}, false},
    {{FourCC(" rgf")}, false},
    {{FourCC("  yh"), FourCC(" cbh"), FourCC(" crh")}, false},
    {{FourCC("  yf"), FourCC(" cbf"), FourCC(" crf")}, false},
};

size_t CountPlanes(const PictureSet& set) {
    return static_cast<size_t>(std::ranges::count_if(set.planes, [](PlaneType type) { return type != 0; }));
}

bool HasDuplicates(const PlaneRecordList& planes) {
    for (const PlaneRecord& a : planes) {
        if (std::ranges::count(planes, a.type, &PlaneRecord::type) != 1) {
            return true;
        }
    }
    return false;
}

// The picture planes of the list are just those of the set. The list has no duplicates.
bool HoldsPicture(const PlaneRecordList& planes, size_t pictureCount, const PictureSet& set) {
    return pictureCount == CountPlanes(set) && std::ranges::all_of(planes, [&](const PlaneRecord& plane) {
               return RoleOfPlane(plane.type) == PlaneRole::Alpha ||
                      (plane.type != 0 && std::ranges::count(set.planes, plane.type) != 0);
           });
}

bool IsAcceptedCombination(const PlaneRecordList& planes) {
    const auto alphaCount = static_cast<size_t>(std::ranges::count_if(
        planes, [](const PlaneRecord& plane) { return RoleOfPlane(plane.type) == PlaneRole::Alpha; }));
    const size_t pictureCount = planes.size() - alphaCount;
    if (HasDuplicates(planes) || alphaCount > 1) {
        return false;
    }
    if (pictureCount == 0) {
        return alphaCount == 1;
    }
    return std::ranges::any_of(kPictureSets, [&](const PictureSet& set) {
        return (alphaCount == 0 || set.takesAlpha) && HoldsPicture(planes, pictureCount, set);
    });
}

}  // namespace

uint64_t PlainPlaneSize(const PlaneRecord& record) {
    return record.height * PlaneRowBytes(record.type, record.width);
}

void CheckPlaneCombination(const PlaneRecordList& planes) {
    if (!IsAcceptedCombination(planes)) {
        throw invalid_argument("Invalid combination of planes");
    }
}

void AssignPlaneOffsets(PlaneRecordList& planes) {
    const bool multi = planes.size() > 1;
    uint32_t cursor = HeadOverhead(multi);
    for (PlaneRecord& record : planes) {
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
}

}  // namespace plenar
