// Numbers at any address, in the processor's byte order, which is that of payloads and pictures.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace plenar {

static_assert(std::endian::native == std::endian::little, "the library is made for little-endian processors");

// Kernels that are compiled for several targets use these as well: `static` keeps the linker from merging their copies.

template <class Number>
static inline Number LoadAs(const uint8_t* bytes) {
    Number number;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

template <class Number>
static inline void StoreAs(uint8_t* bytes, Number number) {
    std::memcpy(bytes, &number, sizeof number);
}

}  // namespace plenar
