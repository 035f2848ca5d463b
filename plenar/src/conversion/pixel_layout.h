// Where the samples of a pixel stand in the caller's rows, for the orders that keep alpha among them. Planes hold
// colour and alpha apart, colour in an order of its own.
#pragma once

#include <cstddef>
#include <cstdint>

#include "conversion/byte_shuffles.h"
#include "plenar_sdk.h"

namespace plenar {

struct PixelLayout {
    size_t colourSamples;  // of a pixel in the plane: 3, or 2 of a 4:2:2 row
    size_t colour[3];      // position of each in the caller's pixel, in plane order
    size_t alpha;          // position of alpha in the caller's pixel
    size_t samples;        // of the caller's pixel

    SplitShuffles split[kSampleSizes] = {};
    MergeShuffles merge[kSampleSizes] = {};
};

namespace pixel_layouts {

// A group is 4 bytes of alpha and the colour that goes with them. Byte i of a group of one side is byte position(i) of
// that group on the other; the functions here are that mapping, in both directions.
struct GroupMap {
    const PixelLayout& layout;
    size_t sampleBytes;

    constexpr size_t ColourBytes() const { return layout.colourSamples * kGroupAlphaBytes; }
    constexpr size_t CallerBytes() const { return layout.samples * kGroupAlphaBytes; }

    constexpr size_t CallerByteOf(size_t pixel, size_t position, size_t byte) const {
        return (pixel * layout.samples + position) * sampleBytes + byte % sampleBytes;
    }
    constexpr size_t CallerByteOfColour(size_t i) const {
        const size_t sample = i / sampleBytes;
        return CallerByteOf(sample / layout.colourSamples, layout.colour[sample % layout.colourSamples], i);
    }
    constexpr size_t CallerByteOfAlpha(size_t i) const { return CallerByteOf(i / sampleBytes, layout.alpha, i); }
};

constexpr SplitShuffles MakeSplit(const GroupMap& map) {
    SplitShuffles shuffles;
    const bool three = map.layout.colourSamples == 3;
    const auto colour = [&](size_t i) {
        return i / map.ColourBytes() * map.CallerBytes() + map.CallerByteOfColour(i % map.ColourBytes());
    };
    for (size_t piece = 0; piece < map.layout.colourSamples; ++piece) {
        for (size_t term = 0; term < 2; ++term) {
            const size_t load = three ? kSplitLoads4[piece + term] : kSplitLoads3[2 * piece + term];
            shuffles.colour[piece][term] = PieceShuffle(piece, load, colour);
        }
    }
    for (size_t group = 0; group < 4; ++group) {
        const size_t load = three ? kSplitLoads4[group] : kSplitLoads3[group];
        shuffles.alpha[group] = PieceShuffle(0, load, [&](size_t i) {
            return i / kGroupAlphaBytes == group
                       ? group * map.CallerBytes() + map.CallerByteOfAlpha(i % kGroupAlphaBytes)
                       : kNowhere;
        });
    }
    return shuffles;
}

constexpr MergeShuffles MakeMerge(const GroupMap& map) {
    MergeShuffles shuffles;
    const bool three = map.layout.colourSamples == 3;
    // The byte of the plane, of `bytes` bytes a group, whose place among the caller's bytes is i.
    const auto find = [&](size_t i, size_t bytes, bool isAlpha) {
        for (size_t byte = 0; byte < bytes; ++byte) {
            const size_t caller = isAlpha ? map.CallerByteOfAlpha(byte) : map.CallerByteOfColour(byte);
            if (caller == i % map.CallerBytes()) {
                return i / map.CallerBytes() * bytes + byte;
            }
        }
        return kNowhere;
    };
    for (size_t piece = 0; piece < map.layout.samples; ++piece) {
        const size_t load = three ? kMergeLoads4[piece] : kMergeLoads3[piece];
        shuffles.colour[piece] = PieceShuffle(piece, load, [&](size_t i) { return find(i, map.ColourBytes(), false); });
        shuffles.alpha[piece] = PieceShuffle(piece, 0, [&](size_t i) { return find(i, kGroupAlphaBytes, true); });
    }
    return shuffles;
}

constexpr PixelLayout Make(size_t colourSamples, const size_t (&colour)[3], size_t alpha) {
    PixelLayout layout = {colourSamples, {colour[0], colour[1], colour[2]}, alpha, colourSamples + 1};
    for (size_t size = 0; size < kSampleSizes; ++size) {
        const GroupMap map = {layout, size_t{1} << size};
        layout.split[size] = MakeSplit(map);
        layout.merge[size] = MakeMerge(map);
    }
    return layout;
}

inline constexpr PixelLayout kArgb = Make(3, {1, 2, 3}, 0);
inline constexpr PixelLayout kBgra = Make(3, {2, 1, 0}, 3);
inline constexpr PixelLayout kRgba = Make(3, {0, 1, 2}, 3);
inline constexpr PixelLayout kAbgr = Make(3, {3, 2, 1}, 0);
inline constexpr PixelLayout kYcbcra = Make(3, {1, 0, 2}, 3);
inline constexpr PixelLayout kCbyacrya = Make(2, {0, 1, 0}, 2);

}  // namespace pixel_layouts

// Null for orders that hold no alpha samples among the others.
constexpr const PixelLayout* FindPixelLayout(uint32_t colorComponentOrder) {
    switch (colorComponentOrder) {
        case ARGB:
            return &pixel_layouts::kArgb;
        case BGRA:
            return &pixel_layouts::kBgra;
        case RGBA:
            return &pixel_layouts::kRgba;
        case ABGR:
            return &pixel_layouts::kAbgr;
        case YCbCrA:
            return &pixel_layouts::kYcbcra;
        case CbYACrYA:
            return &pixel_layouts::kCbyacrya;
        default:
            return nullptr;
    }
}

}  // namespace plenar
