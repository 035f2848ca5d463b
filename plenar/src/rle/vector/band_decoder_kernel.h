// The band decoder in vectors.
//
// The next bits of the stream are an index into a table of whole short tokens, so that the way from one token to the
// next is a shift, a load and a shift. A token's samples are a ramp or a parabola. They are stored as one vector,
// mostly with more lanes than the run has: the runs that follow overwrite the surplus, and the loop stops before the
// surplus could pass the band's end. The sample that a run starts from is read back from there.
#pragma once

#include "base/bytes.h"
#include "rle/band_decoder_plain.h"
#include "rle/rle_codes.h"
#include "rle/rle_kernels.h"
#include "rle/vector/run_samples.h"
#include "rle/vector/token_table.h"

namespace plenar {
namespace {

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
        : state_(band),
          stream_(band.stream),
          position_(band.position),
          windowEnd_(band.readable < kRleDecodeWindow ? 0 : (band.readable - kRleDecodeWindow + 1) * 8),
          dst_(band.dst),
          dstEnd_(band.dst + band.remaining * sizeof(Sample)),
          roomEnd_(band.remaining < kRoom ? band.dst : dstEnd_ - (kRoom - 1) * sizeof(Sample)),
          difference_(band.prev1 - band.prev2) {}

    // The first token of this call, for which the last sample isn't in `dst` yet.
    bool DecodeFirst() {
        return HasWindow() && dst_ != dstEnd_ &&
               DecodeAnyToken(Window(), kWindowBits, static_cast<Sample>(state_.prev1));
    }

    // A few tokens, up to the first that isn't in the table. False if there isn't room for them, or a token has to be
    // left. Call after DecodeFirst.
    [[gnu::always_inline]] bool DecodeSome() {
        if (!HasWindow() || dst_ >= roomEnd_) {
            return false;
        }
        uint64_t bits = Window();
        uint64_t sum = 0;
        for (uint32_t i = 0; i < kShortTokens; ++i) {
            const TokenEntry entry = kTokenTable<Sample>.entries[bits >> (64 - kIndexBits)];
            if (entry.packed == 0) {
                const uint32_t consumed = sum & TokenEntry::kLengths;
                position_ += consumed;
                return DecodeAnyToken(bits, kWindowBits - consumed, LastSample());
            }
            sum += entry.packed;
            DecodeShortToken(entry, bits);
            bits <<= entry.Length();
        }
        position_ += sum & TokenEntry::kLengths;
        return true;
    }

    // One token, up to the band's end.
    bool DecodeOne() { return HasWindow() && dst_ != dstEnd_ && DecodeAnyToken(Window(), kWindowBits, LastSample()); }

    void SaveState() {
        if (dst_ == state_.dst) {
            return;
        }
        state_.position = position_;
        state_.remaining -= static_cast<uint64_t>(dst_ - state_.dst) / sizeof(Sample);
        state_.dst = dst_;
        state_.prev1 = LastSample();
        state_.prev2 = state_.prev1 - difference_;
    }

private:
    static constexpr uint32_t kWindowBits = 57;
    static constexpr uint32_t kLongestShort = sizeof(Sample) == 1 ? kIndexBits : kIndexBits + 16;
    static constexpr uint32_t kShortTokens = kWindowBits / kLongestShort;  // of one window
    static constexpr uint64_t kRoom = uint64_t{kRunLanes} * (kShortTokens + 1);

    // Whether two windows can be loaded one after the other, as DecodeSome may.
    [[gnu::always_inline]] bool HasWindow() const { return position_ < windowEnd_; }

    [[gnu::always_inline]] uint64_t Window() const {
        return RleBigEndian(LoadAs<uint64_t>(stream_ + position_ / 8)) << (position_ % 8);
    }

    [[gnu::always_inline]] Sample LastSample() const { return LoadAs<Sample>(dst_ - sizeof(Sample)); }

    [[gnu::always_inline]] void DecodeShortToken(TokenEntry entry, uint64_t bits) {
        if constexpr (sizeof(Sample) == 1) {
            const uint32_t slope = difference_ & entry.SecondOrder();
            StoreVector(dst_, MultiplesOf(slope & 0xFF) + MultiplesOf(entry.Shape()) + LastSample());
            difference_ = slope + entry.ToDifference();
        } else {
            const uint32_t low = static_cast<uint32_t>(bits << entry.Known() >> entry.AboveLow());
            const Run<Sample> run = NextRun(LastSample(), RleUnfold(entry.High() + low), entry.SecondOrder());
            run.StoreShort(dst_);
            difference_ = run.slope + run.curve * entry.Run();
        }
        dst_ += entry.Run() * sizeof(Sample);
    }

    [[gnu::always_inline]] Run<Sample> NextRun(Sample last, uint32_t residual, uint32_t secondOrder) const {
        const uint32_t slope = residual ^ ((residual ^ difference_) & secondOrder);
        return {last, static_cast<Sample>(slope), static_cast<Sample>(residual & secondOrder)};
    }

    // One token of any kind; the first `known` of `bits` are what the stream has next. False if the plain decoder must
    // see to it: if it may not be whole in a window, or has more samples than the band.
    [[gnu::always_inline]] bool DecodeAnyToken(uint64_t bits, uint32_t known, Sample last) {
        Token token;
        const uint64_t room = static_cast<uint64_t>(dstEnd_ - dst_) / sizeof(Sample);
        // Most tokens lie within the known bits, and a load in any case would delay the token behind this one.
        if (!Parse(bits, token) || token.length > known) {
            if (!Parse(Window(), token)) {
                return false;
            }
        }
        if (token.run > room) {
            return false;
        }
        position_ += token.length;
        const Run<Sample> run = NextRun(last, token.residual, token.second_order);
        if (token.run >= kRunLanes) {
            if (room - token.run >= run.kStretch) {
                run.StoreLoosely(dst_, token.run);
            } else {
                run.StoreLong(dst_, token.run);
            }
        } else if (room >= kRunLanes) {
            run.StoreShort(dst_);
        } else {
            run.StoreExact(dst_, token.run);
        }
        difference_ = run.slope + run.curve * static_cast<uint32_t>(token.run);
        dst_ += token.run * sizeof(Sample);
        return true;
    }

    // False for a token that might not be whole in the window, a run of 0 among them.
    [[gnu::always_inline]] static bool Parse(uint64_t bits, Token& token) {
        constexpr uint32_t kOtherBits = 3 + 16;  // mode, first bit of the run, flag, the longest value
        constexpr uint32_t kMostZeros = (kWindowBits - kOtherBits) / 2;
        const uint64_t runBits = bits << 1;
        if (runBits >> (63 - kMostZeros) == 0) {
            return false;
        }
        const uint32_t zeros = static_cast<uint32_t>(__builtin_clzll(runBits));
        token.second_order = 0U - static_cast<uint32_t>(bits >> 63);
        token.run = runBits << zeros >> (63 - zeros);
        const uint32_t runEnd = 2 * zeros + 2;
        const uint64_t valueBits = bits << runEnd;
        const uint64_t code = valueBits << 1;
        uint32_t folded = static_cast<uint32_t>(code >> (64 - RleSample<Sample>::kBits));
        token.length = runEnd + 1 + RleSample<Sample>::kBits;
        if (valueBits >> 63 != 0) {
            const uint32_t ones = RleLeadingOnes(code >> 55);
            const uint32_t lowBits = RleSample<Sample>::kShortBits;
            folded = (ones << lowBits) + static_cast<uint32_t>(code << (ones + 1) >> (64 - lowBits));
            token.length = runEnd + 1 + ones + 1 + lowBits;
        }
        token.residual = RleUnfold(folded);
        return true;
    }

    RleDecodeState& state_;
    const uint8_t* stream_;
    uint64_t position_;   // bits consumed
    uint64_t windowEnd_;  // of the positions at which there is a window
    uint8_t* dst_;
    uint8_t* dstEnd_;
    uint8_t* roomEnd_;     // of the places from which DecodeSome can store its runs with all their lanes
    uint32_t difference_;  // of the last two samples; the bits above their width mean nothing
};

template <class Sample>
void DecodeTokens(RleDecodeState& state) {
    BandDecoder<Sample> band(state);
    if (band.DecodeFirst()) {
        while (band.DecodeSome()) {
        }
        while (band.DecodeOne()) {
        }
    }
    band.SaveState();
}

template <class Sample>
RleDecodeState& DecodeTokensOfTwo(RleDecodeState& first, RleDecodeState& second) {
    BandDecoder<Sample> a(first);
    BandDecoder<Sample> b(second);
    bool firstGoesOn = a.DecodeFirst();
    bool secondGoesOn = b.DecodeFirst();
    while (firstGoesOn && secondGoesOn) {
        firstGoesOn = a.DecodeSome();
        secondGoesOn = b.DecodeSome();
    }
    a.SaveState();
    b.SaveState();
    return firstGoesOn ? second : first;
}

template <class Sample>
void WriteRun(RleDecodeState& state, const RleRun& run) {
    if (run.length == 0) {
        return;
    }
    const uint32_t slope = run.second_order ? state.prev1 - state.prev2 : run.residual;
    const uint32_t curve = run.second_order ? run.residual : 0;
    const Run<Sample> samples = {static_cast<Sample>(state.prev1), static_cast<Sample>(slope),
                                 static_cast<Sample>(curve)};
    if (run.length >= kRunLanes) {
        samples.StoreLong(state.dst, run.length);
    } else {
        samples.StoreExact(state.dst, run.length);
    }
    const auto count = static_cast<uint32_t>(run.length);
    const auto triangle = static_cast<uint32_t>(run.length * (run.length + 1) / 2);
    state.dst += run.length * sizeof(Sample);
    state.prev1 += count * slope + triangle * curve;
    state.prev2 = state.prev1 - (slope + count * curve);
}

}  // namespace
}  // namespace plenar
