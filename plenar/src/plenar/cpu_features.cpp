#include "plenar/cpu_features.h"

#include <cpuid.h>

#include <algorithm>
#include <cstdint>

namespace plenar {

namespace {

// The two leaves of the identification instruction that list the caches, alike in form: Intel's and AMD's.
constexpr uint32_t kCacheLeaves[] = {0x4, 0x8000001D};

// Taken where the processor names no cache.
constexpr size_t kUsualLastLevelCacheBytes = size_t{32} << 20;

size_t CacheBytes(uint32_t leaf, uint32_t index) {
    uint32_t a = 0;
    uint32_t b = 0;
    uint32_t c = 0;
    uint32_t d = 0;
    if (__get_cpuid_count(leaf, index, &a, &b, &c, &d) == 0 || (a & 0x1F) == 0) {
        return 0;
    }
    const size_t lineBytes = (b & 0xFFF) + 1;
    const size_t partitions = (b >> 12 & 0x3FF) + 1;
    const size_t ways = (b >> 22) + 1;
    return lineBytes * partitions * ways * (size_t{c} + 1);
}

size_t DetectLastLevelCache() {
    size_t largest = 0;
    for (const uint32_t leaf : kCacheLeaves) {
        for (uint32_t index = 0; index < 8; ++index) {
            largest = std::max(largest, CacheBytes(leaf, index));
        }
    }
    return largest != 0 ? largest : kUsualLastLevelCacheBytes;
}

bool DetectBitManipulation() {
    constexpr uint32_t bmi1 = 1U << 3;
    constexpr uint32_t bmi2 = 1U << 8;
    constexpr uint32_t kLzcnt = 1U << 5;
    uint32_t a = 0;
    uint32_t b = 0;
    uint32_t c = 0;
    uint32_t d = 0;
    const bool hasBmi = __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & bmi1) != 0 && (b & bmi2) != 0;
    return hasBmi && __get_cpuid(0x80000001, &a, &b, &c, &d) != 0 && (c & kLzcnt) != 0;
}

CpuFeatures Detect() {
    __builtin_cpu_init();
    return {.hasAvx2 = __builtin_cpu_supports("avx2") != 0,
            .hasBitManipulation = DetectBitManipulation(),
            .lastLevelCacheBytes = DetectLastLevelCache()};
}

const CpuFeatures kDetected = Detect();

}  // namespace

const CpuFeatures& DetectedCpuFeatures() {
    return kDetected;
}

}  // namespace plenar
