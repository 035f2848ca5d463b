// Planes that no encoder of ours writes, but that are sound: any mode with any run, raw form for small values, bands of
// any rows. What they hold follows from the tokens alone.
#include <gtest/gtest.h>

#include <algorithm>

#include "rle_fixture.h"

namespace rle_tests {
namespace {

using plenar::RleParams;

class TokenStream {
public:
    TokenStream(uint32_t bitdepth, uint32_t seed) : depth(bitdepth), random(seed) {}

    // A band of `samples` samples; appends them to `plain`.
    Bytes Make(uint64_t samples, Bytes& plain) {
        PlaneBits bits;
        uint32_t prev1 = (1U << (depth - 1)) - 1;
        uint32_t prev2 = prev1;
        const uint32_t longest = 1U << random() % 11;
        while (samples > 0) {
            const uint64_t run = std::min<uint64_t>(1 + random() % longest, samples);
            const bool may_be_short = random() % 4 != 0;
            // A prefix holds eight ones at most.
            const uint32_t value = random() % (may_be_short ? 9U << (depth / 2 - 2) : 1U << depth);
            const uint32_t mode = random() % 2;
            bits.Token(mode, run, value, depth, may_be_short);
            const uint32_t residual = value % 2 == 0 ? value / 2 : 0 - (value + 1) / 2;
            for (uint64_t i = 0; i < run; ++i) {
                const uint32_t next = residual + (mode == 0 ? prev1 : 2 * prev1 - prev2);
                prev2 = prev1;
                prev1 = next;
                for (uint32_t shift = 0; shift < depth; shift += 8) {
                    plain.push_back(static_cast<uint8_t>(next >> shift));
                }
            }
            samples -= run;
        }
        return bits.Get();
    }

private:
    uint32_t depth;
    Random random;
};

TEST(TokenPlane, AnyTokensInAnyBandsDecode) {
    Random random(5);
    for (int turn = 0; turn < 1500; ++turn) {
        const uint32_t bitdepth = turn % 2 == 0 ? 8 : 16;
        const uint32_t width = 1 + random() % 200;
        std::vector<uint32_t> rows(1 + random() % 6);
        std::generate(rows.begin(), rows.end(), [&] { return random() % 7; });
        rows.back() += 1;
        TokenStream tokens(bitdepth, static_cast<uint32_t>(turn + 1));
        Bytes plain;
        std::vector<Bytes> streams;
        std::vector<uint32_t> sizes;
        uint32_t height = 0;
        for (const uint32_t band_rows : rows) {
            streams.push_back(tokens.Make(uint64_t{width} * band_rows, plain));
            sizes.push_back(static_cast<uint32_t>(streams.back().size()));
            height += band_rows;
        }
        const Bytes coded = PlaneOf(sizes, rows, streams);
        const RleParams params = {width, height, bitdepth, 0, 0};
        for (const auto set : KernelSets()) {
            const ChosenKernels chosen(set);
            ASSERT_EQ(Decode(params, coded, Bytes(plain.size(), 0xCD), turn % 3 == 0 ? 2 : 0), plain) << turn;
        }
    }
}

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
    for (const auto set : KernelSets()) {
        const ChosenKernels chosen(set);
        EXPECT_EQ(Decode({64, 1, 8, 0, 0}, coded, Bytes(64)), expected);
    }
}

// What a band's size says isn't where its stream ends.
TEST(TokenPlane, StatedSizesHideNothing) {
    PlaneBits bits;
    Bytes plain;
    const Bytes stream = TokenStream(8, 9).Make(500, plain);
    ASSERT_GT(stream.size(), 16U);
    for (const uint32_t stated : {0U, 3U, 8U, static_cast<uint32_t>(stream.size()) - 1, 9000000U}) {
        EXPECT_EQ(Decode({500, 1, 8, 0, 0}, PlaneOf({stated}, {1}, {stream}), Bytes(500)), plain) << stated;
    }
}

}  // namespace
}  // namespace rle_tests
