// The formats: which planes stand for a pair of order and type, in the order in which a payload holds them.
#pragma once

#include "base/fixed_list.h"
#include "format/plane_type.h"
#include "plenar_sdk.h"

namespace plenar {

inline constexpr size_t kMaxFormatPlanes = 4;

using PlaneTypeList = FixedList<PlaneType, kMaxFormatPlanes>;

// Picture planes first, alpha last. Throws invalid_argument for an unsupported pair.
PlaneTypeList LookupFormatPlanes(const UncompressedParams& params);

// The same with the alpha plane exchanged for its coded kind where alphaRle asks for it.
PlaneTypeList FormatPlanesForFrame(const UncompressedParams& params, const CompressedParams& compressedParams);

// Whether a format's list holds an alpha plane.
bool FormatHasAlphaPlane(const PlaneTypeList& planes, uint32_t colorComponentOrder);

}  // namespace plenar
