// Vectors of samples, as wide as the target of the including source has them. Everything here is local to that source,
// since each source that includes this is compiled for another target.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace plenar {
namespace {

#if defined(__AVX2__)
constexpr size_t kVectorBytes = 32;
#else
constexpr size_t kVectorBytes = 16;
#endif

template <class Lane>
struct VectorTypes;
template <>
struct VectorTypes<uint8_t> {
    typedef uint8_t Unsigned __attribute__((vector_size(kVectorBytes)));
    typedef int8_t Signed __attribute__((vector_size(kVectorBytes)));
};
template <>
struct VectorTypes<uint16_t> {
    typedef uint16_t Unsigned __attribute__((vector_size(kVectorBytes)));
    typedef int16_t Signed __attribute__((vector_size(kVectorBytes)));
};
template <>
struct VectorTypes<uint32_t> {
    typedef uint32_t Unsigned __attribute__((vector_size(kVectorBytes)));
};
template <>
struct VectorTypes<uint64_t> {
    typedef uint64_t Unsigned __attribute__((vector_size(kVectorBytes)));
};

template <class Lane>
using Vector = typename VectorTypes<Lane>::Unsigned;
template <class Lane>
using SignedVector = typename VectorTypes<Lane>::Signed;

template <class Lane>
constexpr size_t kLanes = kVectorBytes / sizeof(Lane);

template <class Lane>
inline Vector<Lane> LoadLanes(const uint8_t* bytes) {
    Vector<Lane> lanes;
    std::memcpy(&lanes, bytes, sizeof lanes);
    return lanes;
}

template <class Lanes>
inline void StoreLanes(uint8_t* bytes, Lanes lanes) {
    std::memcpy(bytes, &lanes, sizeof lanes);
}

template <class Lane>
inline Vector<Lane> Splat(Lane value) {
    return Vector<Lane>{} + value;
}

// The lanes moved up by one, with the last lane of `before` in the first place.
template <class Lane>
inline Vector<Lane> ShiftIn(Vector<Lane> before, Vector<Lane> lanes) {
    constexpr int kBytes = sizeof(Lane);
#if defined(__AVX2__)
    const auto low = reinterpret_cast<__m256i>(lanes);
    const __m256i below = _mm256_permute2x128_si256(reinterpret_cast<__m256i>(before), low, 0x21);
    return reinterpret_cast<Vector<Lane>>(_mm256_alignr_epi8(low, below, 16 - kBytes));
#else
    const __m128i moved = _mm_slli_si128(reinterpret_cast<__m128i>(lanes), kBytes);
    const __m128i first = _mm_srli_si128(reinterpret_cast<__m128i>(before), 16 - kBytes);
    return reinterpret_cast<Vector<Lane>>(_mm_or_si128(moved, first));
#endif
}

// Stores the lanes of both in turn, twice as many.
template <class Lane>
inline void StoreInterleaved(uint8_t* bytes, Vector<Lane> even, Vector<Lane> odd) {
#if defined(__AVX2__)
    const auto a = reinterpret_cast<__m256i>(even);
    const auto b = reinterpret_cast<__m256i>(odd);
    const __m256i low = sizeof(Lane) == 1 ? _mm256_unpacklo_epi8(a, b) : _mm256_unpacklo_epi16(a, b);
    const __m256i high = sizeof(Lane) == 1 ? _mm256_unpackhi_epi8(a, b) : _mm256_unpackhi_epi16(a, b);
    StoreLanes(bytes, _mm256_permute2x128_si256(low, high, 0x20));
    StoreLanes(bytes + kVectorBytes, _mm256_permute2x128_si256(low, high, 0x31));
#else
    const auto a = reinterpret_cast<__m128i>(even);
    const auto b = reinterpret_cast<__m128i>(odd);
    StoreLanes(bytes, sizeof(Lane) == 1 ? _mm_unpacklo_epi8(a, b) : _mm_unpacklo_epi16(a, b));
    StoreLanes(bytes + kVectorBytes, sizeof(Lane) == 1 ? _mm_unpackhi_epi8(a, b) : _mm_unpackhi_epi16(a, b));
#endif
}

// Whether a comparison held in all lanes.
template <class Mask>
inline bool AllSet(Mask lanes) {
#if defined(__AVX2__)
    return _mm256_movemask_epi8(reinterpret_cast<__m256i>(lanes)) == -1;
#else
    return _mm_movemask_epi8(reinterpret_cast<__m128i>(lanes)) == 0xFFFF;
#endif
}

// One bit for each lane of a comparison's result, the first lane's lowest, over 64 lanes.
template <class Lane, class Mask>
inline uint64_t MaskOf64(const Mask (&lanes)[64 / kLanes<Lane>]) {
    uint64_t bits = 0;
#if defined(__AVX2__)
    for (int i = 0; i < 2; ++i) {
        __m256i bytes;
        if constexpr (sizeof(Lane) == 1) {
            bytes = reinterpret_cast<__m256i>(lanes[i]);
        } else {
            bytes = _mm256_packs_epi16(reinterpret_cast<__m256i>(lanes[2 * i]),
                                       reinterpret_cast<__m256i>(lanes[2 * i + 1]));
            bytes = _mm256_permute4x64_epi64(bytes, 0xD8);
        }
        bits |= uint64_t{static_cast<uint32_t>(_mm256_movemask_epi8(bytes))} << (32 * i);
    }
#else
    for (int i = 0; i < 4; ++i) {
        __m128i bytes;
        if constexpr (sizeof(Lane) == 1) {
            bytes = reinterpret_cast<__m128i>(lanes[i]);
        } else {
            bytes =
                _mm_packs_epi16(reinterpret_cast<__m128i>(lanes[2 * i]), reinterpret_cast<__m128i>(lanes[2 * i + 1]));
        }
        bits |= uint64_t{static_cast<uint32_t>(_mm_movemask_epi8(bytes))} << (16 * i);
    }
#endif
    return bits;
}

}  // namespace
}  // namespace plenar
