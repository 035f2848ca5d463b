#include "rle/x86/target_kernels.h"

namespace plenar {

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
