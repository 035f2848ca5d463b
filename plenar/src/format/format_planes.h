// The formats: which planes stand for a pair of order and type, in the order in which a payload holds them.
#pragma once

#include "base/fixed_list.h"
#include "format/plane_type.h"
#include "plenar_sdk.h"

namespace plenar {

inline constexpr size_t kMaxFormatPlanes = 4;

using PlaneKindList = FixedList<const PlaneKind*, kMaxFormatPlanes>;

// Picture planes first, alpha last. Throws invalid_argument for an unsupported pair.
const PlaneKindList& LookupFormatPlanes(const UncompressedParams& params);

// False for an order with alpha whose samples have a type that no alpha plane holds: their alpha is dropped.
inline bool FormatHasAlphaPlane(const PlaneKindList& planes) {
    return planes.back()->role == PlaneRole::Alpha;
}

// The planes of a payload: as above, with the alpha plane exchanged for its coded kind where alphaRle asks for it.
const PlaneKindList& FormatPlanesForFrame(const UncompressedParams& params, const CompressedParams& compressedParams);

}  // namespace plenar
