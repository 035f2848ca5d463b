// The types of samples in a caller's picture.
#pragma once

#include <cstdint>

#include "plenar_sdk.h"

namespace plenar {

struct SampleType {
    uint32_t componentType;
    uint8_t bytes;     // of a sample in the caller's rows
    uint8_t bitDepth;  // significant bits, which is what a plane stores of a sample
};

// One row a type. Packed10 has three samples in a word of 32 bits; its bytes count only for alpha samples of their own.
inline constexpr SampleType kSampleTypes[] = {
    {Uint8, 1, 8},   {Uint10, 2, 10},  {Uint12, 2, 12},    {Uint16, 2, 16},
    {Half16, 2, 16}, {Float32, 4, 32}, {Fixed2p14, 2, 16}, {Packed10, 2, 10},
};

// What sizes are worked out with for a type outside the table.
inline constexpr SampleType kUnknownSampleType = {0, 2, 0};

constexpr const SampleType& FindSampleType(uint32_t componentType) {
    for (const SampleType& type : kSampleTypes) {
        if (type.componentType == componentType) {
            return type;
        }
    }
    return kUnknownSampleType;
}

constexpr uint64_t SampleBytes(uint32_t componentType) {
    return FindSampleType(componentType).bytes;
}

constexpr uint8_t BitDepth(uint32_t componentType) {
    return FindSampleType(componentType).bitDepth;
}

// Whether planes store the samples of the type in fewer bits than the caller holds them in.
constexpr bool NeedsPacking(uint32_t componentType) {
    return BitDepth(componentType) % 8 != 0;
}

}  // namespace plenar
