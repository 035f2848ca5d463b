#include "conversion/vector/override_row_kernels.h"
#include "conversion/x86/row_kernels_x86.h"

namespace plenar {

void OverrideWithSsse3(RowKernels& kernels) {
    OverrideWithVectors(kernels);
}

}  // namespace plenar
