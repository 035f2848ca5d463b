#include "conversion/row_kernels.h"
#include "conversion/x86/target_kernels.h"

namespace plenar {

void OverrideRowKernels(Target target, RowKernels& kernels) {
    switch (target) {
        case Target::Plain:
            return;
        case Target::Ssse3:
            return OverrideWithSsse3(kernels);
        case Target::Avx2:
            return OverrideWithAvx2(kernels);
    }
}

}  // namespace plenar
