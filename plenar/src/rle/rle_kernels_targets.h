// The vector versions of the kernels: band_kernels.inl, compiled once for each target.
#pragma once

#include "rle/rle_kernels.h"

namespace plenar {

extern const RleKernels RleBaselineKernels;
extern const RleKernels RleAvx2Kernels;

}  // namespace plenar
