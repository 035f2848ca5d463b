// How the vector kernels of rows walk a row: in rounds of a fixed size, the last of which ends with the row and repeats
// some of the round ahead of it. Rows shorter than a round go to the next narrower set of kernels.
//
// The headers in this directory are compiled for several targets into one program. Everything in them is local to the
// including source; see simd/vector_types.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "conversion/row_kernels.h"
#include "simd/vector.h"
#include "simd/ways.h"

namespace plenar {
namespace {

// The kernels that this target starts from; set before the target's own are used.
RowKernels narrower;

// What is moved as it is, or nearly so, goes by cache lines: longer alternations of loads and stores cost up to a third
// of the speed in the second-level cache.
constexpr size_t kLineBytes = 64;
constexpr size_t kLineVectors = kLineBytes / kVectorBytes;

template <size_t N, class V = Bytes>
struct Pieces {
    V piece[N];

    V& operator[](size_t i) { return piece[i]; }
    const V& operator[](size_t i) const { return piece[i]; }
};

// A load that follows a store whose address has the same low 12 bits, or a few bytes less, waits for that store. Where
// the target lies a little further on in its page than the source in its own, copying downward avoids such pairs.
inline bool LoadsMeetStores(const uint8_t* src, const uint8_t* dst) {
    constexpr uintptr_t kPageMask = 0xFFF;
    return ((reinterpret_cast<uintptr_t>(dst) - reinterpret_cast<uintptr_t>(src)) & kPageMask) <= kPageMask / 2;
}

// Calls round(start) for rounds of `size` that cover `total` or, where `total` isn't a multiple of `step`, what comes
// ahead of its last part; from the top down if that is asked for. Returns what they cover: nothing of a total below a
// round. The last round overlaps the one ahead of it, unless that is ruled out; then it is left out.
// The round is called in one place, so that it is inlined and its constants stay in registers.
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
        TakeWay(Way::Round);
    }
    return covered;
}

// The low part of a split row holds the low bits of several samples in each byte.
constexpr size_t SamplesInLowByte(size_t lowBits) {
    return 8 / lowBits;
}

// The least number of samples that makes whole groups and whole bytes of the low part.
constexpr size_t StepOf(size_t group, size_t lowBits) {
    const size_t perByte = SamplesInLowByte(lowBits);
    return group % perByte == 0 ? group : group % 2 == 0 ? group * perByte / 2 : group * perByte;
}

// Calls body<0>() to body<N - 1>().
template <size_t N, class Body>
void Repeat(const Body& body) {
    [&]<size_t... I>(std::index_sequence<I...>) {
        (body.template operator()<I>(), ...);
    }
    (std::make_index_sequence<N>());
}

// Calls rounds<Movement>() for the movement of the order, and returns the samples that it covers: none of a movement
// that isn't among those without alpha.
template <class Rounds>
size_t RoundsOfMovement(const Order& order, const Rounds& rounds) {
    switch (order.movement) {
        case Movement::InOrder:
            return rounds.template operator()<Movement::InOrder>();
        case Movement::SwapPairs:
            return rounds.template operator()<Movement::SwapPairs>();
        case Movement::ReverseTriples:
            return rounds.template operator()<Movement::ReverseTriples>();
        default:
            return 0;
    }
}

template <size_t N, class V>
void StoreAll(uint8_t* dst, const Pieces<N, V>& vectors) {
    Repeat<N>([&]<size_t I>() { StoreVector(dst + I * kVectorBytes, vectors[I]); });
}

// Makes vectors make<0>() to make<N - 1>() and stores them one behind the other, two at a time, which for the widest
// is a cache line.
template <size_t N, class Make>
void MakeAndStore(uint8_t* dst, const Make& make) {
    Repeat<N / 2>([&]<size_t I>() {
        const auto first = make.template operator()<2 * I>();
        const auto second = make.template operator()<2 * I + 1>();
        StoreVector(dst + 2 * I * kVectorBytes, first);
        StoreVector(dst + (2 * I + 1) * kVectorBytes, second);
    });
}

}  // namespace
}  // namespace plenar
