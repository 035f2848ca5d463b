// What each target of x86-64 adds to the kernels of the narrower one.
#pragma once

#include "conversion/row_kernels.h"

namespace plenar {

void OverrideWithSsse3(RowKernels& kernels);
void OverrideWithAvx2(RowKernels& kernels);

}  // namespace plenar
