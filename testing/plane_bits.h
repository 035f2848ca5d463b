// Coded planes put together from their smallest parts, right or wrong.
#pragma once

#include <cstdint>
#include <vector>

#include "testing/bytes.h"

namespace plenar_test {

class PlaneBits {
public:
    void Bits(uint64_t value, unsigned count) {
        while (count > 0) {
            if (free_ == 0) {
                bytes_.push_back(0);
                free_ = 8;
            }
            const unsigned taken = std::min(count, free_);
            count -= taken;
            free_ -= taken;
            bytes_.back() |= static_cast<uint8_t>((value >> count & ((1U << taken) - 1)) << free_);
        }
    }

    // Also a run of 0, which has no code of its own and reads from this one.
    void RunLength(uint64_t run) {
        unsigned significant = 0;
        while (run >> significant != 0) {
            ++significant;
        }
        if (run == 0) {
            return LongRunLength(0);
        }
        Bits(0, significant - 1);
        Bits(run, significant);
    }

    // Behind 32 zeros the run has 33 bits, whatever they are.
    void LongRunLength(uint64_t run) {
        Bits(0, 32);
        Bits(run, 33);
    }

    // A folded residual of a sample of `width` bits.
    void Value(uint32_t value, unsigned width, bool shortForm) {
        const unsigned k = width / 2 - 2;
        Bits(shortForm ? 1 : 0, 1);
        if (shortForm) {
            Bits(~0ULL, value >> k);
            Bits(0, 1);
            Bits(value, k);
        } else {
            Bits(value, width);
        }
    }

    // The longest form, which no encoder writes: nine ones, which count as eight, and the value's low bits.
    void NineOnes(uint32_t low, unsigned width) {
        Bits(0x3FF, 10);
        Bits(low, width / 2 - 2);
    }

    void Token(unsigned mode, uint64_t run, uint32_t value, unsigned width, bool shortForm) {
        Bits(mode, 1);
        RunLength(run);
        Value(value, width, shortForm);
    }

    // One group for each entry, in raw form. Differences wrap at 32 bits.
    void List(const std::vector<uint32_t>& entries) {
        uint32_t running = 0x7FFFFF;
        for (const uint32_t entry : entries) {
            const int64_t delta = static_cast<int32_t>(entry - running);
            Bits(1, 1);
            Value(static_cast<uint32_t>(delta < 0 ? -2 * delta - 1 : 2 * delta), 24, false);
            running = entry;
        }
    }

    const Bytes& Get() const { return bytes_; }

private:
    Bytes bytes_;
    unsigned free_ = 0;  // bits of the last byte
};

// The table of a plane with the streams behind it.
inline Bytes PlaneOf(const std::vector<uint32_t>& sizes, const std::vector<uint32_t>& rows,
                     const std::vector<Bytes>& streams) {
    PlaneBits head;
    head.Bits(sizes.size(), 8);
    head.List(sizes);
    head.List(rows);
    Bytes plane = head.Get();
    for (const Bytes& stream : streams) {
        plane.insert(plane.end(), stream.begin(), stream.end());
    }
    return plane;
}

}  // namespace plenar_test
