// Planes that no encoder of ours writes, but that are sound. What they hold follows from the tokens alone. The fuzz
// target of coded planes has more of them.
#include <gtest/gtest.h>

#include "rle_fixture.h"

namespace rle_tests {
namespace {

TEST(TokenPlane, OddCodesReadAsTheReaderSays) {
    PlaneBits bits;
    // Nine ones in a prefix count as eight, and all nine are skipped.
    bits.Bits(0b011, 3);
    bits.Bits(0x1FF, 9);
    bits.Bits(2, 2);  // 8 * 4 + 2: +17
    // 32 zeros and more: 33 bits follow, whatever they are. A run of 0 yields nothing, this one of 3 does.
    for (const uint64_t run : {0U, 3U}) {
        bits.Bits(1, 1);
        bits.Bits(0, 32);
        bits.Bits(run, 33);
        bits.Value(3, 8, true);  // -2
    }
    bits.Token(0, 60, 0, 8, true);
    const Bytes coded = PlaneOf({static_cast<uint32_t>(bits.Get().size())}, {1}, {bits.Get()});
    Bytes expected = {144, 159, 172, 183};
    expected.resize(64, 183);
    for (const plenar::Target target : plenar::RunnableTargets()) {
        const ForcedTarget forced(target);
        EXPECT_EQ(Decode({64, 1, 8, 0, 0}, coded, Bytes(64)), expected);
    }
}

// What a band's size says isn't where its stream ends.
TEST(TokenPlane, StatedSizesHideNothing) {
    Bytes plain(500);
    for (uint32_t i = 0; i < 500; ++i) {
        plain[i] = static_cast<uint8_t>(i * i / 7);
    }
    const Bytes coded = Encode({500, 1, 8, 0, 0}, plain);
    const Bytes stream(coded.begin() + 8, coded.end());
    ASSERT_GT(stream.size(), 16U);
    for (const uint32_t stated : {0U, 3U, 8U, static_cast<uint32_t>(stream.size()) - 1, 9000000U}) {
        EXPECT_EQ(Decode({500, 1, 8, 0, 0}, PlaneOf({stated}, {1}, {stream}), Bytes(500)), plain) << stated;
    }
}

}  // namespace
}  // namespace rle_tests
