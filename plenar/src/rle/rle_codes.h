// The codes that a coded plane is made of, and the tables behind them.
//
// A run length r of b significant bits is b - 1 zero bits and the b bits of r.
//
// A value (a folded residual) is a flag bit and a code. With flag 0 the code is the value itself, in as many bits as a
// sample has. With flag 1 it is the short code: as many one bits as the value shifted right by k says, one zero bit,
// and the value's low k bits. The short form is taken exactly while it is at least one bit shorter.
#pragma once

#include <cstdint>
#include <type_traits>

#include "rle/bit_reader.h"
#include "rle/bit_writer.h"

namespace plenar {

// All here is static and calls nothing of the standard library: the linker keeps one copy of an inline function for all
// sources, and if a source that is compiled for a wider target brings it, narrower processors can't run it.

static constexpr uint32_t RleLeadingZeros(uint32_t number) {
    return number == 0 ? 32 : static_cast<uint32_t>(__builtin_clz(number));
}

// What the two sample widths differ in.
template <class Sample>
struct RleSample {
    static constexpr uint32_t kBits = sizeof(Sample) * 8;
    static constexpr uint32_t kShortBits = kBits / 2 - 2;                            // the k of the short code
    static constexpr uint32_t kShortLimit = (kBits - kShortBits - 1) << kShortBits;  // values below have one
    static constexpr Sample kMiddle =
        static_cast<Sample>((uint32_t{1} << (kBits - 1)) - 1);  // history of a band's start
};

struct RleCode {
    uint32_t bits;
    uint32_t length;
};

// The short code of a value.
static constexpr RleCode RleShortCode(uint32_t value, uint32_t k) {
    const uint32_t hi = value >> k;
    const uint32_t lo = value & ((1U << k) - 1);
    return {(((1U << hi) - 1) << (k + 1)) + lo, hi + k + 1};
}

template <class Sample>
struct RleShortCodeTable {
    RleCode entries[RleSample<Sample>::kShortLimit] = {};

    constexpr RleShortCodeTable() {
        for (uint32_t value = 0; value < RleSample<Sample>::kShortLimit; ++value) {
            entries[value] = RleShortCode(value, RleSample<Sample>::kShortBits);
        }
    }
};

static constexpr RleShortCodeTable<uint8_t> RleShortCode8;
static constexpr RleShortCodeTable<uint16_t> RleShortCode16;

// The code of a value with its flag bit in front.
template <class Sample>
static constexpr RleCode RleValueCode(uint32_t value) {
    using Traits = RleSample<Sample>;
    if (value >= Traits::kShortLimit) {
        return {value, Traits::kBits + 1};
    }
    const RleCode code = sizeof(Sample) == 1 ? RleShortCode8.entries[value] : RleShortCode16.entries[value];
    return {code.bits | 1U << code.length, code.length + 1};
}

// The number of leading ones of a number of 9 bits. No encoder writes nine ones. A stream that holds them reads as if
// they were eight, but all nine are skipped.
static inline uint32_t RleLeadingOnes(uint64_t nineBits) {
    const uint32_t zeros = ~static_cast<uint32_t>(nineBits) & 0x1FF;
    return zeros == 0 ? 8 : RleLeadingZeros(zeros) - 23;
}

// The signed number behind a folded one, modulo the width of the type: 0, 1, 2, 3, 4 stand for 0, -1, 1, -2, 2.
template <class Unsigned>
static constexpr Unsigned RleUnfold(Unsigned folded) {
    return static_cast<Unsigned>((folded >> 1) ^ (0U - (folded & 1U)));
}

template <class Unsigned>
static constexpr Unsigned RleFold(Unsigned number) {
    const auto sign = static_cast<std::make_signed_t<Unsigned>>(number) < 0 ? ~0U : 0U;
    return static_cast<Unsigned>((static_cast<uint32_t>(number) << 1) ^ sign);
}

static inline uint64_t RleReadRunLength(RleBitReader& reader) {
    const uint32_t zeros = RleLeadingZeros(static_cast<uint32_t>(reader.Peek(32)));
    reader.Skip(zeros);
    return reader.Read(zeros + 1);
}

template <class Sample>
static inline uint32_t RleReadValue(RleBitReader& reader) {
    using Traits = RleSample<Sample>;
    if (reader.Read(1) == 0) {
        return static_cast<uint32_t>(reader.Read(Traits::kBits));
    }
    const uint32_t hi = RleLeadingOnes(reader.Peek(9));
    reader.Skip(hi + 1);
    return (hi << Traits::kShortBits) + static_cast<uint32_t>(reader.Read(Traits::kShortBits));
}

// One token in one number: mode bit, run length code, flag bit, code of the value.
struct RleToken {
    uint64_t bits;
    uint32_t length;
};

// Puts a token together from the value's code with its flag. The run is shifted in 32 bits and loses what leaves them,
// and a token ends at 64 bits: the lengths of runs from 2^28 samples (8 bits) and 2^24 samples (16 bits) on are lost.
static constexpr RleToken RleMakeToken(uint32_t mode, uint32_t run, RleCode code) {
    const uint32_t length = 2 * (32 - RleLeadingZeros(run)) + code.length;
    const uint64_t modeBit = length <= 64 ? uint64_t{mode} << (length - 1) : 0;
    return {modeBit | (run << code.length) | code.bits, length <= 64 ? length : 64};
}

}  // namespace plenar
