#include "rle/rle_kernels.h"

#include <atomic>

#include "plenar/cpu_features.h"
#include "rle/band_encoder_plain.h"
#include "rle/rle_kernels_targets.h"

namespace plenar {
namespace {

void LeaveAllTokens(RleDecodeState& /*state*/) {}
RleDecodeState& LeaveFirst(RleDecodeState& first, RleDecodeState& /*second*/) {
    return first;
}

constexpr RleKernels kPlainKernels = {
    RleEncodeBandPlain<uint8_t>, RleEncodeBandPlain<uint16_t>, LeaveAllTokens, LeaveAllTokens, LeaveFirst, LeaveFirst,
    RleWriteRunPlain<uint8_t>,   RleWriteRunPlain<uint16_t>};

// All that rle_kernels_avx2.cpp is compiled for.
bool RunsAvx2Kernels() {
    const CpuFeatures& features = DetectedCpuFeatures();
    return features.hasAvx2 && features.hasBitManipulation;
}

const RleKernels& BestKernels() {
    return RunsAvx2Kernels() ? kRleAvx2Kernels : kRleBaselineKernels;
}

std::atomic<const RleKernels*> chosenKernels = nullptr;

}  // namespace

const RleKernels* RleFindKernels(RleKernelSet set) {
    switch (set) {
        case RleKernelSet::Plain:
            return &kPlainKernels;
        case RleKernelSet::Baseline:
            return &kRleBaselineKernels;
        case RleKernelSet::Avx2:
            return RunsAvx2Kernels() ? &kRleAvx2Kernels : nullptr;
        case RleKernelSet::Best:
            return &BestKernels();
    }
    return nullptr;
}

const RleKernels& RleActiveKernels() {
    const RleKernels* chosen = chosenKernels.load(std::memory_order_relaxed);
    return chosen != nullptr ? *chosen : BestKernels();
}

void RleChooseKernels(RleKernelSet set) {
    chosenKernels.store(RleFindKernels(set), std::memory_order_relaxed);
}

}  // namespace plenar
