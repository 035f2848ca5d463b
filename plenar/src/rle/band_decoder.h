#pragma once

#include <cstdint>

#include "rle/rle_defect.h"
#include "rle/rle_params.h"

namespace plenar {

// Decodes one band, whose rows are the `height` of `band`, from the stream that begins at `src`. `src_size` is what the
// coded plane holds from there on: a stream ends with the band's last sample, whatever size is stated for it. Writes
// RlePlainExtent bytes of `dst` at most. With padded rows the bytes between them are left with parts of the rows or as
// they were.
RleDefect RleDecodeBand(const RleParams& band, const uint8_t* src, uint64_t src_size, uint8_t* dst);

}  // namespace plenar
