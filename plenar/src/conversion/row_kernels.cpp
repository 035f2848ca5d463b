#include "conversion/row_kernels.h"

namespace plenar {

const RowKernels& RowKernelsFor(Target target) {
    switch (target) {
        case Target::Avx2:
            return kAvx2RowKernels;
        case Target::Ssse3:
            return kSsse3RowKernels;
        default:
            return kPlainRowKernels;
    }
}

}  // namespace plenar
