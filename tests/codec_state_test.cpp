#include "frame/codec_state.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "testing/allocations.h"
#include "testing/message_of.h"

namespace plenar_test {
namespace {

TEST(Scratch, IsAsLargeAsAskedForAlsoBehindAFailure) {
    plenar::CodecState state(0);
    for (const size_t size : {100U, 50U, 200U}) {
        allocations.Arm(size == 200 ? 1 : 0);
        const bool lacksMemory = MessageOf([&] { std::fill_n(plenar::Scratch(state, size), size, uint8_t{1}); }) != "";
        EXPECT_EQ(lacksMemory, allocations.Disarm());
        EXPECT_NE(plenar::Scratch(state, 100), nullptr);
    }
}

}  // namespace
}  // namespace plenar_test
