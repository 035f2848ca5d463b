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

inline Bytes EncodePlane(const plenar::RleParams& params, const Bytes& plain, uint32_t workers = 0) {
    const ExactBuffer src(plain);
    Bytes coded(plenar::RleMaxCodedSize(params));
    coded.resize(plenar::RleEncodePlane(PoolOf(workers), params, src.data(), plain.size(), coded.data(), coded.size()));
    return coded;
}

// Decodes over `before`, whose size is the target's.
inline Bytes DecodePlane(const plenar::RleParams& params, const Bytes& coded, const Bytes& before,
                         uint32_t workers = 0) {
    const ExactBuffer src(coded);
    const ExactBuffer dst(before);
    plenar::RleDecodePlane(PoolOf(workers), params, src.data(), coded.size(), dst.data(), before.size());
    return dst.Content();
}

}  // namespace plenar_test
