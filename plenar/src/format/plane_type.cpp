#include "format/plane_type.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "base/exceptions.h"

namespace plenar {

namespace {

enum class Family { YCbCr422, YCbCr444, Rgb, Luma, Cb, Cr, Alpha };

struct PlaneEntry {
    PlaneType type;
    Family family;
    uint8_t bits;
    ComponentType componentType;
};

constexpr PlaneEntry kCatalogue[] = {
    {FourCC("y208"), Family::YCbCr422, 8, Uint8},      {FourCC("y210"), Family::YCbCr422, 10, Uint10},
    {FourCC("y212"), Family::YCbCr422, 12, Uint12},    {FourCC("y216"), Family::YCbCr422, 16, Uint16},
    {FourCC("y2S1"), Family::YCbCr422, 16, Fixed2p14}, {FourCC(" y2h"), Family::YCbCr422, 16, Half16},
    {FourCC(" y2f"), Family::YCbCr422, 32, Float32},   {FourCC("y408"), Family::YCbCr444, 8, Uint8},
    {FourCC("y410"), Family::YCbCr444, 10, Uint10},    {FourCC("y412"), Family::YCbCr444, 12, Uint12},
    {FourCC("y416"), Family::YCbCr444, 16, Uint16},    {FourCC("y4S1"), Family::YCbCr444, 16, Fixed2p14},
    {FourCC(" y4h"), Family::YCbCr444, 16, Half16},    {FourCC(" y4f"), Family::YCbCr444, 32, Float32},
    {FourCC("rg08"), Family::Rgb, 8, Uint8},           {FourCC("rg10"), Family::Rgb, 10, Uint10},
    {FourCC("rg12"), Family::Rgb, 12, Uint12},         {FourCC("rg16"), Family::Rgb, 16, Uint16},
    {FourCC("rgS1"), Family::Rgb, 16, Fixed2p14},      {FourCC(" rgh"), Family::Rgb, 16, Half16},
    {FourCC(" rgf"), Family::Rgb, 32, Float32},        {FourCC(" y08"), Family::Luma, 8, Uint8},
    {FourCC(" y10"), Family::Luma, 10, Uint10},        {FourCC(" y12"), Family::Luma, 12, Uint12},
    {FourCC(" y16"), Family::Luma, 16, Uint16},        {FourCC("  yh"), Family::Luma, 16, Half16},
    {FourCC("  yf"), Family::Luma, 32, Float32},       {FourCC("cb08"), Family::Cb, 8, Uint8},
    {FourCC("cb10"), Family::Cb, 10, Uint10},          {FourCC("cb12"), Family::Cb, 12, Uint12},
    {FourCC("cb16"), Family::Cb, 16, Uint16},          {FourCC(" cbh"), Family::Cb, 16, Half16},
    {FourCC(" cbf"), Family::Cb, 32, Float32},         {FourCC("cr08"), Family::Cr, 8, Uint8},
    {FourCC("cr10"), Family::Cr, 10, Uint10},          {FourCC("cr12"), Family::Cr, 12, Uint12},
    {FourCC("cr16"), Family::Cr, 16, Uint16},          {FourCC(" crh"), Family::Cr, 16, Half16},
    {FourCC(" crf"), Family::Cr, 32, Float32},         {plane::a08, Family::Alpha, 8, Uint8},
    {plane::a16, Family::Alpha, 16, Uint16},           {plane::rl08, Family::Alpha, 8, Uint8},
    {plane::rl16, Family::Alpha, 16, Uint16},
};

struct Spelling {
    uint32_t code;
    PlaneType type;
};

constexpr Spelling kAlternativeSpellings[] = {
    {FourCC("  h2"), FourCC(" y2h")}, {FourCC("  h4"), FourCC(" y4h")}, {FourCC("  f2"), FourCC(" y2f")},
    {FourCC("  f4"), FourCC(" y4f")}, {FourCC("rg h"), FourCC(" rgh")}, {FourCC("rg f"), FourCC(" rgf")},
    {FourCC("cb h"), FourCC(" cbh")}, {FourCC("cr h"), FourCC(" crh")}, {FourCC("cb f"), FourCC(" cbf")},
    {FourCC("cr f"), FourCC(" crf")},
};

// The catalogue's entries by a product of their codes. Every plane of every frame is looked up several times, which
// going through the catalogue made most of the cost of small frames.
class CatalogueIndex {
public:
    constexpr CatalogueIndex() {
        while (!Fill()) {
            multiplier_ += 2;
        }
    }

    // The one entry that may have this code.
    constexpr const PlaneEntry& Candidate(PlaneType type) const { return kCatalogue[places_[SlotOf(type)]]; }

private:
    static constexpr uint32_t kSlotBits = 8;

    constexpr uint32_t SlotOf(PlaneType type) const { return type * multiplier_ >> (32 - kSlotBits); }

    // False if two codes fall into one slot.
    constexpr bool Fill() {
        bool taken[1U << kSlotBits] = {};
        for (size_t place = 0; place < std::size(kCatalogue); ++place) {
            const uint32_t slot = SlotOf(kCatalogue[place].type);
            if (taken[slot]) {
                return false;
            }
            taken[slot] = true;
            places_[slot] = static_cast<uint8_t>(place);
        }
        return true;
    }

    uint32_t multiplier_ = 0x9E3779B1;  // odd, with bits all over it
    uint8_t places_[1U << kSlotBits] = {};
};

constexpr CatalogueIndex kCatalogueIndex;

const PlaneEntry* FindEntry(PlaneType type) {
    const PlaneEntry& candidate = kCatalogueIndex.Candidate(type);
    return candidate.type == type ? &candidate : nullptr;
}

const PlaneEntry& PrimaryEntry(PlaneType type) {
    const PlaneEntry* entry = FindEntry(type);
    if (entry == nullptr || entry->family == Family::Cb || entry->family == Family::Cr) {
        throw invalid_argument("Plane type is not supported");
    }
    return *entry;
}

}  // namespace

PlaneRole RoleOfPlane(PlaneType type) {
    const PlaneEntry* entry = FindEntry(type);
    if (entry == nullptr) {
        return PlaneRole::None;
    }
    switch (entry->family) {
        case Family::Cb:
            return PlaneRole::Cb;
        case Family::Cr:
            return PlaneRole::Cr;
        case Family::Alpha:
            return PlaneRole::Alpha;
        default:
            return PlaneRole::Primary;
    }
}

uint32_t PlaneSamplingClass(PlaneType type) {
    const PlaneEntry* entry = FindEntry(type);
    if (entry == nullptr) {
        return 0;
    }
    switch (entry->family) {
        case Family::YCbCr422:
            return 422;
        case Family::YCbCr444:
        case Family::Rgb:
            return 444;
        default:
            return 1;
    }
}

uint8_t PlaneBitDepth(PlaneType type) {
    const PlaneEntry* entry = FindEntry(type);
    return entry != nullptr ? entry->bits : 0;
}

bool IsCodedAlpha(PlaneType type) {
    return type == plane::rl08 || type == plane::rl16;
}

bool IsFixedPoint(PlaneType type) {
    return type == FourCC("y2S1") || type == FourCC("y4S1") || type == FourCC("rgS1");
}

uint32_t PlaneRowSamples(PlaneType type, uint32_t width) {
    switch (PlaneSamplingClass(type)) {
        case 422:
            return 2 * width + (width & 1);
        case 444:
            return 3 * width;
        default:
            return width;
    }
}

uint64_t PlaneRowBytes(PlaneType type, uint32_t width) {
    return (uint64_t{PlaneBitDepth(type)} * PlaneRowSamples(type, width) + 7) >> 3;
}

PlaneType NormalizePlaneType(uint32_t code) {
    if (FindEntry(code) != nullptr) {
        return code;
    }
    const auto* spelling = std::ranges::find(kAlternativeSpellings, code, &Spelling::code);
    return spelling != std::end(kAlternativeSpellings) ? spelling->type : 0;
}

ColorComponentOrder PlaneKindToOrder(PlaneType type, uint64_t planeCount) {
    const bool withAlpha = planeCount == 2 || planeCount == 4;
    switch (PrimaryEntry(type).family) {
        case Family::YCbCr422:
            return withAlpha ? CbYACrYA : CbYCrY;
        case Family::YCbCr444:
            return withAlpha ? YCbCrA : CbYCr;
        case Family::Rgb:
            return withAlpha ? ARGB : RGB;
        case Family::Luma:
            return withAlpha ? YCbCrA420Planar : YCbCr420Planar;
        default:
            return AlphaOnly;
    }
}

ComponentType PlaneTypeToComponentType(PlaneType type) {
    return PrimaryEntry(type).componentType;
}

}  // namespace plenar
