// Where and how much the samples of two pictures differ.
#pragma once

#include <plenar_sdk.h>

#include <cstdint>
#include <span>
#include <string>

namespace plenar_tool {

struct SampleDifference {
    uint64_t samples = 0;
    uint64_t different = 0;  // by their bits
    std::string first;       // place and values of the first that differs
    double greatest = 0;     // as numbers; not a number where one of two isn't
    std::string greatestPlace;
};

// A sample's value, or the difference of two.
std::string SampleText(double value);

// Both pictures are of the format that Plenar_ReadMetadata reports for their payload.
SampleDifference CompareSamples(const UncompressedParams& format, std::span<const uint8_t> first,
                                std::span<const uint8_t> second);

}  // namespace plenar_tool
