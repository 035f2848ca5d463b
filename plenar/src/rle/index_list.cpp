#include "rle/index_list.h"

#include <algorithm>
#include <bit>

#include "base/exceptions.h"
#include "rle/rle_codes.h"

namespace plenar {
namespace {

constexpr uint32_t kFirstRunningValue = 0x7FFFFF;
constexpr uint32_t kRawBits = 24;
constexpr uint32_t kShortBits = 10;
constexpr uint32_t kShortLimit = (kRawBits - kShortBits - 1) << kShortBits;
constexpr int32_t kHalfRange = 1 << (kRawBits - 1);

uint32_t FoldedDelta(uint32_t value, uint32_t running) {
    // The difference wraps at 32 bits before it is reduced to 24.
    int32_t delta = static_cast<int32_t>(value - running);
    if (delta >= kHalfRange) {
        delta -= 2 * kHalfRange;
    } else if (delta < -kHalfRange) {
        delta += 2 * kHalfRange;
    }
    return RleFold(static_cast<uint32_t>(delta));
}

void PutGroup(RleBitWriter& writer, uint32_t run, uint32_t folded) {
    if (folded >= 1U << kRawBits) {
        throw out_of_range("values greater than 24bit is not supported by rle index table");
    }
    const bool isShort = folded < kShortLimit;
    const RleCode code = isShort ? RleShortCode(folded, kShortBits) : RleCode{folded, kRawBits};
    writer.Put(run, 2 * static_cast<uint32_t>(std::bit_width(run)) - 1);
    writer.Put(isShort ? 1 : 0, 1);
    writer.Put(code.bits, code.length);
}

// One bits up to the first zero bit, without a limit.
uint64_t ReadLeadingOnes(RleBitReader& reader) {
    constexpr uint32_t kStep = 32;
    uint64_t total = 0;
    for (;;) {
        const uint32_t ones = static_cast<uint32_t>(std::countl_one(static_cast<uint32_t>(reader.Peek(kStep))));
        total += ones;
        if (ones < kStep) {
            reader.Skip(ones + 1);
            return total;
        }
        reader.Skip(kStep);
    }
}

uint32_t ReadFolded(RleBitReader& reader) {
    if (reader.Read(1) == 0) {
        return static_cast<uint32_t>(reader.Read(kRawBits));
    }
    const uint64_t hi = ReadLeadingOnes(reader);
    // Damaged lists can hold prefixes that don't fit; the value wraps at 32 bits then.
    return static_cast<uint32_t>((hi << kShortBits) + reader.Read(kShortBits));
}

}  // namespace

void RleWriteIndexList(RleBitWriter& writer, const uint32_t* values, uint32_t count) {
    uint32_t running = kFirstRunningValue;
    for (uint32_t first = 0; first < count;) {
        const uint32_t folded = FoldedDelta(values[first], running);
        uint32_t next = first;
        while (next < count && FoldedDelta(values[next], running) == folded) {
            running = values[next++];
        }
        PutGroup(writer, next - first, folded);
        first = next;
    }
}

RleDefect RleReadIndexList(RleBitReader& reader, uint32_t* out, uint32_t count) {
    uint32_t running = kFirstRunningValue;
    for (uint32_t filled = 0; filled < count;) {
        const uint64_t run = RleReadRunLength(reader);
        const uint32_t step = RleUnfold(ReadFolded(reader));
        // Also what ends the loop for empty groups: each consumes bits.
        if (reader.PastEnd()) {
            return RleDefect::StreamPastEnd;
        }
        if (run > count - filled) {
            return RleDefect::GroupPastList;
        }
        for (uint64_t i = 0; i < run; ++i) {
            running += step;
            out[filled++] = running;
        }
    }
    return RleDefect::None;
}

}  // namespace plenar
