// The short tokens by the bits that they begin with.
#pragma once

#include <cstdint>

#include "rle/rle_codes.h"
#include "rle/vector/run_samples.h"

namespace plenar {
namespace {

constexpr uint32_t kIndexBits = 12;

// What the first kIndexBits bits of the stream say about the token that starts there: for bytes the whole token, for
// 16 bits all of it but the low bits of the value. An entry is one number, 0 if the token isn't in the table, and its
// fields are placed by how soon they are needed. The place of the next token depends on the length, which therefore
// stands in the lowest bits, where it serves as a shift count without being masked; the mode is the sign, so that an
// arithmetic shift makes a mask of it.
struct TokenEntry {
    uint64_t packed = 0;

    constexpr TokenEntry() = default;
    constexpr TokenEntry(uint32_t length, uint32_t run, uint32_t mode)
        : packed(length | run << 8 | uint64_t{mode} << 63) {}

    constexpr TokenEntry With(uint64_t field, uint32_t place) const {
        TokenEntry entry = *this;
        entry.packed |= field << place;
        return entry;
    }

    static constexpr uint64_t kLengths =
        0xFF;  // entries are added up; these bits of the sum are their lengths together

    uint32_t Length() const { return packed & 0x3F; }  // bits of the whole token
    uint32_t Run() const { return packed >> 8 & 0xFF; }
    uint32_t SecondOrder() const { return static_cast<uint32_t>(static_cast<int64_t>(packed) >> 63); }  // as a mask

    // Bytes: what the run adds to the difference of neighbours, which starts from 0 at first order; and the index into
    // kStepMultiples for the residual, with the mode (slope or curve) as its highest bit.
    constexpr TokenEntry WithResidual(uint32_t residual, uint32_t toDifference) const {
        return With(toDifference & 0xFF, 24).With(residual, 55);
    }
    uint32_t ToDifference() const { return static_cast<uint32_t>(packed) >> 24; }
    uint64_t Shape() const { return packed >> 55; }

    // 16 bits: the folded value is `high` plus the low bits, which the stream has behind the `known` first bits of the
    // token. Shifted left by Known and right by AboveLow, the stream's next 64 bits leave just the low bits.
    constexpr TokenEntry WithLowBits(uint32_t known, uint32_t lowBits, uint32_t high) const {
        return With(known, 16).With(64 - lowBits, 24).With(high, 32);
    }
    uint32_t Known() const { return packed >> 16 & 0x3F; }
    uint32_t AboveLow() const { return packed >> 24 & 0x3F; }
    uint32_t High() const { return packed >> 32 & 0xFFFF; }
};

template <class Sample>
struct TokenTable {
    static constexpr uint32_t kSize = 1U << kIndexBits;
    TokenEntry entries[kSize] = {};

    constexpr TokenTable() {
        for (uint32_t index = 0; index < kSize; ++index) {
            entries[index] = EntryOf(index << (32 - kIndexBits));
        }
    }

    // `bits` has the index at its top.
    static constexpr TokenEntry EntryOf(uint32_t bits) {
        using Traits = RleSample<Sample>;
        const uint32_t zeros = RleLeadingZeros(bits << 1);
        const uint32_t runEnd = 2 * zeros + 2;
        if (runEnd >= kIndexBits) {
            return {};
        }
        const uint32_t run = bits << (1 + zeros) >> (31 - zeros);
        const uint32_t valueBits = bits << runEnd;
        const bool isShort = valueBits >> 31 != 0;
        const uint32_t ones = isShort ? RleLeadingZeros(~(valueBits << 1)) : 0;
        const uint32_t known = runEnd + 1 + (isShort ? ones + 1 : 0);
        if (run >= kRunLanes || known > kIndexBits || ones > 8) {
            return {};
        }
        const uint32_t lowBits = isShort ? Traits::kShortBits : Traits::kBits;
        const uint32_t high = ones << Traits::kShortBits;
        const uint32_t length = known + lowBits;
        const uint32_t mode = bits >> 31;
        const TokenEntry entry(length, run, mode);
        if (sizeof(Sample) > 1) {
            return entry.WithLowBits(known, lowBits, high);
        }
        if (length > kIndexBits) {
            return {};
        }
        const uint32_t low = bits << known >> (32 - lowBits);
        const uint8_t residual = RleUnfold(static_cast<uint8_t>(high + low));
        return entry.WithResidual(residual, residual * (mode == 0 ? 1 : run));
    }
};

template <class Sample>
constexpr TokenTable<Sample> kTokenTable;

}  // namespace
}  // namespace plenar
