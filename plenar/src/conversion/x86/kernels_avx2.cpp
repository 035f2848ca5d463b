#include "conversion/vector/override_row_kernels.h"

namespace plenar {

void OverrideWithAvx2(RowKernels& kernels) {
    OverrideWithVectors(kernels);
}

}  // namespace plenar
