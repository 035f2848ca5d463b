#include "rle/band_decoder.h"

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

// One token that decode_tokens has left.
RleDefect DecodeLeftToken(RleDecodeState& state, const RleBandKernels& kernels) {
    RleRun run = {};
    const RleDefect defect = kernels.read_token(state, run);
    if (defect == RleDefect::None) {
        kernels.write_run(state, run);
    }
    return defect;
}

template <class GoOn>
RleDefect DecodeWhile(RleDecodeState& state, const RleBandKernels& kernels, const GoOn& goOn) {
    RleDefect defect = RleDefect::None;
    while (defect == RleDefect::None && state.remaining != 0 && goOn(state)) {
        kernels.decode_tokens(state);
        if (state.position > state.stream_size * 8) {
            return RleDefect::StreamPastEnd;
        }
        if (state.remaining != 0 && goOn(state)) {
            defect = DecodeLeftToken(state, kernels);
        }
    }
    return defect;
}

RleDefect DecodeRest(RleDecodeState& state, const RleBandKernels& kernels) {
    RleDefect defect = DecodeWhile(state, kernels, [](const RleDecodeState& s) { return !NearEnd(s); });
    if (defect == RleDefect::None && state.remaining != 0) {
        Tail tail = {};
        MoveToTail(state, tail);
        defect = DecodeWhile(state, kernels, [](const RleDecodeState&) { return true; });
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

RleDecodeState StartBand(const RleBandJob& job) {
    const auto start = job.params.bitdepth == 8 ? RleStartBand<uint8_t> : RleStartBand<uint16_t>;
    return start(job.src, job.src_size, job.dst, RleSampleCount(job.params));
}

void FinishBand(RleBandJob& job, RleDecodeState& state, const RleBandKernels& kernels) {
    if (job.defect == RleDefect::None) {
        job.defect = DecodeRest(state, kernels);
    }
    if (job.defect == RleDefect::None) {
        SpreadRows(job.params, job.dst);
    }
}

}  // namespace

void RleDecodeBand(RleBandJob& job) {
    RleDecodeState state = StartBand(job);
    FinishBand(job, state, RleActiveKernels(job.params.bitdepth));
}

void RleDecodeTwoBands(RleBandJob& first, RleBandJob& second) {
    const RleBandKernels& kernels = RleActiveKernels(first.params.bitdepth);
    RleDecodeState a = StartBand(first);
    RleDecodeState b = StartBand(second);
    RleDefect defect = RleDefect::None;
    while (defect == RleDefect::None) {
        RleDecodeState& left = kernels.decode_tokens_of_two(a, b);
        if (left.remaining == 0 || NearEnd(left)) {
            break;
        }
        defect = DecodeLeftToken(left, kernels);
        (&left == &a ? first : second).defect = defect;
    }
    FinishBand(first, a, kernels);
    FinishBand(second, b, kernels);
}

}  // namespace plenar
