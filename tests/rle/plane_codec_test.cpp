// Encoding and decoding of whole planes: exact bytes, every coder beside its plain twin, and the way back.
#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "rle_fixture.h"

namespace rle_tests {
namespace {

using plenar::RleParams;

enum Content {
    kMiddle,
    kFull,
    kRamp,
    kWrappingRamp,
    kCurve,
    kMatte,
    kSteps,
    kSparse,
    kNoise,
    kDearest,
    kLongRuns,
    kContents
};

// A sample of each content, from its place and the two samples before it.
class Source {
public:
    Source(Content content, uint32_t bitdepth, uint32_t seed) : kind(content), depth(bitdepth), random(seed) {}

    uint16_t Next(uint32_t x, uint32_t y) {
        const uint32_t sample = Raw(x, y) & Top();
        prev2 = prev1;
        prev1 = sample;
        return static_cast<uint16_t>(sample);
    }

private:
    uint32_t Top() const { return (1U << depth) - 1; }

    uint32_t Raw(uint32_t x, uint32_t y) {
        switch (kind) {
            case kFull:
                return Top();
            case kRamp:
                return x * 2 + y;
            case kWrappingRamp:
                return prev1 + Top() / 5;
            case kCurve:
                return 2 * prev1 - prev2 + (x % 50 < 6 ? 1 : 0);
            case kMatte:
                return (std::clamp((x + random() % 2) * 9, 150U, 405U) - 150) * (Top() / 255);
            case kSteps:
                return random() % 9 == 0 ? random() : prev1;
            case kSparse:
                return random() % 150 == 0 ? random() : 0;
            case kNoise:
                return random();
            case kDearest:
                return Dearest();
            case kLongRuns:
                return OfLongRuns();
            default:
                return Top() / 2;
        }
    }

    // A sample far from its prediction in either mode, and not as far as the last one: a raw token of its own.
    uint32_t Dearest() {
        const auto is_far = [this](uint32_t d) { return std::min(d & Top(), (0 - d) & Top()) > Top() / 200 + 10; };
        for (;;) {
            const uint32_t x = random();
            const uint32_t second = x - 2 * prev1 + prev2;
            if (is_far(x - prev1) && is_far(second) && is_far(second - last_second)) {
                last_second = second;
                return x;
            }
        }
    }

    // Flat stretches and ramps of any length, with stretches of noise between them.
    uint32_t OfLongRuns() {
        if (left == 0) {
            stretch = random() % 3;
            left = 1U << random() % (stretch == 0 ? 7 : 17);
        }
        --left;
        return stretch == 0 ? random() : prev1 + stretch - 1;
    }

    Content kind;
    uint32_t depth;
    Random random;
    uint32_t prev1 = 127;
    uint32_t prev2 = 127;
    uint32_t last_second = 0;
    uint32_t stretch = 0;
    uint32_t left = 0;
};

Bytes MakePlain(const RleParams& params, Content content, uint32_t seed = 1) {
    Source source(content, params.bitdepth, seed);
    const size_t sample_bytes = params.bitdepth / 8;
    Bytes plain(plenar::RlePlainExtent(params), 0xA5);
    plain.resize(std::max<uint64_t>(plain.size(), plenar::RlePlainSize(params)), 0xA5);
    for (uint32_t y = 0; y < params.height; ++y) {
        for (uint32_t x = 0; x < params.width; ++x) {
            const uint16_t sample = source.Next(x, y);
            std::memcpy(&plain[y * plenar::RleRowStride(params) + x * sample_bytes], &sample, sample_bytes);
        }
    }
    return plain;
}

void ExpectSameRows(const RleParams& params, const Bytes& a, const Bytes& b) {
    for (uint64_t y = 0; y < params.height; ++y) {
        const uint64_t row = y * plenar::RleRowStride(params);
        ASSERT_EQ(std::memcmp(&a[row], &b[row], plenar::RleTightRowBytes(params)), 0)
            << params.width << " x " << params.height << ", row " << y << ", bits " << params.bitdepth;
    }
}

// One plane through every coder and worker count, each way.
void ExpectAllAgree(const RleParams& params, Content content) {
    const Bytes plain = MakePlain(params, content, params.width * 131 + params.height);
    Bytes coded;
    Bytes decoded;
    // Mostly on this thread, as a batch costs far more than a small plane.
    static size_t turn = 0;
    constexpr uint32_t kWorkers[] = {0, 2, 0, 0, 0, 8, 0, 0, 0, 0, 0};
    for (const auto set : KernelSets()) {
        const ChosenKernels chosen(set);
        const Bytes result = Encode(params, plain, kWorkers[turn++ % 11]);
        const Bytes back = Decode(params, result, Bytes(plain.size(), 0xCD), kWorkers[turn++ % 11]);
        if (coded.empty()) {
            coded = result;
            decoded = back;
        }
        ASSERT_EQ(result, coded) << params.width << " x " << params.height << ", content " << content;
        ASSERT_EQ(back, decoded) << "padding included";
        ExpectSameRows(params, back, plain);
    }
}

TEST(PlaneCodec, WorkedBytesOfOneRow) {
    const RleParams params = {10, 1, 8, 0, 0};
    const Bytes plain = {50, 50, 50, 50, 50, 52, 54, 56, 58, 60};
    const Bytes coded = {0x01, 0xBF, 0xFF, 0xFC, 0xEF, 0xFF, 0xFF, 0xB0, 0xD3, 0x22, 0x47, 0x89, 0x20};
    for (const auto set : KernelSets()) {
        const ChosenKernels chosen(set);
        EXPECT_EQ(Encode(params, plain), coded);
        EXPECT_EQ(Decode(params, coded, Bytes(10)), plain);
    }
}

TEST(PlaneCodec, SizesOfFlatPlanesAndTheBound) {
    const RleParams hd = {1920, 1080, 8, 0, 0};
    for (const uint32_t workers : {0U, 2U, 8U}) {
        EXPECT_EQ(Encode(hd, Bytes(1920 * 1080, 255), workers).size(), 128U);
    }
    // One token of mode 0 for the whole band: 1 + 19 + 1 + 3 bits.
    EXPECT_EQ(Encode({1000, 1000, 8, 1, 0}, Bytes(1000000, 127)).size(), 8U + 6U);
    EXPECT_EQ(plenar::RleMaxCodedSize({4, 4, 8, 1, 0}), 1681U);
    EXPECT_EQ(plenar::RleMaxCodedSize({4, 4, 8, 1, 99}), 1681U);
    EXPECT_EQ(plenar::RleMaxCodedSize({7, 0, 8, 0, 0}), 1659U);
    EXPECT_EQ(plenar::RleMaxCodedSize({100, 5, 16, 0, 0}), 1659U + 5 * 238);
    // The dearest contents stay within it, and a band alone writes nothing behind its own.
    for (const uint32_t bitdepth : {8U, 16U}) {
        const RleParams params = {61, 37, bitdepth, 1, 0};
        const Bytes plain = MakePlain(params, kDearest);
        for (const auto set : KernelSets()) {
            const ChosenKernels chosen(set);
            const uint64_t bound = plenar::RleMaxCodedSize(params);
            Bytes dst(bound + 64, 0x5A);
            const uint64_t size =
                plenar::RleEncodePlane(Pool(0), params, plain.data(), plain.size(), dst.data(), bound);
            EXPECT_EQ(size, bound - plenar::RleHeadReserve + 8) << "the table of one band takes 8 bytes";
            EXPECT_EQ(Bytes(dst.end() - 64, dst.end()), Bytes(64, 0x5A));
        }
    }
}

TEST(PlaneCodec, ShortFormsEndAtTheirLimit) {
    // One sample: folded residual 19 or 20, 575 or 576, in mode 1.
    const auto stream_of = [](uint32_t bitdepth, int residual) {
        const int middle = bitdepth == 8 ? 127 : 32767;
        const auto sample = static_cast<uint16_t>(middle + residual);
        Bytes plain(bitdepth / 8);
        std::memcpy(plain.data(), &sample, plain.size());
        const Bytes coded = Encode({1, 1, bitdepth, 0, 0}, plain);
        return Bytes(coded.begin() + 8, coded.end());
    };
    EXPECT_EQ(stream_of(8, -10), (Bytes{0xFE, 0xC0}));          // 1 1 1 1111011
    EXPECT_EQ(stream_of(8, 10), (Bytes{0xC2, 0x80}));           // 1 1 0 00010100
    EXPECT_EQ(stream_of(16, -288), (Bytes{0xFF, 0xEF, 0xC0}));  // 1 1 1 111111110111111
    EXPECT_EQ(stream_of(16, 288), (Bytes{0xC0, 0x48, 0x00}));   // 1 1 0 0000001001000000
    EXPECT_EQ(stream_of(8, -128), (Bytes{0xDF, 0xE0}));         // 1 1 0 11111111
    EXPECT_EQ(stream_of(8, 0), (Bytes{0x60}));                  // 0 1 1 000
}

class PlaneCodecAgreement : public testing::TestWithParam<std::tuple<uint32_t, bool>> {};

TEST_P(PlaneCodecAgreement, AllCodersGiveTheTwinsBytesAndDecodeExactly) {
    const uint32_t bitdepth = std::get<0>(GetParam());
    const bool padded = std::get<1>(GetParam());
    const uint8_t limits[] = {0, 1, 2, 16, 255};
    const uint32_t heights[] = {1, 2, 3, 7, 16, 40};
    size_t turn = 0;
    const auto params_of = [&](uint32_t width, uint32_t height) {
        const uint32_t stride = padded ? width * bitdepth / 8 + 1 + width % 5 : 0;
        return RleParams{width, height, bitdepth, limits[turn++ % 5], stride};
    };
    for (uint32_t width = 1; width <= 70; ++width) {
        for (int content = 0; content < kContents; ++content) {
            for (int i = 0; i < 2; ++i) {
                ExpectAllAgree(params_of(width, heights[turn % 6]), static_cast<Content>(content));
            }
        }
    }
    for (int content = 0; content < kContents; ++content) {
        ExpectAllAgree(params_of(1920, 40), static_cast<Content>(content));
        ExpectAllAgree(params_of(333, 300), static_cast<Content>(content));
        ExpectAllAgree(params_of(16, 16), static_cast<Content>(content));
    }
    ExpectAllAgree(params_of(1920, 1080), kMatte);
    RleParams one_band = params_of(1920, 1080);
    one_band.band_limit = 1;
    ExpectAllAgree(one_band, kLongRuns);
}

INSTANTIATE_TEST_SUITE_P(Layouts, PlaneCodecAgreement, testing::Combine(testing::Values(8U, 16U), testing::Bool()));

TEST(PlaneCodec, PaddedRowsAreSpreadBandByBand) {
    // Two bands of three rows, two samples each; rows move up from the tight form, and what they don't cover stays.
    const RleParams params = {2, 6, 8, 2, 5};
    const Bytes plain = {1, 2, 9, 9, 9, 3, 4, 9, 9, 9, 5, 6, 9, 9, 9, 7, 8, 9, 9, 9, 10, 11, 9, 9, 9, 12, 13, 9, 9, 9};
    const Bytes expected = {1, 2, 3,  4,  5,  3,  4,  0, 0, 0, 5,  6,  0, 0, 0,
                            7, 8, 10, 11, 12, 10, 11, 0, 0, 0, 12, 13, 0, 0, 0};
    for (const auto set : KernelSets()) {
        const ChosenKernels chosen(set);
        EXPECT_EQ(Decode(params, Encode(params, plain), Bytes(30, 0)), expected);
    }
    // Bands of one row aren't spread, and nothing behind a row is touched.
    Bytes in_rows = plain;
    const RleParams single = {2, 6, 8, 255, 5};
    EXPECT_EQ(Decode(single, Encode(single, plain), Bytes(30, 9)), in_rows);
}

TEST(PlaneCodec, ParametersAndBuffersAreChecked) {
    Bytes plain(64);
    Bytes coded(4096);
    struct Case {
        RleParams params;
        uint64_t plain_size;
        uint64_t coded_short;  // bytes less than the bound
        const char* encode;
        const char* decode;
    };
    const char* const src = "src buffer is too small according to metadata";
    const char* const dst = "dst buffer is too small according to metadata";
    const Case cases[] = {
        {{0, 0, 9, 0, 0}, 64, 0, "Invalid width", "Invalid width"},
        {{8, 0, 9, 0, 0}, 64, 0, "Invalid height", "Invalid height"},
        {{8, 8, 9, 0, 1}, 64, 0, "only 8, and 16 bitdepth supported", "only 8, and 16 bitdepth supported"},
        {{8, 4, 16, 0, 15},
         64,
         0,
         "row_bytes is too small, it should be at least 16 according to params",
         "row_bytes is too small, it should be at least 16 according to params"},
        {{8, 4, 16, 0, 16}, 64, 0, "", ""},
        {{8, 8, 8, 0, 0}, 63, 0, src, dst},
        {{8, 8, 8, 0, 0}, 64, 1, dst, ""},
        // 2^31 bytes from row to row: the planned size wraps to 0, the true one doesn't.
        {{8, 2, 8, 0, 0x80000000}, 64, 0, src, dst},
        // 2^32 samples in a band: the planned bound wraps, and the picture doesn't fit either.
        {{0x10000, 0x10000, 8, 1, 0}, 64, 0, src, dst}};
    for (const Case& test : cases) {
        const uint64_t bound = test.params.height == 0 ? 1659 : plenar::RleMaxCodedSize(test.params);
        EXPECT_EQ(MessageOf([&] {
                      plenar::RleEncodePlane(Pool(0), test.params, plain.data(), test.plain_size, coded.data(),
                                             bound - test.coded_short);
                  }),
                  test.encode);
        Bytes plane = PlaneOf({}, {}, {});
        EXPECT_EQ(MessageOf([&] {
                      plenar::RleDecodePlane(Pool(2), test.params, plane.data(), plane.size(), plain.data(),
                                             test.plain_size);
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
    const Bytes plain = MakePlain(params, kDearest);
    const Bytes coded = Encode(params, plain);
    ASSERT_GT(coded.size(), 16777216U + 8);
    EXPECT_EQ(Decode(params, coded, Bytes(plain.size()), 2), plain);
}

}  // namespace
}  // namespace rle_tests
