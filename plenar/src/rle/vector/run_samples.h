// A run's samples, made in vectors.
#pragma once

#include <cstdint>
#include <cstring>

#include "simd/vector.h"

namespace plenar {
namespace {

// What the decoder's loop uses is always inlined, so that its state stays in registers.

constexpr uint32_t kRunLanes = 16;  // samples of a run that are made at once, whatever the target's vectors hold

template <class Sample>
using RunVector = typename VectorType<Sample, kRunLanes * sizeof(Sample)>::Type;

// What the samples of a run lie above the last one before it, for each unit of slope and of curve.
constexpr RunVector<uint16_t> kLinear = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
constexpr RunVector<uint16_t> kTriangular = {1, 3, 6, 10, 15, 21, 28, 36, 45, 55, 66, 78, 91, 105, 120, 136};

// The same steps for bytes, multiplied by every slope and behind them by every curve: vectors have no product of bytes,
// and a load takes less than the operations that would make up for one.
constexpr uint32_t kCurves = 256;
struct StepMultiples {
    alignas(kRunLanes) uint8_t lanes[2 * kCurves][kRunLanes] = {};

    constexpr StepMultiples() {
        for (uint32_t factor = 0; factor < kCurves; ++factor) {
            for (uint32_t i = 0; i < kRunLanes; ++i) {
                lanes[factor][i] = static_cast<uint8_t>(factor * (i + 1));
                lanes[kCurves + factor][i] = static_cast<uint8_t>(factor * ((i + 1) * (i + 2) / 2));
            }
        }
    }
};

constexpr StepMultiples kStepMultiples;
[[gnu::always_inline]] inline RunVector<uint8_t> MultiplesOf(uint64_t factor) {
    return LoadVector<RunVector<uint8_t>>(kStepMultiples.lanes[factor]);
}

// A run's samples are last + k * slope + k * (k + 1) / 2 * curve, for k from 1 on.
template <class Sample>
struct Run {
    using Lanes = RunVector<Sample>;

    static constexpr uint64_t kStretch =
        uint64_t{8} * kRunLanes;                              // samples stored without a test: most runs are shorter
    static constexpr uint64_t kLong = 4096 / sizeof(Sample);  // samples that repay a call and a choice of loops
    static constexpr uint64_t kWorthFilling = uint64_t{1} << 16;  // bytes that repay the time memset takes to start
    static constexpr uint64_t kFlatStep = 4 * kVectorBytes;

    Sample last;
    Sample slope;
    Sample curve;

    // The first kRunLanes samples, whatever the run.
    [[gnu::always_inline]] void Fill(Lanes& lanes) const {
        if constexpr (sizeof(Sample) == 1) {
            lanes = MultiplesOf(slope) + MultiplesOf(kCurves + curve) + last;
        } else {
            lanes = last + slope * kLinear + curve * kTriangular;
        }
    }

    // Writes kRunLanes samples.
    [[gnu::always_inline]] void StoreShort(uint8_t* dst) const {
        Lanes lanes;
        Fill(lanes);
        std::memcpy(dst, &lanes, sizeof lanes);
    }

    // Writes `count` samples, fewer than kRunLanes.
    void StoreExact(uint8_t* dst, uint64_t count) const {
        Lanes lanes;
        Fill(lanes);
        std::memcpy(dst, &lanes, count * sizeof(Sample));
    }

    // Writes `count` samples, kRunLanes at least, and may write kStretch more.
    [[gnu::always_inline]] void StoreLoosely(uint8_t* dst, uint64_t count) const {
        if (curve != 0 || count >= kLong) {
            StoreLong(dst, count);
            return;
        }
        Lanes lanes;
        Fill(lanes);
        const Sample step = static_cast<Sample>(slope * kRunLanes);
        for (uint64_t done = 0; done < count; done += kStretch) {
            for (uint64_t i = 0; i < kStretch; i += kRunLanes) {
                std::memcpy(dst + (done + i) * sizeof(Sample), &lanes, sizeof lanes);
                lanes += step;
            }
        }
    }

    // Writes `count` samples, kRunLanes at least.
    [[gnu::noinline]] void StoreLong(uint8_t* dst, uint64_t count) const {
        const uint64_t bytes = count * sizeof(Sample);
        if (curve != 0) {
            StoreCurved(dst, count);
        } else if (slope != 0 || bytes < kFlatStep) {
            StoreRamp(dst, count);
        } else if (bytes >= kWorthFilling && (sizeof(Sample) == 1 || last % 256 == last / 256)) {
            std::memset(dst, last & 0xFF, bytes);
        } else {
            StoreFlat(dst, bytes);
        }
    }

    // Fills `bytes` bytes, kFlatStep at least, with the last sample before the run.
    void StoreFlat(uint8_t* dst, uint64_t bytes) const {
        uint8_t* const lastStep = dst + bytes - kFlatStep;
        for (; dst < lastStep; dst += kFlatStep) {
            StoreFlatStep(dst);
        }
        StoreFlatStep(lastStep);
    }

    [[gnu::always_inline]] void StoreFlatStep(uint8_t* dst) const {
        const Vector<Sample> lanes = Splat(last);
        for (uint64_t i = 0; i < kFlatStep; i += kVectorBytes) {
            StoreVector(dst + i, lanes);
        }
    }

    void StoreRamp(uint8_t* dst, uint64_t count) const {
        Lanes lanes;
        Fill(lanes);
        const Sample step = static_cast<Sample>(slope * kRunLanes);
        uint64_t done = 0;
        for (; count - done >= kRunLanes; done += kRunLanes) {
            std::memcpy(dst + done * sizeof(Sample), &lanes, sizeof lanes);
            lanes += step;
        }
        // The rest is written in whole lanes too, which overlap those before.
        lanes -= static_cast<Sample>(slope * (kRunLanes - (count - done)));
        std::memcpy(dst + (count - kRunLanes) * sizeof(Sample), &lanes, sizeof lanes);
    }

    // As a ramp, but the step from each kRunLanes samples to the next grows, by the same amount in every lane.
    void StoreCurved(uint8_t* dst, uint64_t count) const {
        Lanes lanes;
        Fill(lanes);
        const Run behind = {lanes[kRunLanes - 1], static_cast<Sample>(slope + kRunLanes * curve), curve};
        Lanes step;
        behind.Fill(step);
        step -= lanes;
        uint64_t done = 0;
        for (; count - done >= kRunLanes; done += kRunLanes) {
            std::memcpy(dst + done * sizeof(Sample), &lanes, sizeof lanes);
            lanes += step;
            step += static_cast<Sample>(curve * kRunLanes * kRunLanes);
        }
        std::memcpy(dst + done * sizeof(Sample), &lanes, (count - done) * sizeof(Sample));
    }
};

}  // namespace
}  // namespace plenar
