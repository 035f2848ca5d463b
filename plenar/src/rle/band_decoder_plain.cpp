#include "rle/band_decoder_plain.h"

#include <cstring>

#include "rle/bit_reader.h"
#include "rle/rle_codes.h"

namespace plenar {

template <class Sample>
RleDecodeState RleStartBand(const uint8_t* stream, uint64_t stream_size, uint8_t* dst, uint64_t samples) {
    constexpr uint32_t kMiddle = RleSample<Sample>::kMiddle;
    return {stream, stream_size, stream_size, 0, dst, samples, samples, kMiddle, kMiddle};
}

template <class Sample>
RleDefect RleDecodeTokenPlain(RleDecodeState& state) {
    RleBitReader reader(state.stream, state.stream_size, state.position);
    const bool second_order = reader.Read(1) != 0;
    const uint64_t run = RleReadRunLength(reader);
    const uint32_t residual = RleUnfold(RleReadValue<Sample>(reader));
    if (reader.PastEnd()) {
        return RleDefect::kStreamPastEnd;
    }
    if (run > state.remaining) {
        return RleDefect::kRunPastBand;
    }
    // A run length of 0 has no code, but 32 zero bits and more read as one. It yields no sample, so that without this
    // limit a small plane of many bands in one stretch of zero bits could cost far more than its samples.
    if (run == 0 && state.empty_runs-- == 0) {
        return RleDefect::kEmptyRuns;
    }
    state.position = reader.Position();
    state.remaining -= run;
    for (uint64_t i = 0; i < run; ++i) {
        const uint32_t next = second_order ? 2 * state.prev1 - state.prev2 + residual : state.prev1 + residual;
        state.prev2 = state.prev1;
        state.prev1 = next;
        const Sample sample = static_cast<Sample>(next);
        std::memcpy(state.dst, &sample, sizeof sample);
        state.dst += sizeof sample;
    }
    return RleDefect::kNone;
}

template RleDecodeState RleStartBand<uint8_t>(const uint8_t* stream, uint64_t stream_size, uint8_t* dst,
                                              uint64_t samples);
template RleDecodeState RleStartBand<uint16_t>(const uint8_t* stream, uint64_t stream_size, uint8_t* dst,
                                               uint64_t samples);
template RleDefect RleDecodeTokenPlain<uint8_t>(RleDecodeState& state);
template RleDefect RleDecodeTokenPlain<uint16_t>(RleDecodeState& state);

}  // namespace plenar
