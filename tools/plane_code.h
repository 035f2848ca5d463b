// What the four-character code of a plane says.
#pragma once

#include <cstdint>
#include <string_view>

namespace plenar_tool {

struct PlaneCodeInfo {
    std::string_view role;      // "picture", "luma", "Cb", "Cr", "alpha" or "unknown"
    std::string_view sampling;  // in words
    uint32_t depth;             // bits of a sample; 0 when unknown
    bool coded;
};

// `code` holds four bytes. Alternative spellings of half and float codes are known too.
PlaneCodeInfo DescribePlaneCode(std::string_view code);

}  // namespace plenar_tool
