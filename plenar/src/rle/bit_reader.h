#pragma once

#include <cstdint>
#include <cstring>

#include "rle/bit_writer.h"

namespace plenar {

// Reads bits, most significant first, from a buffer that nothing is known of: it never touches a byte outside it, gives
// zero bits behind its end, and knows when such bits have been consumed.
class RleBitReader {
public:
    // Starts at bit `first_bit` of the `byte_count` bytes at `first`.
    RleBitReader(const uint8_t* first, uint64_t byte_count, uint64_t first_bit = 0)
        : begin(first), size(byte_count), position(first_bit) {}

    // The next `n` bits, 1 to 57.
    uint64_t Peek(uint32_t n) const { return LoadWord() << (position % 8) >> (64 - n); }

    void Skip(uint64_t n) { position += n; }

    uint64_t Read(uint32_t n) {
        const uint64_t bits = Peek(n);
        Skip(n);
        return bits;
    }

    // Bits from the first byte's first bit to the next one.
    uint64_t Position() const { return position; }

    // Whether bits behind the end have been consumed.
    bool PastEnd() const { return position > size * 8; }

private:
    // The 8 bytes from the one that holds the next bit.
    uint64_t LoadWord() const {
        const uint64_t byte = position / 8;
        uint64_t word = 0;
        if (byte + sizeof word <= size) {
            std::memcpy(&word, begin + byte, sizeof word);
        } else if (byte < size) {
            std::memcpy(&word, begin + byte, size - byte);
        }
        return RleBigEndian(word);
    }

    const uint8_t* begin;
    uint64_t size;
    uint64_t position;
};

}  // namespace plenar
