// Bytes that decide something, taken from the front: a fuzz input, or noise. Where they have run out they are zeros, so
// that every input is one.
#pragma once

#include <bit>
#include <numeric>
#include <utility>

#include "testing/bytes.h"

namespace plenar_test {

// How seldom inputs are such as this: one in 2^n has n or more. Large things are made of rare inputs. It is the sum of
// the bytes that decides, so that hardly any input that a fuzzer makes from a rare one is rare again, and few are slow.
inline uint32_t Rarity(const uint8_t* bytes, size_t size) {
    return static_cast<uint32_t>(std::countr_one(std::accumulate(bytes, bytes + size, 0U)));
}

class FuzzInput {
public:
    FuzzInput(const uint8_t* bytes, size_t size) : next_(bytes), end_(bytes + size) {}

    bool HasMore() const { return next_ != end_; }
    uint8_t Byte() { return next_ == end_ ? 0 : *next_++; }
    bool Flag() { return Byte() % 2 != 0; }
    Bytes Rest() { return {std::exchange(next_, end_), end_}; }

    uint32_t Word() {
        uint32_t word = 0;
        for (uint32_t shift = 0; shift < 32; shift += 8) {
            word |= uint32_t{Byte()} << shift;
        }
        return word;
    }

    // As a rule less than `usual`, and now and then anything.
    uint32_t Number(uint32_t usual) {
        const uint32_t byte = Byte();
        return byte < 0xF0 ? byte % usual : Word();
    }

    // A part for a purpose of its own, so that what one part says doesn't shift the others.
    FuzzInput Part(size_t size) {
        const uint8_t* first = next_;
        next_ += std::min(size, static_cast<size_t>(end_ - next_));
        return {first, static_cast<size_t>(next_ - first)};
    }

    // What is left, over and over; noise if nothing is.
    Bytes Fill(size_t size) { return HasMore() ? Repeated(Rest(), size) : Noise(size, 1); }

private:
    const uint8_t* next_;
    const uint8_t* end_;
};

}  // namespace plenar_test
