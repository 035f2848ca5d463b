// The orders: how the samples of a caller's picture lie in memory, and how they stand to those of the planes.
#pragma once

#include <cstdint>
#include <iterator>

#include "plenar_sdk.h"

namespace plenar {

// Which planes hold the picture without its alpha.
enum class PictureKind : uint8_t { None, YCbCr422, YCbCr444, Rgb, Planar420 };

// Where the caller's alpha samples are.
enum class AlphaPlace : uint8_t {
    None,
    Interleaved,  // among the other samples of each pixel
    Apart,        // in a plane of their own: behind the picture, or alone
};

// How samples go from the caller's rows to the plane's and back.
enum class Movement : uint8_t {
    InOrder,         // as they stand
    SwapPairs,       // the two of each pair change places
    ReverseTriples,  // the first and the third of each pixel change places
    SplitAlpha,      // colour to places of its own, alpha apart
};

// One row an order. The samples of a pixel of the caller's rows, chroma shared by two pixels counted once, go to places
// in the pixel of the plane, whose own order is CbYCrY, CbYCr or RGB.
struct Order {
    PictureKind picture = PictureKind::None;
    AlphaPlace alpha = AlphaPlace::None;
    uint8_t samples = 0;        // of the caller's pixel; 0 for planar orders, whose rows hold one component each
    uint8_t colourSamples = 0;  // of the plane's pixel
    uint8_t colour[3] = {};     // the place of each in the caller's pixel
    uint8_t alphaSample = 0;    // the place of alpha there
    Movement movement = Movement::InOrder;

    constexpr bool IsKnown() const { return picture != PictureKind::None || alpha != AlphaPlace::None; }
    constexpr bool IsPlanar() const { return IsKnown() && samples == 0; }
    constexpr bool HasAlpha() const { return alpha != AlphaPlace::None; }
    // An alpha plane behind a picture of interleaved samples.
    constexpr bool HasAlphaBehind() const { return alpha == AlphaPlace::Apart && samples != 0; }
    // Pixels that share chroma, across and down.
    constexpr bool SharesChromaAcross() const {
        return picture == PictureKind::YCbCr422 || picture == PictureKind::Planar420;
    }
    constexpr bool SharesChromaDown() const { return picture == PictureKind::Planar420; }
};

// By ColorComponentOrder, from 1.
inline constexpr Order kOrders[] = {
    {PictureKind::YCbCr422, AlphaPlace::None, 2, 2, {1, 0}, 0, Movement::SwapPairs},             // YCbYCr
    {PictureKind::YCbCr422, AlphaPlace::None, 2, 2, {0, 1}, 0, Movement::InOrder},               // CbYCrY
    {PictureKind::Rgb, AlphaPlace::Interleaved, 4, 3, {1, 2, 3}, 0, Movement::SplitAlpha},       // ARGB
    {PictureKind::Rgb, AlphaPlace::Interleaved, 4, 3, {2, 1, 0}, 3, Movement::SplitAlpha},       // BGRA
    {PictureKind::Rgb, AlphaPlace::None, 3, 3, {0, 1, 2}, 0, Movement::InOrder},                 // RGB
    {PictureKind::Rgb, AlphaPlace::None, 3, 3, {2, 1, 0}, 0, Movement::ReverseTriples},          // BGR
    {PictureKind::Rgb, AlphaPlace::Interleaved, 4, 3, {0, 1, 2}, 3, Movement::SplitAlpha},       // RGBA
    {PictureKind::Rgb, AlphaPlace::Interleaved, 4, 3, {3, 2, 1}, 0, Movement::SplitAlpha},       // ABGR
    {PictureKind::YCbCr444, AlphaPlace::None, 3, 3, {0, 1, 2}, 0, Movement::InOrder},            // CbYCr
    {PictureKind::Planar420, AlphaPlace::None, 0, 0, {}, 0, Movement::InOrder},                  // YCbCr420Planar
    {PictureKind::YCbCr422, AlphaPlace::Interleaved, 3, 2, {0, 1}, 2, Movement::SplitAlpha},     // CbYACrYA
    {PictureKind::YCbCr444, AlphaPlace::Interleaved, 4, 3, {1, 0, 2}, 3, Movement::SplitAlpha},  // YCbCrA
    {PictureKind::Planar420, AlphaPlace::Apart, 0, 0, {}, 0, Movement::InOrder},                 // YCbCrA420Planar
    {PictureKind::None, AlphaPlace::Apart, 0, 0, {}, 0, Movement::InOrder},                      // AlphaOnly
    {PictureKind::YCbCr422, AlphaPlace::Apart, 2, 2, {1, 0}, 0, Movement::SwapPairs},            // YCbYCrPlusAlpha
    {PictureKind::YCbCr422, AlphaPlace::Apart, 2, 2, {0, 1}, 0, Movement::InOrder},              // CbYCrYPlusAlpha
};

inline constexpr Order kUnknownOrder;

constexpr const Order& FindOrder(uint32_t colorComponentOrder) {
    const uint32_t row = colorComponentOrder - 1;
    return row < std::size(kOrders) ? kOrders[row] : kUnknownOrder;
}

// Whether the caller's samples stand otherwise than the plane's; also for an order outside the table.
constexpr bool NeedsReorder(uint32_t colorComponentOrder) {
    const Order& order = FindOrder(colorComponentOrder);
    return !order.IsKnown() || order.movement != Movement::InOrder;
}

}  // namespace plenar
