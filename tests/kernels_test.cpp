// Every kernel of every target against its plain twin. A failure names kernel, target, order, sample size and length.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstring>
#include <set>

#include "testing/band_kernel_cases.h"
#include "testing/exact_buffer.h"
#include "testing/fuzz_input.h"
#include "testing/plane_bits.h"
#include "testing/row_kernel_cases.h"
#include "testing/token_stream.h"

namespace plenar_test {
namespace {

constexpr size_t kMostUnits = 300;

// For more rounds of the widest kernels than those lengths have, and for copies of whole pages.
constexpr size_t kLongRows[] = {1021, 4096 + 129, 3 * 4096};

class RowKernel : public ::testing::TestWithParam<std::string> {};

// At both ends of accessible memory, close to it and apart from it, in either direction from source to target.
TEST_P(RowKernel, DoesWhatItsPlainTwinDoes) {
    const Bytes content = Noise(9973, 1);
    const auto check = [&](const RowKernelCase& kernelCase, size_t units) {
        for (const RowPlaces& places : {RowPlaces{kBeforeGuard, 0, kBeforeGuard, 0},
                                        {kBehindGuard, 0, kBehindGuard, 0},
                                        {kBeforeGuard, units % 64, kBehindGuard, units / 3 % 64}}) {
            ASSERT_EQ(RowKernelFailure(kernelCase, units, places, content), "");
        }
    };
    for (const RowKernelCase& kernelCase : RowKernelCases()) {
        if (kernelCase.kernel != GetParam()) {
            continue;
        }
        for (size_t units = 0; units <= kMostUnits; ++units) {
            ASSERT_NO_FATAL_FAILURE(check(kernelCase, units));
        }
        for (const size_t units : kLongRows) {
            ASSERT_NO_FATAL_FAILURE(check(kernelCase, units));
        }
    }
}

std::set<std::string> RowKernelNames() {
    std::set<std::string> names;
    for (const RowKernelCase& kernelCase : RowKernelCases()) {
        names.insert(kernelCase.kernel);
    }
    return names;
}

INSTANTIATE_TEST_SUITE_P(Kernels, RowKernel, ::testing::ValuesIn(RowKernelNames()),
                         [](const auto& test) { return test.param; });

class BandKernel : public ::testing::TestWithParam<BandKernelCase> {};

// A band of any tokens, or of samples at the ends of their range that are no stream at all. Every third stream is cut
// off, and every third has a byte changed.
Band MakeBand(uint32_t depth, uint32_t width, uint32_t height, uint32_t seed) {
    const Bytes choices = Noise(size_t{16} * width * height + 64, seed);
    FuzzInput input(choices.data(), choices.size());
    Band band = {{}, {}, width, height, seed % 4};
    band.stream = TakeStream(input, depth, uint64_t{width} * height, band.plain);
    if (seed % 8 == 0) {
        band.stream = choices;
        for (uint8_t& byte : band.plain) {
            byte = input.Flag() ? 0xFF : input.Flag() ? 0x80 : 0;
        }
    }
    if (seed % 3 == 1 && !band.stream.empty()) {
        band.stream[seed % band.stream.size()] ^= static_cast<uint8_t>(1U << seed % 8);
    } else if (seed % 3 == 2) {
        band.stream.resize(band.stream.size() * (seed % 16) / 16);
    }
    return band;
}

// A run that ends with its band, alone or behind a token for one sample. Behind the stream is a whole window, as the
// fast decoders leave what is nearer to the end than that.
Band MakeBandOfRun(uint32_t depth, uint32_t run, uint32_t mode, uint32_t value, bool hasTokenBefore) {
    PlaneBits bits;
    if (hasTokenBefore) {
        bits.Token(0, 1, 41, depth, false);
    }
    bits.Token(mode, run, value, depth, false);
    const uint32_t samples = run + (hasTokenBefore ? 1 : 0);
    return {Join({bits.Get(), Bytes(plenar::kRleDecodeWindow)}), Bytes(size_t{samples} * depth / 8, 0x5A), samples, 1,
            0};
}

TEST_P(BandKernel, DoesWhatItsPlainTwinDoes) {
    const uint32_t depth = GetParam().depth;
    uint32_t seed = 0;
    const auto check = [&](uint32_t width, uint32_t height) {
        const Band band = MakeBand(depth, width, height, ++seed);
        const Band other = MakeBand(depth, width + seed % 50, height, 7919 * seed);
        ASSERT_EQ(BandKernelFailure(GetParam(), band, other, seed), "") << "seed " << seed;
    };
    for (uint32_t width = 1; width <= kMostUnits; ++width) {
        for (const uint32_t height : {1U, 1U, 1U, 2U, 7U}) {
            ASSERT_NO_FATAL_FAILURE(check(width, height));
        }
        for (uint32_t variant = 0; variant < 8; ++variant) {
            const Band band = MakeBandOfRun(depth, width, variant % 2, variant / 2 % 2 * 5, variant >= 4);
            ASSERT_EQ(BandKernelFailure(GetParam(), band, band, kBeforeGuard), "")
                << "run of " << width << ", variant " << variant;
        }
    }
    for (uint32_t height = 1; height <= 40; ++height) {
        ASSERT_NO_FATAL_FAILURE(check(1920, height));
    }
}

INSTANTIATE_TEST_SUITE_P(Kernels, BandKernel, ::testing::ValuesIn(BandKernelCases()),
                         [](const auto& test) { return test.param.kernel; });

// How far a target's decoders get by themselves in short tokens, alone and as a pair: up to the last window of the
// stream, and all but the first one by as many as a window holds.
template <class Sample>
void CheckProgress(const plenar::RleBandKernels& kernels) {
    constexpr uint32_t kTokens = 4096;
    constexpr uint32_t kOfWindow = sizeof(Sample) == 1 ? 4 : 2;
    PlaneBits bits;
    for (uint32_t i = 0; i < kTokens; ++i) {
        bits.Token(0, 1, 2, 8 * sizeof(Sample), true);
    }
    const Bytes& stream = bits.Get();
    Bytes samples(2 * kTokens * sizeof(Sample));
    const auto start = plenar::RleStartBand<Sample>(stream.data(), stream.size(), samples.data(), 2 * kTokens);
    plenar::RleDecodeState alone = start, first = start, second = start;
    kernels.decode_tokens(alone);
    kernels.decode_tokens_of_two(first, second);
    for (const plenar::RleDecodeState& state : {alone, first, second}) {
        EXPECT_GT(state.position / 8 + plenar::kRleDecodeWindow, stream.size());
        EXPECT_EQ((2 * kTokens - state.remaining) % kOfWindow, 1U);
    }
}

TEST(VectorKernels, AreTheTargetsOwnAndLeaveNoOrdinaryToken) {
    using Functions = std::array<void*, sizeof(plenar::RowKernels) / sizeof(void*)>;
    const auto targets = plenar::RunnableTargets();
    for (size_t i = 1; i < targets.size(); ++i) {
        SCOPED_TRACE(NameOf(targets[i]));
        CheckProgress<uint8_t>(plenar::RleKernelsFor(targets[i]).of_8_bits);
        CheckProgress<uint16_t>(plenar::RleKernelsFor(targets[i]).of_16_bits);
        const auto narrower = std::bit_cast<Functions>(plenar::RowKernelsFor(targets[i - 1]));
        const auto own = std::bit_cast<Functions>(plenar::RowKernelsFor(targets[i]));
        for (size_t kernel = 0; kernel < own.size(); ++kernel) {
            EXPECT_NE(own.at(kernel), narrower.at(kernel)) << "row kernel " << kernel;
        }
        for (const BandKernelCase& kernelCase : BandKernelCases()) {
            plenar::RleBandKernels kernels = BandKernelsFor(targets[i - 1], kernelCase.depth);
            kernelCase.take(kernels, BandKernelsFor(targets[i], kernelCase.depth));
            EXPECT_NE(std::memcmp(&kernels, &BandKernelsFor(targets[i - 1], kernelCase.depth), sizeof kernels), 0)
                << kernelCase.kernel;
        }
    }
}

}  // namespace
}  // namespace plenar_test
