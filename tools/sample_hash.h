// A number for the samples of a picture that other programs can check.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace plenar_tool {

// SHA-256 in hexadecimal digits.
std::string HashSamples(std::span<const uint8_t> samples);

}  // namespace plenar_tool
