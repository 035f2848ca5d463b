// The sample-by-sample band coder: the definition that the fast one is held to.
#pragma once

#include <cstdint>

#include "rle/rle_params.h"

namespace plenar {

template <class Sample>
uint64_t RleEncodeBandPlain(const RleParams& band, const uint8_t* src, uint8_t* dst);

}  // namespace plenar
