#include "simd/target.h"

#include <array>
#include <atomic>

#include "simd/detect_target.h"

namespace plenar {

namespace {

// Taken where the processor names no cache.
constexpr size_t kUsualLastLevelCacheBytes = size_t{32} << 20;

constexpr std::array<Target, kTargetCount> kAllTargets = [] {
    std::array<Target, kTargetCount> targets{};
    for (size_t i = 0; i < kTargetCount; ++i) {
        targets[i] = static_cast<Target>(i);
    }
    return targets;
}();

Target BestTarget() {
    static const Target kBest = DetectBestTarget();
    return kBest;
}

const size_t kDetectedCacheBytes = DetectLastLevelCacheBytes();

std::atomic<Target> activeTarget{BestTarget()};

}  // namespace

std::span<const Target> RunnableTargets() {
    return std::span(kAllTargets).first(static_cast<size_t>(BestTarget()) + 1);
}

Target ActiveTarget() {
    return activeTarget.load(std::memory_order_relaxed);
}

void ForceTarget(Target target) {
    activeTarget.store(target, std::memory_order_relaxed);
}

size_t LastLevelCacheBytes() {
    return kDetectedCacheBytes != 0 ? kDetectedCacheBytes : kUsualLastLevelCacheBytes;
}

}  // namespace plenar
