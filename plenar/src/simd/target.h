// Which instructions the kernels of all modules use: one enumeration, detected when the library is loaded, and forced
// in one place by tests and benchmarks.
#pragma once

#include <cstddef>
#include <iterator>
#include <span>

#include "processor_targets.h"  // of the processor that is built for: simd/x86, simd/arm

namespace plenar {

inline constexpr size_t kTargetCount = std::size(kTargetNames);

constexpr const char* NameOf(Target target) {
    return kTargetNames[static_cast<size_t>(target)];
}

// The targets that this processor can run, narrowest first; the last one is its best.
std::span<const Target> RunnableTargets();

// The target in use: the processor's best one, unless another one is forced.
Target ActiveTarget();

// Makes a runnable target the one in use, for the whole process; for tests and benchmarks, while no frame is converted.
void ForceTarget(Target target);

// Of the cache that this processor shares with its neighbours.
size_t LastLevelCacheBytes();

// Has it taken for so many bytes; for tests and benchmarks, while no frame is converted.
void ForceLastLevelCacheBytes(size_t bytes);

}  // namespace plenar
