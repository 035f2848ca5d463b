// Makes the tokens of runs and writes them.
#pragma once

#include "base/bytes.h"
#include "rle/rle_codes.h"
#include "rle/vector/run_queue.h"
#include "simd/vector.h"
#include "simd/ways.h"

namespace plenar {
namespace {

constexpr uint32_t kPutBits = 57;  // of one Put at most: what 64 hold behind the 7 that may be left from the last one

// Appends bits with few steps for each token. Only the low `used` bits of `acc` are still to be written; the ones above
// have been, and leave at the top as others follow.
class TokenWriter {
public:
    TokenWriter(uint8_t* first, const uint8_t* roomEnd) : out_(first), end_(roomEnd) {}

    int64_t Room() const { return end_ - out_; }

    // Appends up to kPutBits bits, and at least one. Without Exact there must be room for 8 bytes.
    template <bool Exact>
    void Put(uint64_t bits, uint32_t length) {
        acc_ = acc_ << length | bits;
        used_ += length;
        const uint64_t word = RleBigEndian(acc_ << (64 - used_));
        const uint32_t bytes = used_ / 8;
        if constexpr (Exact) {
            std::memcpy(out_, &word, bytes);
        } else {
            StoreAs(out_, word);
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

// The codes of the values that have a short form, with their flags. The entry behind them is for all others: their code
// is the value itself, so that it holds the length alone, and CodeOf has no branch.
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

constexpr uint32_t kTokens = kLanes<uint32_t>;

// As many tokens as there are lanes, if all of them are short enough to be put in pairs.
template <class Sample>
inline bool PutInPairs(TokenWriter& writer, const uint32_t* starts, const uint32_t* classes) {
    using Traits = RleSample<Sample>;
    using Lanes = Vector<uint32_t>;
    const Lanes run = Load<uint32_t>(starts + 1) - Load<uint32_t>(starts);
    const Lanes runClass = Load<uint32_t>(classes);
    const Lanes value = runClass & ((1U << Traits::kBits) - 1);
    const Lanes mode = runClass >> Traits::kBits & 1;

    // A raw code with its flag is as long as a short one whose prefix has one bit more than the longest.
    constexpr uint32_t kRaw = Traits::kShortLimit >> Traits::kShortBits;
    const Lanes hi = value >> Traits::kShortBits;
    const Lanes ones = hi < kRaw ? hi : Splat(kRaw);
    const Lanes prefix = (Splat(4U << Traits::kShortBits) << ones) - (2U << Traits::kShortBits);
    const Lanes shortCode = prefix | (value & ((1U << Traits::kShortBits) - 1));
    const Lanes code = hi < kRaw ? shortCode : value;
    const Lanes codeLength = ones + Traits::kShortBits + 2;

    // The exponent of a floating-point number tells its highest bit. Only runs of more than 24 bits may be rounded up
    // to the next exponent, and those are too long here in any case.
    const Lanes exponent = As<Lanes>(__builtin_convertvector(As<Vector<int32_t>>(run), Vector<float>)) >> 23;
    const Lanes length = 2 * (exponent - 126) + codeLength;
    const Lanes token = mode << (length - 1) | run << codeLength | code;

    using Pairs = Vector<uint64_t>;
    const Pairs secondLength = As<Pairs>(length) >> 32;
    const Pairs pairLength = (As<Pairs>(length) & 0xFFFFFFFF) + secondLength;
    const Pairs pair = (As<Pairs>(token) & 0xFFFFFFFF) << secondLength | As<Pairs>(token) >> 32;
    if (!AllSet(length <= 32) || !AllSet(As<Lanes>(pairLength) <= kPutBits)) {
        return false;
    }
    for (uint32_t i = 0; i < kTokens / 2; i += 2) {
        const auto firstLength = static_cast<uint32_t>(pairLength[i]);
        const auto bothLengths = firstLength + static_cast<uint32_t>(pairLength[i + 1]);
        if (sizeof(Sample) == 1 && bothLengths <= kPutBits) {
            writer.Put<false>(pair[i] << pairLength[i + 1] | pair[i + 1], bothLengths);
        } else {
            writer.Put<false>(pair[i], firstLength);
            writer.Put<false>(pair[i + 1], bothLengths - firstLength);
        }
    }
    TakeWay(Way::TokenPairs);
    return true;
}

// The tokens of the first kBlock runs. There must be room for kBatchRoom bytes.
template <class Sample>
inline void PutTokenBatch(TokenWriter& writer, const RunQueue& runs) {
    TokenWriter local = writer;  // nothing refers to it, so that it can stay in registers
    if constexpr (TargetVector::kShiftsByLane) {
        for (uint32_t i = 0; i < kBlock; i += kTokens) {
            if (!PutInPairs<Sample>(local, runs.Starts() + i, runs.Classes() + i)) {
                PutTokens<Sample, false>(local, runs.Starts() + i, runs.Classes() + i, kTokens);
            }
        }
    } else {
        PutTokens<Sample, false>(local, runs.Starts(), runs.Classes(), kBlock);
    }
    writer = local;
}

}  // namespace
}  // namespace plenar
