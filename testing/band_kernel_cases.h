// The kernels of coded planes as one table.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "rle/rle_kernels.h"
#include "testing/bytes.h"

namespace plenar_test {

struct BandKernelCase {
    const char* kernel;
    uint32_t depth;  // of its samples
    void (*take)(plenar::RleBandKernels& to, const plenar::RleBandKernels& from);
};

inline std::ostream& operator<<(std::ostream& stream, const BandKernelCase& kernelCase) {
    return stream << kernelCase.kernel;
}

const std::vector<BandKernelCase>& BandKernelCases();

// A target's kernels for samples of 8 or 16 bits.
const plenar::RleBandKernels& BandKernelsFor(plenar::Target target, uint32_t depth);

// A band's stream, sound or not, and the samples that an encoder is to code.
struct Band {
    Bytes stream;
    Bytes plain;  // without padding
    uint32_t width;
    uint32_t height;
    uint32_t padding;  // of the rows that are coded

    uint64_t Samples() const { return uint64_t{width} * height; }
};

// Codes the first band and decodes both, alone and together, on the plain kernels but for the one of the case, which is
// every runnable target's in turn. "" if all give the same; otherwise which one doesn't, and where.
std::string BandKernelFailure(const BandKernelCase& kernelCase, const Band& band, const Band& other, uint32_t place);

}  // namespace plenar_test
