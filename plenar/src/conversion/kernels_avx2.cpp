// The kernels in vectors of 32 bytes.
#include <immintrin.h>

#include "conversion/kernels_vector.h"

namespace plenar {
namespace {

struct Vector32 {
    using Reg = __m256i;
    static constexpr size_t lanes = 2;

    static const RowKernels& Next() { return ssse3RowKernels; }

    static Reg Load(const uint8_t* src) { return _mm256_loadu_si256(reinterpret_cast<const Reg*>(src)); }
    static void Store(uint8_t* dst, Reg value) { _mm256_storeu_si256(reinterpret_cast<Reg*>(dst), value); }
    // Past the caches; dst is a multiple of the register's size.
    static void StoreStream(uint8_t* dst, Reg value) { _mm256_stream_si256(reinterpret_cast<Reg*>(dst), value); }
    static void FinishStream() { _mm_sfence(); }
    static __m128i LoadHalf(const uint8_t* src) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(src)); }

    static void StoreHalf(uint8_t* dst, __m128i value) { _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), value); }
    static void StoreEight(uint8_t* dst, __m128i value) { _mm_storel_epi64(reinterpret_cast<__m128i*>(dst), value); }

    // 16 bytes from each of two places, `distance` bytes apart.
    static Reg LoadLanes(const uint8_t* src, size_t distance) {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(LoadHalf(src)), LoadHalf(src + distance), 1);
    }

    // Piece i of the row: of the lower lanes' pieces first, then of the upper lanes'.
    template <size_t N>
    static Reg JoinPieces(const Pieces<Vector32, N>& pieces, size_t first) {
        if (first + 1 < N) {
            return _mm256_permute2x128_si256(pieces[first], pieces[first + 1], 0x20);
        }
        if (first < N) {
            return _mm256_blend_epi32(pieces[first], pieces[0], 0xF0);
        }
        return _mm256_permute2x128_si256(pieces[first - N], pieces[first - N + 1], 0x31);
    }

    template <size_t N>
    static void StorePieces(uint8_t* dst, const Pieces<Vector32, N>& pieces) {
        for (size_t i = 0; i < N; ++i) {
            Store(dst + i * sizeof(Reg), JoinPieces(pieces, 2 * i));
        }
    }

    // The upper lane's 12 bytes are loaded together with the 4 ahead of them, not with what follows.
    static Reg LoadTwelve(const uint8_t* src) {
        const Reg shift = _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15,  //
                                           4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, -1, -1, -1, -1);
        return _mm256_shuffle_epi8(LoadLanes(src, 8), shift);
    }
    static void StoreTwelve(uint8_t* dst, Reg value) {
        const Reg together = _mm256_permutevar8x32_epi32(value, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 0, 0));
        StoreHalf(dst, _mm256_castsi256_si128(together));
        StoreEight(dst + pieceBytes, _mm256_extracti128_si256(together, 1));
    }
    static void StoreTwentyFour(uint8_t* dst, Reg first16, Reg last8) {
        StoreHalf(dst, _mm256_castsi256_si128(first16));
        StoreEight(dst + 16, _mm256_castsi256_si128(last8));
        StoreHalf(dst + 24, _mm256_extracti128_si256(first16, 1));
        StoreEight(dst + 40, _mm256_extracti128_si256(last8, 1));
    }

    static Reg Pattern(const Shuffle16& shuffle) { return _mm256_broadcastsi128_si256(LoadHalf(shuffle.byte)); }
    static Reg Factors(const uint16_t (&words)[8]) {
        return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(words)));
    }
    static Reg Shuffle(Reg value, Reg pattern) { return _mm256_shuffle_epi8(value, pattern); }
    static Reg UnpackLo16(Reg a, Reg b) { return _mm256_unpacklo_epi16(a, b); }
    static Reg UnpackHi16(Reg a, Reg b) { return _mm256_unpackhi_epi16(a, b); }

    static Reg Zero() { return _mm256_setzero_si256(); }
    static Reg Bytes(int a, int b) { return _mm256_set1_epi16(static_cast<short>(a | b << 8)); }
    static Reg Words(int a, int b) { return _mm256_set1_epi32(a | b << 16); }
    static Reg WordsOf8(int a, int b, int c, int d, int e, int f, int g, int h) {
        return _mm256_broadcastsi128_si256(_mm_setr_epi32(a | b << 16, c | d << 16, e | f << 16, g | h << 16));
    }
    static Reg And(Reg a, Reg b) { return _mm256_and_si256(a, b); }
    static Reg Or(Reg a, Reg b) { return _mm256_or_si256(a, b); }
    static Reg Multiply16(Reg a, Reg b) { return _mm256_mullo_epi16(a, b); }
    static Reg MultiplyAdd8(Reg a, Reg b) { return _mm256_maddubs_epi16(a, b); }
    static Reg MultiplyAdd16(Reg a, Reg b) { return _mm256_madd_epi16(a, b); }
    template <int Bits>
    static Reg ShiftRight16(Reg value) {
        return _mm256_srli_epi16(value, Bits);
    }
    template <int Bits>
    static Reg ShiftRight32(Reg value) {
        return _mm256_srli_epi32(value, Bits);
    }
    template <int Bits>
    static Reg ShiftLeft32(Reg value) {
        return _mm256_slli_epi32(value, Bits);
    }
    static Reg PackWords(Reg a, Reg b) { return _mm256_packus_epi16(a, b); }
    static Reg PackDwords(Reg a, Reg b) { return _mm256_packs_epi32(a, b); }

    static Reg Fixed14ToFloat(Reg value) {
        return _mm256_castps_si256(_mm256_mul_ps(_mm256_cvtepi32_ps(value), _mm256_set1_ps(0x1p-30F)));
    }
};

}  // namespace

constinit const RowKernels avx2RowKernels = VectorRowKernels<Vector32>();

}  // namespace plenar
