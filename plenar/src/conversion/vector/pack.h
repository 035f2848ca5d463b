// Words of 10 and 12 bits, packed into split rows: a high part with the top byte of each sample, and a low part with
// the bits below.
#pragma once

#include <type_traits>

#include "conversion/vector/rounds.h"
#include "conversion/vector/word_sources.h"

namespace plenar {
namespace {

// Shifts by multiplication: the units that shift are busy with shuffles.
template <int Bits>
[[gnu::always_inline]] inline Words ShiftRight(Words words) {
    return TargetVector::MultiplyHigh(words, Splat(static_cast<uint16_t>(1 << (16 - Bits))));
}

// The upper bytes of the words of two vectors.
[[gnu::always_inline]] inline Bytes HighBytes(Words a, Words b) {
    return JoinPieces<uint64_t>(TargetVector::PackWords(ShiftRight<8>(a), ShiftRight<8>(b)));
}

// The low bits of the samples of two vectors, as bytes.
template <uint16_t Mask>
[[gnu::always_inline]] inline Bytes LowBytes(Words a, Words b) {
    return TargetVector::PackWords(a & Splat(Mask), b & Splat(Mask));
}

// The low part of a unit is taken from four vectors at a time. Stores that cross cache lines are expensive unless they
// follow one another, so what is taken is kept until the unit's high part is stored.

// Four samples a byte, the two low bits of each. The byte of each four is made in a dword of its own.
template <size_t Vectors>
class LowPart10 {
public:
    template <size_t I>
    void Take(const Pieces<4, Words>& words, uint8_t* /*low*/) {
        // The bits stand 6 up in their bytes; joined, they are brought down together.
        joined_[I] =
            ShiftRight<6>(TargetVector::PackDwords(JoinFours(words[0], words[1]), JoinFours(words[2], words[3])));
    }

    void Finish(uint8_t* low) const {
        constexpr size_t kWhole = Vectors / 8;
        Repeat<kWhole>(
            [&]<size_t I>() { StoreVector(low + I * kVectorBytes, LowVector(joined_[2 * I], joined_[2 * I + 1])); });
        if constexpr (Vectors % 8 != 0) {
            const Bytes last = LowVector(joined_[2 * kWhole], joined_[2 * kWhole]);
            __builtin_memcpy(low + kWhole * kVectorBytes, &last, kVectorBytes / 2);
        }
    }

private:
    static Dwords JoinFours(Words a, Words b) {
        return TargetVector::MultiplyAdd(TargetVector::MultiplyAdd(LowBytes<0xC0>(a, b), BytesOf(1, 4)),
                                         WordsOf(1, 16));
    }
    // Eight vectors were packed together, so that two bytes are left of 16.
    static Bytes LowVector(Words a, Words b) { return JoinPieces<uint16_t>(TargetVector::PackWords(a, b)); }

    Pieces<Vectors / 4, Words> joined_;
};

// The same without a shuffle, for sources that have many: with a sample's bits at the tops of the two bytes of its
// word, the top bits of a vector are its bytes of the low part. There are too many results to keep.
template <size_t Vectors>
class LowPart10AtOnce {
public:
    template <size_t I>
    void Take(const Pieces<4, Words>& words, uint8_t* low) const {
        Store(low + I * kLanes<uint16_t>, words[0], words[1]);
        Store(low + I * kLanes<uint16_t> + kLanes<uint16_t> / 2, words[2], words[3]);
    }

    void Finish(uint8_t* /*low*/) const {}

private:
    // The factor is hidden, as the compiler would make shifts and additions of a multiplication by one that it knows.
    static Bytes BitsAtTops(Words words) {
        constexpr uint16_t kBothTops = 0x102;
        return As<Bytes>((words & Splat(uint16_t{0xC0})) * TargetVector::Hide(Splat(kBothTops)));
    }
    static void Store(uint8_t* low, Words a, Words b) {
        const uint64_t bits = TargetVector::TopBits(BitsAtTops(a)) | uint64_t{TargetVector::TopBits(BitsAtTops(b))}
                                                                         << kVectorBytes;
        __builtin_memcpy(low, &bits, kVectorBytes / 4);
    }
};

// Two samples a byte, the four low bits of each. The byte of each two is made in a word of its own.
template <size_t Vectors>
class LowPart12 {
public:
    template <size_t I>
    void Take(const Pieces<4, Words>& words, uint8_t* /*low*/) {
        joined_[I] =
            JoinPieces<uint32_t>(TargetVector::PackWords(JoinTwos(words[0], words[1]), JoinTwos(words[2], words[3])));
    }

    void Finish(uint8_t* low) const { StoreAll(low, joined_); }

private:
    static Words JoinTwos(Words a, Words b) {
        return ShiftRight<4>(TargetVector::MultiplyAdd(LowBytes<0xF0>(a, b), BytesOf(1, 16)));
    }

    Pieces<Vectors / 4> joined_;
};

template <size_t LowBits, size_t Vectors, class Source>
void PackUnit(const Source& source, const uint8_t* src, uint8_t* high, uint8_t* low) {
    using Low10 = std::conditional_t<Source::kShufflesMuch, LowPart10AtOnce<Vectors>, LowPart10<Vectors>>;
    std::conditional_t<LowBits == 2, Low10, LowPart12<Vectors>> lowPart;
    Repeat<Vectors / 4>([&]<size_t I>() {
        const Pieces<4, Words> words = {
            source.template LoadWords<4 * I>(src), source.template LoadWords<4 * I + 1>(src),
            source.template LoadWords<4 * I + 2>(src), source.template LoadWords<4 * I + 3>(src)};
        StoreVector(high + 2 * I * kVectorBytes, HighBytes(words[0], words[1]));
        StoreVector(high + (2 * I + 1) * kVectorBytes, HighBytes(words[2], words[3]));
        lowPart.template Take<I>(words, low);
    });
    lowPart.Finish(low);
}

// Whole units and, where a part of one is left, smaller rounds. Returns the samples done.
template <size_t LowBits, class Source>
size_t PackRounds(const Order& order, const uint8_t* src, size_t samples, uint8_t* high, uint8_t* low) {
    constexpr size_t kStep = StepOf(Source::kGroup, LowBits);
    constexpr bool kHalves = Source::kVectors % 8 == 0;
    constexpr size_t kLastVectors = kHalves ? Source::kVectors / 2 : Source::kVectors;
    constexpr size_t kLastSamples = kLastVectors * kLanes<uint16_t>;
    const size_t covered = samples - samples % kStep;
    if (covered < kLastSamples) {
        return 0;
    }
    const Source source(order);
    const auto pack = [&]<size_t Vectors>(size_t at) {
        PackUnit<LowBits, Vectors>(source, src + at * Source::kCallerBytes / Source::kSamples, high + at,
                                   low + at / SamplesInLowByte(LowBits));
    };
    size_t done = 0;
    if constexpr (kHalves) {
        done = CoverInRounds(covered, Source::kSamples, kStep, false, false,
                             [&](size_t at) { pack.template operator()<Source::kVectors>(at); });
    }
    if (done < covered) {
        const size_t start = covered - done < kLastSamples ? covered - kLastSamples : done;
        CoverInRounds(covered - start, kLastSamples, kStep, true, false,
                      [&](size_t at) { pack.template operator()<kLastVectors>(start + at); });
    }
    return covered;
}

// The bytes that `samples` samples of the plane take of the caller's row.
inline size_t CallerBytesOf(const Order& order, size_t samples) {
    return order.movement != Movement::SplitAlpha ? 2 * samples : 2 * samples / order.colourSamples * order.samples;
}

template <size_t LowBits>
void PackRow(const Order& order, const uint8_t* words, size_t samples, uint8_t* high, uint8_t* low) {
    const auto rounds = [&]<class Source>() { return PackRounds<LowBits, Source>(order, words, samples, high, low); };
    size_t done = 0;
    if (order.movement == Movement::SplitAlpha) {
        done = order.colourSamples == 3 ? rounds.template operator()<ColourWords<3>>()
                                        : rounds.template operator()<ColourWords<2>>();
    } else {
        done =
            RoundsOfMovement(order, [&]<Movement Moved>() { return rounds.template operator()<MovedWords<Moved>>(); });
    }
    if (done != samples) {
        const auto rest = LowBits == 2 ? narrower.packRow10 : narrower.packRow12;
        rest(order, words + CallerBytesOf(order, done), samples - done, high + done,
             low + done / SamplesInLowByte(LowBits));
    }
}

void PackedGroupsToPlane(const uint8_t* packed, size_t groups, uint8_t* high, uint8_t* low) {
    const size_t samples = groups * kPackedGroupSamples;
    const size_t done = PackRounds<2, PackedWords>(kUnknownOrder, packed, samples, high, low);
    if (done != samples) {
        const size_t doneGroups = done / kPackedGroupSamples;
        narrower.packedGroupsToPlane(packed + doneGroups * kPackedGroupBytes, groups - doneGroups, high + done,
                                     low + done / SamplesInLowByte(2));
    }
}

}  // namespace
}  // namespace plenar
