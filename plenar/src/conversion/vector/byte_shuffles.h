// Shuffles of 16 bytes, the tables behind the vector kernels.
//
// A kernel makes its output in units of a few pieces of 16 bytes. Each piece is put together from one or two loads of
// 16 bytes of the unit's input, each shuffled so that its bytes stand where the piece has them, with zeros elsewhere.
// All tables are made by the compiler, from functions that say which byte of the input a byte of the output is.
#pragma once

#include <cstddef>
#include <cstdint>

namespace plenar {

// For each byte of the result the index of its source, or kZeroByte.
struct Shuffle16 {
    uint8_t byte[16] = {};
};

inline constexpr uint8_t kZeroByte = 0x80;
inline constexpr size_t kPieceBytes = 16;
inline constexpr size_t kNowhere = SIZE_MAX;

// Samples of 1, 2 and 4 bytes, told apart by the logarithm of their size.
inline constexpr size_t kSampleSizes = 3;
static constexpr size_t SampleSizeIndex(size_t sampleBytes) {
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
        shuffle.byte[i] = loaded ? static_cast<uint8_t>(from - load) : kZeroByte;
    }
    return shuffle;
}

}  // namespace plenar
