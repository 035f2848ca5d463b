#pragma once

namespace plenar {

// What the processor can do beyond the baseline of 16-byte shuffles. Filled when the library is loaded, read-only
// after.
struct CpuFeatures {
    bool hasAvx2;  // 32-byte integer vectors, and an operating system that saves them
};

const CpuFeatures& DetectedCpuFeatures();

}  // namespace plenar
