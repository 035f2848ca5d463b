// Vectors put together from bytes of any places of a unit's input: tables, made by the compiler, of where to load and
// how to shuffle.
#pragma once

#include <cstddef>
#include <cstdint>

#include "conversion/vector/byte_shuffles.h"
#include "format/order.h"
#include "simd/vector.h"

namespace plenar {
namespace {

// Vectors hold their bytes in the order of the row, and are shuffled by lanes of 16 bytes: each lane from the 16 bytes
// of the unit's input that begin at its `load`.
struct Gather {
    size_t load[kSixteens] = {};
    uint8_t pattern[kVectorBytes] = {};
};

// For lanes that need more than 16 bytes of input: what one load has of them, and the rest.
struct GatherTwo {
    Gather lower;
    Gather upper;
};

// What each lane of vector `index` needs of the input, from its first byte up to the one behind its last.
struct LaneSpans {
    size_t first[kSixteens] = {};
    size_t end[kSixteens] = {};

    template <class Source>
    constexpr LaneSpans(size_t index, const Source& source) {
        for (size_t lane = 0; lane < kSixteens; ++lane) {
            first[lane] = kNowhere;
            for (size_t i = 0; i < kPieceBytes; ++i) {
                const size_t from = source(index * kVectorBytes + lane * kPieceBytes + i);
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
template <class Suits>
constexpr bool LoadEvenly(Gather& gather, size_t step, size_t inputBytes, bool fromLast, const Suits& suits) {
    const size_t readBytes = (kSixteens - 1) * step + kPieceBytes;
    for (size_t i = 0; i + readBytes <= inputBytes; ++i) {
        const size_t start = fromLast ? inputBytes - readBytes - i : i;
        bool suitsAll = true;
        for (size_t lane = 0; lane < kSixteens; ++lane) {
            gather.load[lane] = start + lane * step;
            suitsAll = suitsAll && suits(lane, gather.load[lane]);
        }
        if (suitsAll) {
            return true;
        }
    }
    return false;
}

// One load for all lanes, or for each 16 bytes in a row, is a single load of the vector; loads at other places have
// to be joined.
constexpr Gather PlaceLoads(const LaneSpans& spans, size_t inputBytes) {
    const auto holds = [&](size_t lane, size_t load) {
        return load <= spans.first[lane] && spans.end[lane] <= load + kPieceBytes;
    };
    Gather gather;
    if (LoadEvenly(gather, 0, inputBytes, true, holds) || LoadEvenly(gather, kPieceBytes, inputBytes, true, holds)) {
        return gather;
    }
    for (size_t lane = 0; lane < kSixteens; ++lane) {
        const size_t last = inputBytes - kPieceBytes;
        gather.load[lane] = spans.first[lane] < last ? spans.first[lane] : last;
    }
    return gather;
}

// Takes the bytes of the vector that its loads hold, but for those that `taken` holds already.
template <class Source>
constexpr void TakeBytes(Gather& gather, size_t index, const Source& source, const Gather* taken = nullptr) {
    for (size_t i = 0; i < kVectorBytes; ++i) {
        const size_t from = source(index * kVectorBytes + i);
        const size_t load = gather.load[i / kPieceBytes];
        const bool loaded = from != kNowhere && from >= load && from < load + kPieceBytes;
        const bool isTaken = taken != nullptr && taken->pattern[i] != kZeroByte;
        gather.pattern[i] = loaded && !isTaken ? static_cast<uint8_t>(from - load) : kZeroByte;
    }
}

// Vector `index` of a unit whose byte i comes from byte source(i) of its `inputBytes` bytes of input.
template <class Source>
constexpr Gather MakeGather(size_t index, size_t inputBytes, const Source& source) {
    Gather gather = PlaceLoads(LaneSpans(index, source), inputBytes);
    TakeBytes(gather, index, source);
    return gather;
}

template <class Source>
constexpr GatherTwo MakeGatherTwo(size_t index, size_t inputBytes, const Source& source) {
    const LaneSpans spans(index, source);
    GatherTwo gather;
    const auto reachesFirst = [&](size_t lane, size_t load) { return load <= spans.first[lane]; };
    const auto reachesEnd = [&](size_t lane, size_t load) { return spans.end[lane] <= load + kPieceBytes; };
    const bool lowerEven = LoadEvenly(gather.lower, kPieceBytes, inputBytes, true, reachesFirst);
    const bool upperEven = LoadEvenly(gather.upper, kPieceBytes, inputBytes, false, reachesEnd);
    for (size_t lane = 0; lane < kSixteens; ++lane) {
        gather.lower.load[lane] = lowerEven ? gather.lower.load[lane] : spans.first[lane];
        gather.upper.load[lane] = upperEven ? gather.upper.load[lane] : spans.end[lane] - kPieceBytes;
    }
    TakeBytes(gather.lower, index, source);
    TakeBytes(gather.upper, index, source, &gather.lower);
    return gather;
}

// 16 bytes for each lane, `distance` bytes apart.
[[gnu::always_inline]] inline Bytes LoadApart(const uint8_t* src, size_t distance) {
    size_t at[kSixteens];
    for (size_t lane = 0; lane < kSixteens; ++lane) {
        at[lane] = lane * distance;
    }
    return TargetVector::LoadLanes(src, at);
}

[[gnu::always_inline]] inline Bytes InEachLane(const Shuffle16& shuffle) {
    return LoadApart(shuffle.byte, 0);
}

[[gnu::always_inline]] inline Bytes Gathered(const uint8_t* src, const Gather& gather) {
    return TargetVector::Shuffle(TargetVector::LoadLanes(src, gather.load), Load<uint8_t>(gather.pattern));
}

[[gnu::always_inline]] inline Bytes Gathered(const uint8_t* src, const GatherTwo& gather) {
    return Gathered(src, gather.lower) | Gathered(src, gather.upper);
}

// What the words of a vector are multiplied by.
struct Factors {
    uint16_t word[kLanes<uint16_t>];
};

// N tables, the one for vector i being make(i).
template <class Table, size_t N>
struct Tables {
    Table table[N];

    template <class Make>
    constexpr explicit Tables(const Make& make) {
        for (size_t i = 0; i < N; ++i) {
            table[i] = make(i);
        }
    }
    constexpr const Table& operator[](size_t i) const { return table[i]; }
};

// The plane's sample that becomes sample i of the caller's row, and the other way round, in orders without alpha among
// the samples.
constexpr size_t MovedSample(Movement movement, size_t i) {
    return movement == Movement::SwapPairs ? i ^ 1 : movement == Movement::ReverseTriples ? i / 3 * 3 + 2 - i % 3 : i;
}

// The samples that are moved together.
constexpr size_t MovedTogether(Movement movement) {
    return movement == Movement::ReverseTriples ? 3 : movement == Movement::SwapPairs ? 2 : 1;
}

// Likewise for bytes of samples.
constexpr size_t MovedByte(Movement movement, size_t i, size_t sampleBytes) {
    return MovedSample(movement, i / sampleBytes) * sampleBytes + i % sampleBytes;
}

}  // namespace
}  // namespace plenar
