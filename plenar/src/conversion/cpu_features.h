#pragma once

namespace plenar {

// What the processor can do beyond the baseline of 16-byte shuffles.
struct CpuFeatures {
    bool hasAvx2;  // 32-byte integer vectors, and an operating system that saves them
};

// Detected when the library is loaded, read-only after.
const CpuFeatures& DetectedCpuFeatures();

}  // namespace plenar
