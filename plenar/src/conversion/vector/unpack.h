// Split rows of 10 and 12 bits, unpacked into words.
#pragma once

#include "conversion/vector/gather.h"
#include "conversion/vector/rounds.h"

namespace plenar {
namespace {

// The least that fills loads of 16 bytes of the low part, and whole vectors of triples.
constexpr size_t UnitSamples(Movement movement) {
    return movement == Movement::ReverseTriples ? 96 : 64;
}

// How the caller's words are put together: `kTops` puts the samples' high bytes in their places, `kLows` the bytes of
// the low part that hold their low bits; these are brought to the top of the low byte by multiplication.
template <size_t LowBits, Movement Moved>
struct UnpackTables {
    static constexpr size_t kSamples = UnitSamples(Moved);
    static constexpr size_t kVectors = kSamples / kLanes<uint16_t>;
    static constexpr size_t kPerByte = SamplesInLowByte(LowBits);
    // Vectors that differ in their factors.
    static constexpr size_t kPeriod = Moved == Movement::ReverseTriples ? 3 : 1;

    static constexpr Tables<Gather, kVectors> kTops{[](size_t index) {
        return MakeGather(index, kSamples, [](size_t i) { return i % 2 == 1 ? MovedSample(Moved, i / 2) : kNowhere; });
    }};
    static constexpr Tables<Gather, kVectors> kLows{[](size_t index) {
        return MakeGather(index, kSamples / kPerByte,
                          [](size_t i) { return i % 2 == 0 ? MovedSample(Moved, i / 2) / kPerByte : kNowhere; });
    }};
    static constexpr Tables<Factors, kPeriod> kFactors{[](size_t index) {
        Factors made;
        for (size_t i = 0; i < kLanes<uint16_t>; ++i) {
            const size_t place = MovedSample(Moved, index * kLanes<uint16_t> + i) % kPerByte;
            made.word[i] = static_cast<uint16_t>(1U << (8 - LowBits * (place + 1)));
        }
        return made;
    }};
};

template <size_t LowBits, Movement Moved>
size_t UnpackRounds(const uint8_t* high, const uint8_t* low, size_t samples, uint8_t* words) {
    using Tables = UnpackTables<LowBits, Moved>;
    const Words mask = Splat(static_cast<uint16_t>(LowBits == 2 ? 0xC0 : 0xF0));
    constexpr size_t kStep = StepOf(MovedTogether(Moved), LowBits);
    return CoverInRounds(samples, Tables::kSamples, kStep, true, false, [&](size_t at) {
        MakeAndStore<Tables::kVectors>(words + 2 * at, [&]<size_t I>() {
            const Words tops = As<Words>(Gathered(high + at, Tables::kTops[I]));
            const Words lows = As<Words>(Gathered(low + at / Tables::kPerByte, Tables::kLows[I]));
            const Words bits = lows * Load<uint16_t>(Tables::kFactors[I % Tables::kPeriod].word);
            return tops | (bits & mask);
        });
    });
}

// Less than a round, by way of a whole round in memory beside the row; what doesn't make whole groups is left. Returns
// the samples done.
template <size_t LowBits, Movement Moved>
size_t UnpackStaged(const uint8_t* high, const uint8_t* low, size_t samples, uint8_t* words) {
    constexpr size_t kRoundSamples = UnitSamples(Moved);
    const size_t covered = samples - samples % StepOf(MovedTogether(Moved), LowBits);
    uint8_t stagedHigh[kRoundSamples] = {};
    uint8_t stagedLow[kRoundSamples / SamplesInLowByte(LowBits)] = {};
    uint8_t stagedWords[2 * kRoundSamples];
    __builtin_memcpy(stagedHigh, high, covered);
    __builtin_memcpy(stagedLow, low, covered / SamplesInLowByte(LowBits));
    UnpackRounds<LowBits, Moved>(stagedHigh, stagedLow, kRoundSamples, stagedWords);
    __builtin_memcpy(words, stagedWords, 2 * covered);
    return covered;
}

// Rows of less than a round are staged by the narrowest target, as the plain kernels would take longer.
template <size_t LowBits, Movement Moved>
size_t UnpackMost(const uint8_t* high, const uint8_t* low, size_t samples, uint8_t* words) {
    const size_t done = UnpackRounds<LowBits, Moved>(high, low, samples, words);
    return done == 0 && kSixteens == 1 ? UnpackStaged<LowBits, Moved>(high, low, samples, words) : done;
}

template <size_t LowBits>
void UnpackRow(const Order& order, const uint8_t* high, const uint8_t* low, size_t samples, uint8_t* words) {
    const size_t done = RoundsOfMovement(
        order, [&]<Movement Moved>() { return UnpackMost<LowBits, Moved>(high, low, samples, words); });
    if (done != samples) {
        const auto rest = LowBits == 2 ? narrower.unpackRow10 : narrower.unpackRow12;
        rest(order, high + done, low + done / SamplesInLowByte(LowBits), samples - done, words + 2 * done);
    }
}

}  // namespace
}  // namespace plenar
