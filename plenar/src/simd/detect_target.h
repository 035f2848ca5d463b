// What a processor's folder tells of the processor that the library runs on; called once, when the library is loaded.
#pragma once

#include <cstddef>

#include "simd/target.h"

namespace plenar {

Target DetectBestTarget();
size_t DetectLastLevelCacheBytes();  // 0 if the processor names no cache

}  // namespace plenar
