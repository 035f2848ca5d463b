// Fixed point with 14 fraction bits to single precision.
#pragma once

#include "conversion/vector/gather.h"
#include "conversion/vector/rounds.h"

namespace plenar {
namespace {

// Each word goes to the upper half of a dword.
template <Movement Moved>
struct FloatTables {
    static constexpr size_t kSamples = Moved == Movement::ReverseTriples ? 48 : 32;
    static constexpr size_t kVectors = kSamples / kLanes<uint32_t>;
    static constexpr Tables<Gather, kVectors> kWords{[](size_t index) {
        return MakeGather(index, 2 * kSamples,
                          [](size_t i) { return i % 4 >= 2 ? 2 * MovedSample(Moved, i / 4) + i % 2 : kNowhere; });
    }};
};

// The upper halves of dwords, with zero below.
[[gnu::always_inline]] inline Vector<float> Fixed14ToFloat(Bytes value) {
    return __builtin_convertvector(As<Vector<int32_t>>(value), Vector<float>) * 0x1p-30F;
}

template <Movement Moved>
size_t FloatRounds(const uint8_t* fixed, size_t samples, uint8_t* floats) {
    using Tables = FloatTables<Moved>;
    return CoverInRounds(samples, Tables::kSamples, MovedTogether(Moved), true, false, [&](size_t at) {
        MakeAndStore<Tables::kVectors>(
            floats + 4 * at, [&]<size_t I>() { return Fixed14ToFloat(Gathered(fixed + 2 * at, Tables::kWords[I])); });
    });
}

void FixedRowToFloat(const Order& order, const uint8_t* fixed, size_t samples, uint8_t* floats) {
    const size_t done =
        RoundsOfMovement(order, [&]<Movement Moved>() { return FloatRounds<Moved>(fixed, samples, floats); });
    if (done != samples) {
        narrower.fixedRowToFloat(order, fixed + 2 * done, samples - done, floats + 4 * done);
    }
}

}  // namespace
}  // namespace plenar
