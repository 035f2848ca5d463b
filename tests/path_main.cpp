// Runs the tests that it is linked with on the kernels of one target, whatever the processor would choose, and on all
// threads, however small a frame is: --target=NAME. With --stream all frames are written past the caches.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "pool/work_pool.h"
#include "simd/target.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const bool isStreamed = argc == 3 && argv[2] == std::string("--stream");
    for (const plenar::Target target : plenar::RunnableTargets()) {
        if (argc == 2 + isStreamed && argv[1] == std::string("--target=") + plenar::NameOf(target)) {
            plenar::ForceTarget(target);
            plenar::WakeWorkersFrom(0);
            plenar::ForceLastLevelCacheBytes(isStreamed ? 0 : SIZE_MAX);
            return RUN_ALL_TESTS();
        }
    }
    std::fprintf(stderr, "usage: %s --target=NAME [--stream], of a target that this processor runs\n", argv[0]);
    return 2;
}
