// The shuffles of orders that hold alpha among their samples: planes hold colour and alpha apart, colour in an order of
// its own.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "conversion/vector/byte_shuffles.h"
#include "format/order.h"

namespace plenar {

// Pixels with alpha. A unit is four groups of 4 bytes of alpha each: 16 bytes of alpha, and 64 bytes of the caller with
// 48 of colour, or in 4:2:2 rows 48 with 32. These are the offsets of the loads in the caller's bytes and in the
// colour's.
inline constexpr size_t kGroupAlphaBytes = 4;
inline constexpr size_t kSplitLoads4[4] = {0, 16, 32, 48};  // colour piece j comes from loads j and j + 1
inline constexpr size_t kSplitLoads3[4] = {0, 8, 24, 32};   // colour piece j comes from loads 2 j and 2 j + 1
inline constexpr size_t kMergeLoads4[4] = {0, 12, 24, 32};  // caller piece j comes from load j, and from the alpha
inline constexpr size_t kMergeLoads3[4] = {0, 8, 16, 0};    // likewise, of three pieces

struct SplitShuffles {
    Shuffle16 colour[3][2];
    Shuffle16 alpha[4];  // group i comes from load i
};

struct MergeShuffles {
    Shuffle16 colour[4];
    Shuffle16 alpha[4];
};

// By the logarithm of the sample's size.
struct AlphaShuffles {
    SplitShuffles split[kSampleSizes] = {};
    MergeShuffles merge[kSampleSizes] = {};
};

namespace alpha_shuffles {

// A group is 4 bytes of alpha and the colour that goes with them. Byte i of a group of one side is byte position(i) of
// that group on the other; the functions here are that mapping, in both directions.
struct GroupMap {
    const Order& order;
    size_t sampleBytes;

    constexpr size_t ColourBytes() const { return order.colourSamples * kGroupAlphaBytes; }
    constexpr size_t CallerBytes() const { return order.samples * kGroupAlphaBytes; }

    constexpr size_t CallerByteOf(size_t pixel, size_t position, size_t byte) const {
        return (pixel * order.samples + position) * sampleBytes + byte % sampleBytes;
    }
    constexpr size_t CallerByteOfColour(size_t i) const {
        const size_t sample = i / sampleBytes;
        return CallerByteOf(sample / order.colourSamples, order.colour[sample % order.colourSamples], i);
    }
    constexpr size_t CallerByteOfAlpha(size_t i) const { return CallerByteOf(i / sampleBytes, order.alphaSample, i); }
};

constexpr SplitShuffles MakeSplit(const GroupMap& map) {
    SplitShuffles shuffles;
    const bool three = map.order.colourSamples == 3;
    const auto colour = [&](size_t i) {
        return i / map.ColourBytes() * map.CallerBytes() + map.CallerByteOfColour(i % map.ColourBytes());
    };
    for (size_t piece = 0; piece < map.order.colourSamples; ++piece) {
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
    const bool three = map.order.colourSamples == 3;
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
    for (size_t piece = 0; piece < map.order.samples; ++piece) {
        const size_t load = three ? kMergeLoads4[piece] : kMergeLoads3[piece];
        shuffles.colour[piece] = PieceShuffle(piece, load, [&](size_t i) { return find(i, map.ColourBytes(), false); });
        shuffles.alpha[piece] = PieceShuffle(piece, 0, [&](size_t i) { return find(i, kGroupAlphaBytes, true); });
    }
    return shuffles;
}

constexpr AlphaShuffles Make(const Order& order) {
    AlphaShuffles shuffles;
    for (size_t size = 0; size < kSampleSizes; ++size) {
        const GroupMap map = {order, size_t{1} << size};
        shuffles.split[size] = MakeSplit(map);
        shuffles.merge[size] = MakeMerge(map);
    }
    return shuffles;
}

// By order; empty for those without alpha among their samples.
inline constexpr std::array<AlphaShuffles, std::size(kOrders)> kTable = [] {
    std::array<AlphaShuffles, std::size(kOrders)> table;
    for (size_t i = 0; i < table.size(); ++i) {
        if (kOrders[i].movement == Movement::SplitAlpha) {
            table[i] = Make(kOrders[i]);
        }
    }
    return table;
}();

}  // namespace alpha_shuffles

// Of an order of the table.
static inline const AlphaShuffles& AlphaShufflesOf(const Order& order) {
    return alpha_shuffles::kTable.begin()[&order - kOrders];
}

}  // namespace plenar
