// What the sources that are compiled for x86-64 targets define.
#pragma once

#include "rle/rle_kernels.h"

namespace plenar {

void RleOverrideSsse3(RleKernels& kernels);
void RleOverrideAvx2(RleKernels& kernels);

}  // namespace plenar
