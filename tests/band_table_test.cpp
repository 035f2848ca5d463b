// The rle index table, bit by bit.
#include "rle/band_table.h"

#include <gtest/gtest.h>

#include "rle/index_list.h"
#include "testing/message_of.h"
#include "testing/plane_bits.h"

namespace plenar_test {
namespace {

using plenar::RleBandTable;
using plenar::RleDefect;

using Entries = std::vector<uint32_t>;

Bytes WriteList(const Entries& entries) {
    Bytes bytes(plenar::RleHeadReserve);
    plenar::RleBitWriter writer(bytes.data());
    plenar::RleWriteIndexList(writer, entries.data(), static_cast<uint32_t>(entries.size()));
    bytes.resize(static_cast<size_t>(writer.Flush() - bytes.data()));
    return bytes;
}

// The entries that come back, and the bits that were read for them.
std::pair<Entries, uint64_t> ReadList(const Bytes& bytes, uint32_t count) {
    plenar::RleBitReader reader(bytes.data(), bytes.size());
    Entries entries(count);
    EXPECT_EQ(plenar::RleReadIndexList(reader, entries.data(), count), RleDefect::None);
    return {entries, reader.Position()};
}

TEST(BandTable, ShortFormEndsAt13311AndLossBeginsAtHalfTheRange) {
    const struct {
        uint32_t entry;  // after the running value's start
        size_t bits;
        uint32_t readBack;
    } cases[] = {{0x7FFFFF + 6655, 1 + 1 + 23, 0x7FFFFF + 6655},  // folded 13310
                 {0x7FFFFF - 6656, 1 + 1 + 23, 0x7FFFFF - 6656},  // folded 13311
                 {0x7FFFFF + 6656, 1 + 1 + 24, 0x7FFFFF + 6656},
                 {0, 26, 0},
                 {16777214, 26, 16777214},
                 {16777215, 26, 16777215U - 16777216U},
                 {16777216 + 100, 26, 100}};
    for (const auto& [entry, bits, readBack] : cases) {
        EXPECT_EQ(ReadList(WriteList({entry}), 1), (std::pair{Entries{readBack}, uint64_t{bits}})) << entry;
    }
    // A step down by more than half the range is one up, and what it leads to comes back larger.
    EXPECT_EQ(ReadList(WriteList({16000000, 5}), 2).first, (Entries{16000000, 5 + (1 << 24)}));
    EXPECT_EQ(MessageOf([] { WriteList({8388607 + 25165824}); }),
              "values greater than 24bit is not supported by rle index table");
}

TEST(BandTable, LargestTableFitsTheReserve) {
    RleBandTable table{};
    table.count = 255;
    for (uint32_t i = 0; i < 255; ++i) {
        table.sizes[i] = i % 2 * 8000000;
        table.rows[i] = i % 2 == 0 ? 20000 + i : i;
    }
    Bytes bytes(plenar::RleHeadReserve);
    EXPECT_EQ(plenar::RleWriteBandTable(table, bytes.data()), 1659U);
    RleBandTable read{};
    ASSERT_EQ(plenar::RleReadBandTable(bytes.data(), bytes.size(), read), RleDefect::None);
    EXPECT_EQ(read.bytes, 1659U);
    EXPECT_TRUE(std::equal(read.sizes, read.sizes + read.count, table.sizes, table.sizes + 255));
    EXPECT_TRUE(std::equal(read.rows, read.rows + read.count, table.rows, table.rows + 255));
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
}  // namespace plenar_test
