// Encoding and decoding of whole planes: exact bytes, sizes and limits, and planes that no encoder of ours writes.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "testing/coded_planes.h"
#include "testing/message_of.h"
#include "testing/plane_bits.h"
#include "testing/targets.h"

namespace plenar_test {
namespace {

using plenar::RleParams;

// Samples that are far from their predictions in either mode, and not as far as the last ones: a raw token for each.
Bytes MostExpensivePlane(const RleParams& params) {
    std::mt19937 random(1);
    const uint32_t top = (1U << params.bitdepth) - 1;
    const auto isFar = [top](uint32_t d) { return std::min(d & top, (0 - d) & top) > top / 200 + 10; };
    Bytes plain(plenar::RlePlainSize(params));
    uint32_t prev1 = 127;
    uint32_t prev2 = 127;
    uint32_t lastSecond = 0;
    for (size_t place = 0; place < plain.size();) {
        const uint32_t sample = static_cast<uint32_t>(random()) & top;
        const uint32_t second = sample - 2 * prev1 + prev2;
        if (isFar(sample - prev1) && isFar(second) && isFar(second - lastSecond)) {
            std::memcpy(&plain[place], &sample, params.bitdepth / 8);
            place += params.bitdepth / 8;
            lastSecond = second;
            prev2 = prev1;
            prev1 = sample;
        }
    }
    return plain;
}

TEST(PlaneCodec, WorkedBytesOfOneRow) {
    const RleParams params = {10, 1, 8, 0, 0};
    const Bytes plain = {50, 50, 50, 50, 50, 52, 54, 56, 58, 60};
    const Bytes coded = {0x01, 0xBF, 0xFF, 0xFC, 0xEF, 0xFF, 0xFF, 0xB0, 0xD3, 0x22, 0x47, 0x89, 0x20};
    OnEachTarget([&](const char* target) {
        EXPECT_EQ(EncodePlane(params, plain), coded) << target;
        EXPECT_EQ(DecodePlane(params, coded, Bytes(10)), plain) << target;
    });
}

TEST(PlaneCodec, SizesOfFlatPlanesAndTheBound) {
    const RleParams hd = {1920, 1080, 8, 0, 0};
    for (const uint32_t workers : {0U, 2U, 8U}) {
        EXPECT_EQ(EncodePlane(hd, Bytes(1920 * 1080, 255), workers).size(), 128U);
    }
    // One token of mode 0 for the whole band: 1 + 19 + 1 + 3 bits.
    EXPECT_EQ(EncodePlane({1000, 1000, 8, 1, 0}, Bytes(1000000, 127)).size(), 8U + 6U);
    EXPECT_EQ(plenar::RleMaxCodedSize({4, 4, 8, 1, 0}), 1681U);
    EXPECT_EQ(plenar::RleMaxCodedSize({4, 4, 8, 1, 99}), 1681U);
    EXPECT_EQ(plenar::RleMaxCodedSize({7, 0, 8, 0, 0}), 1659U);
    EXPECT_EQ(plenar::RleMaxCodedSize({100, 5, 16, 0, 0}), 1659U + 5 * 238);
    // The most expensive contents stay within it, and a band alone writes nothing behind its own.
    for (const uint32_t bitdepth : {8U, 16U}) {
        // One sample more than whole batches of tokens, so that nothing is left to come behind the last batch.
        const RleParams params = {61, 21, bitdepth, 1, 0};
        const Bytes plain = MostExpensivePlane(params);
        OnEachTarget([&](const char* target) {
            const uint64_t bound = plenar::RleMaxCodedSize(params);
            const ExactBuffer dst(Bytes(bound), kBeforeGuard, 64);
            const uint64_t size =
                plenar::RleEncodePlane(Pool(0), params, plain.data(), plain.size(), dst.data(), bound);
            EXPECT_EQ(size, bound - plenar::RleHeadReserve + 8) << "the table of one band takes 8 bytes, " << target;
            EXPECT_TRUE(dst.IsIntact()) << target;
        });
    }
}

// Tokens beyond what goes into one word among those that are made in vectors, and runs of more than a million samples.
TEST(PlaneCodec, LongRunsStandAmongShortOnes) {
    for (const uint32_t bitdepth : {8U, 16U}) {
        const RleParams params = {2000, 600, bitdepth, 1, 0};
        Bytes plain(plenar::RlePlainSize(params));
        const Bytes noise = Noise(60000, 2);
        for (size_t place = 0; place < noise.size(); ++place) {
            plain[place] = place / 300 % 50 == 0 ? noise[place] : 9;
        }
        const Bytes coded = EncodePlane(params, plain);
        OnEachTarget([&](const char* target) {
            EXPECT_EQ(EncodePlane(params, plain), coded) << target;
            EXPECT_EQ(DecodePlane(params, coded, Bytes(plain.size())), plain) << target;
        });
    }
}

TEST(PlaneCodec, ShortFormsEndAtTheirLimit) {
    // One sample: folded residual 19 or 20, 575 or 576, in mode 1.
    const auto streamOf = [](uint32_t bitdepth, int residual) {
        const int middle = bitdepth == 8 ? 127 : 32767;
        const auto sample = static_cast<uint16_t>(middle + residual);
        Bytes plain(bitdepth / 8);
        std::memcpy(plain.data(), &sample, plain.size());
        const Bytes coded = EncodePlane({1, 1, bitdepth, 0, 0}, plain);
        return Bytes(coded.begin() + 8, coded.end());
    };
    EXPECT_EQ(streamOf(8, -10), (Bytes{0xFE, 0xC0}));          // 1 1 1 1111011
    EXPECT_EQ(streamOf(8, 10), (Bytes{0xC2, 0x80}));           // 1 1 0 00010100
    EXPECT_EQ(streamOf(16, -288), (Bytes{0xFF, 0xEF, 0xC0}));  // 1 1 1 111111110111111
    EXPECT_EQ(streamOf(16, 288), (Bytes{0xC0, 0x48, 0x00}));   // 1 1 0 0000001001000000
    EXPECT_EQ(streamOf(8, -128), (Bytes{0xDF, 0xE0}));         // 1 1 0 11111111
    EXPECT_EQ(streamOf(8, 0), (Bytes{0x60}));                  // 0 1 1 000
}

TEST(PlaneCodec, PaddedRowsAreSpreadBandByBand) {
    // Two bands of three rows, two samples each; rows move up from the tight form, and what they don't cover stays.
    const RleParams params = {2, 6, 8, 2, 5};
    const Bytes plain = {1, 2, 9, 9, 9, 3, 4, 9, 9, 9, 5, 6, 9, 9, 9, 7, 8, 9, 9, 9, 10, 11, 9, 9, 9, 12, 13, 9, 9, 9};
    const Bytes expected = {1, 2, 3,  4,  5,  3,  4,  0, 0, 0, 5,  6,  0, 0, 0,
                            7, 8, 10, 11, 12, 10, 11, 0, 0, 0, 12, 13, 0, 0, 0};
    OnEachTarget([&](const char* target) {
        EXPECT_EQ(DecodePlane(params, EncodePlane(params, plain), Bytes(30, 0)), expected) << target;
    });
    // Bands of one row aren't spread, and nothing behind a row is touched.
    const RleParams single = {2, 6, 8, 255, 5};
    EXPECT_EQ(DecodePlane(single, EncodePlane(single, plain), Bytes(30, 9)), plain);
}

TEST(PlaneCodec, ParametersAndBuffersAreChecked) {
    Bytes plain(64);
    Bytes coded(4096);
    const char* const src = "src buffer is too small according to metadata";
    const char* const dst = "dst buffer is too small according to metadata";
    const char* const stride = "row_bytes is too small, it should be at least 16 according to params";
    const char* const depth = "only 8, and 16 bitdepth supported";
    const struct {
        const char* name;
        RleParams params;
        uint64_t plainSize;
        uint64_t codedShort;  // bytes less than the bound
        const char* encode;
        const char* decode;
    } cases[] = {{"no width", {0, 0, 9, 0, 0}, 64, 0, "Invalid width", "Invalid width"},
                 {"no height", {8, 0, 9, 0, 0}, 64, 0, "Invalid height", "Invalid height"},
                 {"9 bits", {8, 8, 9, 0, 1}, 64, 0, depth, depth},
                 {"small stride", {8, 4, 16, 0, 15}, 64, 0, stride, stride},
                 {"least stride", {8, 4, 16, 0, 16}, 64, 0, "", ""},
                 {"small plain buffer", {8, 8, 8, 0, 0}, 63, 0, src, dst},
                 {"small coded buffer", {8, 8, 8, 0, 0}, 64, 1, dst, ""},
                 {"2^31 bytes a row: the planned size wraps to 0, the true one doesn't",
                  {8, 2, 8, 0, 0x80000000},
                  64,
                  0,
                  src,
                  dst},
                 {"2^32 samples: the planned bound wraps, the picture doesn't fit",
                  {0x10000, 0x10000, 8, 1, 0},
                  64,
                  0,
                  src,
                  dst}};
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        const uint64_t bound = test.params.height == 0 ? 1659 : plenar::RleMaxCodedSize(test.params);
        EXPECT_EQ(MessageOf([&] {
                      plenar::RleEncodePlane(Pool(0), test.params, plain.data(), test.plainSize, coded.data(),
                                             bound - test.codedShort);
                  }),
                  test.encode);
        const Bytes plane = PlaneOf({}, {}, {});
        EXPECT_EQ(MessageOf([&] {
                      plenar::RleDecodePlane(Pool(2), test.params, plane.data(), plane.size(), plain.data(),
                                             test.plainSize);
                  }),
                  test.decode);
    }
    const RleParams params = {8, 8, 8, 0, 0};
    EXPECT_EQ(MessageOf([&] { plenar::RleEncodePlane(Pool(0), params, nullptr, 64, coded.data(), 4096); }),
              "src and buffers required to be non-null");
    EXPECT_EQ(MessageOf([&] { plenar::RleDecodePlane(Pool(0), params, coded.data(), 9, nullptr, 64); }),
              "src and buffers required to be non-null");
}

// A stream of more than 16 MB: its stated size reads back 16777216 off, and hides nothing.
TEST(PlaneCodec, OneBandOfMoreThan16Megabytes) {
    const RleParams params = {4096, 3000, 8, 1, 0};
    const Bytes plain = MostExpensivePlane(params);
    const Bytes coded = EncodePlane(params, plain);
    ASSERT_GT(coded.size(), 16777216U + 8);
    EXPECT_EQ(DecodePlane(params, coded, Bytes(plain.size()), 2), plain);
}

TEST(TokenPlane, OddCodesReadAsTheReaderSays) {
    PlaneBits bits;
    // Nine ones in a prefix count as eight, and all nine are skipped.
    bits.Bits(0b01, 2);
    bits.NineOnes(2, 8);  // 8 * 4 + 2: +17
    // A run of 0 yields nothing, this one of 3 does.
    for (const uint64_t run : {0U, 3U}) {
        bits.Bits(1, 1);
        bits.LongRunLength(run);
        bits.Value(3, 8, true);  // -2
    }
    bits.Token(0, 60, 0, 8, true);
    const Bytes coded = PlaneOf({static_cast<uint32_t>(bits.Get().size())}, {1}, {bits.Get()});
    Bytes expected = {144, 159, 172, 183};
    expected.resize(64, 183);
    OnEachTarget([&](const char* target) {
        EXPECT_EQ(DecodePlane({64, 1, 8, 0, 0}, coded, Bytes(64)), expected) << target;
    });
}

// What a band's size says isn't where its stream ends.
TEST(TokenPlane, StatedSizesHideNothing) {
    Bytes plain(500);
    for (uint32_t i = 0; i < 500; ++i) {
        plain[i] = static_cast<uint8_t>(i * i / 7);
    }
    const Bytes coded = EncodePlane({500, 1, 8, 0, 0}, plain);
    const Bytes stream(coded.begin() + 8, coded.end());
    ASSERT_GT(stream.size(), 16U);
    for (const uint32_t stated : {0U, 3U, 8U, static_cast<uint32_t>(stream.size()) - 1, 9000000U}) {
        EXPECT_EQ(DecodePlane({500, 1, 8, 0, 0}, PlaneOf({stated}, {1}, {stream}), Bytes(500)), plain) << stated;
    }
}

}  // namespace
}  // namespace plenar_test
