#pragma once

#include <cstdint>
#include <vector>

namespace plenar {

// Cuts `total` rows into at most `parts` bands (parts > 0) that differ by one row at most, larger bands first. No band
// is empty, so fewer rows than parts give one band a row, and no rows give no band.
std::vector<uint32_t> SplitRows(uint32_t total, uint32_t parts);

}  // namespace plenar
