#pragma once

#include <cstdint>

#include "pool/bands.h"

namespace plenar {

// One coded plane of samples, or one band of it.
struct RleParams {
    uint32_t width;      // samples in a row
    uint32_t height;     // rows
    uint32_t bitdepth;   // 8 or 16
    uint8_t band_limit;  // the most bands that the encoder may use; 0 stands for 16; the decoder takes no notice
    uint32_t row_bytes;  // bytes between the starts of two rows of the plain buffer; 0: rows without padding
};

// The most bands that a coded plane can have: their count is one byte.
inline constexpr uint32_t kRleMaxBands = 255;

// Room kept free for the rle index table while the bands are being coded: the size of its largest form, a band count
// of 8 bits and two lists of 255 entries at 26 bits.
inline constexpr uint32_t RleHeadReserve = (8 + 2 * kRleMaxBands * 26 + 7) / 8;

// Refuses a plane that can't be coded. Throws invalid_argument.
void RleCheckParams(const RleParams& params);

// Asked for every band, and static so that sources compiled for a target share no copy with others.
static inline uint64_t RleSampleCount(const RleParams& params) {
    return uint64_t{params.width} * params.height;
}

// Bytes of one row without padding.
static inline uint64_t RleTightRowBytes(const RleParams& params) {
    return params.bitdepth == 8 ? params.width : uint64_t{params.width} * 2;
}

// As work on a plane compares with the moving of bytes: coding takes longer.
static inline uint64_t RleWorkBytes(const RleParams& params) {
    constexpr uint64_t kMovesOfCoding = 4;
    return RleTightRowBytes(params) * params.height * kMovesOfCoding;
}

// Bytes from the start of one row of the plain buffer to the start of the next.
static inline uint64_t RleRowStride(const RleParams& params) {
    return params.row_bytes != 0 ? params.row_bytes : RleTightRowBytes(params);
}

// Bytes of the plain buffer by which callers size it. With row_bytes this is a product that wraps at 32 bits; what is
// really read and written is RlePlainExtent.
uint64_t RlePlainSize(const RleParams& params);

// Bytes from the first sample to the end of the last, without the padding behind it. Never wraps.
uint64_t RlePlainExtent(const RleParams& params);

// The bands that the encoder makes.
RowBands RleBands(const RleParams& params);

// The most bytes that the stream of `samples` samples can take: each a token of its own, with a mode bit, a run length
// of one bit, a flag bit and the raw value.
uint64_t RleMaxStreamSize(const RleParams& params, uint64_t samples);

// The bytes by which callers size the buffer of a coded plane. Checks nothing. The samples of a band are counted in 32
// bits, and wrap; what is really written takes up to RleMaxCodedExtent.
uint64_t RleMaxCodedSize(const RleParams& params);
uint64_t RleMaxCodedExtent(const RleParams& params);

}  // namespace plenar
