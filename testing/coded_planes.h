// Calls on coded planes with less to say, in buffers of exact size.
#pragma once

#include "pool/work_pool.h"
#include "rle/plane_decoder.h"
#include "rle/plane_encoder.h"
#include "rle/rle_params.h"
#include "testing/exact_buffer.h"

namespace plenar_test {

inline plenar::WorkPool& Pool(uint32_t workers) {
    static plenar::WorkPool none(0);
    static plenar::WorkPool two(2);
    static plenar::WorkPool eight(8);
    return workers == 0 ? none : workers == 2 ? two : eight;
}

inline Bytes EncodePlane(const plenar::RleParams& params, const Bytes& plain, uint32_t workers = 0) {
    const ExactBuffer src(plain);
    Bytes coded(plenar::RleMaxCodedSize(params));
    coded.resize(plenar::RleEncodePlane(Pool(workers), params, src.data(), plain.size(), coded.data(), coded.size()));
    return coded;
}

// Decodes over `before`, whose size is the target's.
inline Bytes DecodePlane(const plenar::RleParams& params, const Bytes& coded, const Bytes& before,
                         uint32_t workers = 0) {
    const ExactBuffer src(coded);
    const ExactBuffer dst(before);
    plenar::RleDecodePlane(Pool(workers), params, src.data(), coded.size(), dst.data(), before.size());
    return dst.Content();
}

}  // namespace plenar_test
