// DPX files that are cut short: OpenImageIO fills up the samples that they lack.
#pragma once

#include <cstdint>
#include <string>

namespace plenar_tool {

// The least bytes that a file with this header has, 0 if the header doesn't tell.
uint64_t LeastDpxBytes(const std::string& file, uint32_t channels);

}  // namespace plenar_tool
