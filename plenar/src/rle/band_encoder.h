#pragma once

#include <cstdint>

#include "rle/band_job.h"

namespace plenar {

// Codes one band, and returns the bytes of its stream. Its place needs room for RleMaxStreamSize of its samples, and
// nothing is written outside that. Can't fail.
uint64_t RleEncodeBand(const RleBandJob& job);

// The same, sample by sample: the definition of what the kernels of all targets write.
template <class Sample>
uint64_t RleEncodeBandPlain(const RleBandJob& job);

}  // namespace plenar
