// The kernels in vectors of bytes. Every kernel is written for one lane of 16 bytes and a unit of work of that lane; a
// vector type V of several lanes works on as many units side by side. V brings the instructions (kernels_ssse3.cpp,
// kernels_avx2.cpp). What is left of a row behind the last full round of units is done by a round that ends with the
// row and does some units twice; rows shorter than a round go to the next narrower set of kernels.
//
// V::LoadLanes loads 16 bytes for each lane, `distance` bytes apart. V::StorePieces stores a unit's N pieces of 16
// bytes for all lanes: lane l has the pieces l * N to l * N + N - 1. All other operations of V stay within a lane.
//
// This header is compiled for several instruction sets into one program. Everything in it is local to the file that
// includes it, and it calls no inline function from elsewhere: the linker keeps one copy of such a function for all,
// and that copy must not need the newest processor.
#pragma once

#include <cstddef>
#include <cstdint>

#include "conversion/byte_shuffles.h"
#include "conversion/row_kernels.h"

namespace plenar {
namespace {

template <class V, size_t N>
struct Pieces {
    typename V::Reg piece[N];

    typename V::Reg& operator[](size_t i) { return piece[i]; }
    const typename V::Reg& operator[](size_t i) const { return piece[i]; }
};

// Loads that follow a store to an address with the same low 12 bits, or a few bytes beyond, wait for it. Where the
// target lies a little further on in its page than the source in its own, copying downward keeps the loads clear of the
// stores.
inline bool LoadsMeetStores(const uint8_t* src, const uint8_t* dst) {
    constexpr uintptr_t pageMask = 0xFFF;
    return ((reinterpret_cast<uintptr_t>(dst) - reinterpret_cast<uintptr_t>(src)) & pageMask) <= pageMask / 2;
}

// Calls round(start) for rounds of `size` that cover `total`, from the top down if that is asked for, and returns what
// they cover: all, or nothing of a total below a round. Rounds start at multiples of `step`; with a total that isn't
// one the last part stays uncovered. Without `mayOverlap` it always does.
template <class Round>
size_t CoverInRounds(size_t total, size_t size, size_t step, bool mayOverlap, bool downward, const Round& round) {
    const size_t rounds = total / size;
    const size_t done = rounds * size;
    const bool overlaps = rounds != 0 && done != total && total % step == 0 && mayOverlap;
    if (downward) {
        for (size_t i = rounds; i-- > 0;) {
            round(i * size);
        }
    } else {
        for (size_t i = 0; i < rounds; ++i) {
            round(i * size);
        }
    }
    if (overlaps) {
        round(total - size);
    }
    return overlaps ? total : done;
}

constexpr size_t copyRegisters = 8;

template <class V, bool Stream>
void CopyBlock(const uint8_t* src, uint8_t* dst) {
    constexpr size_t registerBytes = V::lanes * pieceBytes;
    Pieces<V, copyRegisters> loads;
    for (size_t i = 0; i < copyRegisters; ++i) {
        loads[i] = V::Load(src + i * registerBytes);
    }
    for (size_t i = 0; i < copyRegisters; ++i) {
        if constexpr (Stream) {
            V::StoreStream(dst + i * registerBytes, loads[i]);
        } else {
            V::Store(dst + i * registerBytes, loads[i]);
        }
    }
}

// Whole blocks at addresses of the target that are multiples of a cache line, and at both ends a block at any address.
template <class V, bool Stream>
void CopyBlocks(const uint8_t* src, uint8_t* dst, size_t bytes) {
    constexpr size_t blockBytes = copyRegisters * V::lanes * pieceBytes;
    constexpr size_t lineBytes = 64;
    if (bytes < 2 * blockBytes) {
        return plainRowKernels.copy(src, dst, bytes);
    }
    const size_t first = lineBytes - reinterpret_cast<uintptr_t>(dst) % lineBytes;
    const size_t blocks = (bytes - first) / blockBytes;
    CopyBlock<V, false>(src, dst);
    if (LoadsMeetStores(src, dst)) {
        for (size_t i = blocks; i-- > 0;) {
            CopyBlock<V, Stream>(src + first + i * blockBytes, dst + first + i * blockBytes);
        }
    } else {
        for (size_t i = 0; i < blocks; ++i) {
            CopyBlock<V, Stream>(src + first + i * blockBytes, dst + first + i * blockBytes);
        }
    }
    CopyBlock<V, false>(src + bytes - blockBytes, dst + bytes - blockBytes);
    if constexpr (Stream) {
        V::FinishStream();
    }
}

template <class V>
typename V::Reg ShuffleTwo(typename V::Reg a, typename V::Reg patternA, typename V::Reg b, typename V::Reg patternB) {
    return V::Or(V::Shuffle(a, patternA), V::Shuffle(b, patternB));
}

// The caller's bytes of a unit of pixels with alpha, and the colour and alpha pieces made of them.
template <class V, size_t ColourSamples>
struct AlphaUnit {
    static constexpr bool three = ColourSamples == 3;
    static constexpr size_t callerBytes = (ColourSamples + 1) * pieceBytes;
    static constexpr size_t colourBytes = ColourSamples * pieceBytes;

    typename V::Reg colourPatterns[ColourSamples][2];
    typename V::Reg alphaPatterns[4];

    explicit AlphaUnit(const SplitShuffles& shuffles) {
        for (size_t i = 0; i < ColourSamples; ++i) {
            colourPatterns[i][0] = V::Pattern(shuffles.colour[i][0]);
            colourPatterns[i][1] = V::Pattern(shuffles.colour[i][1]);
        }
        for (size_t i = 0; i < 4; ++i) {
            alphaPatterns[i] = V::Pattern(shuffles.alpha[i]);
        }
    }

    static Pieces<V, 4> Load(const uint8_t* src, size_t distance) {
        Pieces<V, 4> loads;
        for (size_t i = 0; i < 4; ++i) {
            loads[i] = V::LoadLanes(src + (three ? splitLoads4[i] : splitLoads3[i]), distance);
        }
        return loads;
    }

    Pieces<V, ColourSamples> Colour(const Pieces<V, 4>& loads) const {
        Pieces<V, ColourSamples> colour;
        for (size_t i = 0; i < ColourSamples; ++i) {
            const size_t first = three ? i : 2 * i;
            colour[i] = ShuffleTwo<V>(loads[first], colourPatterns[i][0], loads[first + 1], colourPatterns[i][1]);
        }
        return colour;
    }

    typename V::Reg Alpha(const Pieces<V, 4>& loads) const {
        return V::Or(ShuffleTwo<V>(loads[0], alphaPatterns[0], loads[1], alphaPatterns[1]),
                     ShuffleTwo<V>(loads[2], alphaPatterns[2], loads[3], alphaPatterns[3]));
    }
};

template <class V, size_t ColourSamples, bool WithAlpha>
size_t SplitRounds(const SplitShuffles& shuffles, const uint8_t* src, uint8_t* colour, uint8_t* alpha,
                   size_t alphaBytes, size_t sampleBytes) {
    using Unit = AlphaUnit<V, ColourSamples>;
    const Unit unit(shuffles);
    return CoverInRounds(alphaBytes, V::lanes * pieceBytes, sampleBytes, true, false, [&](size_t at) {
        const auto loads = Unit::Load(src + at * (ColourSamples + 1), Unit::callerBytes);
        V::StorePieces(colour + at * ColourSamples, unit.Colour(loads));
        if constexpr (WithAlpha) {
            V::Store(alpha + at, unit.Alpha(loads));
        }
    });
}

template <class V>
void Split(const PixelLayout& layout, size_t sampleBytes, const uint8_t* src, uint8_t* colour, uint8_t* alpha,
           size_t pixels) {
    const SplitShuffles& shuffles = layout.split[SampleSizeIndex(sampleBytes)];
    const size_t alphaBytes = pixels * sampleBytes;
    const auto rounds = layout.colourSamples == 3
                            ? (alpha != nullptr ? SplitRounds<V, 3, true> : SplitRounds<V, 3, false>)
                            : (alpha != nullptr ? SplitRounds<V, 2, true> : SplitRounds<V, 2, false>);
    const size_t done = rounds(shuffles, src, colour, alpha, alphaBytes, sampleBytes);
    if (done != alphaBytes) {
        V::Next().split(layout, sampleBytes, src + done * layout.samples, colour + done * layout.colourSamples,
                        alpha != nullptr ? alpha + done : nullptr, pixels - done / sampleBytes);
    }
}

template <class V, size_t ColourSamples>
size_t MergeRounds(const MergeShuffles& shuffles, const uint8_t* colour, const uint8_t* alpha, uint8_t* dst,
                   size_t alphaBytes, size_t sampleBytes) {
    constexpr size_t samples = ColourSamples + 1;
    Pieces<V, samples> colourPatterns;
    Pieces<V, samples> alphaPatterns;
    for (size_t i = 0; i < samples; ++i) {
        colourPatterns[i] = V::Pattern(shuffles.colour[i]);
        alphaPatterns[i] = V::Pattern(shuffles.alpha[i]);
    }
    return CoverInRounds(alphaBytes, V::lanes * pieceBytes, sampleBytes, true, false, [&](size_t at) {
        const uint8_t* unit = colour + at * ColourSamples;
        const auto alphas = V::Load(alpha + at);
        Pieces<V, samples> out;
        for (size_t i = 0; i < samples; ++i) {
            const size_t offset = ColourSamples == 3 ? mergeLoads4[i] : mergeLoads3[i];
            out[i] = ShuffleTwo<V>(V::LoadLanes(unit + offset, ColourSamples * pieceBytes), colourPatterns[i], alphas,
                                   alphaPatterns[i]);
        }
        V::StorePieces(dst + at * samples, out);
    });
}

template <class V>
void Merge(const PixelLayout& layout, size_t sampleBytes, const uint8_t* colour, const uint8_t* alpha, uint8_t* dst,
           size_t pixels) {
    const MergeShuffles& shuffles = layout.merge[SampleSizeIndex(sampleBytes)];
    const size_t alphaBytes = pixels * sampleBytes;
    const auto rounds = layout.colourSamples == 3 ? MergeRounds<V, 3> : MergeRounds<V, 2>;
    const size_t done = rounds(shuffles, colour, alpha, dst, alphaBytes, sampleBytes);
    if (done != alphaBytes) {
        V::Next().merge(layout, sampleBytes, colour + done * layout.colourSamples, alpha + done,
                        dst + done * layout.samples, pixels - done / sampleBytes);
    }
}

template <class V>
void SwapPairs(size_t sampleBytes, const uint8_t* src, uint8_t* dst, size_t pairs) {
    constexpr size_t registers = 4;
    constexpr size_t registerBytes = V::lanes * pieceBytes;
    const auto pattern = V::Pattern(pairShuffles[SampleSizeIndex(sampleBytes)]);
    const size_t bytes = pairs * 2 * sampleBytes;
    const size_t done = CoverInRounds(bytes, registers * registerBytes, 2 * sampleBytes, src != dst,
                                      LoadsMeetStores(src, dst), [&](size_t at) {
                                          Pieces<V, registers> loads;
                                          for (size_t i = 0; i < registers; ++i) {
                                              loads[i] = V::Load(src + at + i * registerBytes);
                                          }
                                          for (size_t i = 0; i < registers; ++i) {
                                              V::Store(dst + at + i * registerBytes, V::Shuffle(loads[i], pattern));
                                          }
                                      });
    if (done != bytes) {
        V::Next().swapPairs(sampleBytes, src + done, dst + done, (bytes - done) / (2 * sampleBytes));
    }
}

template <class V>
struct TripleUnit {
    static constexpr size_t bytes = 3 * pieceBytes;

    typename V::Reg patterns[3][2];

    explicit TripleUnit(const TripleShuffles& shuffles) {
        for (size_t i = 0; i < 3; ++i) {
            patterns[i][0] = V::Pattern(shuffles.piece[i][0]);
            patterns[i][1] = V::Pattern(shuffles.piece[i][1]);
        }
    }

    Pieces<V, 3> Reversed(const uint8_t* src, size_t distance) const {
        Pieces<V, 3> out;
        for (size_t i = 0; i < 3; ++i) {
            out[i] = ShuffleTwo<V>(V::LoadLanes(src + tripleLoads[i][0], distance), patterns[i][0],
                                   V::LoadLanes(src + tripleLoads[i][1], distance), patterns[i][1]);
        }
        return out;
    }
};

template <class V>
void ReverseTriples(size_t sampleBytes, const uint8_t* src, uint8_t* dst, size_t pixels) {
    using Unit = TripleUnit<V>;
    const Unit unit(tripleShuffles[SampleSizeIndex(sampleBytes)]);
    const size_t bytes = pixels * 3 * sampleBytes;
    const size_t done =
        CoverInRounds(bytes, V::lanes * Unit::bytes, 3 * sampleBytes, src != dst, LoadsMeetStores(src, dst),
                      [&](size_t at) { V::StorePieces(dst + at, unit.Reversed(src + at, Unit::bytes)); });
    if (done != bytes) {
        V::Next().reverseTriples(sampleBytes, src + done, dst + done, (bytes - done) / (3 * sampleBytes));
    }
}

// Sources of words in plane order: a unit is `pieces` pieces of 8 words, made of `callerBytes` bytes of the caller.

template <class V>
struct PlainWords {
    static constexpr size_t pieces = 8;
    static constexpr size_t callerBytes = pieces * pieceBytes;

    explicit PlainWords(const Reordering&) {}

    Pieces<V, pieces> Load(const uint8_t* src) const {
        Pieces<V, pieces> words;
        for (size_t i = 0; i < pieces; ++i) {
            words[i] = V::LoadLanes(src + i * pieceBytes, callerBytes);
        }
        return words;
    }
};

template <class V>
struct PairWords {
    static constexpr size_t pieces = 8;
    static constexpr size_t callerBytes = pieces * pieceBytes;

    typename V::Reg pattern = V::Pattern(pairShuffles[SampleSizeIndex(2)]);

    explicit PairWords(const Reordering&) {}

    Pieces<V, pieces> Load(const uint8_t* src) const {
        Pieces<V, pieces> words;
        for (size_t i = 0; i < pieces; ++i) {
            words[i] = V::Shuffle(V::LoadLanes(src + i * pieceBytes, callerBytes), pattern);
        }
        return words;
    }
};

template <class V>
struct TripleWords {
    static constexpr size_t pieces = 6;
    static constexpr size_t callerBytes = pieces * pieceBytes;

    TripleUnit<V> unit{tripleShuffles[SampleSizeIndex(2)]};

    explicit TripleWords(const Reordering&) {}

    Pieces<V, pieces> Load(const uint8_t* src) const {
        const auto a = unit.Reversed(src, callerBytes);
        const auto b = unit.Reversed(src + TripleUnit<V>::bytes, callerBytes);
        return {a[0], a[1], a[2], b[0], b[1], b[2]};
    }
};

// The colour of pixels with alpha; alpha is dropped.
template <class V, size_t ColourSamples>
struct ColourWords {
    using Unit = AlphaUnit<V, ColourSamples>;
    static constexpr size_t parts = ColourSamples == 3 ? 2 : 4;
    static constexpr size_t pieces = parts * ColourSamples;
    static constexpr size_t callerBytes = parts * Unit::callerBytes;

    Unit unit;

    explicit ColourWords(const Reordering& reordering) : unit(reordering.layout->split[SampleSizeIndex(2)]) {}

    Pieces<V, pieces> Load(const uint8_t* src) const {
        Pieces<V, pieces> words;
        for (size_t part = 0; part < parts; ++part) {
            const auto colour = unit.Colour(Unit::Load(src + part * Unit::callerBytes, callerBytes));
            for (size_t i = 0; i < ColourSamples; ++i) {
                words[part * ColourSamples + i] = colour[i];
            }
        }
        return words;
    }
};

// Three fields of 10 bits in each 32 bits. Field f begins in byte f, 2 f bits up; a multiplication brings it to the
// top.
constexpr Shuffle16 FieldShuffle(size_t load, size_t firstSample) {
    return PieceShuffle(0, load, [&](size_t i) {
        const size_t sample = firstSample + i / 2;
        return sample / 3 * 4 + sample % 3 + i % 2;
    });
}

template <class V>
struct PackedWords {
    static constexpr size_t pieces = 6;
    static constexpr size_t groups = 4;
    static constexpr size_t callerBytes = groups * pieceBytes;

    // Two groups of 12 samples are three pieces of 8; the second piece comes from the 16 bytes in the middle.
    typename V::Reg patterns[3] = {V::Pattern(shuffles[0]), V::Pattern(shuffles[1]), V::Pattern(shuffles[2])};
    typename V::Reg factors[3] = {V::WordsOf8(64, 16, 4, 64, 16, 4, 64, 16), V::WordsOf8(4, 64, 16, 4, 64, 16, 4, 64),
                                  V::WordsOf8(16, 4, 64, 16, 4, 64, 16, 4)};

    explicit PackedWords(const Reordering&) {}

    Pieces<V, pieces> Load(const uint8_t* src) const {
        Pieces<V, pieces> words;
        for (size_t i = 0; i < pieces; ++i) {
            const auto bytes = V::LoadLanes(src + i / 3 * 2 * pieceBytes + offsets[i % 3], callerBytes);
            words[i] = V::Multiply16(V::Shuffle(bytes, patterns[i % 3]), factors[i % 3]);
        }
        return words;
    }

private:
    static constexpr size_t offsets[3] = {0, 8, 16};
    static constexpr Shuffle16 shuffles[3] = {FieldShuffle(0, 0), FieldShuffle(8, 8), FieldShuffle(16, 16)};
};

template <class V, size_t N>
Pieces<V, N / 2> HighPart(const Pieces<V, N>& words) {
    Pieces<V, N / 2> high;
    for (size_t i = 0; i < N / 2; ++i) {
        high[i] =
            V::PackWords(V::template ShiftRight16<8>(words[2 * i]), V::template ShiftRight16<8>(words[2 * i + 1]));
    }
    return high;
}

// Four samples a byte. The byte of each four is made in a dword of its own.
template <class V, size_t N>
void StoreLowPart10(uint8_t* low, const Pieces<V, N>& words) {
    const auto mask = V::Words(0xC0, 0xC0);
    Pieces<V, 4> joined;
    for (size_t i = 0; i < N / 2; ++i) {
        const auto bits = V::PackWords(V::And(words[2 * i], mask), V::And(words[2 * i + 1], mask));
        // The bits stand 6 up in their bytes; joined, they are brought down together.
        joined[i] =
            V::template ShiftRight32<6>(V::MultiplyAdd16(V::MultiplyAdd8(bits, V::Bytes(1, 4)), V::Words(1, 16)));
    }
    if constexpr (N == 8) {
        V::Store(low, V::PackWords(V::PackDwords(joined[0], joined[1]), V::PackDwords(joined[2], joined[3])));
    } else {
        V::StoreTwelve(low, V::PackWords(V::PackDwords(joined[0], joined[1]), V::PackDwords(joined[2], joined[2])));
    }
}

// Two samples a byte. The byte of each two is made in a word of its own.
template <class V, size_t N>
void StoreLowPart12(uint8_t* low, const Pieces<V, N>& words) {
    const auto mask = V::Words(0xF0, 0xF0);
    Pieces<V, 4> joined;
    for (size_t i = 0; i < N / 2; ++i) {
        const auto bits = V::PackWords(V::And(words[2 * i], mask), V::And(words[2 * i + 1], mask));
        joined[i] = V::template ShiftRight16<4>(V::MultiplyAdd8(bits, V::Bytes(1, 16)));
    }
    const auto first = V::PackWords(joined[0], joined[1]);
    if constexpr (N == 8) {
        V::StorePieces(low, Pieces<V, 2>{first, V::PackWords(joined[2], joined[3])});
    } else {
        V::StoreTwentyFour(low, first, V::PackWords(joined[2], joined[2]));
    }
}

constexpr size_t SamplesInLowByte(size_t lowBits) {
    return 8 / lowBits;
}

// Returns the samples done.
template <class V, size_t LowBits, class Source>
size_t PackRounds(const Reordering& reordering, const uint8_t* src, size_t samples, uint8_t* high, uint8_t* low) {
    constexpr size_t unitSamples = Source::pieces * 8;
    const Source source(reordering);
    return CoverInRounds(samples, V::lanes * unitSamples, SamplesInLowByte(LowBits), true, false, [&](size_t at) {
        const auto words = source.Load(src + at * Source::callerBytes / unitSamples);
        V::StorePieces(high + at, HighPart<V>(words));
        if constexpr (LowBits == 2) {
            StoreLowPart10<V>(low + at / SamplesInLowByte(LowBits), words);
        } else {
            StoreLowPart12<V>(low + at / SamplesInLowByte(LowBits), words);
        }
    });
}

// The bytes that `samples` samples of the plane take of the caller's row.
inline size_t CallerBytesOf(const Reordering& reordering, size_t samples) {
    return reordering.kind != Reordering::Alpha
               ? 2 * samples
               : 2 * samples / reordering.layout->colourSamples * reordering.layout->samples;
}

template <class V, size_t LowBits>
void Pack(const Reordering& reordering, const uint8_t* words, size_t samples, uint8_t* high, uint8_t* low) {
    auto rounds = PackRounds<V, LowBits, PlainWords<V>>;
    if (reordering.kind == Reordering::Pairs) {
        rounds = PackRounds<V, LowBits, PairWords<V>>;
    } else if (reordering.kind == Reordering::Triples) {
        rounds = PackRounds<V, LowBits, TripleWords<V>>;
    } else if (reordering.kind == Reordering::Alpha) {
        rounds = reordering.layout->colourSamples == 3 ? PackRounds<V, LowBits, ColourWords<V, 3>>
                                                       : PackRounds<V, LowBits, ColourWords<V, 2>>;
    }
    const size_t done = rounds(reordering, words, samples, high, low);
    if (done != samples) {
        const auto next = LowBits == 2 ? V::Next().pack10 : V::Next().pack12;
        next(reordering, words + CallerBytesOf(reordering, done), samples - done, high + done,
             low + done / SamplesInLowByte(LowBits));
    }
}

template <class V>
void PackedGroupsToPlane(const uint8_t* packed, size_t groups, uint8_t* high, uint8_t* low) {
    constexpr size_t groupSamples = 12;
    const PackedWords<V> source{Reordering{}};
    const size_t done = CoverInRounds(groups, V::lanes * PackedWords<V>::groups, 1, true, false, [&](size_t at) {
        const auto words = source.Load(packed + at * pieceBytes);
        V::StorePieces(high + at * groupSamples, HighPart<V>(words));
        StoreLowPart10<V>(low + at * groupSamples / SamplesInLowByte(2), words);
    });
    if (done != groups) {
        V::Next().packedGroupsToPlane(packed + done * pieceBytes, groups - done, high + done * groupSamples,
                                      low + done * groupSamples / SamplesInLowByte(2));
    }
}

// How a unit's words are put together: for each piece of 8 words, where their samples' high bytes are loaded and how
// they are placed in the high bytes of words, how the bytes of the low part that hold their low bits are placed in the
// low bytes, and by what these are multiplied to bring the bits to the top.
struct UnpackTable {
    size_t highLoad[8] = {};
    size_t lowLoad[8] = {};
    Shuffle16 high[8];
    Shuffle16 low[8];
    uint16_t factors[8][8] = {};
};

constexpr size_t UnpackPieces(Reordering::Kind kind) {
    return kind == Reordering::Triples ? 6 : 8;
}

constexpr UnpackTable MakeUnpackTable(Reordering::Kind kind, size_t lowBits) {
    constexpr size_t tripleLoad[3] = {0, 6, 8};
    const size_t pieces = UnpackPieces(kind);
    // The low part of a unit takes up to 16 bytes, one load, or up to 32, two that end with the unit.
    const size_t lowBytes = pieces * lowBits;
    UnpackTable table;
    const auto sourceOf = [&](size_t sample) {
        return kind == Reordering::Pairs     ? sample ^ 1
               : kind == Reordering::Triples ? sample / 3 * 3 + 2 - sample % 3
                                             : sample;
    };
    for (size_t piece = 0; piece < pieces; ++piece) {
        table.highLoad[piece] =
            kind == Reordering::Triples ? piece / 3 * 24 + tripleLoad[piece % 3] : piece / 2 * pieceBytes;
        table.lowLoad[piece] = lowBytes > pieceBytes && piece >= pieces / 2 ? lowBytes - pieceBytes : 0;
        table.high[piece] = PieceShuffle(piece, table.highLoad[piece],
                                         [&](size_t i) { return i % 2 == 1 ? sourceOf(i / 2) : nowhere; });
        table.low[piece] = PieceShuffle(piece, table.lowLoad[piece], [&](size_t i) {
            return i % 2 == 0 ? sourceOf(i / 2) / SamplesInLowByte(lowBits) : nowhere;
        });
        for (size_t i = 0; i < 8; ++i) {
            const size_t place = sourceOf(8 * piece + i) % SamplesInLowByte(lowBits);
            table.factors[piece][i] = static_cast<uint16_t>(1U << (8 - lowBits * (place + 1)));
        }
    }
    return table;
}

template <Reordering::Kind Kind, size_t LowBits>
constexpr UnpackTable unpackTable = MakeUnpackTable(Kind, LowBits);

template <class V, size_t LowBits, Reordering::Kind Kind>
size_t UnpackRounds(const uint8_t* high, const uint8_t* low, size_t samples, uint8_t* words) {
    constexpr const UnpackTable& table = unpackTable<Kind, LowBits>;
    constexpr size_t pieces = UnpackPieces(Kind);
    constexpr size_t unitSamples = pieces * 8;
    constexpr size_t lowBytes = pieces * LowBits;
    // The tables of the pieces repeat, but for where the low bits are.
    constexpr size_t highPeriod = Kind == Reordering::Triples ? 3 : 2;
    constexpr size_t factorPeriod = Kind == Reordering::Triples ? 3 : 1;
    const auto mask = LowBits == 2 ? V::Words(0xC0, 0xC0) : V::Words(0xF0, 0xF0);
    return CoverInRounds(samples, V::lanes * unitSamples, SamplesInLowByte(LowBits), true, false, [&](size_t at) {
        const uint8_t* lowPart = low + at / SamplesInLowByte(LowBits);
        Pieces<V, pieces> out;
        for (size_t i = 0; i < pieces; ++i) {
            const auto lows =
                lowBytes == 12 ? V::LoadTwelve(lowPart) : V::LoadLanes(lowPart + table.lowLoad[i], lowBytes);
            const auto bits =
                V::Multiply16(V::Shuffle(lows, V::Pattern(table.low[i])), V::Factors(table.factors[i % factorPeriod]));
            const auto tops = V::Shuffle(V::LoadLanes(high + at + table.highLoad[i], unitSamples),
                                         V::Pattern(table.high[i % highPeriod]));
            out[i] = V::Or(tops, V::And(bits, mask));
        }
        V::StorePieces(words + 2 * at, out);
    });
}

template <class V, size_t LowBits>
void Unpack(const Reordering& reordering, const uint8_t* high, const uint8_t* low, size_t samples, uint8_t* words) {
    const auto rounds = reordering.kind == Reordering::Pairs     ? UnpackRounds<V, LowBits, Reordering::Pairs>
                        : reordering.kind == Reordering::Triples ? UnpackRounds<V, LowBits, Reordering::Triples>
                                                                 : UnpackRounds<V, LowBits, Reordering::None>;
    const size_t done = rounds(high, low, samples, words);
    if (done != samples) {
        const auto next = LowBits == 2 ? V::Next().unpack10 : V::Next().unpack12;
        next(reordering, high + done, low + done / SamplesInLowByte(LowBits), samples - done, words + 2 * done);
    }
}

// Samples 3 j + first and, with `both`, the one after it, of each word j of a group: the bytes that hold their bits in
// a row of `perByte` samples a byte, one in the byte `place` of each 16 bits.
constexpr Shuffle16 WordFieldShuffle(size_t load, size_t base, size_t first, bool both, size_t place, size_t perByte) {
    return PieceShuffle(0, load, [&](size_t i) {
        const bool used = i % 2 == place && (both || i % 4 < 2);
        return used ? base + (i / 4 * 3 + first + i % 4 / 2) / perByte : nowhere;
    });
}

template <class V>
void PlaneToPackedGroups(const uint8_t* high, const uint8_t* low, size_t groups, uint8_t* packed) {
    constexpr size_t unitGroups = 4;
    constexpr size_t groupSamples = 12;
    // The last of the four loads of the high part ends with the unit.
    static constexpr size_t highLoads[unitGroups] = {0, 12, 24, 32};
    static constexpr struct Tables {
        Shuffle16 highPair[2] = {WordFieldShuffle(0, 0, 0, true, 1, 1), WordFieldShuffle(0, 4, 0, true, 1, 1)};
        Shuffle16 highThird[2] = {WordFieldShuffle(0, 0, 2, false, 1, 1), WordFieldShuffle(0, 4, 2, false, 1, 1)};
        Shuffle16 lowPair[unitGroups] = {WordFieldShuffle(0, 0, 0, true, 0, 4), WordFieldShuffle(0, 3, 0, true, 0, 4),
                                         WordFieldShuffle(0, 6, 0, true, 0, 4), WordFieldShuffle(0, 9, 0, true, 0, 4)};
        Shuffle16 lowThird[unitGroups] = {
            WordFieldShuffle(0, 0, 2, false, 0, 4), WordFieldShuffle(0, 3, 2, false, 0, 4),
            WordFieldShuffle(0, 6, 2, false, 0, 4), WordFieldShuffle(0, 9, 2, false, 0, 4)};
    } tables;
    // Moves the low bits of samples 0 and 1 of each word, and of sample 2, to the top of their low byte.
    const auto pairFactors = V::WordsOf8(64, 16, 1, 64, 4, 1, 16, 4);
    const auto thirdFactors = V::WordsOf8(4, 0, 16, 0, 64, 0, 1, 0);
    const auto lowMask = V::Words(0xC0, 0xC0);
    const size_t done = CoverInRounds(groups, V::lanes * unitGroups, 1, true, false, [&](size_t at) {
        const auto lows = V::LoadTwelve(low + at * groupSamples / SamplesInLowByte(2));
        Pieces<V, unitGroups> out;
        for (size_t i = 0; i < unitGroups; ++i) {
            const auto highs = V::LoadLanes(high + at * groupSamples + highLoads[i], unitGroups * groupSamples);
            const auto fields = [&](const Shuffle16& highShuffle, const Shuffle16& lowShuffle, auto factors) {
                const auto bits = V::Multiply16(V::Shuffle(lows, V::Pattern(lowShuffle)), factors);
                return V::template ShiftRight16<6>(
                    V::Or(V::Shuffle(highs, V::Pattern(highShuffle)), V::And(bits, lowMask)));
            };
            const auto pairs = fields(tables.highPair[i / 3], tables.lowPair[i], pairFactors);
            const auto thirds = fields(tables.highThird[i / 3], tables.lowThird[i], thirdFactors);
            out[i] = V::Or(V::MultiplyAdd16(pairs, V::Words(1, 1024)), V::template ShiftLeft32<20>(thirds));
        }
        V::StorePieces(packed + at * pieceBytes, out);
    });
    if (done != groups) {
        V::Next().planeToPackedGroups(high + done * groupSamples, low + done * groupSamples / SamplesInLowByte(2),
                                      groups - done, packed + done * pieceBytes);
    }
}

template <class V, class Source>
size_t FloatRounds(const uint8_t* fixed, size_t samples, size_t step, uint8_t* floats) {
    const Source source{Reordering{}};
    constexpr size_t pieces = Source::pieces;
    return CoverInRounds(samples, V::lanes * pieces * 8, step, true, false, [&](size_t at) {
        const auto words = source.Load(fixed + 2 * at);
        Pieces<V, 2 * pieces> out;
        for (size_t i = 0; i < pieces; ++i) {
            out[2 * i] = V::Fixed14ToFloat(V::UnpackLo16(V::Zero(), words[i]));
            out[2 * i + 1] = V::Fixed14ToFloat(V::UnpackHi16(V::Zero(), words[i]));
        }
        V::StorePieces(floats + 4 * at, out);
    });
}

template <class V>
void FixedToFloat(const Reordering& reordering, const uint8_t* fixed, size_t samples, uint8_t* floats) {
    const size_t done = reordering.kind == Reordering::Pairs ? FloatRounds<V, PairWords<V>>(fixed, samples, 2, floats)
                        : reordering.kind == Reordering::Triples
                            ? FloatRounds<V, TripleWords<V>>(fixed, samples, 3, floats)
                            : FloatRounds<V, PlainWords<V>>(fixed, samples, 1, floats);
    if (done != samples) {
        V::Next().fixedToFloat(reordering, fixed + 2 * done, samples - done, floats + 4 * done);
    }
}

template <class V>
constexpr RowKernels VectorRowKernels() {
    return {
        .copy = CopyBlocks<V, false>,
        .streamCopy = CopyBlocks<V, true>,
        .split = Split<V>,
        .merge = Merge<V>,
        .swapPairs = SwapPairs<V>,
        .reverseTriples = ReverseTriples<V>,
        .pack10 = Pack<V, 2>,
        .pack12 = Pack<V, 4>,
        .unpack10 = Unpack<V, 2>,
        .unpack12 = Unpack<V, 4>,
        .packedGroupsToPlane = PackedGroupsToPlane<V>,
        .planeToPackedGroups = PlaneToPackedGroups<V>,
        .fixedToFloat = FixedToFloat<V>,
    };
}

}  // namespace
}  // namespace plenar
