#include "conversion/cpu_features.h"

namespace plenar {

const CpuFeatures& DetectedCpuFeatures() {
    static const CpuFeatures features = {.hasAvx2 = __builtin_cpu_supports("avx2") != 0};
    return features;
}

}  // namespace plenar
