// The fast band coder, for inclusion by the sources of the targets only; see lane_vector.h.
//
// 64 samples at a time are classed in vectors, and compared with their neighbours to give one bit for each sample that
// starts a run. The walk over those bits then costs one step a token, and nothing for the samples within a run. The
// stream doesn't show the blocks: the pending run lives on across them, and across rows.
#pragma once

#include <algorithm>

#include "rle/lane_vector.h"
#include "rle/rle_codes.h"
#include "rle/rle_params.h"

namespace plenar {
namespace {

constexpr uint32_t kBlock = 64;
constexpr uint32_t kHistory = 2;

// Appends bits with few steps for each token. Only the low `used` bits of `acc` are still to be written; what stands
// above them has been, and drops out at the top in time.
struct TokenWriter {
    uint8_t* out;
    const uint8_t* end;
    uint64_t acc;
    uint32_t used;

    void Append(uint64_t bits, uint32_t length) {
        acc = acc << length | bits;
        used += length;
    }

    // Writes whole bytes out, so that 57 bits can be appended again. At least one bit must have been appended. Without
    // kExact there must be room for 8 bytes.
    template <bool kExact>
    void Drain() {
        const uint64_t word = RleBigEndian(acc << (64 - used));
        const uint32_t bytes = used / 8;
        if constexpr (kExact) {
            std::memcpy(out, &word, bytes);
        } else {
            std::memcpy(out, &word, sizeof word);
        }
        out += bytes;
        used %= 8;
    }

    template <bool kExact>
    void Put(RleToken token) {
        if (token.length > 32) {
            Append(token.bits >> 32, token.length - 32);
            Drain<kExact>();
            Append(token.bits & 0xFFFFFFFF, 32);
        } else {
            Append(token.bits, token.length);
        }
        Drain<kExact>();
    }
};

// The samples of a block, classed.
template <class Sample>
struct Block {
    uint64_t starts;  // bit i: sample i is not of the class of the one before it
    uint64_t modes;   // bit i: the mode of sample i
    alignas(kVectorBytes) Sample values[kBlock];
};

template <class Sample>
struct ValueCodes {
    static constexpr uint32_t kCount = RleSample<Sample>::kShortLimit;
    RleCode entries[kCount + 1] = {};

    constexpr ValueCodes() {
        for (uint32_t value = 0; value < kCount; ++value) {
            entries[value] = RleValueCode<Sample>(value);
        }
        entries[kCount] = {0, RleSample<Sample>::kBits + 1};
    }
};

template <class Sample>
constexpr ValueCodes<Sample> kValueCodes;

template <class Sample>
inline RleCode CodeOf(uint32_t value) {
    constexpr uint32_t kCount = ValueCodes<Sample>::kCount;
    const RleCode code = kValueCodes<Sample>.entries[value < kCount ? value : kCount];
    return {value < kCount ? code.bits : value, code.length};
}

// The token of a run within a block.
template <class Sample>
inline RleToken ShortToken(uint32_t mode, uint32_t run, uint32_t value) {
    const RleCode code = CodeOf<Sample>(value);
    const uint32_t length = 2 * (32 - static_cast<uint32_t>(__builtin_clz(run))) + code.length;
    return {uint64_t{mode} << (length - 1) | run << code.length | code.bits, length};
}

template <class Sample>
class BandEncoder {
public:
    BandEncoder(uint8_t* dst, const uint8_t* end) : writer{dst, end, 0, 0} {}

    // Codes `count` samples in a row, which follow the ones coded before.
    void EncodeSpan(const uint8_t* src, uint64_t count) {
        // The history of the first samples isn't in front of them.
        uint64_t done = EncodeStaged(src, count);
        while (count - done >= kBlock) {
            if (run_value == 0 && run_mode == 0 && run_count >= kWorthSkipping) {
                const uint64_t flat = FlatSamples(src + done * sizeof(Sample), count - done);
                run_count += static_cast<uint32_t>(flat);
                done += flat;
                if (count - done < kBlock) {
                    break;
                }
            }
            EncodeBlock(src + done * sizeof(Sample), kBlock);
            done += kBlock;
        }
        KeepHistory(src, count);
        if (done < count) {
            std::memcpy(staging, src + (done - kHistory) * sizeof(Sample), (count - done + kHistory) * sizeof(Sample));
            EncodeBlock(staging + kHistory * sizeof(Sample), static_cast<uint32_t>(count - done));
        }
    }

    // Writes the last token and returns the place behind the stream.
    uint8_t* Finish() {
        if (run_count != 0) {
            PutPending<true>();
        }
        const uint64_t word = RleBigEndian(writer.used == 0 ? 0 : writer.acc << (64 - writer.used));
        const uint32_t bytes = (writer.used + 7) / 8;
        std::memcpy(writer.out, &word, bytes);
        return writer.out + bytes;
    }

private:
    static constexpr uint32_t kWorthSkipping = 32;
    // What one block can put out, a pending run of any length and the width of the last store included.
    static constexpr int64_t kBlockRoom = kBlock * (RleSample<Sample>::kBits + 3) / 8 + 8 + 8 + 1;

    uint64_t EncodeStaged(const uint8_t* src, uint64_t count) {
        const uint32_t lanes = count < kBlock ? static_cast<uint32_t>(count) : kBlock;
        std::memcpy(staging, history, sizeof history);
        std::memcpy(staging + sizeof history, src, lanes * sizeof(Sample));
        EncodeBlock(staging + sizeof history, lanes);
        return lanes;
    }

    void KeepHistory(const uint8_t* src, uint64_t count) {
        if (count == 1) {
            history[0] = history[1];
            std::memcpy(&history[1], src, sizeof(Sample));
        } else {
            std::memcpy(history, src + (count - kHistory) * sizeof(Sample), sizeof history);
        }
    }

    // How many whole blocks' samples from `src` on are the same as the one before them.
    static uint64_t FlatSamples(const uint8_t* src, uint64_t count) {
        Sample last;
        std::memcpy(&last, src - sizeof last, sizeof last);
        const Vector<Sample> flat = Splat(last);
        uint64_t same = 0;
        for (; count - same >= kBlock; same += kBlock) {
            auto equal = LoadLanes<Sample>(src + same * sizeof(Sample)) == flat;
            for (uint32_t i = kLanes<Sample>; i < kBlock; i += kLanes<Sample>) {
                equal &= LoadLanes<Sample>(src + (same + i) * sizeof(Sample)) == flat;
            }
            if (!AllSet(equal)) {
                break;
            }
        }
        return same;
    }

    void EncodeBlock(const uint8_t* src, uint32_t count) {
        Block<Sample> block;
        Classify(src, block);
        if (count < kBlock) {
            block.starts &= (uint64_t{1} << count) - 1;
            last_values = Splat(block.values[count - 1]);
        }
        last_mode = block.modes >> (count - 1) & 1;
        if (block.starts == 0) {
            run_count += count;
        } else if (writer.end - writer.out >= kBlockRoom) {
            PutRuns<false>(block, count);
        } else {
            PutRuns<true>(block, count);
        }
    }

    void Classify(const uint8_t* src, Block<Sample>& block) {
        constexpr size_t kVectors = kBlock / kLanes<Sample>;
        SignedVector<Sample> second_order[kVectors];
        SignedVector<Sample> same_value[kVectors];
        for (size_t i = 0; i < kVectors; ++i) {
            const uint8_t* place = src + i * kVectorBytes;
            const auto x = LoadLanes<Sample>(place);
            const auto prev1 = LoadLanes<Sample>(place - sizeof(Sample));
            const auto prev2 = LoadLanes<Sample>(place - 2 * sizeof(Sample));
            const auto d1 = x - prev1;
            const auto z1 = Fold(d1);
            const auto z2 = Fold(d1 - prev1 + prev2);
            const auto value = z1 < z2 ? z1 : z2;
            second_order[i] = (value == z2) & (z1 != 0);
            same_value[i] = value == ShiftIn<Sample>(last_values, value);
            last_values = value;
            StoreLanes(reinterpret_cast<uint8_t*>(block.values) + i * kVectorBytes, value);
        }
        block.modes = MaskOf64<Sample>(second_order);
        block.starts = ~MaskOf64<Sample>(same_value) | (block.modes ^ (block.modes << 1 | last_mode));
    }

    static Vector<Sample> Fold(Vector<Sample> d) {
        return (d + d) ^ reinterpret_cast<Vector<Sample>>(reinterpret_cast<SignedVector<Sample>>(d) < 0);
    }

    template <bool kExact>
    void PutRuns(const Block<Sample>& block, uint32_t count) {
        uint64_t starts = block.starts;
        uint32_t start = static_cast<uint32_t>(__builtin_ctzll(starts));
        run_count += start;
        if (run_count != 0) {
            PutPending<kExact>();
        }
        for (starts &= starts - 1; starts != 0; starts &= starts - 1) {
            const uint32_t next = static_cast<uint32_t>(__builtin_ctzll(starts));
            const RleToken token = ShortToken<Sample>(block.modes >> start & 1, next - start, block.values[start]);
            writer.Append(token.bits, token.length);
            writer.template Drain<kExact>();
            start = next;
        }
        run_value = block.values[start];
        run_mode = block.modes >> start & 1;
        run_count = count - start;
    }

    template <bool kExact>
    void PutPending() {
        writer.template Put<kExact>(RleMakeToken(run_mode, run_count, CodeOf<Sample>(run_value)));
    }

    TokenWriter writer;
    Vector<Sample> last_values{};  // the last lane is the value of the last sample classed
    uint64_t last_mode = 0;        // and this its mode; before the first sample both are those of a middle sample
    uint32_t run_value = 0;
    uint32_t run_mode = 0;
    uint32_t run_count = 0;  // of the pending run; 0 only before the first sample
    Sample history[kHistory] = {RleSample<Sample>::kMiddle, RleSample<Sample>::kMiddle};
    uint8_t staging[(kHistory + kBlock) * sizeof(Sample)] = {};
};

template <class Sample>
uint64_t EncodeBand(const RleParams& band, const uint8_t* src, uint8_t* dst) {
    const uint64_t samples = uint64_t{band.width} * band.height;
    const uint64_t stride = RleRowStride(band);
    BandEncoder<Sample> encoder(dst, dst + RleMaxStreamSize(band, samples));
    if (stride == RleTightRowBytes(band)) {
        encoder.EncodeSpan(src, samples);
    } else {
        for (uint32_t row = 0; row < band.height; ++row) {
            encoder.EncodeSpan(src + row * stride, band.width);
        }
    }
    return static_cast<uint64_t>(encoder.Finish() - dst);
}

}  // namespace
}  // namespace plenar
