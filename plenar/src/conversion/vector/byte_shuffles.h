// Shuffles of 16 bytes, the tables behind the vector kernels.
//
// A kernel makes its output in units of a few pieces of 16 bytes. Each piece is put together from one or two loads of
// 16 bytes of the unit's input, each shuffled so that its bytes stand where the piece has them, with zeros elsewhere.
// All tables are made by the compiler, from functions that say which byte of the input a byte of the output is.
#pragma once

#include <cstddef>
#include <cstdint>

namespace plenar {

// For each byte of the result the index of its source, or zeroLane.
struct Shuffle16 {
    uint8_t byte[16] = {};
};

inline constexpr uint8_t kZeroLane = 0x80;
inline constexpr size_t kPieceBytes = 16;
inline constexpr size_t kNowhere = SIZE_MAX;

// Samples of 1, 2 and 4 bytes, told apart by the logarithm of their size.
inline constexpr size_t kSampleSizes = 3;
constexpr size_t SampleSizeIndex(size_t sampleBytes) {
    return sampleBytes >> 1;
}

// What the load at offset `load` contributes to a piece of the output, whose byte i comes from byte source(i) of the
// input.
template <class Source>
constexpr Shuffle16 PieceShuffle(size_t piece, size_t load, const Source& source) {
    Shuffle16 shuffle;
    for (size_t i = 0; i < kPieceBytes; ++i) {
        const size_t from = source(piece * kPieceBytes + i);
        const bool loaded = from != kNowhere && from >= load && from < load + kPieceBytes;
        shuffle.byte[i] = loaded ? static_cast<uint8_t>(from - load) : kZeroLane;
    }
    return shuffle;
}

// Pixels with alpha. A unit is four groups of 4 bytes of alpha each: 16 bytes of alpha, and 64 bytes of the caller with
// 48 of colour, or in 4:2:2 rows 48 with 32. These are the offsets of the loads in the caller's bytes and in the
// colour's.
inline constexpr size_t kGroupAlphaBytes = 4;
inline constexpr size_t kSplitLoads4[4] = {0, 16, 32, 48};  // colour piece j comes from loads j and j + 1
inline constexpr size_t kSplitLoads3[4] = {0, 8, 24, 32};   // colour piece j comes from loads 2 j and 2 j + 1
inline constexpr size_t kMergeLoads4[4] = {0, 12, 24,
                                           32};           // caller piece j comes from load j, and from the alpha bytes
inline constexpr size_t kMergeLoads3[4] = {0, 8, 16, 0};  // likewise, of three pieces

struct SplitShuffles {
    Shuffle16 colour[3][2];
    Shuffle16 alpha[4];  // group i comes from load i
};

struct MergeShuffles {
    Shuffle16 colour[4];
    Shuffle16 alpha[4];
};

// Pairs whose samples change places.
constexpr Shuffle16 MakePairShuffle(size_t sampleBytes) {
    return PieceShuffle(0, 0, [&](size_t i) { return (i / sampleBytes ^ 1) * sampleBytes + i % sampleBytes; });
}

inline constexpr Shuffle16 kPairShuffles[kSampleSizes] = {MakePairShuffle(1), MakePairShuffle(2), MakePairShuffle(4)};

// A register of several lanes holds its pieces in the order of the row: lane l of register r is piece r * Lanes + l.
// Each lane is shuffled from the 16 bytes of the unit's input that begin at its `load`.
template <size_t Lanes>
struct Gather {
    size_t load[Lanes] = {};
    uint8_t pattern[Lanes * kPieceBytes] = {};
};

// For lanes that need more than 16 bytes of input: what one load has of them, and the rest.
template <size_t Lanes>
struct GatherTwo {
    Gather<Lanes> lower;
    Gather<Lanes> upper;
};

// What each lane of register `reg` needs of the input, from its first byte up to the one behind its last.
template <size_t Lanes>
struct LaneSpans {
    size_t first[Lanes] = {};
    size_t end[Lanes] = {};

    template <class Source>
    constexpr LaneSpans(size_t reg, const Source& source) {
        for (size_t lane = 0; lane < Lanes; ++lane) {
            first[lane] = kNowhere;
            for (size_t i = 0; i < kPieceBytes; ++i) {
                const size_t from = source((reg * Lanes + lane) * kPieceBytes + i);
                if (from != kNowhere) {
                    first[lane] = from < first[lane] ? from : first[lane];
                    end[lane] = from < end[lane] ? end[lane] : from + 1;
                }
            }
        }
    }
};

// The loads begin `step` bytes apart, the first of them at the first or last offset from which each lane's load, given
// as (lane, offset), suits. Returns whether there is one.
template <size_t Lanes, class Suits>
constexpr bool LoadEvenly(Gather<Lanes>& gather, size_t step, size_t inputBytes, bool fromLast, const Suits& suits) {
    const size_t readBytes = (Lanes - 1) * step + kPieceBytes;
    for (size_t i = 0; i + readBytes <= inputBytes; ++i) {
        const size_t start = fromLast ? inputBytes - readBytes - i : i;
        bool suitsAll = true;
        for (size_t lane = 0; lane < Lanes; ++lane) {
            gather.load[lane] = start + lane * step;
            suitsAll = suitsAll && suits(lane, gather.load[lane]);
        }
        if (suitsAll) {
            return true;
        }
    }
    return false;
}

// One load for all lanes, or for each 16 bytes in a row, is a single load of the register; loads at other places have
// to be joined.
template <size_t Lanes>
constexpr Gather<Lanes> PlaceLoads(const LaneSpans<Lanes>& spans, size_t inputBytes) {
    const auto holds = [&](size_t lane, size_t load) {
        return load <= spans.first[lane] && spans.end[lane] <= load + kPieceBytes;
    };
    Gather<Lanes> gather;
    if (LoadEvenly(gather, 0, inputBytes, true, holds) || LoadEvenly(gather, kPieceBytes, inputBytes, true, holds)) {
        return gather;
    }
    for (size_t lane = 0; lane < Lanes; ++lane) {
        const size_t last = inputBytes - kPieceBytes;
        gather.load[lane] = spans.first[lane] < last ? spans.first[lane] : last;
    }
    return gather;
}

// Takes the bytes of the register that its loads hold, but for those that `taken` holds already.
template <size_t Lanes, class Source>
constexpr void TakeBytes(Gather<Lanes>& gather, size_t reg, const Source& source,
                         const Gather<Lanes>* taken = nullptr) {
    for (size_t i = 0; i < Lanes * kPieceBytes; ++i) {
        const size_t from = source(reg * Lanes * kPieceBytes + i);
        const size_t load = gather.load[i / kPieceBytes];
        const bool loaded = from != kNowhere && from >= load && from < load + kPieceBytes;
        const bool isTaken = taken != nullptr && taken->pattern[i] != kZeroLane;
        gather.pattern[i] = loaded && !isTaken ? static_cast<uint8_t>(from - load) : kZeroLane;
    }
}

// Register `reg` of a unit whose byte i comes from byte source(i) of its `inputBytes` bytes of input.
template <size_t Lanes, class Source>
constexpr Gather<Lanes> MakeGather(size_t reg, size_t inputBytes, const Source& source) {
    Gather<Lanes> gather = PlaceLoads(LaneSpans<Lanes>(reg, source), inputBytes);
    TakeBytes(gather, reg, source);
    return gather;
}

template <size_t Lanes, class Source>
constexpr GatherTwo<Lanes> MakeGatherTwo(size_t reg, size_t inputBytes, const Source& source) {
    const LaneSpans<Lanes> spans(reg, source);
    GatherTwo<Lanes> gather;
    const auto reachesFirst = [&](size_t lane, size_t load) { return load <= spans.first[lane]; };
    const auto reachesEnd = [&](size_t lane, size_t load) { return spans.end[lane] <= load + kPieceBytes; };
    const bool lowerEven = LoadEvenly(gather.lower, kPieceBytes, inputBytes, true, reachesFirst);
    const bool upperEven = LoadEvenly(gather.upper, kPieceBytes, inputBytes, false, reachesEnd);
    for (size_t lane = 0; lane < Lanes; ++lane) {
        gather.lower.load[lane] = lowerEven ? gather.lower.load[lane] : spans.first[lane];
        gather.upper.load[lane] = upperEven ? gather.upper.load[lane] : spans.end[lane] - kPieceBytes;
    }
    TakeBytes(gather.lower, reg, source);
    TakeBytes(gather.upper, reg, source, &gather.lower);
    return gather;
}

// Triples whose first and third sample change places: the byte of the source that becomes byte i.
constexpr size_t ReversedTripleByte(size_t i, size_t sampleBytes) {
    const size_t sample = i / sampleBytes;
    return (sample / 3 * 3 + 2 - sample % 3) * sampleBytes + i % sampleBytes;
}

}  // namespace plenar
