// The kernels in vectors of bytes. Every kernel is written for one lane of 16 bytes and a unit of work of that lane; a
// vector type V of several lanes works on as many units side by side. V brings the instructions (kernels_ssse3.cpp,
// kernels_avx2.cpp); what is left of a row behind the last full round of units goes to the plain kernels.
//
// V::LoadChunks<N> and V::StoreChunks<N> move a unit's N pieces of 16 bytes for all lanes: lane l takes the pieces
// l * N to l * N + N - 1. All other operations of V stay within a lane.
#pragma once

//
// This header is compiled for several instruction sets into one program. Everything in it is local to the file that
// includes it, and it calls no inline function from elsewhere: the linker keeps one copy of such a function for all,
// and that copy must not need the newest processor.
#pragma once

#include <cstddef>
#include <cstdint>

#include "conversion/row_kernels.h"

namespace plenar {
namespace {

template <class V, size_t N>
struct Chunks {
    typename V::Reg chunk[N];

    typename V::Reg& operator[](size_t i) { return chunk[i]; }
    const typename V::Reg& operator[](size_t i) const { return chunk[i]; }
};

constexpr size_t chunkBytes = 16;

// Four blocks of 12 bytes, each at the start of a register, to 48 bytes in a row.
template <class V>
Chunks<V, 3> JoinTwelves(const Chunks<V, 4>& blocks) {
    return {V::template Concat<4>(blocks[1], V::template ShiftUp<4>(blocks[0])), V::MiddleDwords(blocks[1], blocks[2]),
            V::template Concat<12>(blocks[3], V::template ShiftUp<4>(blocks[2]))};
}

// The way back; behind its 12 bytes a register holds anything.
template <class V>
Chunks<V, 4> CutTwelves(const Chunks<V, 3>& bytes) {
    return {bytes[0], V::template Concat<12>(bytes[1], bytes[0]), V::template Concat<8>(bytes[2], bytes[1]),
            V::template ShiftDown<4>(bytes[2])};
}

// The dword D of each of four registers.
template <class V, int D>
typename V::Reg GatherDwords(const Chunks<V, 4>& blocks) {
    if constexpr (D < 2) {
        return V::UnpackLo64(V::UnpackLo32(blocks[0], blocks[1]), V::UnpackLo32(blocks[2], blocks[3]));
    } else if constexpr (D == 2) {
        return V::UnpackLo64(V::UnpackHi32(blocks[0], blocks[1]), V::UnpackHi32(blocks[2], blocks[3]));
    } else {
        return V::UnpackHi64(V::UnpackHi32(blocks[0], blocks[1]), V::UnpackHi32(blocks[2], blocks[3]));
    }
}

// Pixels of three colour samples and alpha: a unit is 64 bytes of the caller.
template <class V>
struct FourSampleUnit {
    static constexpr size_t callerChunks = 4;
    static constexpr size_t colourChunks = 3;

    static Chunks<V, 4> CallerBlocks(const uint8_t* src) { return V::template LoadChunks<4>(src); }
    static Chunks<V, 3> Colour(const Chunks<V, 4>& blocks) { return JoinTwelves<V>(blocks); }
    static typename V::Reg Alpha(const Chunks<V, 4>& blocks) { return GatherDwords<V, 3>(blocks); }

    static Chunks<V, 4> ColourBlocks(const uint8_t* src) { return CutTwelves<V>(V::template LoadChunks<3>(src)); }
    static void StoreCaller(uint8_t* dst, const Chunks<V, 4>& blocks) { V::StoreChunks(dst, blocks); }
};

// Pixels of a 4:2:2 row with alpha: a unit is 48 bytes of the caller.
template <class V>
struct ThreeSampleUnit {
    static constexpr size_t callerChunks = 3;
    static constexpr size_t colourChunks = 2;

    static Chunks<V, 4> CallerBlocks(const uint8_t* src) { return CutTwelves<V>(V::template LoadChunks<3>(src)); }
    static Chunks<V, 2> Colour(const Chunks<V, 4>& blocks) {
        return {V::UnpackLo64(blocks[0], blocks[1]), V::UnpackLo64(blocks[2], blocks[3])};
    }
    static typename V::Reg Alpha(const Chunks<V, 4>& blocks) { return GatherDwords<V, 2>(blocks); }

    static Chunks<V, 4> ColourBlocks(const uint8_t* src) {
        const Chunks<V, 2> pairs = V::template LoadChunks<2>(src);
        return {pairs[0], V::template ShiftDown<8>(pairs[0]), pairs[1], V::template ShiftDown<8>(pairs[1])};
    }
    static void StoreCaller(uint8_t* dst, const Chunks<V, 4>& blocks) { V::StoreChunks(dst, JoinTwelves<V>(blocks)); }
};

// What a kernel did of its row, in units.
template <class V>
size_t RoundsOf(size_t bytes, size_t unitBytes) {
    return bytes / (unitBytes * V::lanes);
}

template <class V, class Unit, bool WithAlpha>
size_t SplitUnits(const Shuffle16& shuffle, const uint8_t* src, uint8_t* colour, uint8_t* alpha, size_t alphaBytes) {
    const size_t rounds = RoundsOf<V>(alphaBytes, chunkBytes);
    const auto pattern = V::Pattern(shuffle);
    for (size_t i = 0; i < rounds; ++i) {
        Chunks<V, 4> blocks = Unit::CallerBlocks(src + i * V::lanes * Unit::callerChunks * chunkBytes);
        for (auto& block : blocks.chunk) {
            block = V::Shuffle(block, pattern);
        }
        V::StoreChunks(colour + i * V::lanes * Unit::colourChunks * chunkBytes, Unit::Colour(blocks));
        if constexpr (WithAlpha) {
            V::StoreChunks(alpha + i * V::lanes * chunkBytes, Chunks<V, 1>{Unit::Alpha(blocks)});
        }
    }
    return rounds * V::lanes * chunkBytes;
}

template <class V, class Unit>
size_t MergeUnits(const MergeShuffles& shuffles, const uint8_t* colour, const uint8_t* alpha, uint8_t* dst,
                  size_t alphaBytes) {
    const size_t rounds = RoundsOf<V>(alphaBytes, chunkBytes);
    const auto colourPattern = V::Pattern(shuffles.colour);
    const auto alphaPattern = V::Pattern(shuffles.alpha);
    // The alpha of block j stands 4 j bytes further on; a zero lane stays one with any of these added.
    const Chunks<V, 4> alphaPatterns = {alphaPattern, V::Add8(alphaPattern, V::Bytes(4, 4)),
                                        V::Add8(alphaPattern, V::Bytes(8, 8)), V::Add8(alphaPattern, V::Bytes(12, 12))};
    for (size_t i = 0; i < rounds; ++i) {
        Chunks<V, 4> blocks = Unit::ColourBlocks(colour + i * V::lanes * Unit::colourChunks * chunkBytes);
        const auto alphas = V::template LoadChunks<1>(alpha + i * V::lanes * chunkBytes)[0];
        for (size_t j = 0; j < 4; ++j) {
            blocks[j] = V::Or(V::Shuffle(blocks[j], colourPattern), V::Shuffle(alphas, alphaPatterns[j]));
        }
        Unit::StoreCaller(dst + i * V::lanes * Unit::callerChunks * chunkBytes, blocks);
    }
    return rounds * V::lanes * chunkBytes;
}

template <class V>
void Split(const PixelLayout& layout, size_t sampleBytes, const uint8_t* src, uint8_t* colour, uint8_t* alpha,
           size_t pixels) {
    const Shuffle16& shuffle = layout.split[SampleSizeIndex(sampleBytes)];
    const size_t alphaBytes = pixels * sampleBytes;
    const auto run = [&]<class Unit>() {
        return alpha != nullptr ? SplitUnits<V, Unit, true>(shuffle, src, colour, alpha, alphaBytes)
                                : SplitUnits<V, Unit, false>(shuffle, src, colour, alpha, alphaBytes);
    };
    const size_t done = layout.colourSamples == 3 ? run.template operator()<FourSampleUnit<V>>()
                                                  : run.template operator()<ThreeSampleUnit<V>>();
    V::Next().split(layout, sampleBytes, src + done * layout.samples, colour + done * layout.colourSamples,
                    alpha != nullptr ? alpha + done : nullptr, pixels - done / sampleBytes);
}

template <class V>
void Merge(const PixelLayout& layout, size_t sampleBytes, const uint8_t* colour, const uint8_t* alpha, uint8_t* dst,
           size_t pixels) {
    const MergeShuffles& shuffles = layout.merge[SampleSizeIndex(sampleBytes)];
    const size_t alphaBytes = pixels * sampleBytes;
    const size_t done = layout.colourSamples == 3
                            ? MergeUnits<V, FourSampleUnit<V>>(shuffles, colour, alpha, dst, alphaBytes)
                            : MergeUnits<V, ThreeSampleUnit<V>>(shuffles, colour, alpha, dst, alphaBytes);
    V::Next().merge(layout, sampleBytes, colour + done * layout.colourSamples, alpha + done,
                    dst + done * layout.samples, pixels - done / sampleBytes);
}

template <size_t N>
struct Shuffles {
    Shuffle16 of[N] = {};
};

// The shuffle that exchanges the first and the last sample of each group of `group` samples, over as many whole groups
// as fit into `bytes` bytes.
constexpr Shuffle16 ExchangeShuffle(size_t sampleBytes, size_t group, size_t bytes) {
    Shuffle16 shuffle = {};
    for (size_t i = 0; i < sizeof shuffle.byte; ++i) {
        const size_t sample = i / sampleBytes;
        const size_t place = sample % group;
        const size_t source = place == 0 ? sample + group - 1 : place == group - 1 ? sample + 1 - group : sample;
        shuffle.byte[i] = i < bytes ? static_cast<uint8_t>(source * sampleBytes + i % sampleBytes) : zeroLane;
    }
    return shuffle;
}

constexpr Shuffles<sampleSizes> ExchangeShuffles(size_t group, size_t bytes) {
    return {{ExchangeShuffle(1, group, bytes), ExchangeShuffle(2, group, bytes), ExchangeShuffle(4, group, bytes)}};
}

template <class V>
void SwapPairs(size_t sampleBytes, const uint8_t* src, uint8_t* dst, size_t pairs) {
    static constexpr auto shuffles = ExchangeShuffles(2, chunkBytes);
    constexpr size_t registers = 4;
    constexpr size_t registerBytes = V::lanes * chunkBytes;
    constexpr size_t roundBytes = registers * registerBytes;
    const auto pattern = V::Pattern(shuffles.of[SampleSizeIndex(sampleBytes)]);
    const size_t rounds = pairs * 2 * sampleBytes / roundBytes;
    for (size_t i = 0; i < rounds; ++i) {
        for (size_t j = 0; j < registers; ++j) {
            const size_t at = i * roundBytes + j * registerBytes;
            V::Store(dst + at, V::Shuffle(V::Load(src + at), pattern));
        }
    }
    const size_t done = rounds * roundBytes;
    V::Next().swapPairs(sampleBytes, src + done, dst + done, pairs - done / (2 * sampleBytes));
}

template <class V>
void ReverseTriples(size_t sampleBytes, const uint8_t* src, uint8_t* dst, size_t pixels) {
    static constexpr auto shuffles = ExchangeShuffles(3, 12);
    constexpr size_t roundBytes = V::lanes * 3 * chunkBytes;
    const auto pattern = V::Pattern(shuffles.of[SampleSizeIndex(sampleBytes)]);
    const size_t rounds = pixels * 3 * sampleBytes / roundBytes;
    for (size_t i = 0; i < rounds; ++i) {
        auto blocks = CutTwelves<V>(V::template LoadChunks<3>(src + i * roundBytes));
        for (auto& block : blocks.chunk) {
            block = V::Shuffle(block, pattern);
        }
        V::StoreChunks(dst + i * roundBytes, JoinTwelves<V>(blocks));
    }
    const size_t done = rounds * roundBytes;
    V::Next().reverseTriples(sampleBytes, src + done, dst + done, pixels - done / (3 * sampleBytes));
}

// The low bits of 16 samples, one a byte, joined to 4 dwords of 4 samples each.
template <class V>
typename V::Reg JoinTwoBits(typename V::Reg bits) {
    return V::MultiplyAdd16(V::MultiplyAdd8(bits, V::Bytes(1, 4)), V::Words(1, 16));
}

// The low bits of 16 words, whose samples stand in the top bits, one a byte.
template <class V, int Unused>
typename V::Reg LowBitsOf(typename V::Reg words0, typename V::Reg words1) {
    const auto mask = V::Words(0xFF >> Unused, 0xFF >> Unused);
    return V::PackWords(V::And(V::template ShiftRight16<Unused>(words0), mask),
                        V::And(V::template ShiftRight16<Unused>(words1), mask));
}

template <class V>
typename V::Reg HighBytesOf(typename V::Reg words0, typename V::Reg words1) {
    return V::PackWords(V::template ShiftRight16<8>(words0), V::template ShiftRight16<8>(words1));
}

template <class V>
void Pack10(const uint8_t* words, size_t samples, uint8_t* high, uint8_t* low) {
    constexpr size_t roundSamples = V::lanes * 64;
    const size_t rounds = samples / roundSamples;
    for (size_t i = 0; i < rounds; ++i) {
        const auto in = V::template LoadChunks<8>(words + i * roundSamples * 2);
        Chunks<V, 4> highs;
        Chunks<V, 4> lows;
        for (size_t j = 0; j < 4; ++j) {
            highs[j] = HighBytesOf<V>(in[2 * j], in[2 * j + 1]);
            lows[j] = JoinTwoBits<V>(LowBitsOf<V, 6>(in[2 * j], in[2 * j + 1]));
        }
        V::StoreChunks(high + i * roundSamples, highs);
        V::StoreChunks(low + i * roundSamples / 4,
                       Chunks<V, 1>{V::PackWords(V::PackDwords(lows[0], lows[1]), V::PackDwords(lows[2], lows[3]))});
    }
    const size_t done = rounds * roundSamples;
    V::Next().pack10(words + done * 2, samples - done, high + done, low + done / 4);
}

template <class V>
void Pack12(const uint8_t* words, size_t samples, uint8_t* high, uint8_t* low) {
    constexpr size_t roundSamples = V::lanes * 32;
    const size_t rounds = samples / roundSamples;
    for (size_t i = 0; i < rounds; ++i) {
        const auto in = V::template LoadChunks<4>(words + i * roundSamples * 2);
        Chunks<V, 2> highs;
        Chunks<V, 2> lows;
        for (size_t j = 0; j < 2; ++j) {
            highs[j] = HighBytesOf<V>(in[2 * j], in[2 * j + 1]);
            lows[j] = V::MultiplyAdd8(LowBitsOf<V, 4>(in[2 * j], in[2 * j + 1]), V::Bytes(1, 16));
        }
        V::StoreChunks(high + i * roundSamples, highs);
        V::StoreChunks(low + i * roundSamples / 2, Chunks<V, 1>{V::PackWords(lows[0], lows[1])});
    }
    const size_t done = rounds * roundSamples;
    V::Next().pack12(words + done * 2, samples - done, high + done, low + done / 2);
}

// For 8 samples from `first` on: the byte of the low part that holds each one's bits, in the low byte of its word.
constexpr Shuffle16 LowByteShuffle(size_t first, size_t perByte) {
    Shuffle16 shuffle = {};
    for (size_t i = 0; i < sizeof shuffle.byte; ++i) {
        shuffle.byte[i] = i % 2 == 0 ? static_cast<uint8_t>((first + i / 2) / perByte) : zeroLane;
    }
    return shuffle;
}

// LowBits is 2 or 4. The multiplication moves each sample's bits to the top of the low byte.
template <class V, size_t LowBits>
size_t UnpackRounds(const uint8_t* high, const uint8_t* low, size_t samples, uint8_t* words) {
    constexpr size_t perByte = 8 / LowBits;
    constexpr size_t highChunks = perByte;  // for one chunk of the low part
    constexpr size_t roundSamples = V::lanes * highChunks * chunkBytes;
    static constexpr auto shuffles = [] {
        Shuffles<2 * highChunks> all;
        for (size_t i = 0; i < 2 * highChunks; ++i) {
            all.of[i] = LowByteShuffle(i * 8, perByte);
        }
        return all;
    }();
    const auto factors = LowBits == 2 ? V::Words(64, 16, 4, 1) : V::Words(16, 1);
    const auto mask = V::Words(0xFF << (8 - LowBits) & 0xFF, 0xFF << (8 - LowBits) & 0xFF);
    const size_t rounds = samples / roundSamples;
    for (size_t i = 0; i < rounds; ++i) {
        const auto highs = V::template LoadChunks<highChunks>(high + i * roundSamples);
        const auto lows = V::template LoadChunks<1>(low + i * roundSamples / perByte)[0];
        Chunks<V, 2 * highChunks> out;
        for (size_t j = 0; j < 2 * highChunks; ++j) {
            const auto bits = V::Multiply16(V::Shuffle(lows, V::Pattern(shuffles.of[j])), factors);
            const auto tops =
                j % 2 == 0 ? V::UnpackLo8(V::Zero(), highs[j / 2]) : V::UnpackHi8(V::Zero(), highs[j / 2]);
            out[j] = V::Or(tops, V::And(bits, mask));
        }
        V::StoreChunks(words + i * roundSamples * 2, out);
    }
    return rounds * roundSamples;
}

template <class V>
void Unpack10(const uint8_t* high, const uint8_t* low, size_t samples, uint8_t* words) {
    const size_t done = UnpackRounds<V, 2>(high, low, samples, words);
    V::Next().unpack10(high + done, low + done / 4, samples - done, words + done * 2);
}

template <class V>
void Unpack12(const uint8_t* high, const uint8_t* low, size_t samples, uint8_t* words) {
    const size_t done = UnpackRounds<V, 4>(high, low, samples, words);
    V::Next().unpack12(high + done, low + done / 2, samples - done, words + done * 2);
}

// A group of the packed form is 16 bytes with 12 samples. Field f of a word begins in byte f of it, 2 f bits up.
constexpr Shuffle16 FieldShuffle(size_t firstSample, size_t samples) {
    Shuffle16 shuffle = allZeroLanes;
    for (size_t i = 0; i < 2 * samples; ++i) {
        const size_t sample = firstSample + i / 2;
        shuffle.byte[i] = static_cast<uint8_t>(sample / 3 * 4 + sample % 3 + i % 2);
    }
    return shuffle;
}

// A unit is four groups: 64 packed bytes, 48 bytes of the high part and 12 of the low part.
template <class V>
void PackedGroupsToPlane(const uint8_t* packed, size_t groups, uint8_t* high, uint8_t* low) {
    static constexpr Shuffle16 firstShuffle = FieldShuffle(0, 8);
    static constexpr Shuffle16 lastShuffle = FieldShuffle(8, 4);
    const auto firstPattern = V::Pattern(firstShuffle);
    const auto lastPattern = V::Pattern(lastShuffle);
    // Moves the fields 0, 1, 2 of a word to the top of 16 bits.
    const auto firstFactors = V::WordsOf8(64, 16, 4, 64, 16, 4, 64, 16);
    const auto lastFactors = V::WordsOf8(4, 64, 16, 4, 0, 0, 0, 0);
    constexpr size_t unitGroups = 4;
    constexpr size_t lowBytesOfUnit = 12;
    constexpr size_t roundGroups = V::lanes * unitGroups;
    size_t done = 0;
    // The low part of a unit is stored as 16 bytes; the 4 beyond it belong to the groups that follow.
    for (; done + roundGroups + 2 <= groups; done += roundGroups) {
        const auto in = V::template LoadChunks<unitGroups>(packed + done * chunkBytes);
        Chunks<V, 4> highs;
        Chunks<V, 4> lows;
        for (size_t j = 0; j < unitGroups; ++j) {
            const auto first = V::Multiply16(V::Shuffle(in[j], firstPattern), firstFactors);
            const auto last = V::Multiply16(V::Shuffle(in[j], lastPattern), lastFactors);
            highs[j] = HighBytesOf<V>(first, last);
            lows[j] = LowBitsOf<V, 6>(first, last);
        }
        V::StoreChunks(high + done * 12, JoinTwelves<V>(highs));
        const Chunks<V, 3> bits = JoinTwelves<V>(lows);
        V::template StoreStarts<lowBytesOfUnit>(
            low + done * 3, V::PackWords(V::PackDwords(JoinTwoBits<V>(bits[0]), JoinTwoBits<V>(bits[1])),
                                         V::PackDwords(JoinTwoBits<V>(bits[2]), V::Zero())));
    }
    V::Next().packedGroupsToPlane(packed + done * chunkBytes, groups - done, high + done * 12, low + done * 3);
}

// Samples 3 j + first and, with `both`, the one after it, of each word j: the indices of their bytes in a row of 12,
// one in the byte `place` of each 16 bits.
constexpr Shuffle16 WordFieldShuffle(size_t first, bool both, size_t place, size_t perByte, size_t base) {
    Shuffle16 shuffle = allZeroLanes;
    for (size_t word = 0; word < 4; ++word) {
        for (size_t i = 0; i <= (both ? 1U : 0U); ++i) {
            shuffle.byte[4 * word + 2 * i + place] = static_cast<uint8_t>(base + (3 * word + first + i) / perByte);
        }
    }
    return shuffle;
}

template <class V>
void PlaneToPackedGroups(const uint8_t* high, const uint8_t* low, size_t groups, uint8_t* packed) {
    static constexpr Shuffle16 pairHigh = WordFieldShuffle(0, true, 1, 1, 0);
    static constexpr Shuffle16 thirdHigh = WordFieldShuffle(2, false, 1, 1, 0);
    constexpr size_t unitGroups = 4;
    static constexpr auto lowShuffles = [] {
        Shuffles<2 * unitGroups> all;
        for (size_t group = 0; group < unitGroups; ++group) {
            all.of[2 * group] = WordFieldShuffle(0, true, 0, 4, 3 * group);
            all.of[2 * group + 1] = WordFieldShuffle(2, false, 0, 4, 3 * group);
        }
        return all;
    }();
    const auto pairHighPattern = V::Pattern(pairHigh);
    const auto thirdHighPattern = V::Pattern(thirdHigh);
    // Moves the low bits of samples 0 and 1 of each word, and of sample 2, to the top of their low byte.
    const auto pairFactors = V::WordsOf8(64, 16, 1, 64, 4, 1, 16, 4);
    const auto thirdFactors = V::WordsOf8(4, 0, 16, 0, 64, 0, 1, 0);
    const auto lowMask = V::Words(0xC0, 0xC0);
    constexpr size_t roundGroups = V::lanes * unitGroups;
    size_t done = 0;
    for (; done + roundGroups + 2 <= groups; done += roundGroups) {
        const Chunks<V, 4> highs = CutTwelves<V>(V::template LoadChunks<3>(high + done * 12));
        const auto lows = V::template LoadStarts<12>(low + done * 3);
        Chunks<V, 4> out;
        for (size_t j = 0; j < unitGroups; ++j) {
            const auto field = [&](auto highPattern, const Shuffle16& lowShuffle, auto factors) {
                const auto bits = V::Multiply16(V::Shuffle(lows, V::Pattern(lowShuffle)), factors);
                return V::template ShiftRight16<6>(V::Or(V::Shuffle(highs[j], highPattern), V::And(bits, lowMask)));
            };
            const auto pairs = field(pairHighPattern, lowShuffles.of[2 * j], pairFactors);
            const auto thirds = field(thirdHighPattern, lowShuffles.of[2 * j + 1], thirdFactors);
            out[j] = V::Or(V::MultiplyAdd16(pairs, V::Words(1, 1024)), V::template ShiftLeft32<20>(thirds));
        }
        V::StoreChunks(packed + done * chunkBytes, out);
    }
    V::Next().planeToPackedGroups(high + done * 12, low + done * 3, groups - done, packed + done * chunkBytes);
}

template <class V>
void FixedToFloat(const uint8_t* fixed, size_t samples, uint8_t* floats) {
    constexpr size_t unitChunks = 2;
    constexpr size_t roundSamples = V::lanes * unitChunks * chunkBytes / 2;
    const size_t rounds = samples / roundSamples;
    for (size_t i = 0; i < rounds; ++i) {
        const auto in = V::template LoadChunks<unitChunks>(fixed + i * roundSamples * 2);
        V::StoreChunks(floats + i * roundSamples * 4, Chunks<V, 4>{V::Fixed14ToFloat(V::UnpackLo16(V::Zero(), in[0])),
                                                                   V::Fixed14ToFloat(V::UnpackHi16(V::Zero(), in[0])),
                                                                   V::Fixed14ToFloat(V::UnpackLo16(V::Zero(), in[1])),
                                                                   V::Fixed14ToFloat(V::UnpackHi16(V::Zero(), in[1]))});
    }
    const size_t done = rounds * roundSamples;
    V::Next().fixedToFloat(fixed + done * 2, samples - done, floats + done * 4);
}

template <class V>
constexpr RowKernels VectorRowKernels() {
    return {
        .split = Split<V>,
        .merge = Merge<V>,
        .swapPairs = SwapPairs<V>,
        .reverseTriples = ReverseTriples<V>,
        .pack10 = Pack10<V>,
        .pack12 = Pack12<V>,
        .unpack10 = Unpack10<V>,
        .unpack12 = Unpack12<V>,
        .packedGroupsToPlane = PackedGroupsToPlane<V>,
        .planeToPackedGroups = PlaneToPackedGroups<V>,
        .fixedToFloat = FixedToFloat<V>,
    };
}

}  // namespace
}  // namespace plenar
