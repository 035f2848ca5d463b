// Vector kernels at work on what they are made for. What they make would be the same if all of it went to narrower
// ones.
#include "simd/ways.h"

#include <gtest/gtest.h>

#include "testing/band_kernel_cases.h"
#include "testing/exact_buffer.h"
#include "testing/row_kernel_cases.h"
#include "testing/sample_model.h"

namespace plenar {

WayCounts wayCounts;

}  // namespace plenar

namespace plenar_test {
namespace {

using plenar::Way;

// How often the widest vectors took a way during the call, and how wide they are.
struct Taken {
    size_t width = 0;
    uint64_t times = 0;
};

template <class Call>
Taken WidestTaken(Way way, const Call& call) {
    std::memset(plenar::wayCounts, 0, sizeof plenar::wayCounts);
    call();
    for (size_t width = std::size(plenar::wayCounts); width-- > 0;) {
        if (const uint64_t times = plenar::wayCounts[width][static_cast<size_t>(way)]; times != 0) {
            return {width, times};
        }
    }
    return {};
}

TEST(Ways, RowsAreMovedInRoundsOfTheTargetsOwn) {
    constexpr size_t kUnits = 2000;
    const Bytes content = Noise(64 * kUnits, 1);
    const ExactBuffer parts[] = {{content, kBehindGuard},
                                 {content, kBehindGuard},
                                 {content, kBehindGuard},
                                 {content, kBehindGuard}};  // at whole lines
    for (const RowKernelCase& kernelCase : RowKernelCases()) {
        size_t narrower = 0;
        for (const plenar::Target target : plenar::RunnableTargets()) {
            const auto [width, times] = WidestTaken(Way::Round, [&] {
                uint8_t* const first = (kernelCase.targetBits[0] == 0 ? parts[0] : parts[2]).data();
                uint8_t* const second = kernelCase.targetBits[1] == 0 ? nullptr : parts[3].data();
                kernelCase.run(plenar::RowKernelsFor(target), kernelCase,
                               {{parts[0].data(), parts[1].data()}, {first, second}}, kUnits);
            });
            const std::string name = kernelCase.kernel + " of " + NameOf(target) + ", order " + kernelCase.orderName;
            EXPECT_EQ(times != 0, target != plenar::Target::Plain) << name;
            EXPECT_TRUE(width > narrower || width == 0) << name;
            narrower = width;
        }
    }
}

TEST(Ways, BandsAreCodedInBlocksAndBatches) {
    constexpr uint32_t kSamples = 64 * 1000;
    const struct {
        Way way;
        Bytes content;
        uint32_t samples;  // for which it is taken once
        size_t narrowest;  // vectors that have it
    } cases[] = {{Way::FlatBlock, {7}, 64, 16},
                 {Way::RunsTogether, Noise(2 * kSamples, 1), 64, 32},
                 {Way::TokenPairs, Noise(2 * kSamples, 1), 8, 32}};
    Bytes coded(8 * kSamples);
    for (const uint32_t depth : {8U, 16U}) {
        const plenar::RleParams band = {kSamples, 1, depth, 1, 0};
        for (const auto& [way, content, samples, narrowest] : cases) {
            const Bytes plain = Repeated(content, kSamples * depth / 8);
            for (const plenar::Target target : plenar::RunnableTargets()) {
                const size_t width = WidestTaken(Way::Round, [&] {
                                         plenar::RowKernelsFor(target).copy(plain.data(), coded.data(), plain.size());
                                     }).width;
                const auto taken = WidestTaken(way, [&] {
                    BandKernelsFor(target, depth).encode_band({band, plain.data(), coded.data()});
                });
                const bool hasWay = width >= narrowest;
                EXPECT_EQ(taken.width, hasWay ? width : 0) << NameOf(target);
                EXPECT_GE(taken.times, hasWay ? kSamples / samples * 9 / 10 : 0) << NameOf(target);
            }
        }
    }
}

}  // namespace
}  // namespace plenar_test
