#include "rle/vector/vector_kernels.h"

namespace plenar {

void RleOverrideAvx2(RleKernels& kernels) {
    OverrideWithVectors(kernels);
}

}  // namespace plenar
