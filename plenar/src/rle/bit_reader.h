#pragma once

#include <cstdint>
#include <cstring>

#include "rle/bit_writer.h"

namespace plenar {

// Reads bits, most significant first, from a buffer that nothing is known of: it never touches a byte outside it, gives
// zero bits behind its end, and knows when such bits have been consumed.
class RleBitReader {
public:
    // Starts at bit `firstBit` of the `byteCount` bytes at `first`.
    RleBitReader(const uint8_t* first, uint64_t byteCount, uint64_t firstBit = 0)
        : begin_(first), size_(byteCount), position_(firstBit) {}

    // The next `n` bits, 1 to 57.
    uint64_t Peek(uint32_t n) const { return LoadWord() << (position_ % 8) >> (64 - n); }

    void Skip(uint64_t n) { position_ += n; }

    uint64_t Read(uint32_t n) {
        const uint64_t bits = Peek(n);
        Skip(n);
        return bits;
    }

    // Bits from the first byte's first bit to the next one.
    uint64_t Position() const { return position_; }

    // Whether bits behind the end have been consumed.
    bool PastEnd() const { return position_ > size_ * 8; }

private:
    // The 8 bytes from the one that holds the next bit.
    uint64_t LoadWord() const {
        const uint64_t byte = position_ / 8;
        uint64_t word = 0;
        if (byte + sizeof word <= size_) {
            std::memcpy(&word, begin_ + byte, sizeof word);
        } else if (byte < size_) {
            std::memcpy(&word, begin_ + byte, size_ - byte);
        }
        return RleBigEndian(word);
    }

    const uint8_t* begin_;
    uint64_t size_;
    uint64_t position_;
};

}  // namespace plenar
