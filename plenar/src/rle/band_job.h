#pragma once

#include <array>
#include <cstdint>

#include "rle/rle_defect.h"
#include "rle/rle_params.h"
#include "rle/row_pieces.h"

namespace plenar {

// One band of a plane that is being coded or decoded: what it is made from, and what came of it.
struct RleBandJob {
    RleParams params;    // of the band; `height` is its own rows
    const uint8_t* src;  // its first plain sample, or its stream
    uint8_t* dst;        // its working place, far enough from the next one's for the worst of its samples; or its rows
    uint64_t src_size = 0;  // decoding: how far the stream may reach, though it ends with its last sample

    // Where rows come and go by pieces: these, instead of `src` or `dst`.
    const RleRowPieces* pieces = nullptr;
    uint32_t first_row = 0;  // the band's, in the plane
    uint8_t* buffer = nullptr;

    uint32_t coded_size = 0;             // set by coding: the bytes of the stream
    RleDefect defect = RleDefect::None;  // set by decoding
};

// Rows that a job has in memory at a time. Static, as in rle_params.h.
static inline uint32_t RleRowsAtATime(const RleBandJob& job) {
    return job.pieces != nullptr ? job.pieces->rows : job.params.height;
}

// The plain rows of a band that is to be coded, from one on.
static inline const uint8_t* RleRowsToCode(const RleBandJob& job, uint32_t row, uint32_t rows) {
    if (job.pieces == nullptr) {
        return job.src + row * RleRowStride(job.params);
    }
    job.pieces->move(job.pieces->context, job.first_row + row, rows, job.buffer);
    return job.buffer;
}

inline uint8_t* RlePieceBuffer(const RleParams& params, const RleRowPieces& pieces, uint32_t index) {
    return pieces.buffers + uint64_t{index} * pieces.rows * RleTightRowBytes(params);
}

using RleBandJobs = std::array<RleBandJob, kRleMaxBands>;

}  // namespace plenar
