// The rle index table, bit by bit.
#include "rle/band_table.h"

#include <gtest/gtest.h>

#include <vector>

#include "rle/index_list.h"
#include "rle_fixture.h"

namespace rle_tests {
namespace {

using plenar::RleBandTable;
using plenar::RleDefect;

RleBandTable TableOf(const std::vector<uint32_t>& sizes, const std::vector<uint32_t>& rows) {
    RleBandTable table{};
    table.count = static_cast<uint32_t>(sizes.size());
    std::copy(sizes.begin(), sizes.end(), table.sizes);
    std::copy(rows.begin(), rows.end(), table.rows);
    return table;
}

Bytes WriteList(const std::vector<uint32_t>& entries) {
    Bytes bytes(plenar::RleHeadReserve);
    plenar::RleBitWriter writer(bytes.data());
    plenar::RleWriteIndexList(writer, entries.data(), static_cast<uint32_t>(entries.size()));
    bytes.resize(static_cast<size_t>(writer.Flush() - bytes.data()));
    return bytes;
}

TEST(BandTable, EqualDifferencesShareAGroup) {
    std::vector<uint32_t> rows(8, 68);
    rows.insert(rows.end(), 8, 67);
    PlaneBits expected;
    const auto group = [&expected](uint64_t run, uint32_t folded, bool shortForm) {
        expected.RunLength(run);
        expected.Value(folded, 24, shortForm);
    };
    group(1, 2 * (0x7FFFFF - 68) - 1, false);
    group(7, 0, true);
    group(1, 1, true);
    group(7, 0, true);
    EXPECT_EQ(WriteList(rows), expected.Get());
}

TEST(BandTable, ShortFormEndsAt13311AndLossBeginsAtHalfTheRange) {
    struct Case {
        uint32_t entry;  // after the running value's start
        size_t bits;
        uint32_t readBack;
    };
    const Case cases[] = {{0x7FFFFF + 6655, 1 + 1 + 23, 0x7FFFFF + 6655},  // folded 13310
                          {0x7FFFFF - 6656, 1 + 1 + 23, 0x7FFFFF - 6656},  // folded 13311
                          {0x7FFFFF + 6656, 1 + 1 + 24, 0x7FFFFF + 6656},
                          {0, 26, 0},
                          {16777214, 26, 16777214},
                          {16777215, 26, 16777215U - 16777216U},
                          {16777216 + 100, 26, 100}};
    for (const Case& entry : cases) {
        const Bytes bytes = WriteList({entry.entry});
        plenar::RleBitReader reader(bytes.data(), bytes.size());
        uint32_t read = 0;
        EXPECT_EQ(plenar::RleReadIndexList(reader, &read, 1), RleDefect::None);
        EXPECT_EQ(reader.Position(), entry.bits) << entry.entry;
        EXPECT_EQ(read, entry.readBack);
    }
    // A step down by more than half the range is one up, and what it leads to comes back larger.
    const Bytes steep = WriteList({16000000, 5});
    plenar::RleBitReader reader(steep.data(), steep.size());
    uint32_t read[2] = {};
    EXPECT_EQ(plenar::RleReadIndexList(reader, read, 2), RleDefect::None);
    EXPECT_EQ(std::vector<uint32_t>(read, read + 2), (std::vector<uint32_t>{16000000, 5 + (1 << 24)}));
    EXPECT_EQ(MessageOf([] { WriteList({8388607 + 25165824}); }),
              "values greater than 24bit is not supported by rle index table");
}

TEST(BandTable, LargestTableFitsTheReserve) {
    std::vector<uint32_t> sizes(255);
    std::vector<uint32_t> rows(255);
    for (uint32_t i = 0; i < 255; ++i) {
        sizes[i] = i % 2 * 8000000;
        rows[i] = i % 2 == 0 ? 20000 + i : i;
    }
    const RleBandTable table = TableOf(sizes, rows);
    Bytes bytes(plenar::RleHeadReserve);
    EXPECT_EQ(plenar::RleWriteBandTable(table, bytes.data()), 1659U);
    RleBandTable read;
    ASSERT_EQ(plenar::RleReadBandTable(bytes.data(), bytes.size(), read), RleDefect::None);
    EXPECT_EQ(read.bytes, 1659U);
    EXPECT_EQ(std::vector<uint32_t>(read.sizes, read.sizes + read.count), sizes);
    EXPECT_EQ(std::vector<uint32_t>(read.rows, read.rows + read.count), rows);
    EXPECT_EQ(plenar::RleReadBandTable(bytes.data(), bytes.size() - 1, read), RleDefect::StreamPastEnd);
}

TEST(BandTable, LongPrefixesAndFloodsEnd) {
    for (const uint8_t fill : {uint8_t{0x00}, uint8_t{0xFF}}) {
        Bytes bytes(100000, fill);
        bytes[0] = 255;
        RleBandTable table;
        EXPECT_EQ(plenar::RleReadBandTable(bytes.data(), bytes.size(), table), RleDefect::StreamPastEnd);
    }
    // 70 ones: a value of (70 << 10) + 5.
    PlaneBits bits;
    bits.Bits(1, 8);
    bits.Bits(3, 2);
    bits.Bits(~0ULL, 64);
    bits.Bits(0x7E, 7);
    bits.Bits(5, 10);
    bits.List({1});
    RleBandTable table;
    ASSERT_EQ(plenar::RleReadBandTable(bits.Get().data(), bits.Get().size(), table), RleDefect::None);
    EXPECT_EQ(table.sizes[0], 0x7FFFFF - (70 * 1024 + 6) / 2);
}

}  // namespace
}  // namespace rle_tests
