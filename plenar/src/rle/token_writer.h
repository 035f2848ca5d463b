// Makes the tokens of runs and writes them; for inclusion by the sources of the targets only.
#pragma once

#include "rle/lane_vector.h"
#include "rle/rle_codes.h"
#include "rle/run_queue.h"

namespace plenar {
namespace {

// Appends bits with few steps for each token. Only the low `used` bits of `acc` are still to be written; what stands
// above them has been, and drops out at the top in time.
class TokenWriter {
public:
    TokenWriter(uint8_t* first, const uint8_t* roomEnd) : out_(first), end_(roomEnd) {}

    int64_t Room() const { return end_ - out_; }

    // Appends up to 57 bits, and at least one. Without Exact there must be room for 8 bytes.
    template <bool Exact>
    void Put(uint64_t bits, uint32_t length) {
        acc_ = acc_ << length | bits;
        used_ += length;
        const uint64_t word = RleBigEndian(acc_ << (64 - used_));
        const uint32_t bytes = used_ / 8;
        if constexpr (Exact) {
            std::memcpy(out_, &word, bytes);
        } else {
            std::memcpy(out_, &word, sizeof word);
        }
        out_ += bytes;
        used_ %= 8;
    }

    template <bool Exact>
    void Put(RleToken token) {
        if (token.length > 32) {
            Put<Exact>(token.bits >> 32, token.length - 32);
            Put<Exact>(token.bits & 0xFFFFFFFF, 32);
        } else {
            Put<Exact>(token.bits, token.length);
        }
    }

    // Writes what is left, and returns the place behind the last byte.
    uint8_t* Flush() {
        if (used_ != 0) {
            *out_++ = static_cast<uint8_t>(acc_ << (8 - used_));
        }
        return out_;
    }

private:
    uint8_t* out_;
    const uint8_t* end_;
    uint64_t acc_ = 0;
    uint32_t used_ = 0;  // less than 8 between calls
};

// What a batch of kBlock tokens of any length and the width of the last store can take.
constexpr int64_t kBatchRoom = kBlock * 8 + 8;

// The codes of the values with their flags; the last entry has the length of all those that are raw.
template <class Sample>
struct ValueCodeTable {
    static constexpr uint32_t kCount = RleSample<Sample>::kShortLimit;
    RleCode entries[kCount + 1] = {};

    constexpr ValueCodeTable() {
        for (uint32_t value = 0; value < kCount; ++value) {
            entries[value] = RleValueCode<Sample>(value);
        }
        entries[kCount] = {0, RleSample<Sample>::kBits + 1};
    }
};

template <class Sample>
constexpr ValueCodeTable<Sample> kValueCodes;

template <class Sample>
inline RleCode CodeOf(uint32_t value) {
    constexpr uint32_t kCount = ValueCodeTable<Sample>::kCount;
    const RleCode code = kValueCodes<Sample>.entries[value < kCount ? value : kCount];
    return {value < kCount ? code.bits : value, code.length};
}

// The tokens of the first runs of the queue, one by one.
template <class Sample, bool Exact>
inline void PutTokens(TokenWriter& writer, const uint32_t* starts, const uint32_t* classes, uint32_t count) {
    constexpr uint32_t kBits = RleSample<Sample>::kBits;
    constexpr uint32_t kShortRun = 1U << 12;  // runs below have tokens for a single Put
    for (uint32_t i = 0; i < count; ++i) {
        const RleCode code = CodeOf<Sample>(classes[i] & ((1U << kBits) - 1));
        const uint32_t mode = classes[i] >> kBits & 1;
        const uint32_t run = starts[i + 1] - starts[i];
        if (run < kShortRun) {
            const uint32_t length = 2 * (32 - static_cast<uint32_t>(__builtin_clz(run))) + code.length;
            writer.Put<Exact>(uint64_t{mode} << (length - 1) | run << code.length | code.bits, length);
        } else {
            writer.Put<Exact>(RleMakeToken(mode, run, code));
        }
    }
}

#if defined(__AVX2__)

constexpr uint32_t kMostBits = 57;  // of one Put
constexpr uint32_t kTokens = kLanes<uint32_t>;

// As many tokens as there are lanes, if all of them are short enough to be put in pairs.
template <class Sample>
inline bool PutInPairs(TokenWriter& writer, const uint32_t* starts, const uint32_t* classes) {
    using Traits = RleSample<Sample>;
    using Lanes = Vector<uint32_t>;
    const Lanes startsHere = LoadLanes<uint32_t>(reinterpret_cast<const uint8_t*>(starts));
    const Lanes run = LoadLanes<uint32_t>(reinterpret_cast<const uint8_t*>(starts + 1)) - startsHere;
    const Lanes runClass = LoadLanes<uint32_t>(reinterpret_cast<const uint8_t*>(classes));
    const Lanes value = runClass & ((1U << Traits::kBits) - 1);
    const Lanes mode = runClass >> Traits::kBits & 1;

    // A raw code is as long as a short one with one bit more than the largest can have in front.
    constexpr uint32_t kRaw = Traits::kShortLimit >> Traits::kShortBits;
    const Lanes hi = value >> Traits::kShortBits;
    const Lanes ones = hi < kRaw ? hi : Splat(kRaw);
    const Lanes prefix = (Splat(4U << Traits::kShortBits) << ones) - (2U << Traits::kShortBits);
    const Lanes shortCode = prefix | (value & ((1U << Traits::kShortBits) - 1));
    const Lanes code = hi < kRaw ? shortCode : value;
    const Lanes codeLength = ones + Traits::kShortBits + 2;

    // The exponent of a floating-point number is that of its highest bit. Too large for runs that are rounded up, but
    // those are too long in any case.
    const auto exponent = reinterpret_cast<Lanes>(_mm256_cvtepi32_ps(reinterpret_cast<__m256i>(run))) >> 23;
    const Lanes length = 2 * (exponent - 126) + codeLength;
    const Lanes token = mode << (length - 1) | run << codeLength | code;

    using Pairs = Vector<uint64_t>;
    const Pairs secondLength = reinterpret_cast<Pairs>(length) >> 32;
    const Pairs pairLength = (reinterpret_cast<Pairs>(length) & 0xFFFFFFFF) + secondLength;
    const Pairs pair =
        (reinterpret_cast<Pairs>(token) & 0xFFFFFFFF) << secondLength | reinterpret_cast<Pairs>(token) >> 32;
    if (!AllSet(length <= 32) || !AllSet(reinterpret_cast<Lanes>(pairLength) <= kMostBits)) {
        return false;
    }
    for (uint32_t i = 0; i < kTokens / 2; i += 2) {
        const auto firstLength = static_cast<uint32_t>(pairLength[i]);
        const auto bothLengths = firstLength + static_cast<uint32_t>(pairLength[i + 1]);
        if (sizeof(Sample) == 1 && bothLengths <= kMostBits) {
            writer.Put<false>(pair[i] << pairLength[i + 1] | pair[i + 1], bothLengths);
        } else {
            writer.Put<false>(pair[i], firstLength);
            writer.Put<false>(pair[i + 1], bothLengths - firstLength);
        }
    }
    return true;
}

#endif

// The tokens of the first kBlock runs. There must be room for kBatchRoom bytes.
template <class Sample>
inline void PutTokenBatch(TokenWriter& writer, const RunQueue& runs) {
    TokenWriter local = writer;  // nothing refers to it, so that it can stay in registers
#if defined(__AVX2__)
    for (uint32_t i = 0; i < kBlock; i += kTokens) {
        if (!PutInPairs<Sample>(local, runs.Starts() + i, runs.Classes() + i)) {
            PutTokens<Sample, false>(local, runs.Starts() + i, runs.Classes() + i, kTokens);
        }
    }
#else
    PutTokens<Sample, false>(local, runs.Starts(), runs.Classes(), kBlock);
#endif
    writer = local;
}

}  // namespace
}  // namespace plenar
