#include "conversion/cpu_features.h"

namespace plenar {

namespace {

CpuFeatures Detect() {
    __builtin_cpu_init();
    return {.hasAvx2 = __builtin_cpu_supports("avx2") != 0};
}

const CpuFeatures detected = Detect();

}  // namespace

const CpuFeatures& DetectedCpuFeatures() {
    return detected;
}

}  // namespace plenar
