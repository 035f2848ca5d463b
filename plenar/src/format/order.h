// The orders: how the samples of a caller's picture lie in memory, and how they stand to those of the planes.
#pragma once

#include <cstddef>
#include <cstdint>

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

namespace order_rows {

constexpr Order Pairs(AlphaPlace alpha, uint8_t first, uint8_t second) {
    return {
        PictureKind::YCbCr422, alpha, 2, 2, {first, second}, 0, first == 0 ? Movement::InOrder : Movement::SwapPairs};
}
constexpr Order Triples(PictureKind picture, uint8_t first, uint8_t second, uint8_t third) {
    return {picture,
            AlphaPlace::None,
            3,
            3,
            {first, second, third},
            0,
            first == 0 ? Movement::InOrder : Movement::ReverseTriples};
}
constexpr Order Quads(PictureKind picture, uint8_t first, uint8_t second, uint8_t third, uint8_t alpha) {
    return {picture, AlphaPlace::Interleaved, 4, 3, {first, second, third}, alpha, Movement::SplitAlpha};
}
constexpr Order Planar(PictureKind picture, AlphaPlace alpha) {
    return {picture, alpha, 0, 0, {}, 0, Movement::InOrder};
}

}  // namespace order_rows

// By ColorComponentOrder, from 1.
inline constexpr Order kOrders[] = {
    order_rows::Pairs(AlphaPlace::None, 1, 0),                                                // YCbYCr
    order_rows::Pairs(AlphaPlace::None, 0, 1),                                                // CbYCrY
    order_rows::Quads(PictureKind::Rgb, 1, 2, 3, 0),                                          // ARGB
    order_rows::Quads(PictureKind::Rgb, 2, 1, 0, 3),                                          // BGRA
    order_rows::Triples(PictureKind::Rgb, 0, 1, 2),                                           // RGB
    order_rows::Triples(PictureKind::Rgb, 2, 1, 0),                                           // BGR
    order_rows::Quads(PictureKind::Rgb, 0, 1, 2, 3),                                          // RGBA
    order_rows::Quads(PictureKind::Rgb, 3, 2, 1, 0),                                          // ABGR
    order_rows::Triples(PictureKind::YCbCr444, 0, 1, 2),                                      // CbYCr
    order_rows::Planar(PictureKind::Planar420, AlphaPlace::None),                             // YCbCr420Planar
    {PictureKind::YCbCr422, AlphaPlace::Interleaved, 3, 2, {0, 1}, 2, Movement::SplitAlpha},  // CbYACrYA
    order_rows::Quads(PictureKind::YCbCr444, 1, 0, 2, 3),                                     // YCbCrA
    order_rows::Planar(PictureKind::Planar420, AlphaPlace::Apart),                            // YCbCrA420Planar
    order_rows::Planar(PictureKind::None, AlphaPlace::Apart),                                 // AlphaOnly
    order_rows::Pairs(AlphaPlace::Apart, 1, 0),                                               // YCbYCrPlusAlpha
    order_rows::Pairs(AlphaPlace::Apart, 0, 1),                                               // CbYCrYPlusAlpha
};

inline constexpr Order kUnknownOrder;

constexpr const Order& FindOrder(uint32_t colorComponentOrder) {
    const uint32_t row = colorComponentOrder - 1;
    return row < sizeof kOrders / sizeof *kOrders ? kOrders[row] : kUnknownOrder;
}

// Whether the caller's samples stand otherwise than the plane's; also for an order outside the table.
constexpr bool NeedsReorder(uint32_t colorComponentOrder) {
    const Order& order = FindOrder(colorComponentOrder);
    return !order.IsKnown() || order.movement != Movement::InOrder;
}

}  // namespace plenar
