#pragma once

#include <cstddef>

namespace plenar {

// What the processor can do beyond the baseline of 16-byte shuffles. The only place that asks it.
struct CpuFeatures {
    bool hasAvx2;                // 32-byte integer vectors, and an operating system that saves them
    bool hasBitManipulation;     // BMI1, BMI2 and LZCNT
    size_t lastLevelCacheBytes;  // of the cache that this processor shares with its neighbours
};

// Detected when the library is loaded, read-only after.
const CpuFeatures& DetectedCpuFeatures();

}  // namespace plenar
