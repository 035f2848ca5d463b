// Damaged and hostile planes: each kind of damage has its message, all coders agree on it, and nothing outside the
// buffers is touched (which the address sanitizer sees).
#include <gtest/gtest.h>

#include <algorithm>

#include "rle_fixture.h"

namespace rle_tests {
namespace {

using plenar::RleParams;

constexpr const char* kPastEnd = "rle stream runs past the end of the coded plane";
constexpr const char* kRunPastBand = "rle run passes the end of its band";
constexpr const char* kEmptyRuns = "rle band has more empty runs than samples";
constexpr const char* kGroupPastList = "rle index list group passes the end of its list";
constexpr const char* kBandStart = "rle band starts past the end of the coded plane";
constexpr const char* kRowSum = "rle band rows do not add up to the height of the plane";

Bytes Flat(uint64_t run) {
    PlaneBits bits;
    bits.Token(0, run, 0, 8, true);
    return bits.Get();
}

// A group of `run` entries in a table that states `count` bands.
Bytes Group(uint32_t count, uint64_t run) {
    PlaneBits bits;
    bits.Bits(count, 8);
    bits.RunLength(run);
    bits.Value(16777211, 24, false);
    bits.Bits(0, 64);
    return bits.Get();
}

TEST(DamagedPlane, EachKindHasItsMessageInEveryForm) {
    const RleParams params = {20, 10, 8, 0, 0};
    const Bytes half = Flat(100);
    PlaneBits zeros_between;  // one sample, then an empty run for each sample, and one more
    zeros_between.Token(0, 1, 0, 8, true);
    for (int i = 0; i < 201; ++i) {
        zeros_between.Bits(0, 33);
        zeros_between.Bits(0, 33);
        zeros_between.Value(0, 8, false);
    }
    zeros_between.Token(0, 199, 0, 8, true);
    Bytes long_tail = half;
    long_tail.resize(100, 0xFF);

    struct Case {
        const char* message;
        Bytes plane;
    };
    const Case cases[] = {
        {"", PlaneOf({3, 3}, {5, 5}, {half, half})},
        {kPastEnd, {}},
        {kPastEnd, {1}},
        {kPastEnd, {1, 0xBF, 0xFF, 0xFC, 0xEF, 0xFF, 0xFF}},
        {kPastEnd, PlaneOf({3, 3}, {5, 5}, {half})},
        {kPastEnd, PlaneOf({3, 3}, {5, 5}, {half, {half[0]}})},
        {kPastEnd, PlaneOf({3}, {10}, {half, Bytes(1000, 0)})},  // stops in the middle of an empty run
        {kRunPastBand, PlaneOf({3, 3}, {5, 5}, {Flat(101), half})},
        {kRunPastBand, PlaneOf({3, 3}, {5, 5}, {half, Flat(uint64_t{1} << 32)})},
        {kRunPastBand, PlaneOf({3, 100}, {5, 5}, {Flat(101), long_tail})},
        {kRunPastBand, PlaneOf({100, 3}, {5, 5}, {long_tail, Flat(101)})},
        {kEmptyRuns, PlaneOf({9}, {10}, {zeros_between.Get()})},
        {kGroupPastList, Group(2, 3)},
        {kGroupPastList, Group(255, (uint64_t{1} << 32) + 1)},
        {kBandStart, PlaneOf({3, 4, 0}, {5, 5, 0}, {half, half})},
        {kBandStart, PlaneOf({0xFFFFFF, 3}, {5, 5}, {half, half})},
        {kRowSum, PlaneOf({3, 3}, {5, 4}, {half, half})},
        {kRowSum, PlaneOf({3, 3}, {5, 6}, {half, half})},
        {kRowSum, PlaneOf({3, 3}, {5, 16000000}, {half, half})},
        {kRowSum, PlaneOf({3}, {0}, {half})}};
    for (const Case& test : cases) {
        for (const auto set : KernelSets()) {
            const ChosenKernels chosen(set);
            for (const uint32_t workers : {0U, 2U}) {
                EXPECT_EQ(MessageOf([&] { Decode(params, test.plane, Bytes(200), workers); }), test.message)
                    << &test - cases;
            }
        }
    }
}

// Which band's defect is told doesn't depend on who finds one first.
TEST(DamagedPlane, TheFirstBandsDefectIsTold) {
    const Bytes plane = PlaneOf({2, 2, 3}, {1, 1, 8}, {Flat(20), Flat(21), {0, 0, 0}});
    for (const uint32_t workers : {0U, 2U, 8U}) {
        EXPECT_EQ(MessageOf([&] { Decode({20, 10, 8, 0, 0}, plane, Bytes(200), workers); }), kRunPastBand);
    }
}

TEST(DamagedPlane, NoBandsLeaveTheTargetAlone) {
    for (const uint32_t workers : {0U, 2U}) {
        EXPECT_EQ(Decode({20, 10, 8, 0, 0}, {0, 0xFF, 0xFF}, Bytes(200, 0xCD), workers), Bytes(200, 0xCD));
    }
    const uint8_t bytes[] = {0, 7};
    EXPECT_EQ(plenar::RleStatedBands(bytes, 0), 0U);
    EXPECT_EQ(plenar::RleStatedBands(bytes, 2), 0U);
    EXPECT_EQ(plenar::RleStatedBands(bytes + 1, 1), 7U);
}

// A thousand bands' worth of claims on one stretch of bytes costs no more than the picture.
TEST(DamagedPlane, BandsOverOneStretchOfZerosEndSoon) {
    const Bytes plane = PlaneOf(std::vector<uint32_t>(255, 0), std::vector<uint32_t>(255, 1), {Bytes(1 << 20, 0)});
    EXPECT_EQ(MessageOf([&] { Decode({1, 255, 8, 0, 0}, plane, Bytes(255)); }), kEmptyRuns);
}

TEST(DamagedPlane, RandomDamageEndsTheSameInEveryCoder) {
    Random random(3);
    int refused = 0;
    for (int turn = 0; turn < 4000; ++turn) {
        const uint32_t bitdepth = turn % 2 == 0 ? 8 : 16;
        const RleParams params = {1 + random() % 90, 1 + random() % 20, bitdepth,
                                  static_cast<uint8_t>(1 + random() % 6), turn % 5 == 0 ? 200U : 0U};
        Bytes plain(plenar::RlePlainSize(params));
        const uint32_t busy = 1 + random() % 20;
        uint8_t last = 0;
        std::generate(plain.begin(), plain.end(),
                      [&] { return last = random() % busy == 0 ? static_cast<uint8_t>(random()) : last; });
        Bytes coded = Encode(params, plain);
        for (uint32_t hits = 1 + random() % 3; hits > 0; --hits) {
            // Mostly behind the table, so that the streams are reached.
            const size_t place = random() % 8 == 0 ? random() % 9 : random() % coded.size();
            coded[place] = static_cast<uint8_t>(coded[place] ^ 1U << random() % 8);
        }
        if (random() % 4 == 0) {
            coded.resize(random() % coded.size());
        }
        std::string expected;
        Bytes decoded;
        for (const auto set : KernelSets()) {
            const ChosenKernels chosen(set);
            Bytes result;
            const std::string message =
                MessageOf([&] { result = Decode(params, coded, Bytes(plain.size(), 0xCD), turn % 7 == 0 ? 2 : 0); });
            if (set == plenar::RleKernelSet::kPlain) {
                expected = message;
                decoded = result;
                refused += message.empty() ? 0 : 1;
            }
            ASSERT_EQ(message, expected) << turn;
            ASSERT_EQ(result, decoded) << turn;
        }
    }
    EXPECT_GT(refused, 400);
    EXPECT_LT(refused, 3900);
}

}  // namespace
}  // namespace rle_tests
