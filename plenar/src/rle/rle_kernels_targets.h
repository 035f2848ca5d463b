// The vector versions of the kernels: the headers that say so, compiled once for each target.
#pragma once

#include "rle/rle_kernels.h"

namespace plenar {

extern const RleKernels kRleBaselineKernels;
extern const RleKernels kRleAvx2Kernels;

}  // namespace plenar
