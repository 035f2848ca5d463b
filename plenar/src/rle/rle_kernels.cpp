#include "rle/rle_kernels.h"

#include <cpuid.h>

#include <atomic>

#include "rle/band_encoder_plain.h"
#include "rle/rle_kernels_targets.h"

namespace plenar {
namespace {

void LeaveAllTokens(RleDecodeState& /*state*/) {}

constexpr RleKernels kPlainKernels = {RleEncodeBandPlain<uint8_t>, RleEncodeBandPlain<uint16_t>, LeaveAllTokens,
                                      LeaveAllTokens};

// All that rle_kernels_avx2.cpp is compiled for.
bool RunsAvx2Kernels() {
    constexpr uint32_t kExtendedFeatures = 0x80000001;
    constexpr uint32_t kLzcnt = 1U << 5;
    uint32_t eax = 0;
    uint32_t ebx = 0;
    uint32_t ecx = 0;
    uint32_t edx = 0;
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") &&
           __get_cpuid(kExtendedFeatures, &eax, &ebx, &ecx, &edx) != 0 && (ecx & kLzcnt) != 0;
}

const RleKernels& BestKernels() {
    static const RleKernels& best = RunsAvx2Kernels() ? RleAvx2Kernels : RleBaselineKernels;
    return best;
}

std::atomic<const RleKernels*> chosen_kernels = nullptr;

}  // namespace

const RleKernels* RleFindKernels(RleKernelSet set) {
    switch (set) {
        case RleKernelSet::kPlain:
            return &kPlainKernels;
        case RleKernelSet::kBaseline:
            return &RleBaselineKernels;
        case RleKernelSet::kAvx2:
            return RunsAvx2Kernels() ? &RleAvx2Kernels : nullptr;
        case RleKernelSet::kBest:
            return &BestKernels();
    }
    return nullptr;
}

const RleKernels& RleActiveKernels() {
    const RleKernels* chosen = chosen_kernels.load(std::memory_order_relaxed);
    return chosen != nullptr ? *chosen : BestKernels();
}

void RleChooseKernels(RleKernelSet set) {
    chosen_kernels.store(RleFindKernels(set), std::memory_order_relaxed);
}

}  // namespace plenar
