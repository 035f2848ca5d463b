#include "rle/band_table.h"

#include "rle/index_list.h"

namespace plenar {
namespace {

constexpr uint32_t kCountBits = 8;

}  // namespace

uint64_t RleWriteBandTable(const RleBandTable& table, uint8_t* dst) {
    RleBitWriter writer(dst);
    writer.Put(table.count, kCountBits);
    RleWriteIndexList(writer, table.sizes, table.count);
    RleWriteIndexList(writer, table.rows, table.count);
    return static_cast<uint64_t>(writer.Flush() - dst);
}

RleDefect RleReadBandTable(const uint8_t* src, uint64_t size, RleBandTable& table) {
    RleBitReader reader(src, size);
    table.count = static_cast<uint32_t>(reader.Read(kCountBits));
    if (reader.PastEnd()) {
        return RleDefect::StreamPastEnd;
    }
    RleDefect defect = RleReadIndexList(reader, table.sizes, table.count);
    if (defect == RleDefect::None) {
        defect = RleReadIndexList(reader, table.rows, table.count);
    }
    table.bytes = (reader.Position() + 7) / 8;
    return defect;
}

}  // namespace plenar
