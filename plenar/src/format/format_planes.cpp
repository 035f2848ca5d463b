#include "format/format_planes.h"

#include <algorithm>
#include <iterator>

#include "base/exceptions.h"

namespace plenar {

namespace {

constexpr PlaneKindList PlanesOf(const Order& order, uint32_t componentType, bool codesAlpha) {
    PlaneKindList planes;
    for (const PlaneKind& kind : kPlaneKinds) {
        const bool isAlpha = kind.role == PlaneRole::Alpha;
        if (kind.componentType == componentType && kind.isCoded == (isAlpha && codesAlpha) &&
            (isAlpha ? order.HasAlpha() : kind.picture == order.picture)) {
            planes.push_back(&kind);
        }
    }
    return planes;
}

// The planes by order, by row of kPlaneRows, and by whether alpha is coded. Empty where the pair is not supported.
struct FormatPlaneMap {
    PlaneKindList planes[std::size(kOrders)][std::size(kPlaneRows)][2];
};

constexpr FormatPlaneMap kFormatPlaneMap = [] {
    FormatPlaneMap map;
    for (size_t order = 0; order < std::size(kOrders); ++order) {
        for (size_t row = 0; row < std::size(kPlaneRows); ++row) {
            for (const bool codesAlpha : {false, true}) {
                map.planes[order][row][codesAlpha] =
                    PlanesOf(kOrders[order], kPlaneRows[row].componentType, codesAlpha);
            }
        }
    }
    return map;
}();

const PlaneKindList& FindPlanes(const UncompressedParams& params, bool codesAlpha) {
    const uint32_t order = params.colorComponentOrder;
    // The two types differ in the caller's memory alone; only one order is ever packed.
    const uint32_t type = params.componentType == Packed10 && order == CbYCrY ? Uint10 : params.componentType;
    const auto row =
        static_cast<size_t>(std::ranges::find(kPlaneRows, type, &PlaneRow::componentType) - std::begin(kPlaneRows));
    if (row < std::size(kPlaneRows) && FindOrder(order).IsKnown()) {
        const PlaneKindList& planes = kFormatPlaneMap.planes[order - YCbYCr][row][codesAlpha];
        if (!planes.empty()) {
            return planes;
        }
    }
    throw invalid_argument("combination of color component order and component type is not supported");
}

}  // namespace

const PlaneKindList& LookupFormatPlanes(const UncompressedParams& params) {
    return FindPlanes(params, false);
}

const PlaneKindList& FormatPlanesForFrame(const UncompressedParams& params, const CompressedParams& compressedParams) {
    return FindPlanes(params, compressedParams.alphaRle != 0);
}

}  // namespace plenar
