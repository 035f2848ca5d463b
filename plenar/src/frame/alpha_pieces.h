// Alpha that stands among the colour samples on its way to the coder and back: a few rows at a time, in the cache.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "conversion/convert_rows.h"
#include "frame/codec_state.h"
#include "rle/rle_params.h"
#include "rle/row_pieces.h"

namespace plenar {

class AlphaPieces {
public:
    // `rows` are converted with the alpha samples that are coded by `params`.
    AlphaPieces(CodecState& state, const PlaneRows& rows, const RleParams& params)
        : rows_(rows), bytes_(BytesOf(rows) + RleWorkBytes(params)), streams_(OutgrowsCache(BytesOf(rows))) {
        const size_t rowBytes = std::max<size_t>(RleTightRowBytes(params), 1);
        const size_t most = std::max<size_t>(std::min<size_t>(kPieceBytes / rowBytes, rows.rows), 1);
        const size_t buffers = std::min<size_t>(size_t{2} * ThreadsFor(state.pool, bytes_), rows.rows);
        pieces_ = {Move, this, static_cast<uint32_t>(most), Scratch(state, buffers * most * rowBytes)};
    }
    AlphaPieces(const AlphaPieces&) = delete;
    AlphaPieces& operator=(const AlphaPieces&) = delete;

    uint64_t Bytes() const { return bytes_; }
    const RleRowPieces& Get() const { return pieces_; }

    // Merges zeros.
    void MoveNothing(uint32_t height, size_t rowBytes) const {
        std::fill_n(pieces_.buffers, pieces_.rows * rowBytes, uint8_t{0});
        for (uint32_t row = 0; row < height; row += pieces_.rows) {
            Move(this, row, std::min(pieces_.rows, height - row), pieces_.buffers);
        }
    }

private:
    static constexpr size_t kPieceBytes = size_t{32} << 10;

    static void Move(const void* pieces, uint32_t row, uint32_t rows, uint8_t* samples) {
        const auto& self = *static_cast<const AlphaPieces*>(pieces);
        ConvertRows(self.rows_, {row, rows}, samples, self.streams_);
    }

    const PlaneRows& rows_;
    uint64_t bytes_;
    bool streams_;
    RleRowPieces pieces_;
};

}  // namespace plenar
