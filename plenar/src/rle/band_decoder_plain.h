// The band decoder token by token and sample by sample: the definition of what the kernels of all targets decode, and
// what decodes the tokens that they stop at.
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

// A token. Each sample of its run is the one before it plus the residual; of second order, plus the last difference as
// well.
struct RleRun {
    bool second_order;
    uint64_t length;
    uint32_t residual;
};

template <class Sample>
RleDecodeState RleStartBand(const uint8_t* stream, uint64_t streamSize, uint8_t* dst, uint64_t samples);

// Reads one token, with all checks, and counts its samples as decoded.
template <class Sample>
RleDefect RleReadTokenPlain(RleDecodeState& state, RleRun& run);

// Writes the samples of the token that was read last.
template <class Sample>
void RleWriteRunPlain(RleDecodeState& state, const RleRun& run);

}  // namespace plenar
