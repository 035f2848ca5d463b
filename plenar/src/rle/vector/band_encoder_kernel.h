// The band coder in vectors.
//
// Blocks of 64 samples are classed in vectors, and compared with their neighbours to give one bit for each sample that
// starts a run. Only those samples are looked at further: they are queued, and when there are enough of them, their
// tokens are made and joined in vectors. How many runs a block starts decides one branch and one loop and nothing else,
// since it makes them unpredictable. The stream doesn't show the blocks: runs go on across them, and across rows.
#pragma once

#include "base/bytes.h"
#include "rle/band_job.h"
#include "rle/rle_codes.h"
#include "rle/vector/run_queue.h"
#include "rle/vector/token_writer.h"
#include "simd/vector.h"
#include "simd/ways.h"

namespace plenar {
namespace {

template <class Sample>
class BandEncoder {
public:
    BandEncoder(uint8_t* dst, const uint8_t* end) : writer_{dst, end} {}

    // Codes `count` samples in a row, which follow the ones coded before.
    void EncodeSpan(const uint8_t* src, uint64_t count) {
        uint64_t done = EncodeStaged(src, count);
        while (count - done >= kBlock) {
            if (runs_.LastIsFlat() && position_ - runs_.LastStart() >= kWorthSkipping) {
                const uint64_t flat = FlatSamples(src + done * sizeof(Sample), count - done);
                position_ += static_cast<uint32_t>(flat);
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
            std::memcpy(staging_, src + (done - kHistory) * sizeof(Sample), (count - done + kHistory) * sizeof(Sample));
            EncodeBlock(staging_ + kHistory * sizeof(Sample), static_cast<uint32_t>(count - done));
        }
    }

    // Writes the last tokens and returns the place behind the stream.
    uint8_t* Finish() {
        runs_.Close(position_);
        PutTokens<Sample, true>(writer_, runs_.Starts(), runs_.Classes(), runs_.Complete());
        return writer_.Flush();
    }

private:
    static constexpr uint32_t kHistory = 2;
    static constexpr uint32_t kWorthSkipping = 32;  // flat samples behind which more of them are likely

    using Lanes = Vector<Sample>;
    using SignedLanes = Vector<std::make_signed_t<Sample>>;

    // Codes the first samples, up to a block, from a copy that has the history in front of them.
    uint64_t EncodeStaged(const uint8_t* src, uint64_t count) {
        const uint32_t lanes = count < kBlock ? static_cast<uint32_t>(count) : kBlock;
        std::memcpy(staging_, history_, sizeof history_);
        std::memcpy(staging_ + sizeof history_, src, lanes * sizeof(Sample));
        EncodeBlock(staging_ + sizeof history_, lanes);
        return lanes;
    }

    void KeepHistory(const uint8_t* src, uint64_t count) {
        if (count == 1) {
            history_[0] = history_[1];
            history_[1] = LoadAs<Sample>(src);
        } else {
            std::memcpy(history_, src + (count - kHistory) * sizeof(Sample), sizeof history_);
        }
    }

    // How many whole blocks' samples from `src` on are the same as the one before them.
    static uint64_t FlatSamples(const uint8_t* src, uint64_t count) {
        const Lanes flat = Splat(LoadAs<Sample>(src - sizeof(Sample)));
        uint64_t same = 0;
        for (; count - same >= kBlock; same += kBlock) {
            auto equal = Load<Sample>(src + same * sizeof(Sample)) == flat;
            for (uint32_t i = kLanes<Sample>; i < kBlock; i += kLanes<Sample>) {
                equal &= Load<Sample>(src + (same + i) * sizeof(Sample)) == flat;
            }
            if (!AllSet(equal)) {
                break;
            }
            TakeWay(Way::FlatBlock);
        }
        return same;
    }

    void EncodeBlock(const uint8_t* src, uint32_t count) {
        Block<Sample> block;
        Classify(src, block);
        lastMode_ = block.modes >> (count - 1) & 1;
        if (block.starts != 0) {
            if (count < kBlock) {
                block.starts &= (uint64_t{1} << count) - 1;
                lastValues_ = Splat(static_cast<Sample>(block.classes[count - 1]));
            }
            runs_.Add(block, position_);
            if (runs_.Complete() >= kBlock) {
                PutBatch();
            }
        }
        position_ += count;
    }

    void Classify(const uint8_t* src, Block<Sample>& block) {
        constexpr size_t kVectors = kBlock / kLanes<Sample>;
        Lanes values[kVectors];
        SignedLanes secondOrder[kVectors];
        SignedLanes sameValue[kVectors];
        Lanes before = lastValues_;
        for (size_t i = 0; i < kVectors; ++i) {
            const uint8_t* place = src + i * kVectorBytes;
            const auto x = Load<Sample>(place);
            const auto prev1 = Load<Sample>(place - sizeof(Sample));
            const auto prev2 = Load<Sample>(place - 2 * sizeof(Sample));
            const auto d1 = x - prev1;
            const auto z1 = Fold(d1);
            const auto z2 = Fold(d1 - prev1 + prev2);
            const auto value = z1 < z2 ? z1 : z2;
            secondOrder[i] = (value == z2) & (z1 != 0);
            sameValue[i] = value == ShiftIn<Sample>(before, value);
            before = value;
            values[i] = value;
        }
        lastValues_ = before;
        block.modes = MaskOf64<Sample>(secondOrder);
        block.starts = ~MaskOf64<Sample>(sameValue) | (block.modes ^ (block.modes << 1 | lastMode_));
        // The first run of the band may be of the class that the encoder begins with.
        block.starts |= uint64_t{runs_.IsEmpty()};
        if (block.starts == 0) {
            return;
        }
        for (size_t i = 0; i < kVectors; ++i) {
            StoreInterleaved<Sample>(reinterpret_cast<uint8_t*>(block.classes + i * kLanes<Sample>), values[i],
                                     As<Lanes>(secondOrder[i]));
        }
    }

    static Lanes Fold(Lanes d) { return (d + d) ^ As<Lanes>(As<SignedLanes>(d) < 0); }

    [[gnu::noinline]] void PutBatch() {
        if (writer_.Room() < kBatchRoom) {
            PutTokens<Sample, true>(writer_, runs_.Starts(), runs_.Classes(), kBlock);
        } else {
            PutTokenBatch<Sample>(writer_, runs_);
        }
        runs_.Drop();
    }

    TokenWriter writer_;
    uint32_t position_ = 0;  // of the next sample in the band; wraps
    Lanes lastValues_{};     // the last lane is the value of the last sample classed
    uint64_t lastMode_ = 0;  // and this its mode; before the first sample both are those of a middle sample
    Sample history_[kHistory] = {RleSample<Sample>::kMiddle, RleSample<Sample>::kMiddle};
    uint8_t staging_[(kHistory + kBlock) * sizeof(Sample)] = {};
    RunQueue runs_;
};

template <class Sample>
uint64_t EncodeBand(const RleBandJob& job) {
    const RleParams& band = job.params;
    const uint64_t stride = RleRowStride(band);
    const bool isTight = stride == RleTightRowBytes(band);
    BandEncoder<Sample> encoder(job.dst, job.dst + RleMaxStreamSize(band, RleSampleCount(band)));
    const uint32_t most = RleRowsAtATime(job);
    for (uint32_t row = 0, rows = 0; row < band.height; row += rows) {
        rows = most < band.height - row ? most : band.height - row;
        const uint8_t* src = RleRowsToCode(job, row, rows);
        for (uint32_t i = 0; i < rows; i += isTight ? rows : 1) {
            encoder.EncodeSpan(src + i * stride, isTight ? uint64_t{band.width} * rows : band.width);
        }
    }
    return static_cast<uint64_t>(encoder.Finish() - job.dst);
}

}  // namespace
}  // namespace plenar
