#include "rle/vector/vector_kernels.h"

namespace plenar {

void RleOverrideSsse3(RleKernels& kernels) {
    OverrideWithVectors(kernels);
}

}  // namespace plenar
