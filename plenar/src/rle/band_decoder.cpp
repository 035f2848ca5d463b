#include "rle/band_decoder.h"

#include <array>
#include <cstring>

#include "rle/band_decoder_plain.h"
#include "rle/rle_kernels.h"

namespace plenar {
namespace {

// The kernels for a sample's width.
template <class Sample>
struct Decoders {
    void (*one)(RleDecodeState& state);
    RleDecodeState& (*two)(RleDecodeState& first, RleDecodeState& second);
    void (*write_run)(RleDecodeState& state, const RleRun& run);

    // One token that the others leave.
    RleDefect LeftToken(RleDecodeState& state) const {
        RleRun run = {};
        const RleDefect defect = RleReadTokenPlain<Sample>(state, run);
        if (defect == RleDefect::None) {
            write_run(state, run);
        }
        return defect;
    }
};

template <class Sample>
Decoders<Sample> ActiveDecoders() {
    const RleKernels& kernels = RleActiveKernels();
    if (sizeof(Sample) == 1) {
        return {kernels.decode_tokens8, kernels.decode_tokens_of_two8, kernels.write_run8};
    }
    return {kernels.decode_tokens16, kernels.decode_tokens_of_two16, kernels.write_run16};
}

// Whether the fast decoder would have to read beyond the coded plane.
bool NearEnd(const RleDecodeState& state) {
    return state.position / 8 + kRleDecodeWindow > state.stream_size;
}

// Room for what is left of a stream that is near its end, and zero bytes behind that for the fast decoder to read.
using Tail = std::array<uint8_t, size_t{3} * kRleDecodeWindow>;

void MoveToTail(RleDecodeState& state, Tail& tail) {
    const uint64_t first = state.position / 8;
    state.stream_size -= first;
    std::memcpy(tail.data(), state.stream + first, state.stream_size);
    state.stream = tail.data();
    state.readable = tail.size();
    state.position %= 8;
}

// Decodes with the fast decoder, and with the plain one what that leaves, while `go_on` says so.
template <class Sample, class GoOn>
RleDefect DecodeWhile(RleDecodeState& state, const Decoders<Sample>& decoders, const GoOn& goOn) {
    RleDefect defect = RleDefect::None;
    while (defect == RleDefect::None && state.remaining != 0 && goOn(state)) {
        decoders.one(state);
        if (state.position > state.stream_size * 8) {
            return RleDefect::StreamPastEnd;
        }
        if (state.remaining != 0 && goOn(state)) {
            defect = decoders.LeftToken(state);
        }
    }
    return defect;
}

// Decodes what is left of a band.
template <class Sample>
RleDefect DecodeRest(RleDecodeState& state, const Decoders<Sample>& decoders) {
    RleDefect defect = DecodeWhile(state, decoders, [](const RleDecodeState& s) { return !NearEnd(s); });
    if (defect == RleDefect::None && state.remaining != 0) {
        Tail tail = {};
        MoveToTail(state, tail);
        defect = DecodeWhile(state, decoders, [](const RleDecodeState&) { return true; });
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

template <class Sample>
RleDecodeState StartBand(const RleBandJob& job) {
    return RleStartBand<Sample>(job.src, job.src_size, job.dst, uint64_t{job.params.width} * job.params.height);
}

template <class Sample>
void FinishBand(RleBandJob& job, RleDecodeState& state, const Decoders<Sample>& decoders) {
    if (job.defect == RleDefect::None) {
        job.defect = DecodeRest(state, decoders);
    }
    if (job.defect == RleDefect::None) {
        SpreadRows(job.params, job.dst);
    }
}

template <class Sample>
void DecodeOne(RleBandJob& job) {
    RleDecodeState state = StartBand<Sample>(job);
    FinishBand(job, state, ActiveDecoders<Sample>());
}

template <class Sample>
void DecodeTwo(RleBandJob& first, RleBandJob& second) {
    const Decoders<Sample> decoders = ActiveDecoders<Sample>();
    RleDecodeState a = StartBand<Sample>(first);
    RleDecodeState b = StartBand<Sample>(second);
    RleDefect defect = RleDefect::None;
    while (defect == RleDefect::None) {
        RleDecodeState& left = decoders.two(a, b);
        if (left.remaining == 0 || NearEnd(left)) {
            break;
        }
        defect = decoders.LeftToken(left);
        (&left == &a ? first : second).defect = defect;
    }
    FinishBand(first, a, decoders);
    FinishBand(second, b, decoders);
}

}  // namespace

void RleDecodeBand(RleBandJob& job) {
    job.params.bitdepth == 8 ? DecodeOne<uint8_t>(job) : DecodeOne<uint16_t>(job);
}

void RleDecodeTwoBands(RleBandJob& first, RleBandJob& second) {
    first.params.bitdepth == 8 ? DecodeTwo<uint8_t>(first, second) : DecodeTwo<uint16_t>(first, second);
}

}  // namespace plenar
