// Split rows of 10 bits to whole groups of Packed10.
#pragma once

#include "conversion/vector/gather.h"
#include "conversion/vector/rounds.h"
#include "format/packed10.h"

namespace plenar {
namespace {

constexpr size_t kPackedUnitGroups = 8;
constexpr size_t kPackedUnitSamples = kPackedUnitGroups * kPackedGroupSamples;

// Some high bytes of a vector's dwords, with loads that hold all of them, so that they serve twice.
template <class Source>
constexpr Gather HighBytesOf(size_t index, const Source& source) {
    Gather gather = MakeGather(index, kPackedUnitSamples, [](size_t i) { return i / 4 * 3 + i % 4 * 3 / 4; });
    TakeBytes(gather, index, source);
    return gather;
}

// Where the top bytes of the words of four dwords go, which are one half of 16 bytes.
constexpr Shuffle16 SixesOf(size_t half) {
    Shuffle16 shuffle;
    for (size_t i = 0; i < kPieceBytes; ++i) {
        shuffle.byte[i] = i % 4 == 3 ? kZeroByte : static_cast<uint8_t>(8 * half + i / 4 * 2 + 1);
    }
    return shuffle;
}

// A dword has three samples: the top bytes of samples 0 and 1 go to a word each and are added with their weights, that
// of sample 2 goes to the upper word. The low bits of a dword's samples are 6 consecutive bits of the low part, from
// bit 6 j of the group on for dword j. `kSixes` puts the two bytes that hold them in a word, for two vectors of dwords
// at a time; a multiplication brings the bits to the top of that word, and a shuffle to the byte of each field.
struct PackedTables {
    static constexpr size_t kVectors = kPackedUnitGroups * kPackedGroupBytes / kVectorBytes;
    static constexpr Tables<Gather, kVectors> kPairs{[](size_t index) {
        return HighBytesOf(index, [](size_t i) { return i % 2 == 0 ? i / 4 * 3 + i % 4 / 2 : kNowhere; });
    }};
    static constexpr Tables<Gather, kVectors> kThirds{[](size_t index) {
        return HighBytesOf(index, [](size_t i) { return i % 4 == 2 ? i / 4 * 3 + 2 : kNowhere; });
    }};
    static constexpr Tables<Gather, kVectors / 2> kSixes{[](size_t two) {
        return MakeGather(two, kPackedUnitSamples / SamplesInLowByte(2), [](size_t i) {
            // In each lane the first four words are of one vector, the others of the next.
            const size_t lane = i / kPieceBytes % kSixteens;
            const size_t index = i / kVectorBytes * 2 + i % kPieceBytes / 8;
            const size_t dword = i / 2 % 4;
            const size_t byte = 6 * dword / 8 + i % 2;
            return byte < kPackedGroupLowBytes ? (index * kSixteens + lane) * kPackedGroupLowBytes + byte : kNowhere;
        });
    }};
    static constexpr Shuffle16 kToFields[2] = {SixesOf(0), SixesOf(1)};
};

void PlaneToPackedGroups(const uint8_t* high, const uint8_t* low, size_t groups, uint8_t* packed) {
    using Tables = PackedTables;
    const Words pairWeights = WordsOf(1 << 2, 1 << 12);
    const Words thirdWeights = WordsOf(0, 1 << 6);
    const Words sixFactors =
        As<Words>(Splat(uint64_t{256} | uint64_t{4} << 16 | uint64_t{16} << 32 | uint64_t{64} << 48));
    const Words lowMask = WordsOf(0x0C03, 0x0030);
    const size_t done = CoverInRounds(groups, kPackedUnitGroups, 1, true, false, [&](size_t at) {
        const uint8_t* highs = high + at * kPackedGroupSamples;
        const uint8_t* lows = low + at * kPackedGroupLowBytes;
        MakeAndStore<Tables::kVectors>(packed + at * kPackedGroupBytes, [&]<size_t I>() {
            const Words sixes = As<Words>(Gathered(lows, Tables::kSixes[I / 2])) * sixFactors;
            const Bytes bits = TargetVector::Shuffle(As<Bytes>(sixes), InEachLane(Tables::kToFields[I % 2]));
            const Words pairs =
                As<Words>(TargetVector::MultiplyAdd(As<Words>(Gathered(highs, Tables::kPairs[I])), pairWeights));
            const Words thirds = As<Words>(Gathered(highs, Tables::kThirds[I])) * thirdWeights;
            return pairs | thirds | (As<Words>(bits) & lowMask);
        });
    });
    if (done != groups) {
        narrower.planeToPackedGroups(high + done * kPackedGroupSamples, low + done * kPackedGroupLowBytes,
                                     groups - done, packed + done * kPackedGroupBytes);
    }
}

}  // namespace
}  // namespace plenar
