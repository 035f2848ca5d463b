// The kernels in vectors of bytes. A vector type V of one or more lanes of 16 bytes brings the instructions
// (kernels_ssse3.cpp, kernels_avx2.cpp). What is left of a row behind the last full round is done by a round that ends
// with the row and does some of it twice; rows shorter than a round go to the next narrower set of kernels.
//
// Kernels that split and merge alpha are written for a unit of work of one lane, and the lanes do as many units side by
// side: V::LoadLanes(src, distance) loads 16 bytes for each lane, `distance` bytes apart, and V::StorePieces stores a
// unit's N pieces of 16 bytes for all lanes, of which lane l has the pieces l * N to l * N + N - 1.
//
// In the other kernels registers hold their bytes in the order of the row. V::LoadLanes(src, offsets) loads 16 bytes
// for each lane from its own offset; what offsets that are equal or 16 apart take is one load. V::JoinEights, JoinFours
// and JoinTwos mend the order of registers that were packed together lane by lane. All other operations of V stay
// within a lane.
//
// This header is compiled for several instruction sets into one program. Everything in it is local to the file that
// includes it, and it calls no inline function from elsewhere: the linker keeps one copy of such a function for all,
// and that copy must not need the newest processor.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "conversion/row_kernels.h"
#include "conversion/vector/alpha_shuffles.h"
#include "conversion/vector/byte_shuffles.h"

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
    constexpr uintptr_t kPageMask = 0xFFF;
    return ((reinterpret_cast<uintptr_t>(dst) - reinterpret_cast<uintptr_t>(src)) & kPageMask) <= kPageMask / 2;
}

// Calls round(start) for rounds of `size` that cover `total` or, where `total` isn't a multiple of `step`, what comes
// ahead of its last part; from the top down if that is asked for. Returns what they cover: nothing of a total below a
// round. The last round overlaps the one ahead of it, unless that is ruled out; then it is left out.
// There is one call, so that the round is compiled in place and its constants stay in registers.
template <class Round>
size_t CoverInRounds(size_t total, size_t size, size_t step, bool mayOverlap, bool downward, const Round& round) {
    const size_t covered = total - total % (mayOverlap ? step : size);
    if (covered < size) {
        return 0;
    }
    const size_t last = covered - size;
    for (size_t done = 0; done < covered; done += size) {
        const size_t start = done < last ? done : last;
        round(downward ? last - start : start);
    }
    return covered;
}

// Calls body<0>() to body<N - 1>().
template <size_t N, class Body>
void Repeat(const Body& body) {
    [&]<size_t... I>(std::index_sequence<I...>) {
        (body.template operator()<I>(), ...);
    }
    (std::make_index_sequence<N>());
}

// What is moved as it is, or nearly so, goes by lines of the cache. Longer turns of loads and of stores cost up to a
// third in the second-level cache.
constexpr size_t kLineBytes = 64;

template <class V>
constexpr size_t kRegisterBytes = V::kLanes* kPieceBytes;
template <class V>
constexpr size_t kRegisterWords = kRegisterBytes<V> / 2;
template <class V>
constexpr size_t kLineRegisters = kLineBytes / kRegisterBytes<V>;

template <class V, size_t N>
void StoreAll(uint8_t* dst, const Pieces<V, N>& registers) {
    Repeat<N>([&]<size_t I>() { V::Store(dst + I * sizeof(typename V::Reg), registers[I]); });
}

template <class V, bool Stream>
void CopyLine(const uint8_t* src, uint8_t* dst) {
    Pieces<V, kLineRegisters<V>> loads;
    for (size_t i = 0; i < kLineRegisters<V>; ++i) {
        loads[i] = V::Load(src + i * kRegisterBytes<V>);
    }
    for (size_t i = 0; i < kLineRegisters<V>; ++i) {
        if constexpr (Stream) {
            V::StoreStream(dst + i * kRegisterBytes<V>, loads[i]);
        } else {
            V::Store(dst + i * kRegisterBytes<V>, loads[i]);
        }
    }
}

// Whole lines of the target, and at both ends a line's bytes at any address.
template <class V, bool Stream>
void CopyLines(const uint8_t* src, uint8_t* dst, size_t bytes) {
    if (bytes < 2 * kLineBytes) {
        return kPlainRowKernels.copy(src, dst, bytes);
    }
    const size_t first = kLineBytes - reinterpret_cast<uintptr_t>(dst) % kLineBytes;
    CopyLine<V, false>(src, dst);
    CoverInRounds((bytes - first) / kLineBytes * kLineBytes, kLineBytes, kLineBytes, false, LoadsMeetStores(src, dst),
                  [&](size_t at) { CopyLine<V, Stream>(src + first + at, dst + first + at); });
    CopyLine<V, false>(src + bytes - kLineBytes, dst + bytes - kLineBytes);
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
    static constexpr bool kThree = ColourSamples == 3;
    static constexpr size_t kCallerBytes = (ColourSamples + 1) * kPieceBytes;
    static constexpr size_t kColourBytes = ColourSamples * kPieceBytes;

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
            loads[i] = V::LoadLanes(src + (kThree ? kSplitLoads4[i] : kSplitLoads3[i]), distance);
        }
        return loads;
    }

    Pieces<V, ColourSamples> Colour(const Pieces<V, 4>& loads) const {
        Pieces<V, ColourSamples> colour;
        for (size_t i = 0; i < ColourSamples; ++i) {
            const size_t first = kThree ? i : 2 * i;
            colour[i] = ShuffleTwo<V>(loads[first], colourPatterns[i][0], loads[first + 1], colourPatterns[i][1]);
        }
        return colour;
    }

    typename V::Reg Alpha(const Pieces<V, 4>& loads) const {
        return V::Or(ShuffleTwo<V>(loads[0], alphaPatterns[0], loads[1], alphaPatterns[1]),
                     ShuffleTwo<V>(loads[2], alphaPatterns[2], loads[3], alphaPatterns[3]));
    }
};

// Rounds of several units: stores that cross the lines of the cache are dear unless they follow one another, so alpha
// is kept until the colour of all is stored.
template <class V, size_t ColourSamples, bool WithAlpha>
size_t SplitRounds(const SplitShuffles& shuffles, const uint8_t* src, uint8_t* colour, uint8_t* alpha,
                   size_t alphaBytes, size_t sampleBytes) {
    using Unit = AlphaUnit<V, ColourSamples>;
    constexpr size_t kUnits = 2;
    const Unit unit(shuffles);
    return CoverInRounds(alphaBytes, kUnits * kRegisterBytes<V>, sampleBytes, true, false, [&](size_t at) {
        Pieces<V, kUnits> alphas;
        for (size_t i = 0; i < kUnits; ++i) {
            const size_t place = at + i * kRegisterBytes<V>;
            const auto loads = Unit::Load(src + place * (ColourSamples + 1), Unit::kCallerBytes);
            V::StorePieces(colour + place * ColourSamples, unit.Colour(loads));
            if constexpr (WithAlpha) {
                alphas[i] = unit.Alpha(loads);
            }
        }
        if constexpr (WithAlpha) {
            StoreAll<V>(alpha + at, alphas);
        }
    });
}

template <class V>
void Split(const Order& order, size_t sampleBytes, const uint8_t* src, uint8_t* colour, uint8_t* alpha, size_t pixels) {
    const SplitShuffles& shuffles = AlphaShufflesOf(order).split[SampleSizeIndex(sampleBytes)];
    const size_t alphaBytes = pixels * sampleBytes;
    const auto rounds = order.colourSamples == 3
                            ? (alpha != nullptr ? SplitRounds<V, 3, true> : SplitRounds<V, 3, false>)
                            : (alpha != nullptr ? SplitRounds<V, 2, true> : SplitRounds<V, 2, false>);
    const size_t done = rounds(shuffles, src, colour, alpha, alphaBytes, sampleBytes);
    if (done != alphaBytes) {
        V::Next().splitRow(order, sampleBytes, src + done * order.samples, colour + done * order.colourSamples,
                           alpha != nullptr ? alpha + done : nullptr, pixels - done / sampleBytes);
    }
}

template <class V, size_t ColourSamples>
size_t MergeRounds(const MergeShuffles& shuffles, const uint8_t* colour, const uint8_t* alpha, uint8_t* dst,
                   size_t alphaBytes, size_t sampleBytes) {
    constexpr size_t kSamples = ColourSamples + 1;
    Pieces<V, kSamples> colourPatterns;
    Pieces<V, kSamples> alphaPatterns;
    for (size_t i = 0; i < kSamples; ++i) {
        colourPatterns[i] = V::Pattern(shuffles.colour[i]);
        alphaPatterns[i] = V::Pattern(shuffles.alpha[i]);
    }
    return CoverInRounds(alphaBytes, V::kLanes * kPieceBytes, sampleBytes, true, false, [&](size_t at) {
        const uint8_t* unit = colour + at * ColourSamples;
        const auto alphas = V::Load(alpha + at);
        Pieces<V, kSamples> out;
        for (size_t i = 0; i < kSamples; ++i) {
            const size_t offset = ColourSamples == 3 ? kMergeLoads4[i] : kMergeLoads3[i];
            out[i] = ShuffleTwo<V>(V::LoadLanes(unit + offset, ColourSamples * kPieceBytes), colourPatterns[i], alphas,
                                   alphaPatterns[i]);
        }
        V::StorePieces(dst + at * kSamples, out);
    });
}

template <class V>
void Merge(const Order& order, size_t sampleBytes, const uint8_t* colour, const uint8_t* alpha, uint8_t* dst,
           size_t pixels) {
    const MergeShuffles& shuffles = AlphaShufflesOf(order).merge[SampleSizeIndex(sampleBytes)];
    const size_t alphaBytes = pixels * sampleBytes;
    const auto rounds = order.colourSamples == 3 ? MergeRounds<V, 3> : MergeRounds<V, 2>;
    const size_t done = rounds(shuffles, colour, alpha, dst, alphaBytes, sampleBytes);
    if (done != alphaBytes) {
        V::Next().mergeRow(order, sampleBytes, colour + done * order.colourSamples, alpha + done,
                           dst + done * order.samples, pixels - done / sampleBytes);
    }
}

template <class V>
void SwapPairs(size_t sampleBytes, const uint8_t* src, uint8_t* dst, size_t pairs) {
    const auto pattern = V::Pattern(kPairShuffles[SampleSizeIndex(sampleBytes)]);
    const size_t bytes = pairs * 2 * sampleBytes;
    const size_t done =
        CoverInRounds(bytes, kLineBytes, 2 * sampleBytes, src != dst, LoadsMeetStores(src, dst), [&](size_t at) {
            Pieces<V, kLineRegisters<V>> out;
            for (size_t i = 0; i < kLineRegisters<V>; ++i) {
                out[i] = V::Shuffle(V::Load(src + at + i * kRegisterBytes<V>), pattern);
            }
            StoreAll<V>(dst + at, out);
        });
    if (done != bytes) {
        V::Next().swapPairs(sampleBytes, src + done, dst + done, (bytes - done) / (2 * sampleBytes));
    }
}

template <class V>
typename V::Reg Gathered(const uint8_t* src, const Gather<V::kLanes>& gather) {
    return V::Shuffle(V::LoadLanes(src, gather.load), V::Load(gather.pattern));
}

template <class V>
typename V::Reg Gathered(const uint8_t* src, const GatherTwo<V::kLanes>& gather) {
    return V::Or(Gathered<V>(src, gather.lower), Gathered<V>(src, gather.upper));
}

// N tables, the one for register r being make(r).
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

// Makes registers make<0>() to make<N - 1>() and stores them one behind the other, two at a time, which for the widest
// is a line of the cache.
template <class V, size_t N, class Make>
void MakeAndStore(uint8_t* dst, const Make& make) {
    Repeat<N / 2>([&]<size_t I>() {
        const auto first = make.template operator()<2 * I>();
        const auto second = make.template operator()<2 * I + 1>();
        V::Store(dst + 2 * I * sizeof first, first);
        V::Store(dst + (2 * I + 1) * sizeof first, second);
    });
}

// The registers of a unit of triples; they repeat for the units behind it.
template <class V, size_t SampleBytes>
constexpr Tables<GatherTwo<V::kLanes>, 3> kTripleGathers([](size_t reg) {
    return MakeGatherTwo<V::kLanes>(reg, 3 * kRegisterBytes<V>,
                                    [](size_t i) { return ReversedTripleByte(i, SampleBytes); });
});

template <class V, size_t SampleBytes>
size_t TripleRounds(const uint8_t* src, uint8_t* dst, size_t bytes) {
    return CoverInRounds(
        bytes, 3 * kRegisterBytes<V>, 3 * SampleBytes, src != dst, LoadsMeetStores(src, dst), [&](size_t at) {
            Pieces<V, 3> out;
            Repeat<3>([&]<size_t I>() { out[I] = Gathered<V>(src + at, kTripleGathers<V, SampleBytes>[I]); });
            StoreAll<V>(dst + at, out);
        });
}

template <class V>
void ReverseTriples(size_t sampleBytes, const uint8_t* src, uint8_t* dst, size_t pixels) {
    const size_t bytes = pixels * 3 * sampleBytes;
    const auto rounds = sampleBytes == 1   ? TripleRounds<V, 1>
                        : sampleBytes == 2 ? TripleRounds<V, 2>
                                           : TripleRounds<V, 4>;
    const size_t done = rounds(src, dst, bytes);
    if (done != bytes) {
        V::Next().reverseTriples(sampleBytes, src + done, dst + done, (bytes - done) / (3 * sampleBytes));
    }
}

// Sources of words in plane order. `registers` of them make a unit, of `samples` samples, from `callerBytes` bytes of
// the caller; samples of a `group` are moved together.

constexpr size_t kUnitRegisters = 8;
constexpr size_t kTripleUnitRegisters = 12;

template <class V>
struct PlainWords {
    static constexpr bool kShufflesMuch = false;
    static constexpr size_t kGroup = 1;
    static constexpr size_t kRegisters = kUnitRegisters;
    static constexpr size_t kSamples = kRegisters * kRegisterWords<V>;
    static constexpr size_t kCallerBytes = 2 * kSamples;

    explicit PlainWords(const Order&) {}

    template <size_t I>
    typename V::Reg Load(const uint8_t* src) const {
        return V::Load(src + I * kRegisterBytes<V>);
    }
};

template <class V>
struct PairWords {
    static constexpr bool kShufflesMuch = false;
    static constexpr size_t kGroup = 2;
    static constexpr size_t kRegisters = kUnitRegisters;
    static constexpr size_t kSamples = kRegisters * kRegisterWords<V>;
    static constexpr size_t kCallerBytes = 2 * kSamples;

    typename V::Reg pattern = V::Pattern(kPairShuffles[SampleSizeIndex(2)]);

    explicit PairWords(const Order&) {}

    template <size_t I>
    typename V::Reg Load(const uint8_t* src) const {
        return V::Shuffle(V::Load(src + I * kRegisterBytes<V>), pattern);
    }
};

template <class V>
struct TripleWords {
    static constexpr bool kShufflesMuch = true;
    static constexpr size_t kGroup = 3;
    static constexpr size_t kRegisters = kTripleUnitRegisters;
    static constexpr size_t kSamples = kRegisters * kRegisterWords<V>;
    static constexpr size_t kCallerBytes = 2 * kSamples;

    explicit TripleWords(const Order&) {}

    template <size_t I>
    typename V::Reg Load(const uint8_t* src) const {
        return Gathered<V>(src + I / 3 * 3 * kRegisterBytes<V>, kTripleGathers<V, 2>[I % 3]);
    }
};

// The colour of pixels with alpha; alpha is dropped.
template <class V, size_t ColourSamples>
struct ColourWords {
    static constexpr bool kThree = ColourSamples == 3;
    static constexpr bool kShufflesMuch = true;
    static constexpr size_t kGroup = ColourSamples;
    static constexpr size_t kRegisters = kThree ? kTripleUnitRegisters : kUnitRegisters;
    static constexpr size_t kSamples = kRegisters * kRegisterWords<V>;
    static constexpr size_t kCallerBytes = 2 * kSamples / ColourSamples * (ColourSamples + 1);

    typename V::Reg patterns[ColourSamples][2];

    explicit ColourWords(const Order& order) {
        const SplitShuffles& shuffles = AlphaShufflesOf(order).split[SampleSizeIndex(2)];
        for (size_t reg = 0; reg < ColourSamples; ++reg) {
            for (size_t term = 0; term < 2; ++term) {
                const uint8_t* lanes[V::kLanes];
                for (size_t lane = 0; lane < V::kLanes; ++lane) {
                    lanes[lane] = shuffles.colour[(reg * V::kLanes + lane) % ColourSamples][term].byte;
                }
                patterns[reg][term] = V::JoinLanes(lanes);
            }
        }
    }

    template <size_t I>
    typename V::Reg Load(const uint8_t* src) const {
        constexpr auto kLower = LoadsOf(I, 0);
        constexpr auto kUpper = LoadsOf(I, 1);
        const auto& pattern = patterns[I % ColourSamples];
        return ShuffleTwo<V>(V::LoadLanes(src, kLower.load), pattern[0], V::LoadLanes(src, kUpper.load), pattern[1]);
    }

private:
    static constexpr Gather<V::kLanes> LoadsOf(size_t reg, size_t term) {
        Gather<V::kLanes> loads;
        for (size_t lane = 0; lane < V::kLanes; ++lane) {
            const size_t piece = (reg * V::kLanes + lane) % ColourSamples;
            const size_t unit = (reg * V::kLanes + lane) / ColourSamples;
            const size_t offset = kThree ? kSplitLoads4[piece + term] : kSplitLoads3[2 * piece + term];
            loads.load[lane] = unit * (ColourSamples + 1) * kPieceBytes + offset;
        }
        return loads;
    }
};

// Packed10: groups of 12 samples in four dwords of three fields each.
constexpr size_t kPackedGroupSamples = 12;
constexpr size_t kPackedGroupBytes = 16;

// Field f of a dword begins in byte f, 2 f bits up; a multiplication brings it to the top of a word.
template <class V>
struct PackedWords {
    static constexpr bool kShufflesMuch = true;
    static constexpr size_t kGroup = kPackedGroupSamples;
    static constexpr size_t kRegisters = kTripleUnitRegisters;
    static constexpr size_t kSamples = kRegisters * kRegisterWords<V>;
    static constexpr size_t kCallerBytes = kSamples / kPackedGroupSamples * kPackedGroupBytes;

    explicit PackedWords(const Order&) {}

    template <size_t I>
    typename V::Reg Load(const uint8_t* src) const {
        return V::Multiply16(Gathered<V>(src, kFields[I]), V::LoadWords(kFactors[I % 3].word));
    }

private:
    struct Factors {
        uint16_t word[kRegisterWords<V>];
    };
    static constexpr Tables<Gather<V::kLanes>, kRegisters> kFields{[](size_t reg) {
        return MakeGather<V::kLanes>(reg, kCallerBytes, [](size_t i) { return i / 2 / 3 * 4 + i / 2 % 3 + i % 2; });
    }};
    static constexpr Tables<Factors, 3> kFactors{[](size_t reg) {
        Factors made;
        for (size_t i = 0; i < kRegisterWords<V>; ++i) {
            made.word[i] = static_cast<uint16_t>(64U >> (reg * kRegisterWords<V> + i) % 3 * 2);
        }
        return made;
    }};
};

// Shifts by multiplication: the units that shift have the shuffles to do.
template <class V, int Bits>
typename V::Reg ShiftRight(typename V::Reg words) {
    return V::MultiplyHigh16(words, V::Words(1 << (16 - Bits), 1 << (16 - Bits)));
}

// The upper bytes of the words of two registers.
template <class V>
typename V::Reg HighBytes(typename V::Reg a, typename V::Reg b) {
    return V::JoinEights(V::PackWords(ShiftRight<V, 8>(a), ShiftRight<V, 8>(b)));
}

// The low part of a unit is taken from four registers at a time. Stores that cross the processor's lines are dear
// unless they follow one another, so what is taken is kept until the unit's high part is stored.

// Four samples a byte, the two low bits of each. The byte of each four is made in a dword of its own.
template <class V, size_t Registers>
class LowPart10 {
public:
    template <size_t I>
    void Take(const Pieces<V, 4>& words, uint8_t*) {
        // The bits stand 6 up in their bytes; joined, they are brought down together.
        joined_[I] = ShiftRight<V, 6>(V::PackDwords(JoinFours(words[0], words[1]), JoinFours(words[2], words[3])));
    }

    void Finish(uint8_t* low) const {
        constexpr size_t kWhole = Registers / 8;
        Repeat<kWhole>([&]<size_t I>() {
            V::Store(low + I * kRegisterBytes<V>, V::JoinTwos(V::PackWords(joined_[2 * I], joined_[2 * I + 1])));
        });
        if constexpr (Registers % 8 != 0) {
            const auto last = joined_[2 * kWhole];
            V::StoreHalf(low + kWhole * kRegisterBytes<V>, V::JoinTwos(V::PackWords(last, last)));
        }
    }

private:
    static typename V::Reg JoinFours(typename V::Reg a, typename V::Reg b) {
        const auto mask = V::Words(0xC0, 0xC0);
        const auto bits = V::PackWords(V::And(a, mask), V::And(b, mask));
        return V::MultiplyAdd16(V::MultiplyAdd8(bits, V::Bytes(1, 4)), V::Words(1, 16));
    }

    Pieces<V, Registers / 4> joined_;
};

// The same without a shuffle, for sources that have many: with a sample's bits at the tops of the two bytes of its word
// they come out of the register as they are wanted. There are too many results to keep.
template <class V, size_t Registers>
class LowPart10AtOnce {
public:
    template <size_t I>
    void Take(const Pieces<V, 4>& words, uint8_t* low) const {
        Store(low + I * kRegisterWords<V>, words[0], words[1]);
        Store(low + I * kRegisterWords<V> + kRegisterWords<V> / 2, words[2], words[3]);
    }

    void Finish(uint8_t*) const {}

private:
    static typename V::Reg BitsAtTops(typename V::Reg words) {
        return V::MultiplyByHidden(V::And(words, V::Words(0xC0, 0xC0)), 0x102);
    }
    static void Store(uint8_t* low, typename V::Reg a, typename V::Reg b) {
        const auto bits = V::TopBits(BitsAtTops(a), BitsAtTops(b));
        __builtin_memcpy(low, &bits, sizeof bits);
    }
};

// Two samples a byte, the four low bits of each. The byte of each two is made in a word of its own.
template <class V, size_t Registers>
class LowPart12 {
public:
    template <size_t I>
    void Take(const Pieces<V, 4>& words, uint8_t*) {
        joined_[I] = V::JoinFours(V::PackWords(JoinTwos(words[0], words[1]), JoinTwos(words[2], words[3])));
    }

    void Finish(uint8_t* low) const { StoreAll<V>(low, joined_); }

private:
    static typename V::Reg JoinTwos(typename V::Reg a, typename V::Reg b) {
        const auto mask = V::Words(0xF0, 0xF0);
        const auto bits = V::PackWords(V::And(a, mask), V::And(b, mask));
        return ShiftRight<V, 4>(V::MultiplyAdd8(bits, V::Bytes(1, 16)));
    }

    Pieces<V, Registers / 4> joined_;
};

constexpr size_t SamplesInLowByte(size_t lowBits) {
    return 8 / lowBits;
}

// The least number of samples that has whole groups and whole bytes of the low part.
constexpr size_t StepOf(size_t group, size_t lowBits) {
    const size_t perByte = SamplesInLowByte(lowBits);
    return group % perByte == 0 ? group : group % 2 == 0 ? group * perByte / 2 : group * perByte;
}

template <class V, size_t LowBits, size_t Registers, class Source>
void PackUnit(const Source& source, const uint8_t* src, uint8_t* high, uint8_t* low) {
    using Low10 = std::conditional_t<Source::kShufflesMuch, LowPart10AtOnce<V, Registers>, LowPart10<V, Registers>>;
    std::conditional_t<LowBits == 2, Low10, LowPart12<V, Registers>> lowPart;
    Repeat<Registers / 4>([&]<size_t I>() {
        const Pieces<V, 4> words = {source.template Load<4 * I>(src), source.template Load<4 * I + 1>(src),
                                    source.template Load<4 * I + 2>(src), source.template Load<4 * I + 3>(src)};
        V::Store(high + 2 * I * kRegisterBytes<V>, HighBytes<V>(words[0], words[1]));
        V::Store(high + (2 * I + 1) * kRegisterBytes<V>, HighBytes<V>(words[2], words[3]));
        lowPart.template Take<I>(words, low);
    });
    lowPart.Finish(low);
}

// Whole units and, where a part of one is left, smaller rounds. Returns the samples done.
template <class V, size_t LowBits, class Source>
size_t PackRounds(const Order& order, const uint8_t* src, size_t samples, uint8_t* high, uint8_t* low) {
    constexpr size_t kStep = StepOf(Source::kGroup, LowBits);
    constexpr bool kHalves = Source::kRegisters % 8 == 0;
    constexpr size_t kLastRegisters = kHalves ? Source::kRegisters / 2 : Source::kRegisters;
    constexpr size_t kLastSamples = kLastRegisters * kRegisterWords<V>;
    const size_t covered = samples - samples % kStep;
    if (covered < kLastSamples) {
        return 0;
    }
    const Source source(order);
    const auto pack = [&]<size_t Registers>(size_t at) {
        PackUnit<V, LowBits, Registers>(source, src + at * Source::kCallerBytes / Source::kSamples, high + at,
                                        low + at / SamplesInLowByte(LowBits));
    };
    size_t done = 0;
    if constexpr (kHalves) {
        done = CoverInRounds(covered, Source::kSamples, kStep, false, false,
                             [&](size_t at) { pack.template operator()<Source::kRegisters>(at); });
    }
    if (done < covered) {
        const size_t start = covered - done < kLastSamples ? covered - kLastSamples : done;
        CoverInRounds(covered - start, kLastSamples, kStep, true, false,
                      [&](size_t at) { pack.template operator()<kLastRegisters>(start + at); });
    }
    return covered;
}

// The bytes that `samples` samples of the plane take of the caller's row.
inline size_t CallerBytesOf(const Order& order, size_t samples) {
    return order.movement != Movement::SplitAlpha ? 2 * samples : 2 * samples / order.colourSamples * order.samples;
}

template <class V, size_t LowBits>
void Pack(const Order& order, const uint8_t* words, size_t samples, uint8_t* high, uint8_t* low) {
    auto rounds = PackRounds<V, LowBits, PlainWords<V>>;
    if (order.movement == Movement::SwapPairs) {
        rounds = PackRounds<V, LowBits, PairWords<V>>;
    } else if (order.movement == Movement::ReverseTriples) {
        rounds = PackRounds<V, LowBits, TripleWords<V>>;
    } else if (order.movement == Movement::SplitAlpha) {
        rounds = order.colourSamples == 3 ? PackRounds<V, LowBits, ColourWords<V, 3>>
                                          : PackRounds<V, LowBits, ColourWords<V, 2>>;
    }
    const size_t done = rounds(order, words, samples, high, low);
    if (done != samples) {
        const auto next = LowBits == 2 ? V::Next().packRow10 : V::Next().packRow12;
        next(order, words + CallerBytesOf(order, done), samples - done, high + done,
             low + done / SamplesInLowByte(LowBits));
    }
}

template <class V>
void PackedGroupsToPlane(const uint8_t* packed, size_t groups, uint8_t* high, uint8_t* low) {
    const size_t samples = groups * kPackedGroupSamples;
    const size_t done = PackRounds<V, 2, PackedWords<V>>(kUnknownOrder, packed, samples, high, low);
    if (done != samples) {
        const size_t doneGroups = done / kPackedGroupSamples;
        V::Next().packedGroupsToPlane(packed + doneGroups * kPackedGroupBytes, groups - doneGroups, high + done,
                                      low + done / SamplesInLowByte(2));
    }
}

// The least that fills loads of 16 bytes of the low part, and whole registers of triples.
constexpr size_t UnitSamples(Movement movement) {
    return movement == Movement::ReverseTriples ? 96 : 64;
}

constexpr size_t GroupOf(Movement movement) {
    return movement == Movement::ReverseTriples ? 3 : movement == Movement::SwapPairs ? 2 : 1;
}

// The plane's sample that becomes sample i of the caller's row.
constexpr size_t PlaneSampleOf(Movement movement, size_t i) {
    return movement == Movement::SwapPairs ? i ^ 1 : movement == Movement::ReverseTriples ? i / 3 * 3 + 2 - i % 3 : i;
}

// How the caller's words are put together: `tops` puts the samples' high bytes in their places, `lows` the bytes of the
// low part that hold their low bits; these are brought to the top of the low byte by multiplication.
template <class V, size_t LowBits, Movement Kind>
struct UnpackTables {
    static constexpr size_t kSamples = UnitSamples(Kind);
    static constexpr size_t kRegisters = kSamples / kRegisterWords<V>;
    static constexpr size_t kPerByte = SamplesInLowByte(LowBits);
    // Registers that differ in their factors.
    static constexpr size_t kPeriod = Kind == Movement::ReverseTriples ? 3 : 1;

    struct Factors {
        uint16_t word[kRegisterWords<V>];
    };

    static constexpr Tables<Gather<V::kLanes>, kRegisters> kTops{[](size_t reg) {
        return MakeGather<V::kLanes>(reg, kSamples,
                                     [](size_t i) { return i % 2 == 1 ? PlaneSampleOf(Kind, i / 2) : kNowhere; });
    }};
    static constexpr Tables<Gather<V::kLanes>, kRegisters> kLows{[](size_t reg) {
        return MakeGather<V::kLanes>(reg, kSamples / kPerByte, [](size_t i) {
            return i % 2 == 0 ? PlaneSampleOf(Kind, i / 2) / kPerByte : kNowhere;
        });
    }};
    static constexpr Tables<Factors, kPeriod> kFactors{[](size_t reg) {
        Factors made;
        for (size_t i = 0; i < kRegisterWords<V>; ++i) {
            const size_t place = PlaneSampleOf(Kind, reg * kRegisterWords<V> + i) % kPerByte;
            made.word[i] = static_cast<uint16_t>(1U << (8 - LowBits * (place + 1)));
        }
        return made;
    }};
};

template <class V, size_t LowBits, Movement Kind>
size_t UnpackRounds(const uint8_t* high, const uint8_t* low, size_t samples, uint8_t* words) {
    using Tables = UnpackTables<V, LowBits, Kind>;
    const auto mask = LowBits == 2 ? V::Words(0xC0, 0xC0) : V::Words(0xF0, 0xF0);
    return CoverInRounds(samples, Tables::kSamples, StepOf(GroupOf(Kind), LowBits), true, false, [&](size_t at) {
        MakeAndStore<V, Tables::kRegisters>(words + 2 * at, [&]<size_t I>() {
            const auto lows = Gathered<V>(low + at / Tables::kPerByte, Tables::kLows[I]);
            const auto bits = V::Multiply16(lows, V::LoadWords(Tables::kFactors[I % Tables::kPeriod].word));
            return V::Or(Gathered<V>(high + at, Tables::kTops[I]), V::And(bits, mask));
        });
    });
}

// Less than a round, by way of a round beside it; what doesn't make whole groups stays. Returns the samples done.
template <class V, size_t LowBits, Movement Kind>
size_t UnpackStaged(const uint8_t* high, const uint8_t* low, size_t samples, uint8_t* words) {
    constexpr size_t kRoundSamples = UnitSamples(Kind);
    const size_t covered = samples - samples % StepOf(GroupOf(Kind), LowBits);
    uint8_t stagedHigh[kRoundSamples] = {};
    uint8_t stagedLow[kRoundSamples / SamplesInLowByte(LowBits)] = {};
    uint8_t stagedWords[2 * kRoundSamples];
    std::memcpy(stagedHigh, high, covered);
    std::memcpy(stagedLow, low, covered / SamplesInLowByte(LowBits));
    UnpackRounds<V, LowBits, Kind>(stagedHigh, stagedLow, kRoundSamples, stagedWords);
    std::memcpy(words, stagedWords, 2 * covered);
    return covered;
}

// Rows of less than a round are staged by the last set that is ahead of the plain one.
template <class V, size_t LowBits, Movement Kind>
size_t UnpackMost(const uint8_t* high, const uint8_t* low, size_t samples, uint8_t* words) {
    const size_t done = UnpackRounds<V, LowBits, Kind>(high, low, samples, words);
    return done == 0 && V::kLanes == 1 ? UnpackStaged<V, LowBits, Kind>(high, low, samples, words) : done;
}

template <class V, size_t LowBits>
void Unpack(const Order& order, const uint8_t* high, const uint8_t* low, size_t samples, uint8_t* words) {
    const auto most = order.movement == Movement::SwapPairs        ? UnpackMost<V, LowBits, Movement::SwapPairs>
                      : order.movement == Movement::ReverseTriples ? UnpackMost<V, LowBits, Movement::ReverseTriples>
                                                                   : UnpackMost<V, LowBits, Movement::InOrder>;
    const size_t done = most(high, low, samples, words);
    if (done != samples) {
        const auto next = LowBits == 2 ? V::Next().unpackRow10 : V::Next().unpackRow12;
        next(order, high + done, low + done / SamplesInLowByte(LowBits), samples - done, words + 2 * done);
    }
}

// The caller's dwords of four groups a lane. The top bits of fields 0 and 1 of a dword stand in a word each, to be
// added with their weights, and those of field 2 in the upper word. The low bits of a dword's samples are 6 bits in a
// row of the low part, at bit 6 j for dword j: `sixes` puts the bytes that hold them in a word, for as many dwords as a
// register has words, a multiplication brings them to its upper byte, and from there they go to each field's byte.
template <class V>
struct PackedTables {
    static constexpr size_t kGroups = 8;
    static constexpr size_t kSamples = kGroups * kPackedGroupSamples;
    static constexpr size_t kRegisters = kGroups / V::kLanes;

    // Some high bytes of a register's dwords, with loads that hold all of them, so that they serve twice.
    template <class Source>
    static constexpr Gather<V::kLanes> HighBytes(size_t reg, const Source& source) {
        auto gather = MakeGather<V::kLanes>(reg, kSamples, [](size_t i) { return i / 4 * 3 + i % 4 * 3 / 4; });
        TakeBytes(gather, reg, source);
        return gather;
    }
    static constexpr Tables<Gather<V::kLanes>, kRegisters> kPairs{[](size_t reg) {
        return HighBytes(reg, [](size_t i) { return i % 2 == 0 ? i / 4 * 3 + i % 4 / 2 : kNowhere; });
    }};
    static constexpr Tables<Gather<V::kLanes>, kRegisters> kThirds{
        [](size_t reg) { return HighBytes(reg, [](size_t i) { return i % 4 == 2 ? i / 4 * 3 + 2 : kNowhere; }); }};
    static constexpr Tables<Gather<V::kLanes>, kRegisters / 2> kSixes{[](size_t two) {
        return MakeGather<V::kLanes>(two, kSamples / 4, [](size_t i) {
            // A lane of two registers: the first four words are of the one, the others of the other.
            const size_t lane = i / kPieceBytes % V::kLanes;
            const size_t reg = i / (V::kLanes * kPieceBytes) * 2 + i % kPieceBytes / 8;
            const size_t dword = i / 2 % 4;
            const size_t byte = 6 * dword / 8 + i % 2;
            return byte < 3 ? (reg * V::kLanes + lane) * 3 + byte : kNowhere;
        });
    }};
    static constexpr Shuffle16 SixesOf(size_t half) {
        Shuffle16 shuffle;
        for (size_t i = 0; i < kPieceBytes; ++i) {
            shuffle.byte[i] = i % 4 == 3 ? kZeroLane : static_cast<uint8_t>(8 * half + i / 4 * 2 + 1);
        }
        return shuffle;
    }
    static constexpr Shuffle16 kToFields[2] = {SixesOf(0), SixesOf(1)};
};

template <class V>
void PlaneToPackedGroups(const uint8_t* high, const uint8_t* low, size_t groups, uint8_t* packed) {
    using Tables = PackedTables<V>;
    const auto pairWeights = V::Words(4, 4096);
    const auto thirdWeights = V::Words(0, 64);
    const auto sixFactors = V::WordsOf4(256, 4, 16, 64);
    const auto lowMask = V::Words(0x0C03, 0x0030);
    const size_t done = CoverInRounds(groups, Tables::kGroups, 1, true, false, [&](size_t at) {
        const uint8_t* highs = high + at * kPackedGroupSamples;
        const uint8_t* lows = low + at * kPackedGroupSamples / SamplesInLowByte(2);
        MakeAndStore<V, Tables::kRegisters>(packed + at * kPackedGroupBytes, [&]<size_t I>() {
            const auto sixes = V::Multiply16(Gathered<V>(lows, Tables::kSixes[I / 2]), sixFactors);
            const auto bits = V::And(V::Shuffle(sixes, V::Pattern(Tables::kToFields[I % 2])), lowMask);
            const auto pairs = V::MultiplyAdd16(Gathered<V>(highs, Tables::kPairs[I]), pairWeights);
            const auto thirds = V::Multiply16(Gathered<V>(highs, Tables::kThirds[I]), thirdWeights);
            return V::Or(V::Or(pairs, thirds), bits);
        });
    });
    if (done != groups) {
        V::Next().planeToPackedGroups(high + done * kPackedGroupSamples,
                                      low + done * kPackedGroupSamples / SamplesInLowByte(2), groups - done,
                                      packed + done * kPackedGroupBytes);
    }
}

// Each word goes to the upper half of a dword.
template <class V, Movement Kind>
struct FloatTables {
    static constexpr size_t kSamples = UnitSamples(Kind) / 2;
    static constexpr size_t kRegisters = kSamples * 4 / kRegisterBytes<V>;
    static constexpr Tables<Gather<V::kLanes>, kRegisters> kWords{[](size_t reg) {
        return MakeGather<V::kLanes>(
            reg, 2 * kSamples, [](size_t i) { return i % 4 >= 2 ? 2 * PlaneSampleOf(Kind, i / 4) + i % 2 : kNowhere; });
    }};
};

template <class V, Movement Kind>
size_t FloatRounds(const uint8_t* fixed, size_t samples, uint8_t* floats) {
    using Tables = FloatTables<V, Kind>;
    return CoverInRounds(samples, Tables::kSamples, GroupOf(Kind), true, false, [&](size_t at) {
        MakeAndStore<V, Tables::kRegisters>(floats + 4 * at, [&]<size_t I>() {
            return V::Fixed14ToFloat(Gathered<V>(fixed + 2 * at, Tables::kWords[I]));
        });
    });
}

template <class V>
void FixedToFloat(const Order& order, const uint8_t* fixed, size_t samples, uint8_t* floats) {
    const auto rounds = order.movement == Movement::SwapPairs        ? FloatRounds<V, Movement::SwapPairs>
                        : order.movement == Movement::ReverseTriples ? FloatRounds<V, Movement::ReverseTriples>
                                                                     : FloatRounds<V, Movement::InOrder>;
    const size_t done = rounds(fixed, samples, floats);
    if (done != samples) {
        V::Next().fixedRowToFloat(order, fixed + 2 * done, samples - done, floats + 4 * done);
    }
}

template <class V>
constexpr RowKernels VectorRowKernels() {
    return {
        .copy = CopyLines<V, false>,
        .streamCopy = CopyLines<V, true>,
        .splitRow = Split<V>,
        .mergeRow = Merge<V>,
        .swapPairs = SwapPairs<V>,
        .reverseTriples = ReverseTriples<V>,
        .packRow10 = Pack<V, 2>,
        .packRow12 = Pack<V, 4>,
        .unpackRow10 = Unpack<V, 2>,
        .unpackRow12 = Unpack<V, 4>,
        .packedGroupsToPlane = PackedGroupsToPlane<V>,
        .planeToPackedGroups = PlaneToPackedGroups<V>,
        .fixedRowToFloat = FixedToFloat<V>,
    };
}

}  // namespace
}  // namespace plenar
