// What packing and unpacking share: the low part of a split row, whose bytes hold the low bits of several samples each.
#pragma once

#include <cstddef>

namespace plenar {

constexpr size_t SamplesInLowByte(size_t lowBits) {
    return 8 / lowBits;
}

// The least number of samples that makes whole groups and whole bytes of the low part.
constexpr size_t StepOf(size_t group, size_t lowBits) {
    const size_t perByte = SamplesInLowByte(lowBits);
    return group % perByte == 0 ? group : group % 2 == 0 ? group * perByte / 2 : group * perByte;
}

}  // namespace plenar
