// Damaged and hostile planes: each kind of damage has its message, all coders agree on it, and nothing outside the
// buffers is touched (which the address sanitizer sees).
#include <gtest/gtest.h>

#include "testing/coded_planes.h"
#include "testing/message_of.h"
#include "testing/plane_bits.h"
#include "testing/targets.h"

namespace plenar_test {
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

// Groups of entries in a table that states `count` bands.
Bytes Groups(uint32_t count, const std::vector<uint64_t>& runs) {
    PlaneBits bits;
    bits.Bits(count, 8);
    for (const uint64_t run : runs) {
        bits.RunLength(run);
        bits.Value(16777211, 24, false);
    }
    bits.Bits(0, 64);
    return bits.Get();
}

// Empty runs between the first sample and 199 others.
Bytes ManyEmptyRuns(int count) {
    PlaneBits bits;
    bits.Token(0, 1, 0, 8, true);
    for (int i = 0; i < count; ++i) {
        bits.Token(0, 0, 0, 8, false);
    }
    bits.Token(0, 199, 0, 8, true);
    return bits.Get();
}

TEST(DamagedPlane, EachKindHasItsMessageInEveryForm) {
    const RleParams params = {20, 10, 8, 0, 0};
    const Bytes half = Flat(100);
    Bytes longTail = half;
    longTail.resize(100, 0xFF);

    const struct {
        const char* name;
        const char* message;
        Bytes plane;
    } cases[] = {
        {"sound", "", PlaneOf({3, 3}, {5, 5}, {half, half})},
        {"a last size beyond the end", "", PlaneOf({3, 9000000}, {5, 5}, {half, half})},
        {"a last size of nothing", "", PlaneOf({3, 0}, {5, 5}, {half, half})},
        {"nothing", kPastEnd, {}},
        {"table cut off at once", kPastEnd, {1}},
        {"table cut off", kPastEnd, {1, 0xBF, 0xFF, 0xFC, 0xEF, 0xFF, 0xFF}},
        {"a stream missing", kPastEnd, PlaneOf({3, 3}, {5, 5}, {half})},
        {"a stream cut off", kPastEnd, PlaneOf({3, 3}, {5, 5}, {half, {half[0]}})},
        {"stream cut off in an empty run", kPastEnd,
         PlaneOf({3}, {10}, {half, Bytes(1000, 0)})},  // stops in the middle of an empty run
        {"run past the first band", kRunPastBand, PlaneOf({3, 3}, {5, 5}, {Flat(101), half})},
        {"long run past the last band", kRunPastBand, PlaneOf({3, 3}, {5, 5}, {half, Flat(uint64_t{1} << 32)})},
        {"run past a band before a busy one", kRunPastBand, PlaneOf({3, 100}, {5, 5}, {Flat(101), longTail})},
        {"run past a band after a busy one", kRunPastBand, PlaneOf({100, 3}, {5, 5}, {longTail, Flat(101)})},
        {"an empty run for each sample", "", PlaneOf({9}, {10}, {ManyEmptyRuns(200)})},
        {"one empty run too many", kEmptyRuns, PlaneOf({9}, {10}, {ManyEmptyRuns(201)})},
        {"group past the list", kGroupPastList, Groups(2, {3})},
        {"second group past the list", kGroupPastList, Groups(3, {2, 2})},
        {"group of more than 32 bits", kGroupPastList, Groups(255, {(uint64_t{1} << 32) + 1})},
        {"third band starts past the end", kBandStart, PlaneOf({3, 4, 0}, {5, 5, 0}, {half, half})},
        {"second band starts past the end", kBandStart, PlaneOf({0xFFFFFF, 3}, {5, 5}, {half, half})},
        {"a last size of nothing before most of the plane", "", PlaneOf({0, 0}, {0, 10}, {ManyEmptyRuns(200)})},
        {"2^32 rows too many", kRowSum, PlaneOf({3, 3}, {~0U, 11}, {half, half})},
        {"a row too few", kRowSum, PlaneOf({3, 3}, {5, 4}, {half, half})},
        {"a row too many", kRowSum, PlaneOf({3, 3}, {5, 6}, {half, half})},
        {"many rows too many", kRowSum, PlaneOf({3, 3}, {5, 16000000}, {half, half})},
        {"no rows", kRowSum, PlaneOf({3}, {0}, {half})}};
    for (const auto& [name, message, plane] : cases) {
        OnEachTarget([&, &name = name, &message = message, &plane = plane](const char* target) {
            for (const uint32_t rows : {0U, 1U, 3U}) {
                for (const uint32_t workers : {0U, 2U}) {
                    EXPECT_EQ(MessageOf([&] { DecodePlane(params, plane, Bytes(200), workers, rows); }), message)
                        << name << " on " << target << ", by " << rows << " rows";
                }
            }
        });
    }
}

// Which band's defect is told doesn't depend on who finds one first.
TEST(DamagedPlane, TheFirstBandsDefectIsTold) {
    const Bytes plane = PlaneOf({2, 2, 3}, {1, 1, 8}, {Flat(20), Flat(21), {0, 0, 0}});
    for (const uint32_t workers : {0U, 2U, 8U}) {
        EXPECT_EQ(MessageOf([&] { DecodePlane({20, 10, 8, 0, 0}, plane, Bytes(200), workers); }), kRunPastBand);
    }
    // Busy bands may be decoded two at a time: the second one's defect is found long before the first one's.
    const Bytes emptyRuns = ManyEmptyRuns(1101);
    const auto size = static_cast<uint32_t>(emptyRuns.size());
    const Bytes busy = PlaneOf({size, 3}, {1, 1}, {emptyRuns, Flat(1101), Bytes(100, 0)});
    EXPECT_EQ(MessageOf([&] { DecodePlane({1100, 2, 8, 0, 0}, busy, Bytes(2200)); }), kEmptyRuns);
}

TEST(DamagedPlane, NoBandsLeaveTheTargetAlone) {
    for (const uint32_t workers : {0U, 2U}) {
        EXPECT_EQ(DecodePlane({20, 10, 8, 0, 0}, {0, 0xFF, 0xFF}, Bytes(200, 0xCD), workers), Bytes(200, 0xCD));
    }
    const uint8_t bytes[] = {0, 7};
    EXPECT_EQ(plenar::RleStatedBands(bytes, 0), 0U);
    EXPECT_EQ(plenar::RleStatedBands(bytes, 2), 0U);
    EXPECT_EQ(plenar::RleStatedBands(bytes + 1, 1), 7U);
}

// Claims of many bands on the same bytes cost no more than these bytes and the picture.
TEST(DamagedPlane, ManyBandsOverTheSameBytesEndSoon) {
    const std::vector<uint32_t> sizes(255, 0), rows(255, 1);
    const Bytes zeros = PlaneOf(sizes, rows, {Bytes(1 << 20, 0)});
    EXPECT_EQ(MessageOf([&] { DecodePlane({1, 255, 8, 0, 0}, zeros, Bytes(255)); }), kEmptyRuns);
    const Bytes shortRuns = PlaneOf(sizes, rows, {Bytes(4000, 0x55)});
    EXPECT_EQ(MessageOf([shortRuns] { DecodePlane({1000, 255, 8, 0, 0}, shortRuns, Bytes(255000)); }), kPastEnd);
}

}  // namespace
}  // namespace plenar_test
