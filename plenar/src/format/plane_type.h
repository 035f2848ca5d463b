// The catalogue of plane codes: what each four-character code says of its plane.
#pragma once

#include <cstdint>

#include "plenar_sdk.h"

namespace plenar {

// A four-character code, first letter in the least significant byte. 0 stands for an unknown code.
using PlaneType = uint32_t;

constexpr PlaneType FourCC(const char (&code)[5]) {
    PlaneType value = 0;
    for (int i = 3; i >= 0; --i) {
        value = value << 8 | static_cast<uint8_t>(code[i]);
    }
    return value;
}

namespace plane {
inline constexpr PlaneType a08 = FourCC(" a08");
inline constexpr PlaneType a16 = FourCC(" a16");
inline constexpr PlaneType rl08 = FourCC("rl08");
inline constexpr PlaneType rl16 = FourCC("rl16");
}  // namespace plane

enum class PlaneRole { None, Primary, Cb, Cr, Alpha };

PlaneRole RoleOfPlane(PlaneType type);

// 422 and 444 for interleaved planes, 1 for planes of a single component, 0 for an unknown code.
uint32_t PlaneSamplingClass(PlaneType type);

uint8_t PlaneBitDepth(PlaneType type);  // 0 for an unknown code

bool IsCodedAlpha(PlaneType type);
bool IsFixedPoint(PlaneType type);

// The samples of a row of `width` pixels; wraps at 32 bits.
uint32_t PlaneRowSamples(PlaneType type, uint32_t width);

// The bytes of a row as it is stored: samples without padding between them, the row filled up to a whole byte.
uint64_t PlaneRowBytes(PlaneType type, uint32_t width);

// The catalogue's code for a code found in a payload, which may use an alternative spelling; 0 when there is none.
PlaneType NormalizePlaneType(uint32_t code);

// The order and the type that a payload of `planeCount` planes with the primary plane `type` stands for. Both throw
// invalid_argument for a code that can't be primary.
ColorComponentOrder PlaneKindToOrder(PlaneType type, uint64_t planeCount);
ComponentType PlaneTypeToComponentType(PlaneType type);

}  // namespace plenar
