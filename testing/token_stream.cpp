#include "testing/token_stream.h"

#include "testing/plane_bits.h"

namespace plenar_test {
namespace {

// Many end at a boundary, just before it or just behind it: the band's end, or a vector or a block of some decoder.
uint64_t TakeRun(FuzzInput& input, uint64_t done, uint64_t left) {
    const uint8_t kind = input.Byte();
    uint64_t run = kind % 20;
    if (kind < 32) {
        run = left - kind % 2;
    } else if (kind >= 208) {
        run = (uint64_t{1} << kind % 16) + input.Byte();
    } else if (kind >= 160) {
        run = 1U + input.Byte();
    } else if (kind >= 112) {
        const uint64_t lanes = uint64_t{16} << kind % 3;
        run = lanes - done % lanes + kind / 3 % 3 - 1;
    }
    return std::min(left, std::max<uint64_t>(run, 1));
}

// A folded residual in any of the forms that a reader takes, also in one that no writer uses.
uint32_t TakeValue(FuzzInput& input, uint32_t depth, PlaneBits& bits) {
    const uint32_t k = depth / 2 - 2;
    const uint8_t form = input.Byte();
    const uint32_t value = (input.Byte() | (form < 64 ? 0U : uint32_t{input.Byte()} << 8)) % (1U << depth);
    if (form >= 250) {
        bits.NineOnes(value, depth);
        return (8U << k) + value % (1U << k);
    }
    const uint32_t limited = form < 32 ? value % 3 : form < 160 ? value % (9U << k) : value;
    bits.Value(limited, depth, form < 160);
    return limited;
}

}  // namespace

Bytes TakeStream(FuzzInput& input, uint32_t depth, uint64_t samples, Bytes& plain) {
    PlaneBits bits;
    uint32_t prev1 = (1U << (depth - 1)) - 1;
    uint32_t prev2 = prev1;
    uint64_t emptyRuns = samples;  // a band may have no more
    for (uint64_t done = 0; done < samples;) {
        const uint8_t kind = input.Byte();
        const uint64_t run = kind == 0xFF && emptyRuns > 0 ? 0 : TakeRun(input, done, samples - done);
        emptyRuns -= run == 0 ? 1 : 0;
        bits.Bits(kind, 1);
        kind < 0xFC ? bits.RunLength(run) : bits.LongRunLength(run);
        const uint32_t value = TakeValue(input, depth, bits);
        const uint32_t residual = value % 2 == 0 ? value / 2 : 0 - (value + 1) / 2;
        size_t end = plain.size();
        plain.resize(end + run * depth / 8);
        for (uint64_t i = 0; i < run; ++i) {
            const uint32_t next = residual + (kind % 2 == 0 ? prev1 : 2 * prev1 - prev2);
            prev2 = prev1;
            prev1 = next;
            for (uint32_t shift = 0; shift < depth; shift += 8) {
                plain[end++] = static_cast<uint8_t>(next >> shift);
            }
        }
        done += run;
    }
    return bits.Get();
}

}  // namespace plenar_test
