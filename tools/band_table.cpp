#include "band_table.h"

#include <algorithm>

namespace plenar_tool {

namespace {

constexpr size_t kMaxTableBytes = 1659;  // 255 bands with the longest codes
constexpr uint32_t kFirstRunningValue = 0x7FFFFF;

class BitReader {
public:
    explicit BitReader(std::span<const uint8_t> source) : bytes_(source) {}

    // Zeros behind the end.
    uint32_t Bit() {
        const uint64_t index = position_++;
        return PastEnd() ? 0 : (uint32_t{bytes_[index / 8]} >> (7 - index % 8)) & 1U;
    }

    uint32_t Bits(uint32_t count) {
        uint32_t value = 0;
        while (count-- > 0) {
            value = value << 1 | Bit();
        }
        return value;
    }

    // The length of a run of bits `value`, with the other bit that ends it.
    uint32_t CountWhile(uint32_t value) {
        uint32_t count = 0;
        while (Bit() == value && !PastEnd()) {
            ++count;
        }
        return count;
    }

    uint64_t Position() const { return position_; }
    bool PastEnd() const { return position_ > uint64_t{bytes_.size()} * 8; }

private:
    std::span<const uint8_t> bytes_;
    uint64_t position_ = 0;
};

// Exponential Golomb: as many zeros as the number has bits behind its first one.
uint64_t ReadRunLength(BitReader& reader) {
    const uint32_t zeros = std::min(reader.CountWhile(0), 32U);
    return uint64_t{1} << zeros | reader.Bits(zeros);
}

uint32_t ReadDelta(BitReader& reader) {
    const bool isShort = reader.Bit() == 1;
    const uint32_t folded = isShort ? reader.CountWhile(1) << 10 | reader.Bits(10) : reader.Bits(24);
    return folded % 2 == 0 ? folded / 2 : 0U - (folded + 1) / 2;
}

// Runs of entries that each differ from the one before by the same number, modulo 2^32.
std::vector<uint32_t> ReadList(BitReader& reader, size_t count) {
    std::vector<uint32_t> entries;
    uint32_t value = kFirstRunningValue;
    while (entries.size() < count && !reader.PastEnd()) {
        const uint64_t run = ReadRunLength(reader);
        const uint32_t delta = ReadDelta(reader);
        for (uint64_t i = 0; i < run && entries.size() < count; ++i) {
            entries.push_back(value += delta);
        }
    }
    entries.resize(count);
    return entries;
}

}  // namespace

BandTable ReadBandTable(std::span<const uint8_t> plane, uint32_t height) {
    BitReader reader(plane.first(std::min(plane.size(), kMaxTableBytes)));
    const uint32_t count = reader.Bits(8);
    const std::vector<uint32_t> sizes = ReadList(reader, count);
    const std::vector<uint32_t> rows = ReadList(reader, count);
    BandTable table;
    if (reader.PastEnd()) {
        table.problem = "the band table doesn't end within the plane";
        return table;
    }
    table.tableBytes = static_cast<uint32_t>((reader.Position() + 7) / 8);

    uint64_t end = table.tableBytes;
    uint64_t rowSum = 0;
    for (uint32_t i = 0; i < count; ++i) {
        table.bands.push_back({rows[i], sizes[i]});
        end += sizes[i];
        rowSum += rows[i];
    }
    if (rowSum != height) {
        table.problem = "the bands have " + std::to_string(rowSum) + " rows, the plane " + std::to_string(height);
    } else if (end > plane.size()) {
        table.problem = "the bands end at byte " + std::to_string(end) + " of a plane of " +
                        std::to_string(plane.size()) + " bytes";
    }
    return table;
}

}  // namespace plenar_tool
