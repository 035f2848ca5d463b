// Runs the tests that it is linked with on the kernels of one target, whatever the processor would choose, and on all
// threads, however small a frame is: --target=NAME.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "pool/work_pool.h"
#include "simd/target.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    for (const plenar::Target target : plenar::RunnableTargets()) {
        if (argc == 2 && argv[1] == std::string("--target=") + plenar::NameOf(target)) {
            plenar::ForceTarget(target);
            plenar::WakeWorkersFrom(0);
            return RUN_ALL_TESTS();
        }
    }
    std::fprintf(stderr, "usage: %s --target=NAME, of a target that this processor runs\n", argv[0]);
    return 2;
}
