#pragma once

#include <cstdint>
#include <cstring>

#include "base/bytes.h"

namespace plenar {

// The low `bits` bits set; `bits` from 0 to 64.
static constexpr uint64_t RleBitMask(uint32_t bits) {
    return bits == 0 ? 0 : ~uint64_t{0} >> (64 - bits);
}

// A number as it stands in memory with its most significant byte first, and back.
static inline uint64_t RleBigEndian(uint64_t word) {
    return __builtin_bswap64(word);
}

// Appends bits, most significant first. The caller's buffer must be large enough for them; no byte is written that
// holds none of them.
class RleBitWriter {
public:
    explicit RleBitWriter(uint8_t* first) : out_(first) {}

    // Appends the low `n` bits of `value`; `n` from 1 to 64.
    void Put(uint64_t value, uint32_t n) {
        value &= RleBitMask(n);
        const uint32_t t = used_ + n;
        if (t < 64) {
            acc_ |= value << 1 << (63 - t);
            used_ = t;
            return;
        }
        const uint32_t over = t - 64;
        StoreAs(out_, RleBigEndian(acc_ | value >> over));
        out_ += sizeof acc_;
        acc_ = over != 0 ? value << (64 - over) : 0;
        used_ = over;
    }

    // Writes out what is left, with zero bits up to the next byte, and returns the place behind the last byte.
    uint8_t* Flush() {
        const uint64_t word = RleBigEndian(acc_);
        const uint32_t bytes = (used_ + 7) / 8;
        std::memcpy(out_, &word, bytes);
        acc_ = 0;
        used_ = 0;
        return out_ += bytes;
    }

private:
    uint8_t* out_;
    uint64_t acc_ = 0;   // filled from the most significant end
    uint32_t used_ = 0;  // bits in acc, 0 to 63 between calls
};

}  // namespace plenar
