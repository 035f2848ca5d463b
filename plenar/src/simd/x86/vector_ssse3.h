// What 16-byte vectors can do beyond the operators.
#pragma once

#include <tmmintrin.h>

#include "simd/vector_types.h"

namespace plenar {
namespace {

struct Vector16 {
    static constexpr size_t kBytes = 16;
    static constexpr bool kPermutesDwords = false;
    static constexpr bool kShiftsByLane = false;  // each lane by a number of bits of its own

    using Bytes = VectorType<uint8_t, kBytes>::Type;
    using Words = VectorType<uint16_t, kBytes>::Type;
    using Dwords = VectorType<uint32_t, kBytes>::Type;

    // 16 bytes from each offset.
    static Bytes LoadLanes(const uint8_t* src, const size_t (&at)[1]) { return LoadVector<Bytes>(src + at[0]); }

    // In each 16 bytes, byte i of the result is byte pattern[i] of the value, or 0 where the pattern's top bit is set.
    static Bytes Shuffle(Bytes value, Bytes pattern) { return As<Bytes>(_mm_shuffle_epi8(Raw(value), Raw(pattern))); }

    // Each 16 bytes of the result are of a, then of b. Words of 0 to 255, and dwords of 0 to 32767.
    static Bytes PackWords(Words a, Words b) { return As<Bytes>(_mm_packus_epi16(Raw(a), Raw(b))); }
    static Words PackDwords(Dwords a, Dwords b) { return As<Words>(_mm_packs_epi32(Raw(a), Raw(b))); }
    // Words of all bits or none to bytes likewise.
    static Bytes PackMasks(Words a, Words b) { return As<Bytes>(_mm_packs_epi16(Raw(a), Raw(b))); }

    // Sums of the products of neighbours. The second factors of bytes are below 128.
    static Words MultiplyAdd(Bytes a, Bytes b) { return As<Words>(_mm_maddubs_epi16(Raw(a), Raw(b))); }
    static Dwords MultiplyAdd(Words a, Words b) { return As<Dwords>(_mm_madd_epi16(Raw(a), Raw(b))); }
    // The upper half of the products.
    static Words MultiplyHigh(Words a, Words b) { return As<Words>(_mm_mulhi_epu16(Raw(a), Raw(b))); }

    // The top bit of each byte, the first byte's lowest.
    static uint32_t TopBits(Bytes value) { return static_cast<uint32_t>(_mm_movemask_epi8(Raw(value))); }

    // Past the caches, to a multiple of the vector's size; all such stores end with a fence.
    static void StoreStream(uint8_t* dst, Bytes value) {
        _mm_stream_si128(reinterpret_cast<__m128i*>(dst), Raw(value));
    }
    static void FinishStream() { _mm_sfence(); }

    // A value that the compiler doesn't know.
    static Words Hide(Words value) {
        asm("" : "+x"(value));
        return value;
    }

private:
    template <class Vector>
    static __m128i Raw(Vector vector) {
        return As<__m128i>(vector);
    }
};

using TargetVector = Vector16;

}  // namespace
}  // namespace plenar
