// Pixels with alpha among their samples, split into colour and alpha, and merged again. The lanes of 16 bytes do as
// many units side by side, each with 16 bytes of alpha.
#pragma once

#include "conversion/vector/alpha_shuffles.h"
#include "conversion/vector/gather.h"
#include "conversion/vector/rounds.h"

namespace plenar {
namespace {

[[gnu::always_inline]] inline Bytes ShuffleTwo(Bytes a, Bytes patternA, Bytes b, Bytes patternB) {
    return TargetVector::Shuffle(a, patternA) | TargetVector::Shuffle(b, patternB);
}

// Stores the N pieces of 16 bytes of each lane's unit, one unit behind the other.
template <size_t N>
void StoreUnits(uint8_t* dst, const Pieces<N>& pieces) {
    if constexpr (kSixteens == 1) {
        StoreAll(dst, pieces);
    } else {
        static_assert(kSixteens == 2 || N == 0);
        Repeat<N>([&]<size_t I>() {
            // Pieces 2 I and 2 I + 1 of the row: those of the lower lanes stand first.
            constexpr size_t kFirst = 2 * I;
            constexpr size_t kSecond = 2 * I + 1;
            constexpr auto kPlace = [](size_t i) constexpr {
                return i < 2 ? kFirst / N * 2 + i : 4 + kSecond / N * 2 + i - 2;
            };
            const auto joined =
                Arrange(As<Vector<uint64_t>>(pieces[kFirst % N]), As<Vector<uint64_t>>(pieces[kSecond % N]), kPlace);
            StoreVector(dst + I * kVectorBytes, joined);
        });
    }
}

// The caller's bytes of a unit, and the colour and alpha pieces made of them.
template <size_t ColourSamples>
struct AlphaUnit {
    static constexpr bool kThree = ColourSamples == 3;
    static constexpr size_t kCallerBytes = (ColourSamples + 1) * kPieceBytes;

    Bytes colourPatterns[ColourSamples][2];
    Bytes alphaPatterns[4];

    explicit AlphaUnit(const SplitShuffles& shuffles) {
        for (size_t i = 0; i < ColourSamples; ++i) {
            colourPatterns[i][0] = InEachLane(shuffles.colour[i][0]);
            colourPatterns[i][1] = InEachLane(shuffles.colour[i][1]);
        }
        for (size_t i = 0; i < 4; ++i) {
            alphaPatterns[i] = InEachLane(shuffles.alpha[i]);
        }
    }

    static Pieces<4> LoadUnit(const uint8_t* src) {
        Pieces<4> loads;
        for (size_t i = 0; i < 4; ++i) {
            loads[i] = LoadApart(src + (kThree ? kSplitLoads4[i] : kSplitLoads3[i]), kCallerBytes);
        }
        return loads;
    }

    Pieces<ColourSamples> Colour(const Pieces<4>& loads) const {
        Pieces<ColourSamples> colour;
        for (size_t i = 0; i < ColourSamples; ++i) {
            const size_t first = kThree ? i : 2 * i;
            colour[i] = ShuffleTwo(loads[first], colourPatterns[i][0], loads[first + 1], colourPatterns[i][1]);
        }
        return colour;
    }

    Bytes Alpha(const Pieces<4>& loads) const {
        return ShuffleTwo(loads[0], alphaPatterns[0], loads[1], alphaPatterns[1]) |
               ShuffleTwo(loads[2], alphaPatterns[2], loads[3], alphaPatterns[3]);
    }
};

// Rounds of several units: stores that cross cache lines are expensive unless they follow one another, so alpha is kept
// until the colour of all is stored.
template <size_t ColourSamples, bool WithAlpha>
size_t SplitRounds(const SplitShuffles& shuffles, const uint8_t* src, uint8_t* colour, uint8_t* alpha,
                   size_t alphaBytes, size_t sampleBytes) {
    using Unit = AlphaUnit<ColourSamples>;
    constexpr size_t kUnits = 2;
    const Unit unit(shuffles);
    return CoverInRounds(alphaBytes, kUnits * kVectorBytes, sampleBytes, true, false, [&](size_t at) {
        Pieces<kUnits> alphas;
        for (size_t i = 0; i < kUnits; ++i) {
            const size_t place = at + i * kVectorBytes;
            const auto loads = Unit::LoadUnit(src + place * (ColourSamples + 1));
            StoreUnits(colour + place * ColourSamples, unit.Colour(loads));
            if constexpr (WithAlpha) {
                alphas[i] = unit.Alpha(loads);
            }
        }
        if constexpr (WithAlpha) {
            StoreAll(alpha + at, alphas);
        }
    });
}

void SplitRow(const Order& order, size_t sampleBytes, const uint8_t* src, uint8_t* colour, uint8_t* alpha,
              size_t pixels) {
    const SplitShuffles& shuffles = AlphaShufflesOf(order).split[SampleSizeIndex(sampleBytes)];
    const size_t alphaBytes = pixels * sampleBytes;
    const auto rounds = order.colourSamples == 3 ? (alpha != nullptr ? SplitRounds<3, true> : SplitRounds<3, false>)
                                                 : (alpha != nullptr ? SplitRounds<2, true> : SplitRounds<2, false>);
    const size_t done = rounds(shuffles, src, colour, alpha, alphaBytes, sampleBytes);
    if (done != alphaBytes) {
        narrower.splitRow(order, sampleBytes, src + done * order.samples, colour + done * order.colourSamples,
                          alpha != nullptr ? alpha + done : nullptr, pixels - done / sampleBytes);
    }
}

template <size_t ColourSamples>
size_t MergeRounds(const MergeShuffles& shuffles, const uint8_t* colour, const uint8_t* alpha, uint8_t* dst,
                   size_t alphaBytes, size_t sampleBytes) {
    constexpr size_t kSamples = ColourSamples + 1;
    Pieces<kSamples> colourPatterns;
    Pieces<kSamples> alphaPatterns;
    for (size_t i = 0; i < kSamples; ++i) {
        colourPatterns[i] = InEachLane(shuffles.colour[i]);
        alphaPatterns[i] = InEachLane(shuffles.alpha[i]);
    }
    return CoverInRounds(alphaBytes, kVectorBytes, sampleBytes, true, false, [&](size_t at) {
        const uint8_t* unit = colour + at * ColourSamples;
        const Bytes alphas = Load<uint8_t>(alpha + at);
        Pieces<kSamples> out;
        for (size_t i = 0; i < kSamples; ++i) {
            const size_t offset = ColourSamples == 3 ? kMergeLoads4[i] : kMergeLoads3[i];
            out[i] = ShuffleTwo(LoadApart(unit + offset, ColourSamples * kPieceBytes), colourPatterns[i], alphas,
                                alphaPatterns[i]);
        }
        StoreUnits(dst + at * kSamples, out);
    });
}

void MergeRow(const Order& order, size_t sampleBytes, const uint8_t* colour, const uint8_t* alpha, uint8_t* dst,
              size_t pixels) {
    const MergeShuffles& shuffles = AlphaShufflesOf(order).merge[SampleSizeIndex(sampleBytes)];
    const size_t alphaBytes = pixels * sampleBytes;
    const auto rounds = order.colourSamples == 3 ? MergeRounds<3> : MergeRounds<2>;
    const size_t done = rounds(shuffles, colour, alpha, dst, alphaBytes, sampleBytes);
    if (done != alphaBytes) {
        narrower.mergeRow(order, sampleBytes, colour + done * order.colourSamples, alpha + done,
                          dst + done * order.samples, pixels - done / sampleBytes);
    }
}

}  // namespace
}  // namespace plenar
