// The split of rows into bands: what a worker takes at a time.
#pragma once

#include <algorithm>
#include <cstdint>

namespace plenar {

struct Band {
    uint32_t firstRow;
    uint32_t rows;
};

// Bands that differ by one row at most, larger ones first. None is empty, so fewer rows than parts give one band a row,
// and no rows give no band.
class RowBands {
public:
    constexpr RowBands(uint32_t total, uint32_t parts) : total_(total), count_(std::min(total, parts)) {}

    constexpr uint32_t Count() const { return count_; }

    constexpr Band operator[](uint32_t i) const {
        const uint32_t base = total_ / count_;
        const uint32_t larger = total_ % count_;
        return {i * base + std::min(i, larger), base + (i < larger ? 1 : 0)};
    }

private:
    uint32_t total_;
    uint32_t count_;
};

// Cuts `total` rows into at most `parts` bands.
constexpr RowBands SplitRows(uint32_t total, uint32_t parts) {
    return {total, parts};
}

}  // namespace plenar
