// Bytes of pictures and payloads, and how two of them differ.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

namespace plenar_test {

using Bytes = std::vector<uint8_t>;

inline Bytes Join(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

// Bytes without a pattern, the same for the same seed.
inline Bytes Noise(size_t size, uint32_t seed) {
    Bytes bytes(size);
    uint64_t state = seed * 0x9E3779B97F4A7C15U + 1;
    for (size_t done = 0; done < size; done += sizeof state) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        const uint64_t mixed = state ^ state >> 33;
        std::memcpy(&bytes[done], &mixed, std::min(sizeof mixed, size - done));
    }
    return bytes;
}

// So many bytes: the pattern's, over and over; zeros if it has none.
inline Bytes Repeated(const Bytes& pattern, size_t size) {
    Bytes bytes(size);
    for (size_t done = 0; done < size && !pattern.empty(); done += pattern.size()) {
        std::copy_n(pattern.begin(), std::min(pattern.size(), size - done), &bytes[done]);
    }
    return bytes;
}

// "" for equal bytes; says where two differ instead of printing them.
inline std::string Difference(const Bytes& actual, const Bytes& expected) {
    if (actual.size() != expected.size()) {
        return "size " + std::to_string(actual.size()) + ", expected " + std::to_string(expected.size());
    }
    const auto [a, e] = std::mismatch(actual.begin(), actual.end(), expected.begin());
    if (a == actual.end()) {
        return "";
    }
    return "byte " + std::to_string(a - actual.begin()) + " of " + std::to_string(actual.size()) + " is " +
           std::to_string(*a) + ", expected " + std::to_string(*e);
}

}  // namespace plenar_test
