// The lists of the rle index table: the bands' stream sizes and their rows.
#pragma once

#include <cstdint>

#include "rle/bit_reader.h"
#include "rle/bit_writer.h"
#include "rle/rle_defect.h"

namespace plenar {

// Appends a list. Differences are reduced to 24 bits, so an entry that lies 8388608 or more away from the one before it
// reads back 16777216 off. Throws out_of_range for a difference that doesn't fit even so.
void RleWriteIndexList(RleBitWriter& writer, const uint32_t* values, uint32_t count);

// Fills `count` entries. The bits that the list takes are what the reader moves on by.
RleDefect RleReadIndexList(RleBitReader& reader, uint32_t* out, uint32_t count);

}  // namespace plenar
