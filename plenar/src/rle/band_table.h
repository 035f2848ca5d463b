// The rle index table in front of a coded plane: how many bands there are, and the stream size and the rows of each.
#pragma once

#include <cstdint>

#include "rle/rle_defect.h"
#include "rle/rle_params.h"

namespace plenar {

struct RleBandTable {
    uint32_t count;
    uint32_t sizes[kRleMaxBands];  // bytes of a band's stream, as stated; see RleWriteIndexList for what may be lost
    uint32_t rows[kRleMaxBands];
    uint64_t bytes;  // of the table; the first band's stream stands behind it
};

// Writes `count`, `sizes` and `rows` at `dst`, at most RleHeadReserve bytes, and returns their number. Throws
// out_of_range as RleWriteIndexList does.
uint64_t RleWriteBandTable(const RleBandTable& table, uint8_t* dst);

// Reads the table of a coded plane of `size` bytes. What it states is not checked against anything.
RleDefect RleReadBandTable(const uint8_t* src, uint64_t size, RleBandTable& table);

}  // namespace plenar
