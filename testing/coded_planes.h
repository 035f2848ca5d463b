// Calls on coded planes with less to say, in buffers of exact size.
#pragma once

#include <map>

#include "pool/work_pool.h"
#include "rle/plane_decoder.h"
#include "rle/plane_encoder.h"
#include "rle/rle_params.h"
#include "testing/exact_buffer.h"

namespace plenar_test {

// The plane with its rows as far apart as the parameters say; `size` is with or without padding behind the last one.
inline Bytes Padded(const plenar::RleParams& params, const Bytes& plain, uint64_t size) {
    const uint64_t tight = plenar::RleTightRowBytes(params);
    Bytes rows(size, 0x5A);
    for (uint64_t row = 0; row < params.height; ++row) {
        std::copy_n(&plain[row * tight], tight, &rows[row * plenar::RleRowStride(params)]);
    }
    return rows;
}

// Lives on, as to start threads takes longer than to use them. Its workers wake for the smallest plane.
inline plenar::WorkPool& PoolOf(uint32_t workers) {
    plenar::WakeWorkersFrom(0);
    static std::map<uint32_t, plenar::WorkPool> pools;
    return pools.try_emplace(workers, workers).first->second;
}

// A plane without padding, of which coders see only a few rows at a time: in buffers of exact size.
class PlaneInPieces {
public:
    PlaneInPieces(const plenar::RleParams& params, uint32_t rows, uint32_t workers, uint8_t* plane, bool isDecoded)
        : rowBytes_(plenar::RleTightRowBytes(params)),
          plane_(plane),
          isDecoded_(isDecoded),
          buffers_(Bytes(2 * std::max(workers, 1U) * rows * rowBytes_)),
          pieces_{Move, this, rows, buffers_.data()} {}

    const plenar::RleRowPieces& Get() const { return pieces_; }

private:
    static void Move(const void* plane, uint32_t row, uint32_t rows, uint8_t* samples) {
        const auto& self = *static_cast<const PlaneInPieces*>(plane);
        uint8_t* const place = self.plane_ + row * self.rowBytes_;
        std::memcpy(self.isDecoded_ ? place : samples, self.isDecoded_ ? samples : place, rows * self.rowBytes_);
    }

    uint64_t rowBytes_;
    uint8_t* plane_;
    bool isDecoded_;
    ExactBuffer buffers_;
    plenar::RleRowPieces pieces_;
};

// At once, or by pieces of so many rows.
inline Bytes EncodePlane(const plenar::RleParams& params, const Bytes& plain, uint32_t workers = 0, uint32_t rows = 0) {
    plenar::WorkPool& pool = PoolOf(workers);
    const ExactBuffer src(plain);
    Bytes coded(plenar::RleMaxCodedSize(params));
    if (rows == 0) {
        coded.resize(plenar::RleEncodePlane(pool, params, src.data(), plain.size(), coded.data(), coded.size()));
    } else {
        const PlaneInPieces pieces(params, rows, workers, src.data(), false);
        coded.resize(plenar::RleEncodePieces(pool, 1, params, pieces.Get(), coded.data(), coded.size()));
    }
    return coded;
}

// Over `before`, whose size is the target's.
inline Bytes DecodePlane(const plenar::RleParams& params, const Bytes& coded, const Bytes& before, uint32_t workers = 0,
                         uint32_t rows = 0) {
    plenar::WorkPool& pool = PoolOf(workers);
    const ExactBuffer src(coded);
    const ExactBuffer dst(before);
    if (rows == 0) {
        plenar::RleDecodePlane(pool, params, src.data(), coded.size(), dst.data(), before.size());
    } else {
        const PlaneInPieces pieces(params, rows, workers, dst.data(), true);
        plenar::RleDecodePieces(pool, 1, params, src.data(), coded.size(), pieces.Get());
    }
    return dst.Content();
}

}  // namespace plenar_test
