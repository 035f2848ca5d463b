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

std::atomic<Target> activeTarget{BestTarget()};

std::atomic<size_t> lastLevelCacheBytes{[] {
    const size_t detected = DetectLastLevelCacheBytes();
    return detected != 0 ? detected : kUsualLastLevelCacheBytes;
}()};

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
    return lastLevelCacheBytes.load(std::memory_order_relaxed);
}

void ForceLastLevelCacheBytes(size_t bytes) {
    lastLevelCacheBytes.store(bytes, std::memory_order_relaxed);
}

}  // namespace plenar
