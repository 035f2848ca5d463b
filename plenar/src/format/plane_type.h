// The planes of payloads, and what each four-character code says of its plane.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "base/fixed_list.h"
#include "format/order.h"
#include "format/sample_type.h"
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

enum class PlaneRole : uint8_t { None, Primary, Cb, Cr, Alpha };

// What a plane is, whatever its size. Kinds are entries of kPlaneKinds and are handed around by their address.
struct PlaneKind {
    PlaneType type = 0;
    PlaneRole role = PlaneRole::None;
    PictureKind picture = PictureKind::None;  // that the plane holds, or is a part of; none for alpha
    uint8_t samples = 0;                      // of a pixel, chroma shared by two pixels counted once
    bool isCoded = false;                     // runs in place of samples
    bool takesAlpha = false;                  // an alpha plane of any depth may stand beside it
    uint8_t bitDepth = 0;
    uint32_t componentType = 0;
};

struct PlaneColumn {
    PlaneRole role;
    PictureKind picture;
    uint8_t samples;
    bool isCoded;
};

// In the order in which a payload holds the planes of a picture.
inline constexpr PlaneColumn kPlaneColumns[] = {
    {PlaneRole::Primary, PictureKind::YCbCr422, 2, false},  // Cb Y Cr Y for each two pixels
    {PlaneRole::Primary, PictureKind::YCbCr444, 3, false},  // Cb Y Cr
    {PlaneRole::Primary, PictureKind::Rgb, 3, false},       // R G B
    {PlaneRole::Primary, PictureKind::Planar420, 1, false}, {PlaneRole::Cb, PictureKind::Planar420, 1, false},
    {PlaneRole::Cr, PictureKind::Planar420, 1, false},      {PlaneRole::Alpha, PictureKind::None, 1, false},
    {PlaneRole::Alpha, PictureKind::None, 1, true},
};

struct PlaneRow {
    uint32_t componentType;
    bool takesAlpha;
    char codes[std::size(kPlaneColumns)][5];
};

// One row a type of samples, with a code for each column; "" where there is no such plane.
inline constexpr PlaneRow kPlaneRows[] = {
    {Uint8, true, {"y208", "y408", "rg08", " y08", "cb08", "cr08", " a08", "rl08"}},
    {Uint10, true, {"y210", "y410", "rg10", " y10", "cb10", "cr10", "", ""}},
    {Uint12, true, {"y212", "y412", "rg12", " y12", "cb12", "cr12", "", ""}},
    {Uint16, true, {"y216", "y416", "rg16", " y16", "cb16", "cr16", " a16", "rl16"}},
    {Fixed2p14, false, {"y2S1", "y4S1", "rgS1", "", "", "", "", ""}},
    {Half16, false, {" y2h", " y4h", " rgh", "  yh", " cbh", " crh", "", ""}},
    {Float32, false, {" y2f", " y4f", " rgf", "  yf", " cbf", " crf", "", ""}},
};

inline constexpr size_t kMaxPlaneKinds = 1 + std::size(kPlaneRows) * std::size(kPlaneColumns);

// All kinds, row by row. The first stands for unknown codes.
inline constexpr auto kPlaneKinds = [] {
    FixedList<PlaneKind, kMaxPlaneKinds> kinds;
    kinds.push_back({});
    for (const PlaneRow& row : kPlaneRows) {
        for (size_t i = 0; i < std::size(kPlaneColumns); ++i) {
            const PlaneColumn& column = kPlaneColumns[i];
            if (const PlaneType type = FourCC(row.codes[i]); type != 0) {
                kinds.push_back({type, column.role, column.picture, column.samples, column.isCoded, row.takesAlpha,
                                 BitDepth(row.componentType), row.componentType});
            }
        }
    }
    return kinds;
}();

inline constexpr const PlaneKind& kUnknownPlane = kPlaneKinds[0];

// The kind of plane that a code in a payload stands for, which may use an alternative spelling; kUnknownPlane if none.
const PlaneKind& NormalizePlaneType(uint32_t code);

// The samples of a row of `width` pixels; wraps at 32 bits. In 4:2:2 the last pixel of an odd width has both chroma
// samples to itself.
constexpr uint32_t PlaneRowSamples(const PlaneKind& kind, uint32_t width) {
    return kind.samples * width + (kind.picture == PictureKind::YCbCr422 ? width & 1 : 0);
}

// The bytes of a row as it is stored: samples without padding between them, the row filled up to a whole byte.
constexpr uint64_t PlaneRowBytes(const PlaneKind& kind, uint32_t width) {
    return (uint64_t{kind.bitDepth} * PlaneRowSamples(kind, width) + 7) >> 3;
}

// The order that a payload of `planeCount` planes with such a primary plane stands for. Throws invalid_argument for a
// kind that can't be primary.
ColorComponentOrder PlaneKindToOrder(const PlaneKind& primary, uint64_t planeCount);

}  // namespace plenar
