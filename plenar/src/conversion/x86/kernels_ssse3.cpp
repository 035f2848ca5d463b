#include "conversion/vector/override_row_kernels.h"

namespace plenar {

void OverrideWithSsse3(RowKernels& kernels) {
    OverrideWithVectors(kernels);
}

}  // namespace plenar
