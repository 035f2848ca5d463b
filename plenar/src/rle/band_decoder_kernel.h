// The fast part of the band decoder, for inclusion by the sources of the targets only; see lane_vector.h.
//
// The next bits of the stream are an index into a table that has whole short tokens, so that the way from one token to
// the next is a shift, a load and a shift. A token's samples are a ramp or a parabola, written as one vector, with
// more lanes than the run has: the surplus is overwritten by the runs that follow, and the loop stops before the band's
// end comes near enough to be passed.
#pragma once

#include "rle/band_decoder_plain.h"
#include "rle/lane_vector.h"
#include "rle/rle_codes.h"
#include "rle/rle_kernels.h"

namespace plenar {
namespace {

// The reader must stay in registers, which takes that nothing of the loop is a call.
#define RLE_INLINE [[gnu::always_inline]]

constexpr uint32_t kIndexBits = 12;
constexpr uint32_t kRunLanes = 16;  // the vector that takes a run; no run in the table is longer

// A token's beginning, up to the bits that say no more than a number; 0 if the token isn't in the table. One number,
// and the length lowest, as that is what the next token waits for.
struct TokenEntry {
    uint64_t packed = 0;

    constexpr TokenEntry() = default;
    constexpr TokenEntry(uint32_t length, uint32_t run, uint32_t mode)
        : packed(length | run << 8 | uint64_t{mode} << 63) {}

    constexpr TokenEntry With(uint64_t field, uint32_t place) const {
        TokenEntry entry = *this;
        entry.packed |= field << place;
        return entry;
    }

    static constexpr uint64_t kLengths = 0xFF;  // where the lengths of the sum of a few entries are

    uint32_t Length() const { return packed & 0x3F; }  // bits of the whole token
    uint32_t Run() const { return packed >> 8 & 0xFF; }
    uint32_t SecondOrder() const { return static_cast<uint32_t>(static_cast<int64_t>(packed) >> 63); }  // as a mask
    // 8 bits: what the residual adds to the last sample and to the last difference over the whole run, and the place of
    // what it adds to each sample.
    uint32_t ToLast() const { return packed >> 16 & 0xFF; }
    uint32_t ToDifference() const { return packed >> 24 & 0xFF; }
    uint32_t Shape() const { return packed >> 32 & 0xFFFF; }
    // 16 bits: the ones in front of the short code, kRaw for a raw value.
    uint32_t Ones() const { return packed >> 16 & 0xFF; }
};

template <class Sample>
struct TokenTable {
    static constexpr uint32_t kSize = 1U << kIndexBits;
    static constexpr uint32_t kRaw = 16;
    TokenEntry entries[kSize] = {};

    constexpr TokenTable() {
        for (uint32_t index = 0; index < kSize; ++index) {
            entries[index] = EntryOf(index << (32 - kIndexBits));
        }
    }

    // The bits of a value that stand in no table, behind its flag and its ones.
    static constexpr uint32_t LowBits(uint32_t ones) {
        return ones == kRaw ? RleSample<Sample>::kBits : RleSample<Sample>::kShortBits;
    }

    // `bits` has the index at its top.
    static constexpr TokenEntry EntryOf(uint32_t bits) {
        const uint32_t zeros = RleLeadingZeros(bits << 1);
        const uint32_t run_end = 2 * zeros + 2;
        if (run_end >= kIndexBits) {
            return {};
        }
        const uint32_t run = bits << (1 + zeros) >> (31 - zeros);
        const uint32_t value_bits = bits << run_end;
        const bool is_short = value_bits >> 31 != 0;
        const uint32_t ones = is_short ? RleLeadingZeros(~(value_bits << 1)) : kRaw;
        const uint32_t known = run_end + 1 + (is_short ? ones + 1 : 0);
        const uint32_t low_bits = LowBits(ones);
        if (run >= kRunLanes || known > kIndexBits || (is_short && ones > 8)) {
            return {};
        }
        const uint32_t length = known + low_bits;
        const uint32_t mode = bits >> 31;
        const TokenEntry entry(length, run, mode);
        if (sizeof(Sample) > 1) {
            return entry.With(ones, 16);
        }
        if (length > kIndexBits) {
            return {};
        }
        const uint32_t low = bits << known >> (32 - low_bits);
        const uint8_t residual = RleUnfold(static_cast<uint8_t>(is_short ? (ones << low_bits) + low : low));
        const uint32_t to_last = residual * (mode == 0 ? run : run * (run + 1) / 2);
        const uint32_t to_difference = residual * (mode == 0 ? 1 : run);
        return entry.With(to_last & 0xFF, 16).With(to_difference & 0xFF, 24).With(mode << 8 | residual, 32);
    }
};

template <class Sample>
constexpr TokenTable<Sample> kTokenTable;

template <class Sample>
struct RunVector;
template <>
struct RunVector<uint8_t> {
    typedef uint8_t Type __attribute__((vector_size(kRunLanes)));
};
template <>
struct RunVector<uint16_t> {
    typedef uint16_t Type __attribute__((vector_size(2 * kRunLanes)));
};

// The steps of a run: what its samples lie above the last one before it, for each unit of slope and of curve.
struct RunSteps {
    using Lanes = RunVector<uint16_t>::Type;
    static constexpr Lanes kLinear = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    static constexpr Lanes kTriangular = {1, 3, 6, 10, 15, 21, 28, 36, 45, 55, 66, 78, 91, 105, 120, 136};
};

// The same for bytes, as multiples by all slopes and behind them by all curves: vectors have no product of bytes, and a
// load is cheaper than what stands in for one.
constexpr uint32_t kCurves = 256;
struct StepMultiples {
    alignas(kRunLanes) uint8_t lanes[2 * kCurves][kRunLanes] = {};

    constexpr StepMultiples() {
        for (uint32_t factor = 0; factor < 256; ++factor) {
            for (uint32_t i = 0; i < kRunLanes; ++i) {
                lanes[factor][i] = static_cast<uint8_t>(factor * (i + 1));
                lanes[kCurves + factor][i] = static_cast<uint8_t>(factor * ((i + 1) * (i + 2) / 2));
            }
        }
    }
};

constexpr StepMultiples kStepMultiples;
constexpr uint8_t kTriangle[kRunLanes] = {0, 1, 3, 6, 10, 15, 21, 28, 36, 45, 55, 66, 78, 91, 105, 120};

RLE_INLINE inline RunVector<uint8_t>::Type MultiplesOf(uint32_t factor) {
    RunVector<uint8_t>::Type lanes;
    std::memcpy(&lanes, kStepMultiples.lanes[factor], sizeof lanes);
    return lanes;
}

// A run's samples are last + k * slope + k * (k + 1) / 2 * curve, for k from 1 on.
template <class Sample>
struct Run {
    using Lanes = typename RunVector<Sample>::Type;

    static constexpr uint64_t kStretch = uint64_t{4} * kRunLanes;  // few runs are longer
    static constexpr uint64_t kWorthFilling = uint64_t{16} * kRunLanes;

    Sample last;
    Sample slope;
    Sample curve;

    // The first kRunLanes samples, whatever the run.
    RLE_INLINE void Fill(Lanes& lanes) const {
        if constexpr (sizeof(Sample) == 1) {
            lanes = MultiplesOf(slope) + MultiplesOf(kCurves + curve) + last;
        } else {
            lanes = last + slope * RunSteps::kLinear + curve * RunSteps::kTriangular;
        }
    }

    // Writes kRunLanes samples.
    RLE_INLINE void StoreShort(uint8_t* dst) const {
        Lanes lanes;
        Fill(lanes);
        std::memcpy(dst, &lanes, sizeof lanes);
    }

    // Writes `count` samples, fewer than kRunLanes.
    void StoreExact(uint8_t* dst, uint64_t count) const {
        Lanes lanes;
        Fill(lanes);
        std::memcpy(dst, &lanes, count * sizeof(Sample));
    }

    // Writes `count` samples, kRunLanes at least, and may write kStretch more.
    RLE_INLINE void StoreLoosely(uint8_t* dst, uint64_t count) const {
        if (curve != 0 || count >= kWorthFilling) {
            StoreLong(dst, count);
            return;
        }
        Lanes lanes;
        Fill(lanes);
        const Sample step = static_cast<Sample>(slope * kRunLanes);
        for (uint64_t done = 0; done < count; done += kStretch) {
            for (uint64_t i = 0; i < kStretch; i += kRunLanes) {
                std::memcpy(dst + (done + i) * sizeof(Sample), &lanes, sizeof lanes);
                lanes += step;
            }
        }
    }

    // Writes `count` samples, kRunLanes at least.
    [[gnu::noinline]] void StoreLong(uint8_t* dst, uint64_t count) const {
        if (curve != 0) {
            StoreCurved(dst, count);
        } else if (slope == 0 && (sizeof(Sample) == 1 || last % 256 == last / 256)) {
            std::memset(dst, last & 0xFF, count * sizeof(Sample));
        } else {
            StoreRamp(dst, count);
        }
    }

    void StoreRamp(uint8_t* dst, uint64_t count) const {
        Lanes lanes;
        Fill(lanes);
        const Sample step = static_cast<Sample>(slope * kRunLanes);
        uint64_t done = 0;
        for (; count - done >= kRunLanes; done += kRunLanes) {
            std::memcpy(dst + done * sizeof(Sample), &lanes, sizeof lanes);
            lanes += step;
        }
        // The last lanes are written again together with the rest.
        lanes -= static_cast<Sample>(slope * (kRunLanes - (count - done)));
        std::memcpy(dst + (count - kRunLanes) * sizeof(Sample), &lanes, sizeof lanes);
    }

    void StoreCurved(uint8_t* dst, uint64_t count) const {
        Sample sample = last;
        Sample difference = slope;
        for (uint64_t i = 0; i < count; ++i) {
            difference = static_cast<Sample>(difference + curve);
            sample = static_cast<Sample>(sample + difference);
            std::memcpy(dst + i * sizeof(Sample), &sample, sizeof sample);
        }
    }
};

struct Token {
    uint32_t length;
    uint64_t run;
    uint32_t second_order;  // as a mask
    uint32_t residual;
};

template <class Sample>
class BandDecoder {
public:
    explicit BandDecoder(RleDecodeState& band)
        : state(band),
          stream(band.stream),
          position(band.position),
          dst(band.dst),
          dst_end(band.dst + band.remaining * sizeof(Sample)),
          last(band.prev1),
          difference(band.prev1 - band.prev2) {}

    void Decode() {
        bool sound = true;
        if (HasWindow()) {
            bits = Window();
        }
        while (sound && HasWindow() && dst_end - dst >= kRoom) {
            if (!DecodeShortTokens()) {
                bits = Window();
                sound = DecodeAnyToken();
                bits = Window();
            }
        }
        while (sound && HasWindow() && dst != dst_end) {
            bits = Window();
            sound = DecodeAnyToken();
        }
        state.position = position;
        state.remaining -= static_cast<uint64_t>(dst - state.dst) / sizeof(Sample);
        state.dst = dst;
        state.prev1 = last;
        state.prev2 = last - difference;
    }

private:
    static constexpr uint32_t kWindowBits = 57;
    static constexpr uint32_t kLongestShort = sizeof(Sample) == 1 ? kIndexBits : kIndexBits + 16;
    // Tokens of a pass, before and after the next window is loaded: early, as that takes a while. It has to cover those
    // that are decoded meanwhile and those of the next pass.
    static constexpr uint32_t kTokensBefore = sizeof(Sample) == 1 ? 2 : 0;
    static constexpr uint32_t kTokensAfter = 1;
    static_assert((kTokensBefore + 2 * kTokensAfter) * kLongestShort <= kWindowBits);
    static constexpr int64_t kRoom =
        static_cast<int64_t>(sizeof(Sample)) * kRunLanes * (kTokensBefore + kTokensAfter + 1);

    // A pass of the loop consumes 7 bytes at most before it needs another window, and 7 more before the last.
    RLE_INLINE bool HasWindow() const { return position / 8 + RleDecodeWindow <= state.readable; }

    RLE_INLINE uint64_t Window() const {
        uint64_t word;
        std::memcpy(&word, stream + position / 8, sizeof word);
        return RleBigEndian(word) << (position % 8);
    }

    RLE_INLINE void Consume(uint32_t count) {
        bits <<= count;
        position += count;
    }

    // The next few tokens, as long as they are in the table. With false, `bits` has to be loaded again.
    RLE_INLINE bool DecodeShortTokens() {
        if (!DecodeShortTokens(kTokensBefore)) {
            return false;
        }
        const uint64_t ahead = Window();
        const uint64_t ahead_position = position;
        if (!DecodeShortTokens(kTokensAfter)) {
            return false;
        }
        bits = ahead << (position - ahead_position);
        return true;
    }

    RLE_INLINE bool DecodeShortTokens(uint32_t count) {
        uint64_t sum = 0;
        for (uint32_t i = 0; i < count; ++i) {
            const TokenEntry entry = kTokenTable<Sample>.entries[bits >> (64 - kIndexBits)];
            if (entry.packed == 0) {
                position += sum & TokenEntry::kLengths;
                return false;
            }
            sum += entry.packed;
            DecodeShortToken(entry);
        }
        position += sum & TokenEntry::kLengths;
        return true;
    }

    RLE_INLINE void DecodeShortToken(TokenEntry entry) {
        if constexpr (sizeof(Sample) == 1) {
            bits <<= entry.Length();
            const uint32_t slope = difference & entry.SecondOrder();
            const auto lanes = MultiplesOf(slope & 0xFF) + MultiplesOf(entry.Shape()) + static_cast<Sample>(last);
            std::memcpy(dst, &lanes, sizeof lanes);
            last += slope * entry.Run() + entry.ToLast();
            difference = slope + entry.ToDifference();
            dst += entry.Run();
        } else {
            const uint32_t residual = ResidualOf(entry);
            bits <<= entry.Length();
            const Run<Sample> run = NextRun(residual, entry.SecondOrder());
            run.StoreShort(dst);
            Advance(run, entry.Run(), kTriangle[entry.Run()]);
        }
    }

    RLE_INLINE uint32_t ResidualOf(TokenEntry entry) const {
        const bool raw = entry.Ones() == TokenTable<Sample>::kRaw;
        const uint32_t low_bits = TokenTable<Sample>::LowBits(entry.Ones());
        const uint32_t low = static_cast<uint32_t>(bits << (entry.Length() - low_bits) >> (64 - low_bits));
        const uint32_t high = raw ? 0U : entry.Ones() << low_bits;
        return RleUnfold(high + low);
    }

    RLE_INLINE Run<Sample> NextRun(uint32_t residual, uint32_t second_order) const {
        const uint32_t slope = residual ^ ((residual ^ difference) & second_order);
        return {static_cast<Sample>(last), static_cast<Sample>(slope), static_cast<Sample>(residual & second_order)};
    }

    RLE_INLINE void Advance(const Run<Sample>& run, uint64_t count, uint64_t triangle) {
        const auto n = static_cast<uint32_t>(count);
        last += run.slope * n + run.curve * static_cast<uint32_t>(triangle);
        difference = run.slope + run.curve * n;
        dst += count * sizeof(Sample);
    }

    // One token of any kind. Leaves it, with false, if that is what the plain decoder must see to.
    RLE_INLINE bool DecodeAnyToken() {
        Token token;
        const uint64_t room = static_cast<uint64_t>(dst_end - dst) / sizeof(Sample);
        if (!Parse(token) || token.run > room) {
            return false;
        }
        Consume(token.length);
        const Run<Sample> run = NextRun(token.residual, token.second_order);
        if (token.run >= kRunLanes) {
            if (room - token.run >= run.kStretch) {
                run.StoreLoosely(dst, token.run);
            } else {
                run.StoreLong(dst, token.run);
            }
        } else if (room >= kRunLanes) {
            run.StoreShort(dst);
        } else {
            run.StoreExact(dst, token.run);
        }
        Advance(run, token.run, token.run * (token.run + 1) / 2);
        return true;
    }

    // False for a token that might not be whole in the window, a run of 0 among them.
    RLE_INLINE bool Parse(Token& token) const {
        constexpr uint32_t kMostZeros = (kWindowBits - 3 - 16) / 2;
        const uint64_t run_bits = bits << 1;
        if (run_bits >> (63 - kMostZeros) == 0) {
            return false;
        }
        const uint32_t zeros = static_cast<uint32_t>(__builtin_clzll(run_bits));
        token.second_order = 0U - static_cast<uint32_t>(bits >> 63);
        token.run = run_bits << zeros >> (63 - zeros);
        const uint32_t run_end = 2 * zeros + 2;
        const uint64_t value_bits = bits << run_end;
        const uint64_t code = value_bits << 1;
        uint32_t folded = static_cast<uint32_t>(code >> (64 - RleSample<Sample>::kBits));
        token.length = run_end + 1 + RleSample<Sample>::kBits;
        if (value_bits >> 63 != 0) {
            const uint32_t ones = RleLeadingOnes(code >> 55);
            const uint32_t low_bits = RleSample<Sample>::kShortBits;
            folded = (ones << low_bits) + static_cast<uint32_t>(code << (ones + 1) >> (64 - low_bits));
            token.length = run_end + 1 + ones + 1 + low_bits;
        }
        token.residual = RleUnfold(folded);
        return true;
    }

    RleDecodeState& state;
    const uint8_t* stream;
    uint64_t position;  // bits consumed
    uint64_t bits = 0;  // the next bits of the stream, from the top
    uint8_t* dst;
    uint8_t* dst_end;
    uint32_t last;        // sample; what stands above its width means nothing
    uint32_t difference;  // of the last two samples; likewise
};

template <class Sample>
void DecodeTokens(RleDecodeState& state) {
    BandDecoder<Sample>(state).Decode();
}

#undef RLE_INLINE

}  // namespace
}  // namespace plenar
