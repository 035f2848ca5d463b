// The fast ways that vector kernels take, for a test that has to see them taken: results don't tell. The library itself
// counts nothing. Local to the including source, as all that kernels include.
#pragma once

#include <cstddef>
#include <cstdint>

#include "simd/vector.h"

namespace plenar {

enum class Way { Round, FlatBlock, RunsTogether, TokenPairs, Count };

// By the bytes of a vector.
using WayCounts = uint64_t[64 + 1][static_cast<size_t>(Way::Count)];
extern WayCounts wayCounts;  // the test's

namespace {

[[gnu::always_inline]] inline void TakeWay([[maybe_unused]] Way way) {
#ifdef PLENAR_COUNT_WAYS
    ++wayCounts[kVectorBytes][static_cast<size_t>(way)];
#endif
}

}  // namespace
}  // namespace plenar
