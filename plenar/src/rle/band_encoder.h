#pragma once

#include <cstdint>

#include "rle/rle_params.h"

namespace plenar {

// Codes one band, whose rows are the `height` of `band`, and returns the bytes of its stream. `dst` needs room for
// RleMaxStreamSize of its samples, and nothing is written outside that. Can't fail.
uint64_t RleEncodeBand(const RleParams& band, const uint8_t* src, uint8_t* dst);

// The same, sample by sample: the definition of what the kernels of all targets write.
template <class Sample>
uint64_t RleEncodeBandPlain(const RleParams& band, const uint8_t* src, uint8_t* dst);

}  // namespace plenar
