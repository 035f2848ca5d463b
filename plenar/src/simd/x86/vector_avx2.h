// What 32-byte vectors can do beyond the operators. The declarations' comments are in vector_ssse3.h.
#pragma once

#include <immintrin.h>

#include "simd/vector_types.h"

namespace plenar {
namespace {

struct Vector32 {
    static constexpr size_t kBytes = 32;
    static constexpr bool kPermutesDwords = true;
    static constexpr bool kShiftsByLane = true;

    using Bytes = VectorType<uint8_t, kBytes>::Type;
    using Words = VectorType<uint16_t, kBytes>::Type;
    using Dwords = VectorType<uint32_t, kBytes>::Type;

    // Where the offsets are constants, one of the cases is left.
    [[gnu::always_inline]] static Bytes LoadLanes(const uint8_t* src, const size_t (&at)[2]) {
        const __m128i lower = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + at[0]));
        if (at[1] == at[0]) {
            return As<Bytes>(_mm256_broadcastsi128_si256(lower));
        }
        if (at[1] == at[0] + sizeof lower) {
            return LoadVector<Bytes>(src + at[0]);
        }
        const __m128i upper = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + at[1]));
        return As<Bytes>(_mm256_inserti128_si256(_mm256_castsi128_si256(lower), upper, 1));
    }

    static Bytes Shuffle(Bytes value, Bytes pattern) {
        return As<Bytes>(_mm256_shuffle_epi8(Raw(value), Raw(pattern)));
    }

    static Bytes PackWords(Words a, Words b) { return As<Bytes>(_mm256_packus_epi16(Raw(a), Raw(b))); }
    static Words PackDwords(Dwords a, Dwords b) { return As<Words>(_mm256_packs_epi32(Raw(a), Raw(b))); }
    static Bytes PackMasks(Words a, Words b) { return As<Bytes>(_mm256_packs_epi16(Raw(a), Raw(b))); }

    static Words MultiplyAdd(Bytes a, Bytes b) { return As<Words>(_mm256_maddubs_epi16(Raw(a), Raw(b))); }
    static Dwords MultiplyAdd(Words a, Words b) { return As<Dwords>(_mm256_madd_epi16(Raw(a), Raw(b))); }
    static Words MultiplyHigh(Words a, Words b) { return As<Words>(_mm256_mulhi_epu16(Raw(a), Raw(b))); }

    static uint32_t TopBits(Bytes value) { return static_cast<uint32_t>(_mm256_movemask_epi8(Raw(value))); }

    static void StoreStream(uint8_t* dst, Bytes value) {
        _mm256_stream_si256(reinterpret_cast<__m256i*>(dst), Raw(value));
    }
    static void FinishStream() { _mm_sfence(); }

    static Words Hide(Words value) {
        asm("" : "+x"(value));
        return value;
    }

    // Eight numbers as dwords. GCC 12 takes its own conversion of vectors apart into single lanes.
    static Dwords LoadDwords(const uint8_t* numbers) {
        return As<Dwords>(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(numbers))));
    }
    static Dwords LoadDwords(const uint16_t* numbers) {
        return As<Dwords>(_mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(numbers))));
    }
    static Dwords LoadDwords(const uint32_t* numbers) { return LoadVector<Dwords>(numbers); }

    // Dword i of the result is dword places[i] of the value.
    static Dwords PermuteDwords(Dwords value, Dwords places) {
        return As<Dwords>(_mm256_permutevar8x32_epi32(Raw(value), Raw(places)));
    }

private:
    template <class Vector>
    static __m256i Raw(Vector vector) {
        return As<__m256i>(vector);
    }
};

using TargetVector = Vector32;

}  // namespace
}  // namespace plenar
