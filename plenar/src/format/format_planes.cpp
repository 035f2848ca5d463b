#include "format/format_planes.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "base/exceptions.h"
#include "format/picture_layout.h"

namespace plenar {

namespace {

// What the orders of one row of the table share: the planes of the picture, and whether alpha stands behind them.
enum class PictureKind { YCbCr422, YCbCr444, Rgb, Planar420, None };

struct OrderEntry {
    PictureKind picture;
    bool alpha;
};

constexpr OrderEntry kOrderEntries[] = {
    {PictureKind::YCbCr422, false},   // YCbYCr
    {PictureKind::YCbCr422, false},   // CbYCrY
    {PictureKind::Rgb, true},         // ARGB
    {PictureKind::Rgb, true},         // BGRA
    {PictureKind::Rgb, false},        // RGB
    {PictureKind::Rgb, false},        // BGR
    {PictureKind::Rgb, true},         // RGBA
    {PictureKind::Rgb, true},         // ABGR
    {PictureKind::YCbCr444, false},   // CbYCr
    {PictureKind::Planar420, false},  // YCbCr420Planar
    {PictureKind::YCbCr422, true},    // CbYACrYA
    {PictureKind::YCbCr444, true},    // YCbCrA
    {PictureKind::Planar420, true},   // YCbCrA420Planar
    {PictureKind::None, true},        // AlphaOnly
    {PictureKind::YCbCr422, true},    // YCbYCrPlusAlpha
    {PictureKind::YCbCr422, true},    // CbYCrYPlusAlpha
};

// The planes that a type gives each kind of picture. 0 means none.
struct TypeEntry {
    uint32_t componentType;
    PlaneType ycbcr422;
    PlaneType ycbcr444;
    PlaneType rgb;
    std::array<PlaneType, 3> planar420;
    PlaneType alpha;
};

constexpr TypeEntry kTypes[] = {
    {Uint8,
     FourCC("y208"),
     FourCC("y408"),
     FourCC("rg08"),
     {FourCC(" y08"), FourCC("cb08"), FourCC("cr08")},
     plane::a08},
    {Uint10, FourCC("y210"), FourCC("y410"), FourCC("rg10"), {FourCC(" y10"), FourCC("cb10"), FourCC("cr10")}, 0},
    {Uint12, FourCC("y212"), FourCC("y412"), FourCC("rg12"), {FourCC(" y12"), FourCC("cb12"), FourCC("cr12")}, 0},
    {Uint16,
     FourCC("y216"),
     FourCC("y416"),
     FourCC("rg16"),
     {FourCC(" y16"), FourCC("cb16"), FourCC("cr16")},
     plane::a16},
    {Fixed2p14, FourCC("y2S1"), FourCC("y4S1"), FourCC("rgS1"), {}, 0},
    {Half16, FourCC(" y2h"), FourCC(" y4h"), FourCC(" rgh"), {FourCC("  yh"), FourCC(" cbh"), FourCC(" crh")}, 0},
    {Float32, FourCC(" y2f"), FourCC(" y4f"), FourCC(" rgf"), {FourCC("  yf"), FourCC(" cbf"), FourCC(" crf")}, 0},
};

constexpr TypeEntry kPacked10Planes = {Packed10, FourCC("y210"), 0, 0, {}, 0};

const TypeEntry* FindType(uint32_t order, uint32_t type) {
    if (type == Packed10) {
        return order == CbYCrY ? &kPacked10Planes : nullptr;
    }
    const auto* entry = std::ranges::find(kTypes, type, &TypeEntry::componentType);
    return entry != std::end(kTypes) ? entry : nullptr;
}

void AppendPlane(PlaneTypeList& planes, PlaneType type) {
    if (type != 0) {
        planes.push_back(type);
    }
}

void AppendPicture(PlaneTypeList& planes, PictureKind picture, const TypeEntry& type) {
    switch (picture) {
        case PictureKind::YCbCr422:
            return AppendPlane(planes, type.ycbcr422);
        case PictureKind::YCbCr444:
            return AppendPlane(planes, type.ycbcr444);
        case PictureKind::Rgb:
            return AppendPlane(planes, type.rgb);
        case PictureKind::Planar420:
            for (const PlaneType code : type.planar420) {
                AppendPlane(planes, code);
            }
            return;
        case PictureKind::None:
            return;
    }
}

}  // namespace

PlaneTypeList LookupFormatPlanes(const UncompressedParams& params) {
    const uint32_t order = params.colorComponentOrder;
    PlaneTypeList planes;
    if (order >= YCbYCr && order <= std::size(kOrderEntries)) {
        const OrderEntry& entry = kOrderEntries[order - YCbYCr];
        if (const TypeEntry* type = FindType(order, params.componentType)) {
            AppendPicture(planes, entry.picture, *type);
            if (entry.alpha) {
                AppendPlane(planes, type->alpha);
            }
        }
    }
    if (planes.empty()) {
        throw invalid_argument("combination of color component order and component type is not supported");
    }
    return planes;
}

PlaneTypeList FormatPlanesForFrame(const UncompressedParams& params, const CompressedParams& compressedParams) {
    PlaneTypeList planes = LookupFormatPlanes(params);
    if (compressedParams.alphaRle == 0) {
        return planes;
    }
    if (planes.back() == plane::a08) {
        planes.back() = plane::rl08;
    } else if (planes.back() == plane::a16) {
        planes.back() = plane::rl16;
    }
    return planes;
}

bool FormatHasAlphaPlane(const PlaneTypeList& planes, uint32_t colorComponentOrder) {
    // AlphaOnly counts three picture planes, so that its one plane is found to be an alpha plane.
    const size_t picturePlanes = FindOrder(colorComponentOrder).IsPlanar() ? 3 : 1;
    return planes.size() != picturePlanes;
}

}  // namespace plenar
