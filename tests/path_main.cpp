// Runs the tests that it is linked with on one set of kernels, whatever the processor would choose: --kernels=plain or
// --kernels=baseline.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "conversion/row_kernels.h"
#include "rle/rle_kernels.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const std::string kernels = argc == 2 ? argv[1] : "";
    if (kernels == "--kernels=plain") {
        plenar::ForceRowKernels(&plenar::kPlainRowKernels);
        plenar::RleChooseKernels(plenar::RleKernelSet::Plain);
    } else if (kernels == "--kernels=baseline") {
        plenar::ForceRowKernels(&plenar::kSsse3RowKernels);
        plenar::RleChooseKernels(plenar::RleKernelSet::Baseline);
    } else {
        std::fprintf(stderr, "usage: %s --kernels=plain|baseline\n", argv[0]);
        return 2;
    }
    return RUN_ALL_TESTS();
}
