// Where the samples of a pixel stand in the caller's rows, for the orders that keep alpha among them. Planes hold
// colour and alpha apart, colour in an order of its own.
#pragma once

#include <cstddef>
#include <cstdint>

#include "plenar_sdk.h"

namespace plenar {

// A shuffle of 16 bytes: for each byte of the result the index of its source, or zeroLane.
struct Shuffle16 {
    uint8_t byte[16] = {};
};

inline constexpr uint8_t zeroLane = 0x80;
inline constexpr Shuffle16 allZeroLanes = {{zeroLane, zeroLane, zeroLane, zeroLane, zeroLane, zeroLane, zeroLane,
                                            zeroLane, zeroLane, zeroLane, zeroLane, zeroLane, zeroLane, zeroLane,
                                            zeroLane, zeroLane}};

// Samples of 1, 2 and 4 bytes, told apart by the logarithm of their size.
inline constexpr size_t sampleSizes = 3;
constexpr size_t SampleSizeIndex(size_t sampleBytes) {
    return sampleBytes >> 1;
}

// The shuffles whose results, laid over each other, are the caller's bytes of a block.
struct MergeShuffles {
    Shuffle16 colour = allZeroLanes;
    Shuffle16 alpha = allZeroLanes;
};

// A block is 4 bytes of alpha and the colour that goes with them.
inline constexpr size_t blockAlphaBytes = 4;

struct PixelLayout {
    size_t colourSamples;  // of a pixel in the plane: 3, or 2 of a 4:2:2 row
    size_t colour[3];      // position of each in the caller's pixel, in plane order
    size_t alpha;          // position of alpha in the caller's pixel
    size_t samples;        // of the caller's pixel

    // For each sample size, the shuffle from a block of the caller's bytes to colour bytes followed by alpha bytes, and
    // those back.
    Shuffle16 split[sampleSizes] = {};
    MergeShuffles merge[sampleSizes] = {};
};

namespace pixel_layouts {

constexpr PixelLayout Make(size_t colourSamples, const size_t (&colour)[3], size_t alpha) {
    PixelLayout layout = {colourSamples, {colour[0], colour[1], colour[2]}, alpha, colourSamples + 1};
    const size_t colourBytes = layout.colourSamples * blockAlphaBytes;
    for (size_t size = 0; size < sampleSizes; ++size) {
        const size_t sampleBytes = size_t{1} << size;
        layout.split[size] = allZeroLanes;
        const auto place = [&](size_t pixel, size_t position, size_t byte) {
            return (pixel * layout.samples + position) * sampleBytes + byte;
        };
        for (size_t i = 0; i < colourBytes; ++i) {
            const size_t sample = i / sampleBytes;
            const size_t position = layout.colour[sample % layout.colourSamples];
            const size_t caller = place(sample / layout.colourSamples, position, i % sampleBytes);
            layout.split[size].byte[i] = static_cast<uint8_t>(caller);
            layout.merge[size].colour.byte[caller] = static_cast<uint8_t>(i);
        }
        for (size_t i = 0; i < blockAlphaBytes; ++i) {
            const size_t caller = place(i / sampleBytes, layout.alpha, i % sampleBytes);
            layout.split[size].byte[colourBytes + i] = static_cast<uint8_t>(caller);
            layout.merge[size].alpha.byte[caller] = static_cast<uint8_t>(i);
        }
    }
    return layout;
}

inline constexpr PixelLayout argb = Make(3, {1, 2, 3}, 0);
inline constexpr PixelLayout bgra = Make(3, {2, 1, 0}, 3);
inline constexpr PixelLayout rgba = Make(3, {0, 1, 2}, 3);
inline constexpr PixelLayout abgr = Make(3, {3, 2, 1}, 0);
inline constexpr PixelLayout ycbcra = Make(3, {1, 0, 2}, 3);
inline constexpr PixelLayout cbyacrya = Make(2, {0, 1, 0}, 2);

}  // namespace pixel_layouts

// Null for orders that hold no alpha samples among the others.
constexpr const PixelLayout* FindPixelLayout(uint32_t colorComponentOrder) {
    switch (colorComponentOrder) {
        case ARGB:
            return &pixel_layouts::argb;
        case BGRA:
            return &pixel_layouts::bgra;
        case RGBA:
            return &pixel_layouts::rgba;
        case ABGR:
            return &pixel_layouts::abgr;
        case YCbCrA:
            return &pixel_layouts::ycbcra;
        case CbYACrYA:
            return &pixel_layouts::cbyacrya;
        default:
            return nullptr;
    }
}

}  // namespace plenar
