#include "rle/band_decoder_plain.h"

#include "base/bytes.h"
#include "rle/bit_reader.h"
#include "rle/rle_codes.h"

namespace plenar {

template <class Sample>
RleDecodeState RleStartBand(const uint8_t* stream, uint64_t streamSize, uint8_t* dst, uint64_t samples) {
    constexpr uint32_t kMiddle = RleSample<Sample>::kMiddle;
    return {stream, streamSize, streamSize, 0, dst, samples, samples, kMiddle, kMiddle};
}

template <class Sample>
RleDefect RleReadTokenPlain(RleDecodeState& state, RleRun& run) {
    RleBitReader reader(state.stream, state.stream_size, state.position);
    run.second_order = reader.Read(1) != 0;
    run.length = RleReadRunLength(reader);
    run.residual = RleUnfold(RleReadValue<Sample>(reader));
    if (reader.PastEnd()) {
        return RleDefect::StreamPastEnd;
    }
    if (run.length > state.remaining) {
        return RleDefect::RunPastBand;
    }
    // A run length of 0 has no code, but 32 zero bits and more read as one. It yields no sample, so that without a
    // limit the time for a small plane would be bounded by its payload alone.
    if (run.length == 0 && state.empty_runs-- == 0) {
        return RleDefect::EmptyRuns;
    }
    state.position = reader.Position();
    state.remaining -= run.length;
    return RleDefect::None;
}

template <class Sample>
void RleWriteRunPlain(RleDecodeState& state, const RleRun& run) {
    for (uint64_t i = 0; i < run.length; ++i) {
        const uint32_t difference = run.second_order ? state.prev1 - state.prev2 : 0;
        state.prev2 = state.prev1;
        state.prev1 += difference + run.residual;
        StoreAs(state.dst, static_cast<Sample>(state.prev1));
        state.dst += sizeof(Sample);
    }
}

template RleDecodeState RleStartBand<uint8_t>(const uint8_t*, uint64_t, uint8_t*, uint64_t);
template RleDecodeState RleStartBand<uint16_t>(const uint8_t*, uint64_t, uint8_t*, uint64_t);
template RleDefect RleReadTokenPlain<uint8_t>(RleDecodeState& state, RleRun& run);
template RleDefect RleReadTokenPlain<uint16_t>(RleDecodeState& state, RleRun& run);
template void RleWriteRunPlain<uint8_t>(RleDecodeState& state, const RleRun& run);
template void RleWriteRunPlain<uint16_t>(RleDecodeState& state, const RleRun& run);

}  // namespace plenar
