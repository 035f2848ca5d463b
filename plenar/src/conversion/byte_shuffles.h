// Shuffles of 16 bytes, the tables behind the vector kernels.
//
// A kernel makes its output in units of a few pieces of 16 bytes. Each piece is put together from one or two loads of
// 16 bytes of the unit's input, each shuffled so that its bytes stand where the piece has them, with zeros elsewhere.
#pragma once

#include <cstddef>
#include <cstdint>

namespace plenar {

// For each byte of the result the index of its source, or zeroLane.
struct Shuffle16 {
    uint8_t byte[16] = {};
};

inline constexpr uint8_t zeroLane = 0x80;
inline constexpr size_t pieceBytes = 16;
inline constexpr size_t nowhere = SIZE_MAX;

// Samples of 1, 2 and 4 bytes, told apart by the logarithm of their size.
inline constexpr size_t sampleSizes = 3;
constexpr size_t SampleSizeIndex(size_t sampleBytes) {
    return sampleBytes >> 1;
}

// What the load at offset `load` contributes to a piece of the output, whose byte i comes from byte source(i) of the
// input.
template <class Source>
constexpr Shuffle16 PieceShuffle(size_t piece, size_t load, const Source& source) {
    Shuffle16 shuffle;
    for (size_t i = 0; i < pieceBytes; ++i) {
        const size_t from = source(piece * pieceBytes + i);
        const bool loaded = from != nowhere && from >= load && from < load + pieceBytes;
        shuffle.byte[i] = loaded ? static_cast<uint8_t>(from - load) : zeroLane;
    }
    return shuffle;
}

// Pixels with alpha. A unit is four groups of 4 bytes of alpha each: 16 bytes of alpha, and 64 bytes of the caller with
// 48 of colour, or in 4:2:2 rows 48 with 32. These are the offsets of the loads in the caller's bytes and in the
// colour's.
inline constexpr size_t groupAlphaBytes = 4;
inline constexpr size_t splitLoads4[4] = {0, 16, 32, 48};  // colour piece j comes from loads j and j + 1
inline constexpr size_t splitLoads3[4] = {0, 8, 24, 32};   // colour piece j comes from loads 2 j and 2 j + 1
inline constexpr size_t mergeLoads4[4] = {0, 12, 24, 32};  // caller piece j comes from load j, and from the alpha bytes
inline constexpr size_t mergeLoads3[4] = {0, 8, 16, 0};    // likewise, of three pieces

struct SplitShuffles {
    Shuffle16 colour[3][2];
    Shuffle16 alpha[4];  // group i comes from load i
};

struct MergeShuffles {
    Shuffle16 colour[4];
    Shuffle16 alpha[4];
};

// Triples whose first and third sample change places: units of 48 bytes.
inline constexpr size_t tripleLoads[3][2] = {{0, 8}, {12, 20}, {24, 32}};

struct TripleShuffles {
    Shuffle16 piece[3][2];
};

constexpr TripleShuffles MakeTripleShuffles(size_t sampleBytes) {
    TripleShuffles shuffles;
    const auto source = [&](size_t i) {
        const size_t sample = i / sampleBytes;
        return (sample / 3 * 3 + 2 - sample % 3) * sampleBytes + i % sampleBytes;
    };
    for (size_t piece = 0; piece < 3; ++piece) {
        for (size_t term = 0; term < 2; ++term) {
            shuffles.piece[piece][term] = PieceShuffle(piece, tripleLoads[piece][term], source);
        }
    }
    return shuffles;
}

// Pairs whose samples change places.
constexpr Shuffle16 MakePairShuffle(size_t sampleBytes) {
    return PieceShuffle(0, 0, [&](size_t i) { return (i / sampleBytes ^ 1) * sampleBytes + i % sampleBytes; });
}

inline constexpr TripleShuffles tripleShuffles[sampleSizes] = {MakeTripleShuffles(1), MakeTripleShuffles(2),
                                                               MakeTripleShuffles(4)};
inline constexpr Shuffle16 pairShuffles[sampleSizes] = {MakePairShuffle(1), MakePairShuffle(2), MakePairShuffle(4)};

}  // namespace plenar
