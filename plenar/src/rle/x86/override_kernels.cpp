#include "rle/rle_kernels.h"

namespace plenar {

// Each in a source of its own, which is compiled for the target.
void RleOverrideSsse3(RleKernels& kernels);
void RleOverrideAvx2(RleKernels& kernels);

void RleOverrideKernels(Target target, RleKernels& kernels) {
    switch (target) {
        case Target::Plain:
            break;
        case Target::Ssse3:
            RleOverrideSsse3(kernels);
            break;
        case Target::Avx2:
            RleOverrideAvx2(kernels);
            break;
    }
}

}  // namespace plenar
