#include "format/plane_type.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>

#include "base/exceptions.h"

namespace plenar {

namespace {

// Codes that other makers of payloads use.
constexpr struct {
    char found[5];
    char meant[5];
} kAlternativeSpellings[] = {
    {"  h2", " y2h"}, {"  h4", " y4h"}, {"  f2", " y2f"}, {"  f4", " y4f"}, {"rg h", " rgh"},
    {"rg f", " rgf"}, {"cb h", " cbh"}, {"cr h", " crh"}, {"cb f", " cbf"}, {"cr f", " crf"},
};

struct Spelling {
    uint32_t code = std::numeric_limits<uint32_t>::max();
    uint32_t kind = 0;  // place in kPlaneKinds
};

constexpr size_t kSpellingSlots = std::bit_ceil(kPlaneKinds.size() + std::size(kAlternativeSpellings));

// All codes that a payload may use, in ascending order, and free slots behind them.
constexpr auto kSpellings = [] {
    std::array<Spelling, kSpellingSlots> spellings;
    auto next = spellings.begin();
    for (uint32_t kind = 0; kind < kPlaneKinds.size(); ++kind) {
        *next++ = {kPlaneKinds[kind].type, kind};
    }
    for (const auto& [found, meant] : kAlternativeSpellings) {
        const auto* kind = std::ranges::find(kPlaneKinds, FourCC(meant), &PlaneKind::type);
        *next++ = {FourCC(found), static_cast<uint32_t>(kind - kPlaneKinds.begin())};
    }
    std::ranges::sort(spellings, {}, &Spelling::code);
    return spellings;
}();

// The orders that are reported for a payload, which doesn't tell how its maker's samples were arranged.
constexpr struct {
    PictureKind picture;
    ColorComponentOrder plain;
    ColorComponentOrder withAlpha;
} kReportedOrders[] = {
    {PictureKind::None, AlphaOnly, AlphaOnly},
    {PictureKind::YCbCr422, CbYCrY, CbYACrYA},
    {PictureKind::YCbCr444, CbYCr, YCbCrA},
    {PictureKind::Rgb, RGB, ARGB},
    {PictureKind::Planar420, YCbCr420Planar, YCbCrA420Planar},
};

}  // namespace

const PlaneKind& NormalizePlaneType(uint32_t code) {
    // Without branches: a payload may hold little else than planes, of codes in any order.
    size_t place = 0;
    for (size_t step = kSpellingSlots / 2; step != 0; step /= 2) {
        place += kSpellings[place + step].code <= code ? step : 0;
    }
    return kPlaneKinds[kSpellings[place].code == code ? kSpellings[place].kind : 0];
}

ColorComponentOrder PlaneKindToOrder(const PlaneKind& primary, uint64_t planeCount) {
    if (primary.role != PlaneRole::Primary && primary.role != PlaneRole::Alpha) {
        throw invalid_argument("Plane type is not supported");
    }
    const auto* orders =
        std::ranges::find(kReportedOrders, primary.picture, [](const auto& row) { return row.picture; });
    return planeCount == 2 || planeCount == 4 ? orders->withAlpha : orders->plain;
}

}  // namespace plenar
