// Bytes of pictures and payloads, and how two of them differ.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
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
    uint32_t state = seed * 2654435761U + 1;
    for (uint8_t& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<uint8_t>(state >> 24);
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
