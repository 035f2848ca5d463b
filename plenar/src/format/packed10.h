// Packed10, the 4:2:2 rows with three 10-bit samples in each word of 32 bits: whole groups of 4 words.
#pragma once

#include <cstddef>
#include <cstdint>

namespace plenar {

inline constexpr uint32_t kPackedGroupPixels = 6;
inline constexpr size_t kPackedGroupSamples = 12;
inline constexpr uint32_t kPackedGroupBytes = 16;
inline constexpr size_t kPackedGroupLowBytes = 3;  // of the plane's low part

// Sample i of a word begins at bit i * kPackedFieldBits; two bits above the last one are unused.
inline constexpr size_t kPackedWordFields = 3;
inline constexpr uint32_t kPackedFieldBits = 10;

}  // namespace plenar
