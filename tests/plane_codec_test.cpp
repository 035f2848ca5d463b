// Encoding and decoding of whole planes: exact bytes, sizes and limits, and planes that no encoder of ours writes.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <random>

#include "base/bytes.h"
#include "rle/rle_kernels.h"
#include "table.h"
#include "testing/coded_planes.h"
#include "testing/message_of.h"
#include "testing/plane_bits.h"
#include "testing/targets.h"

namespace plenar_test {
namespace {

using plenar::RleBandKernels;
using plenar::RleDecodeState;

std::atomic<uint32_t> pairs = 0;

}  // namespace

// The linker has calls of RleActiveKernels end up in the first of these, and calls of the second at the real one.
const RleBandKernels& CountingKernels(uint32_t bitdepth) asm("__wrap_" PLENAR_ACTIVE_KERNELS);
const RleBandKernels& RealKernels(uint32_t bitdepth) asm("__real_" PLENAR_ACTIVE_KERNELS);

namespace {

template <uint32_t Bitdepth>
RleDecodeState& CountPair(RleDecodeState& first, RleDecodeState& second) {
    pairs += first.position == 0 ? 1 : 0;
    return RealKernels(Bitdepth).decode_tokens_of_two(first, second);
}

}  // namespace

const RleBandKernels& CountingKernels(uint32_t bitdepth) {
    thread_local RleBandKernels kernels;
    kernels = RealKernels(bitdepth);
    kernels.decode_tokens_of_two = bitdepth == 8 ? CountPair<8> : CountPair<16>;
    return kernels;
}

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

TEST(PlaneCodec, StaysWithinItsBound) {
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
            plenar::WorkPool pool(0);
            const uint64_t size = plenar::RleEncodePlane(pool, params, plain.data(), plain.size(), dst.data(), bound);
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

// Tokens of all lengths, up to the longest that can be read at once and beyond, behind any number of bits of a byte and
// behind others in the same window. Their last bit counts.
TEST(PlaneCodec, LongTokensBeginAtAnyBit) {
    for (uint32_t run = 1; run <= 1U << 20; run *= 2) {
        for (uint32_t shift = 0; shift < (run < 1U << 16 ? 16 : 8); ++shift) {
            PlaneBits bits;
            for (uint32_t i = 0; i < shift; ++i) {
                bits.Token(0, 1, 2, 16, false);
            }
            bits.Token(0, run, 0xFFFF, 16, false);
            const Bytes plane = PlaneOf({0}, {1}, {bits.Get(), Bytes(30)});
            OnEachTarget([&](const char* target) {
                const Bytes samples = DecodePlane({shift + run, 1, 16, 1, 0}, plane, Bytes(2 * (shift + run)));
                EXPECT_EQ(plenar::LoadAs<uint16_t>(&samples[2 * shift]), static_cast<uint16_t>(shift - 1))
                    << target << ", " << shift << " tokens in front";
            });
        }
    }
}

// What decides: samples in a band, bands for each worker, and how short the runs are.
TEST(PlaneCodec, BusyBandsAreDecodedInPairs) {
    const struct {
        RleParams params;
        uint32_t flatRows;
        uint32_t workers;
        uint32_t pairs;
    } cases[] = {{{1024, 4, 8, 4, 0}, 0, 0, 2}, {{1023, 4, 8, 4, 0}, 0, 0, 0}, {{1024, 5, 8, 5, 0}, 0, 2, 2},
                 {{1024, 4, 8, 4, 0}, 0, 2, 2}, {{1024, 5, 8, 5, 0}, 0, 3, 0}, {{1024, 1, 8, 1, 0}, 0, 0, 0},
                 {{64, 64, 16, 4, 0}, 0, 0, 2}, {{64, 64, 8, 4, 0}, 60, 0, 2}, {{64, 64, 8, 4, 0}, 61, 0, 0}};
    for (const auto& [params, flatRows, workers, expected] : cases) {
        Bytes plain = Noise(plenar::RlePlainSize(params), 1);
        std::fill_n(plain.begin(), flatRows * params.width, uint8_t{7});
        pairs = 0;
        EXPECT_EQ(DecodePlane(params, EncodePlane(params, plain), Bytes(plain.size()), workers), plain);
        EXPECT_EQ(pairs, expected) << params.width << " x " << params.height << ", " << workers << " workers";
    }
}

TEST(PlaneCodec, ShortFormsEndAtTheirLimit) {
    // One sample: folded residual 19 or 20, 575 or 576, in mode 1.
    const auto streamOf = [](const Bytes& sample) {
        const Bytes coded = EncodePlane({1, 1, 8 * static_cast<uint32_t>(sample.size()), 0, 0}, sample);
        return Bytes(coded.begin() + 8, coded.end());
    };
    EXPECT_EQ(streamOf({127 - 10}), (Bytes{0xFE, 0xC0}));          // 1 1 1 1111011
    EXPECT_EQ(streamOf({127 + 10}), (Bytes{0xC2, 0x80}));          // 1 1 0 00010100
    EXPECT_EQ(streamOf({0xDF, 0x7E}), (Bytes{0xFF, 0xEF, 0xC0}));  // -288: 1 1 1 111111110111111
    EXPECT_EQ(streamOf({0x1F, 0x81}), (Bytes{0xC0, 0x48, 0x00}));  // 288: 1 1 0 0000001001000000
    EXPECT_EQ(streamOf({255}), (Bytes{0xDF, 0xE0}));               // -128: 1 1 0 11111111
    EXPECT_EQ(streamOf({127}), (Bytes{0x60}));                     // 0 1 1 000
}

TEST(PlaneCodec, PaddedRowsAreSpreadBandByBand) {
    // Two bands of three rows, two samples each; rows move up from the tight form, and what they don't cover stays.
    const RleParams params = {2, 6, 8, 2, 5};
    const Bytes plain = {1, 2, 9, 9, 9, 3, 4, 9, 9, 9, 5, 6, 9, 9, 9, 7, 8, 9, 9, 9, 10, 11, 9, 9, 9, 12, 13, 9, 9, 9};
    const Bytes expected = {1, 2, 3,  4,  5,  3,  4,  0, 0, 0, 5,  6,  0, 0, 0,
                            7, 8, 10, 11, 12, 10, 11, 0, 0, 0, 12, 13, 0, 0, 0};
    EXPECT_EQ(DecodePlane(params, EncodePlane(params, plain), Bytes(30, 0)), expected);
    // Bands of one row aren't spread, and nothing behind a row is touched.
    const RleParams single = {2, 6, 8, 255, 5};
    EXPECT_EQ(DecodePlane(single, EncodePlane(single, plain), Bytes(30, 9)), plain);
}

TEST(PlaneCodec, ParametersAndBuffersAreChecked) {
    plenar::WorkPool pool(0);
    Bytes plain(64);
    Bytes coded(4096);
    for (const TableRow& row : ReadTable("plane_refusals.tsv")) {
        SCOPED_TRACE(row.Text("name"));
        const RleParams params = {row.Number("width"), row.Number("height"), row.Number("bitdepth"),
                                  row.Byte("band_limit"), row.Number("row_bytes")};
        const uint32_t size = row.Number("plainSize");
        const uint32_t room = row.Number("codedSize");
        EXPECT_EQ(MessageOf([&] { RleEncodePlane(pool, params, plain.data(), size, coded.data(), room); }),
                  row.Text("encode"));
        const uint8_t noBands = 0;
        EXPECT_EQ(MessageOf([&] { RleDecodePlane(pool, params, &noBands, 1, plain.data(), size); }),
                  row.Text("decode"));
    }
    const RleParams params = {8, 8, 8, 0, 0};
    EXPECT_EQ(MessageOf([&] { plenar::RleEncodePlane(pool, params, nullptr, 64, coded.data(), 4096); }),
              "src and buffers required to be non-null");
    EXPECT_EQ(MessageOf([&] { plenar::RleDecodePlane(pool, params, coded.data(), 9, nullptr, 64); }),
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

}  // namespace
}  // namespace plenar_test
