// The caller's words in the order of the plane: what a row is packed from, for each way in which its samples move.
//
// `kVectors` of them make a unit, of `kSamples` samples, from `kCallerBytes` bytes of the caller; samples of a `kGroup`
// are moved together. `kShufflesMuch` tells that a source keeps the processor's shuffles busy.
#pragma once

#include <type_traits>

#include "conversion/vector/alpha_shuffles.h"
#include "conversion/vector/exchange.h"
#include "conversion/vector/gather.h"
#include "conversion/vector/split_merge.h"
#include "format/packed10.h"

namespace plenar {
namespace {

constexpr size_t kUnitVectors = 8;
constexpr size_t kTripleUnitVectors = 12;

struct PlainWords {
    static constexpr bool kShufflesMuch = false;
    static constexpr size_t kGroup = 1;
    static constexpr size_t kVectors = kUnitVectors;
    static constexpr size_t kSamples = kVectors * kLanes<uint16_t>;
    static constexpr size_t kCallerBytes = 2 * kSamples;

    explicit PlainWords(const Order& /*order*/) {}

    template <size_t I>
    Words LoadWords(const uint8_t* src) const {
        return Load<uint16_t>(src + I * kVectorBytes);
    }
};

struct PairWords : PlainWords {
    static constexpr size_t kGroup = 2;

    Bytes pattern = InEachLane(kPairShuffles[SampleSizeIndex(2)]);

    using PlainWords::PlainWords;

    template <size_t I>
    Words LoadWords(const uint8_t* src) const {
        return As<Words>(TargetVector::Shuffle(Load<uint8_t>(src + I * kVectorBytes), pattern));
    }
};

struct TripleWords {
    static constexpr bool kShufflesMuch = true;
    static constexpr size_t kGroup = 3;
    static constexpr size_t kVectors = kTripleUnitVectors;
    static constexpr size_t kSamples = kVectors * kLanes<uint16_t>;
    static constexpr size_t kCallerBytes = 2 * kSamples;

    explicit TripleWords(const Order& /*order*/) {}

    template <size_t I>
    Words LoadWords(const uint8_t* src) const {
        return As<Words>(Gathered(src + I / 3 * 3 * kVectorBytes, kTripleGathers<2>[I % 3]));
    }
};

template <Movement Moved>
using MovedWords = std::conditional_t<Moved == Movement::SwapPairs, PairWords,
                                      std::conditional_t<Moved == Movement::ReverseTriples, TripleWords, PlainWords>>;

// The colour of pixels with alpha; alpha is dropped.
template <size_t ColourSamples>
struct ColourWords {
    static constexpr bool kThree = ColourSamples == 3;
    static constexpr bool kShufflesMuch = true;
    static constexpr size_t kGroup = ColourSamples;
    static constexpr size_t kVectors = kThree ? kTripleUnitVectors : kUnitVectors;
    static constexpr size_t kSamples = kVectors * kLanes<uint16_t>;
    static constexpr size_t kCallerBytes = 2 * kSamples / ColourSamples * (ColourSamples + 1);

    Bytes patterns[ColourSamples][2];

    explicit ColourWords(const Order& order) {
        const SplitShuffles& shuffles = AlphaShufflesOf(order).split[SampleSizeIndex(2)];
        for (size_t index = 0; index < ColourSamples; ++index) {
            for (size_t term = 0; term < 2; ++term) {
                size_t at[kSixteens];
                for (size_t lane = 0; lane < kSixteens; ++lane) {
                    at[lane] = ((index * kSixteens + lane) % ColourSamples * 2 + term) * sizeof(Shuffle16);
                }
                patterns[index][term] = TargetVector::LoadLanes(shuffles.colour[0][0].byte, at);
            }
        }
    }

    template <size_t I>
    Words LoadWords(const uint8_t* src) const {
        constexpr auto kLower = LoadsOf(I, 0);
        constexpr auto kUpper = LoadsOf(I, 1);
        const auto& pattern = patterns[I % ColourSamples];
        return As<Words>(ShuffleTwo(TargetVector::LoadLanes(src, kLower.load), pattern[0],
                                    TargetVector::LoadLanes(src, kUpper.load), pattern[1]));
    }

private:
    static constexpr Gather LoadsOf(size_t index, size_t term) {
        Gather loads;
        for (size_t lane = 0; lane < kSixteens; ++lane) {
            const size_t piece = (index * kSixteens + lane) % ColourSamples;
            const size_t unit = (index * kSixteens + lane) / ColourSamples;
            const size_t offset = kThree ? kSplitLoads4[piece + term] : kSplitLoads3[2 * piece + term];
            loads.load[lane] = unit * (ColourSamples + 1) * kPieceBytes + offset;
        }
        return loads;
    }
};

// Field f of a dword of Packed10 begins in byte f, 2 f bits up; a multiplication brings it to the top of a word.
struct PackedWords {
    static constexpr bool kShufflesMuch = true;
    static constexpr size_t kGroup = kPackedGroupSamples;
    static constexpr size_t kVectors = kTripleUnitVectors;
    static constexpr size_t kSamples = kVectors * kLanes<uint16_t>;
    static constexpr size_t kCallerBytes = kSamples / kPackedGroupSamples * kPackedGroupBytes;

    explicit PackedWords(const Order& /*order*/) {}

    template <size_t I>
    Words LoadWords(const uint8_t* src) const {
        return As<Words>(Gathered(src, kFields[I])) * Load<uint16_t>(kFactors[I % 3].word);
    }

private:
    static constexpr Tables<Gather, kVectors> kFields{[](size_t index) {
        return MakeGather(index, kCallerBytes,
                          [](size_t i) { return i / 2 / kPackedWordFields * 4 + i / 2 % kPackedWordFields + i % 2; });
    }};
    static constexpr Tables<Factors, 3> kFactors{[](size_t index) {
        Factors made;
        for (size_t i = 0; i < kLanes<uint16_t>; ++i) {
            made.word[i] = static_cast<uint16_t>(64U >> (index * kLanes<uint16_t> + i) % kPackedWordFields * 2);
        }
        return made;
    }};
};

}  // namespace
}  // namespace plenar
