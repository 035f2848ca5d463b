// The shared library in a program that loads it at run time.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <plenar_sdk.h>

#include <array>

#include "testing/allocations.h"

namespace plenar_test {
namespace {

template <class Function>
Function* Find(void* library, const char* name) {
    return reinterpret_cast<Function*>(dlsym(library, name));
}

// A thread that is left behind would hold a block, and run code that isn't there any more.
TEST(SharedLibrary, LeavesNothingBehindWhenUnloaded) {
    const CreateParams params{sizeof(CreateParams), 3, nullptr, nullptr};
    const UncompressedParams picture{sizeof(UncompressedParams), PLENAR_ORDER_RGBA, PLENAR_TYPE_UINT8, 4, 4, 0, 0, 0};
    const CompressedParams compressed{sizeof(CompressedParams), 1, 0};
    const AllocationWatch watch;
    for (int round = 0; round < 200; ++round) {
        void* library = dlopen(PLENAR_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr);
        Encoder* encoder = nullptr;
        std::array<uint8_t, 4096> payload{};
        EXPECT_EQ(Find<decltype(Plenar_CreateEncoder)>(library, "Plenar_CreateEncoder")(&params, &encoder), 0U);
        EXPECT_EQ(Find<decltype(Plenar_EncodeFrame)>(library, "Plenar_EncodeFrame")(
                      encoder, &picture, &compressed, payload.data(), 64, payload.data() + 64, 4032, nullptr),
                  0U);
        Find<decltype(Plenar_DestroyEncoder)>(library, "Plenar_DestroyEncoder")(encoder);
        EXPECT_EQ(dlclose(library), 0);
        EXPECT_EQ(dlopen(PLENAR_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
    }
    EXPECT_EQ(watch.Blocks(), 0);
}

}  // namespace
}  // namespace plenar_test
