// The table at the head of a coded alpha plane: its bands, with the rows and the coded bytes of each.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace plenar_tool {

struct Band {
    uint32_t rows;
    uint32_t bytes;
};

struct BandTable {
    uint32_t tableBytes = 0;  // where the first band's stream begins, from the plane's first byte
    std::vector<Band> bands;
    std::string problem;  // empty when the table agrees with the plane
};

// Safe for any bytes; looks at no more of them than a table can take.
BandTable ReadBandTable(std::span<const uint8_t> plane, uint32_t height);

}  // namespace plenar_tool
