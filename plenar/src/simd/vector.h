// The vectors of the including source's target, with what is made of the compilers' own operations.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "processor_vector.h"  // of the processor that is built for: simd/x86, simd/arm
#include "simd/vector_types.h"

namespace plenar {
namespace {

constexpr size_t kVectorBytes = TargetVector::kBytes;

template <class Lane>
using Vector = typename VectorType<Lane, kVectorBytes>::Type;

template <class Lane>
constexpr size_t kLanes = kVectorBytes / sizeof(Lane);

using Bytes = Vector<uint8_t>;
using Words = Vector<uint16_t>;
using Dwords = Vector<uint32_t>;

template <class Lane>
[[gnu::always_inline]] inline Vector<Lane> Load(const void* place) {
    return LoadVector<Vector<Lane>>(place);
}

template <class Lane>
[[gnu::always_inline]] inline Vector<Lane> Splat(Lane value) {
    return Vector<Lane>{} + value;
}

// Two numbers by turns.
[[gnu::always_inline]] inline Bytes BytesOf(uint8_t even, uint8_t odd) {
    return As<Bytes>(Splat(static_cast<uint16_t>(even | odd << 8)));
}
[[gnu::always_inline]] inline Words WordsOf(uint16_t even, uint16_t odd) {
    return As<Words>(Splat(even | uint32_t{odd} << 16));
}

// Lane i of the result is lane place(i) of a and, behind them, b.
template <class Place, class V>
[[gnu::always_inline]] inline V Arrange(V a, V b, const Place& /*place*/) {
    constexpr size_t kCount = sizeof(V) / sizeof(a[0]);
    return [&]<size_t... I>(std::index_sequence<I...>) {
        return __builtin_shufflevector(a, b, Place{}(I)...);
    }
    (std::make_index_sequence<kCount>());
}

// Operations that pack registers together do so within each 16 bytes. These bring the pieces to the order of the
// registers: a piece is what is left of 16 bytes of one register.
constexpr size_t kLaneBytes = 16;
constexpr size_t kSixteens = kVectorBytes / kLaneBytes;

template <class Piece, class V>
[[gnu::always_inline]] inline V JoinPieces(V packed) {
    if constexpr (kSixteens == 1) {
        return packed;
    } else {
        constexpr size_t kRegisters = kLaneBytes / sizeof(Piece);
        const auto pieces = As<Vector<Piece>>(packed);
        return As<V>(Arrange(
            pieces, pieces, [](size_t i) constexpr { return i % kSixteens * kRegisters + i / kSixteens; }));
    }
}

// The lanes moved up by one, with the last lane of `before` in the first place.
template <class Lane>
[[gnu::always_inline]] inline Vector<Lane> ShiftIn(Vector<Lane> before, Vector<Lane> lanes) {
    return Arrange(
        before, lanes, [](size_t i) constexpr { return kLanes<Lane> - 1 + i; });
}

// Stores the lanes of both in turn, twice as many.
template <class Lane>
[[gnu::always_inline]] inline void StoreInterleaved(uint8_t* bytes, Vector<Lane> even, Vector<Lane> odd) {
    constexpr size_t kCount = kLanes<Lane>;
    StoreVector(bytes, Arrange(
                           even, odd, [](size_t i) constexpr { return i % 2 * kCount + i / 2; }));
    StoreVector(bytes + kVectorBytes,
                Arrange(
                    even, odd, [](size_t i) constexpr { return i % 2 * kCount + (kCount + i) / 2; }));
}

// Whether a comparison held in all lanes.
template <class Mask>
[[gnu::always_inline]] inline bool AllSet(Mask lanes) {
    return TargetVector::TopBits(As<Vector<uint8_t>>(lanes)) == ~uint32_t{0} >> (32 - kVectorBytes);
}

// One bit for each lane of a comparison's result, the first lane's lowest, over 64 lanes.
template <class Lane, class Mask>
inline uint64_t MaskOf64(const Mask (&lanes)[64 / kLanes<Lane>]) {
    uint64_t bits = 0;
    for (size_t i = 0; i < 64 / kVectorBytes; ++i) {
        Vector<uint8_t> bytes;
        if constexpr (sizeof(Lane) == 1) {
            bytes = As<Vector<uint8_t>>(lanes[i]);
        } else {
            bytes = TargetVector::PackMasks(As<Vector<uint16_t>>(lanes[2 * i]), As<Vector<uint16_t>>(lanes[2 * i + 1]));
            bytes = JoinPieces<uint64_t>(bytes);
        }
        bits |= uint64_t{TargetVector::TopBits(bytes)} << (kVectorBytes * i);
    }
    return bits;
}

}  // namespace
}  // namespace plenar
