// The token-by-token, sample-by-sample band decoder: the definition that the fast one is held to, and its help for the
// tokens that it leaves alone.
#pragma once

#include <cstdint>

#include "rle/rle_defect.h"

namespace plenar {

// How far the decoding of a band has come. The stream may be read up to the end of the coded plane.
struct RleDecodeState {
    const uint8_t* stream;  // the band's first byte
    uint64_t stream_size;   // bytes from there to the end of the coded plane
    uint64_t readable;      // bytes from `stream` that can be read: `stream_size` at least
    uint64_t position;      // bits consumed
    uint8_t* dst;           // place of the next sample, in rows without padding
    uint64_t remaining;     // samples still to come
    uint64_t empty_runs;    // more that the band may hold
    uint32_t prev1;         // the last sample; the bits above its width mean nothing
    uint32_t prev2;         // the one before it; likewise
};

template <class Sample>
RleDecodeState RleStartBand(const uint8_t* stream, uint64_t stream_size, uint8_t* dst, uint64_t samples);

// Decodes one token. On a defect no sample of it is written.
template <class Sample>
RleDefect RleDecodeTokenPlain(RleDecodeState& state);

}  // namespace plenar
