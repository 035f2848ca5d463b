// A run's samples as vectors, for inclusion by the sources of the targets only; see lane_vector.h.
#pragma once

#include <cstdint>
#include <cstring>

#include "rle/lane_vector.h"

namespace plenar {
namespace {

// The band decoder's loop must stay in registers, which takes that nothing of it is a call.
#define RLE_INLINE [[gnu::always_inline]]

constexpr uint32_t kRunLanes = 16;  // the vector that takes a run

template <class Sample>
struct RunVector;
template <>
struct RunVector<uint8_t> {
    typedef uint8_t Type __attribute__((vector_size(kRunLanes)));
};
template <>
struct RunVector<uint16_t> {
    typedef uint16_t Type __attribute__((vector_size(2 * kRunLanes)));
};

// The steps of a run: what its samples lie above the last one before it, for each unit of slope and of curve.
struct RunSteps {
    using Lanes = RunVector<uint16_t>::Type;
    static constexpr Lanes kLinear = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    static constexpr Lanes kTriangular = {1, 3, 6, 10, 15, 21, 28, 36, 45, 55, 66, 78, 91, 105, 120, 136};
};

// The same for bytes, as multiples by all slopes and behind them by all curves: vectors have no product of bytes, and a
// load is cheaper than what stands in for one.
constexpr uint32_t kCurves = 256;
struct StepMultiples {
    alignas(kRunLanes) uint8_t lanes[2 * kCurves][kRunLanes] = {};

    constexpr StepMultiples() {
        for (uint32_t factor = 0; factor < 256; ++factor) {
            for (uint32_t i = 0; i < kRunLanes; ++i) {
                lanes[factor][i] = static_cast<uint8_t>(factor * (i + 1));
                lanes[kCurves + factor][i] = static_cast<uint8_t>(factor * ((i + 1) * (i + 2) / 2));
            }
        }
    }
};

constexpr StepMultiples kStepMultiples;
RLE_INLINE inline RunVector<uint8_t>::Type MultiplesOf(uint64_t factor) {
    RunVector<uint8_t>::Type lanes;
    std::memcpy(&lanes, kStepMultiples.lanes[factor], sizeof lanes);
    return lanes;
}

// A run's samples are last + k * slope + k * (k + 1) / 2 * curve, for k from 1 on.
template <class Sample>
struct Run {
    using Lanes = typename RunVector<Sample>::Type;

    static constexpr uint64_t kStretch = uint64_t{8} * kRunLanes;  // written at once, as most runs are shorter
    static constexpr uint64_t kLong = 4096 / sizeof(Sample);       // a run with a loop of its own
    static constexpr uint64_t kFlatStep = 4 * kVectorBytes;
    static constexpr uint64_t kWorthFilling = 1 << 16;  // bytes from which on it doesn't count how memset starts

    Sample last;
    Sample slope;
    Sample curve;

    // The first kRunLanes samples, whatever the run.
    RLE_INLINE void Fill(Lanes& lanes) const {
        if constexpr (sizeof(Sample) == 1) {
            lanes = MultiplesOf(slope) + MultiplesOf(kCurves + curve) + last;
        } else {
            lanes = last + slope * RunSteps::kLinear + curve * RunSteps::kTriangular;
        }
    }

    // Writes kRunLanes samples.
    RLE_INLINE void StoreShort(uint8_t* dst) const {
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
    RLE_INLINE void StoreLoosely(uint8_t* dst, uint64_t count) const {
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

    // Writes the last sample into `bytes` bytes, kFlatStep at least.
    void StoreFlat(uint8_t* dst, uint64_t bytes) const {
        uint8_t* const lastStep = dst + bytes - kFlatStep;
        for (; dst < lastStep; dst += kFlatStep) {
            StoreFlatStep(dst);
        }
        StoreFlatStep(lastStep);
    }

    RLE_INLINE void StoreFlatStep(uint8_t* dst) const {
        const Vector<Sample> lanes = Splat(last);
        for (uint64_t i = 0; i < kFlatStep; i += kVectorBytes) {
            StoreLanes(dst + i, lanes);
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
        // The last lanes are written again together with the rest.
        lanes -= static_cast<Sample>(slope * (kRunLanes - (count - done)));
        std::memcpy(dst + (count - kRunLanes) * sizeof(Sample), &lanes, sizeof lanes);
    }

    // As a ramp, but that the distance from lanes to the next ones grows: by the same in each lane.
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
