#include "conversion/row_kernels.h"

namespace plenar {

// Each in a source of its own, which is compiled for the target.
void OverrideWithSsse3(RowKernels& kernels);
void OverrideWithAvx2(RowKernels& kernels);

void OverrideRowKernels(Target target, RowKernels& kernels) {
    switch (target) {
        case Target::Plain:
            break;
        case Target::Ssse3:
            OverrideWithSsse3(kernels);
            break;
        case Target::Avx2:
            OverrideWithAvx2(kernels);
            break;
    }
}

}  // namespace plenar
