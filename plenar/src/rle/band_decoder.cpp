#include "rle/band_decoder.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "rle/band_decoder_plain.h"
#include "rle/rle_kernels.h"

namespace plenar {
namespace {

// Whether decode_tokens would have to read beyond the coded plane.
bool NearEnd(const RleDecodeState& state) {
    return state.position / 8 + kRleDecodeWindow > state.stream_size;
}

// Room for what is left of a stream that is near its end, and zero bytes behind that for decode_tokens to read.
using Tail = std::array<uint8_t, size_t{3} * kRleDecodeWindow>;

void MoveToTail(RleDecodeState& state, Tail& tail) {
    const uint64_t first = state.position / 8;
    state.stream_size -= first;
    std::memcpy(tail.data(), state.stream + first, state.stream_size);
    state.stream = tail.data();
    state.readable = tail.size();
    state.position %= 8;
}

// A band on its way into one piece of memory after the other, or into one. A run may begin in one and end in another.
class BandProgress {
public:
    BandProgress(RleBandJob& job, const RleBandKernels& kernels)
        : job_(job), kernels_(kernels), behind_(RleSampleCount(job.params)) {
        const auto start = job.params.bitdepth == 8 ? RleStartBand<uint8_t> : RleStartBand<uint16_t>;
        state_ = start(job.src, job.src_size, nullptr, behind_);
    }

    // What is decoded of the piece; `remaining` counts up to its end.
    RleDecodeState& State() { return state_; }

    // Sees to it that there are samples to come in the piece. False at the band's end.
    bool HasRoom() {
        while (state_.remaining == 0 || rows_ == 0) {
            EndPiece();
            if (row_ == job_.params.height) {
                return false;
            }
            StartPiece();
        }
        return true;
    }

    // One token that decode_tokens has left.
    RleDefect DecodeLeftToken() {
        const uint64_t room = state_.remaining;
        state_.remaining += behind_;
        RleRun run = {};
        const RleDefect defect = kernels_.read_token(state_, run);
        state_.remaining = room;
        if (defect == RleDefect::None) {
            rest_ = run;
            WriteRest();
        }
        return defect;
    }

private:
    void StartPiece() {
        rows_ = std::min(RleRowsAtATime(job_), job_.params.height - row_);
        const uint64_t samples = uint64_t{job_.params.width} * rows_;
        state_.dst = job_.pieces != nullptr ? job_.buffer : job_.dst;
        state_.remaining = samples;
        behind_ -= samples;
        WriteRest();
    }

    void EndPiece() {
        if (job_.pieces != nullptr && rows_ != 0) {
            job_.pieces->move(job_.pieces->context, job_.first_row + row_, rows_, job_.buffer);
        }
        row_ += rows_;
        rows_ = 0;
    }

    // As much of a run as goes into the piece.
    void WriteRest() {
        RleRun part = rest_;
        part.length = std::min(rest_.length, state_.remaining);
        kernels_.write_run(state_, part);
        state_.remaining -= part.length;
        rest_.length -= part.length;
    }

    RleBandJob& job_;
    const RleBandKernels& kernels_;
    RleDecodeState state_;
    uint64_t behind_;    // samples of the band behind the piece
    uint32_t row_ = 0;   // the piece's first
    uint32_t rows_ = 0;  // its rows; 0 before the first piece and behind the last
    RleRun rest_ = {};   // of a run that goes on behind the piece
};

template <class GoOn>
RleDefect DecodeWhile(BandProgress& band, const RleBandKernels& kernels, const GoOn& goOn) {
    RleDefect defect = RleDefect::None;
    RleDecodeState& state = band.State();
    while (defect == RleDefect::None && band.HasRoom() && goOn(state)) {
        kernels.decode_tokens(state);
        if (state.position > state.stream_size * 8) {
            return RleDefect::StreamPastEnd;
        }
        if (state.remaining != 0 && goOn(state)) {
            defect = band.DecodeLeftToken();
        }
    }
    return defect;
}

RleDefect DecodeRest(BandProgress& band, const RleBandKernels& kernels) {
    RleDefect defect = DecodeWhile(band, kernels, [](const RleDecodeState& s) { return !NearEnd(s); });
    if (defect == RleDefect::None && band.HasRoom()) {
        Tail tail = {};
        MoveToTail(band.State(), tail);
        defect = DecodeWhile(band, kernels, [](const RleDecodeState&) { return true; });
    }
    return defect;
}

// The samples were decoded without padding; moves the rows to their places, from the last one up, as they may overlap.
void SpreadRows(const RleParams& band, uint8_t* dst) {
    const uint64_t tight = RleTightRowBytes(band);
    const uint64_t stride = RleRowStride(band);
    if (stride == tight) {
        return;
    }
    for (uint64_t row = band.height; row-- > 1;) {
        std::memmove(dst + row * stride, dst + row * tight, tight);
    }
}

void FinishBand(RleBandJob& job, BandProgress& band, const RleBandKernels& kernels) {
    if (job.defect == RleDefect::None) {
        job.defect = DecodeRest(band, kernels);
    }
    if (job.defect == RleDefect::None && job.pieces == nullptr) {
        SpreadRows(job.params, job.dst);
    }
}

}  // namespace

void RleDecodeBand(RleBandJob& job) {
    const RleBandKernels& kernels = RleActiveKernels(job.params.bitdepth);
    BandProgress band(job, kernels);
    FinishBand(job, band, kernels);
}

void RleDecodeTwoBands(RleBandJob& first, RleBandJob& second) {
    const RleBandKernels& kernels = RleActiveKernels(first.params.bitdepth);
    BandProgress a(first, kernels);
    BandProgress b(second, kernels);
    RleDefect defect = RleDefect::None;
    while (defect == RleDefect::None && a.HasRoom() && b.HasRoom()) {
        const RleDecodeState& left = kernels.decode_tokens_of_two(a.State(), b.State());
        if (left.remaining == 0) {
            continue;
        }
        if (NearEnd(left)) {
            break;
        }
        const bool isFirst = &left == &a.State();
        defect = (isFirst ? a : b).DecodeLeftToken();
        (isFirst ? first : second).defect = defect;
    }
    FinishBand(first, a, kernels);
    FinishBand(second, b, kernels);
}

}  // namespace plenar
