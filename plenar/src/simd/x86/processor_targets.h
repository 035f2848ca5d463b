// The targets of x86-64 processors, narrowest first: a processor that runs one of them runs all before it.
#pragma once

#include <cstdint>

namespace plenar {

enum class Target : uint8_t {
    Plain,  // no vectors but the compiler's own: defines every result
    Ssse3,  // 16-byte vectors with byte shuffles
    Avx2,   // 32-byte vectors, with BMI1, BMI2 and LZCNT
};

inline constexpr const char* kTargetNames[] = {"plain", "ssse3", "avx2"};

}  // namespace plenar
