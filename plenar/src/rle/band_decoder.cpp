#include "rle/band_decoder.h"

#include <array>
#include <cstring>

#include "rle/band_decoder_plain.h"
#include "rle/rle_kernels.h"

namespace plenar {
namespace {

using DecodeFast = void (*)(RleDecodeState& state);

// Whether the fast decoder would have to read beyond the coded plane.
bool NearEnd(const RleDecodeState& state) {
    return state.position / 8 + RleDecodeWindow > state.stream_size;
}

// Room for what is left of a stream that is near its end, and zero bytes behind that for the fast decoder to read.
using Tail = std::array<uint8_t, size_t{3} * RleDecodeWindow>;

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
RleDefect DecodeWhile(RleDecodeState& state, DecodeFast decode_fast, const GoOn& go_on) {
    RleDefect defect = RleDefect::kNone;
    while (defect == RleDefect::kNone && state.remaining != 0 && go_on(state)) {
        decode_fast(state);
        if (state.position > state.stream_size * 8) {
            return RleDefect::kStreamPastEnd;
        }
        if (state.remaining != 0 && go_on(state)) {
            defect = RleDecodeTokenPlain<Sample>(state);
        }
    }
    return defect;
}

template <class Sample>
RleDefect DecodeTokens(RleDecodeState state, DecodeFast decode_fast) {
    RleDefect defect = DecodeWhile<Sample>(state, decode_fast, [](const RleDecodeState& s) { return !NearEnd(s); });
    if (defect == RleDefect::kNone && state.remaining != 0) {
        Tail tail = {};
        MoveToTail(state, tail);
        defect = DecodeWhile<Sample>(state, decode_fast, [](const RleDecodeState&) { return true; });
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

}  // namespace

RleDefect RleDecodeBand(const RleParams& band, const uint8_t* src, uint64_t src_size, uint8_t* dst) {
    const RleKernels& kernels = RleActiveKernels();
    const uint64_t samples = uint64_t{band.width} * band.height;
    const RleDefect defect =
        band.bitdepth == 8
            ? DecodeTokens<uint8_t>(RleStartBand<uint8_t>(src, src_size, dst, samples), kernels.decode_tokens8)
            : DecodeTokens<uint16_t>(RleStartBand<uint16_t>(src, src_size, dst, samples), kernels.decode_tokens16);
    if (defect == RleDefect::kNone) {
        SpreadRows(band, dst);
    }
    return defect;
}

}  // namespace plenar
