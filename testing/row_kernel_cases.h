// The kernels of rows as one table: what each reads and writes, and how it is called. Tests and fuzz targets compare
// them with their plain twins, benchmarks time them.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "conversion/row_kernels.h"
#include "testing/bytes.h"

namespace plenar_test {

// The parts of a row: pixels or words, or colour and alpha, or the high and the low part.
struct RowParts {
    const uint8_t* src[2];
    uint8_t* dst[2];
};

// A kernel with the order and the sample size that it takes; null and 0 where it takes none.
struct RowKernelCase {
    std::string kernel;
    std::string orderName;
    const plenar::Order* order;
    size_t sampleBytes;
    // What a unit, the least that the kernel moves, takes of each part. Without a first target it is the source.
    std::array<size_t, 2> sourceBits;
    std::array<size_t, 2> targetBits;
    size_t unit;  // by the kernel's own count
    std::function<void(const plenar::RowKernels&, const RowKernelCase&, const RowParts&, size_t units)> run;
    std::string variant;  // what is special about the call
};

const std::vector<RowKernelCase>& RowKernelCases();

// Where the parts of a row lie. Sources and targets have places and shifts of their own; see ExactBuffer.
struct RowPlaces {
    uint32_t source;
    size_t sourceShift;
    uint32_t target;
    size_t targetShift;
};

// Runs the kernel of every target that this processor has on the same units, whose bytes are those of `content`, and
// again from its beginning where they are more. "" if all write what the plain one does and nothing else; otherwise
// which one doesn't, and where.
std::string RowKernelFailure(const RowKernelCase& kernelCase, size_t units, const RowPlaces& places,
                             const Bytes& content);

}  // namespace plenar_test
