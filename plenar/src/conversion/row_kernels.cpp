#include "conversion/row_kernels.h"

#include <atomic>

namespace plenar {

namespace {
std::atomic<const RowKernels*> forced{nullptr};
}  // namespace

const RowKernels& ActiveRowKernels() {
    const RowKernels* kernels = forced.load(std::memory_order_relaxed);
    return kernels != nullptr ? *kernels : ssse3RowKernels;
}

void ForceRowKernels(const RowKernels* kernels) {
    forced.store(kernels, std::memory_order_relaxed);
}

}  // namespace plenar
