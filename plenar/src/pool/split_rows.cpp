#include "pool/split_rows.h"

#include <algorithm>

namespace plenar {

std::vector<uint32_t> SplitRows(uint32_t total, uint32_t parts) {
    const uint32_t base = total / parts;
    const uint32_t larger = total % parts;
    std::vector<uint32_t> rows(base == 0 ? larger : parts, base);
    std::for_each_n(rows.begin(), larger, [](uint32_t& band) { ++band; });
    return rows;
}

}  // namespace plenar
