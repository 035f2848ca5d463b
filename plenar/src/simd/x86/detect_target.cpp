#include "simd/detect_target.h"

#include <cpuid.h>

#include <algorithm>
#include <cstdint>

namespace plenar {

namespace {

// The two leaves of the identification instruction that list the caches, alike in form: Intel's and AMD's.
constexpr uint32_t kCacheLeaves[] = {0x4, 0x8000001D};

struct Registers {
    uint32_t a = 0;
    uint32_t b = 0;
    uint32_t c = 0;
    uint32_t d = 0;
};

// All zero for a leaf that the processor doesn't have.
Registers Identify(uint32_t leaf, uint32_t index) {
    Registers r;
    __get_cpuid_count(leaf, index, &r.a, &r.b, &r.c, &r.d);
    return r;
}

size_t CacheBytes(uint32_t leaf, uint32_t index) {
    const Registers r = Identify(leaf, index);
    if ((r.a & 0x1F) == 0) {
        return 0;
    }
    const size_t lineBytes = (r.b & 0xFFF) + 1;
    const size_t partitions = (r.b >> 12 & 0x3FF) + 1;
    const size_t ways = (r.b >> 22) + 1;
    return lineBytes * partitions * ways * (size_t{r.c} + 1);
}

bool HasBitManipulation() {
    constexpr uint32_t kBmi1 = 1U << 3;
    constexpr uint32_t kBmi2 = 1U << 8;
    constexpr uint32_t kLzcnt = 1U << 5;
    const uint32_t features = Identify(7, 0).b;
    return (features & kBmi1) != 0 && (features & kBmi2) != 0 && (Identify(0x80000001, 0).c & kLzcnt) != 0;
}

}  // namespace

Target DetectBestTarget() {
    __builtin_cpu_init();
    const bool hasAvx2 = __builtin_cpu_supports("avx2") != 0;  // and the operating system saves its registers
    return hasAvx2 && HasBitManipulation() ? Target::Avx2 : Target::Ssse3;
}

size_t DetectLastLevelCacheBytes() {
    size_t largest = 0;
    for (const uint32_t leaf : kCacheLeaves) {
        for (uint32_t index = 0; index < 8; ++index) {
            largest = std::max(largest, CacheBytes(leaf, index));
        }
    }
    return largest;
}

}  // namespace plenar
