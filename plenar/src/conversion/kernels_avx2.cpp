// The kernels in vectors of 32 bytes.
#include <immintrin.h>

#include "conversion/kernels_vector.h"

namespace plenar {
namespace {

struct Vector32 {
    using Reg = __m256i;
    static constexpr size_t kLanes = 2;

    static const RowKernels& Next() { return kSsse3RowKernels; }

    static Reg Load(const uint8_t* src) { return _mm256_loadu_si256(reinterpret_cast<const Reg*>(src)); }
    static void Store(uint8_t* dst, Reg value) { _mm256_storeu_si256(reinterpret_cast<Reg*>(dst), value); }
    // Past the caches; dst is a multiple of the register's size.
    static void StoreStream(uint8_t* dst, Reg value) { _mm256_stream_si256(reinterpret_cast<Reg*>(dst), value); }
    static void FinishStream() { _mm_sfence(); }
    static __m128i LoadHalf(const uint8_t* src) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(src)); }

    static void StoreHalf(uint8_t* dst, __m128i value) { _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), value); }

    // 16 bytes from each of two places. Where these are constants, one of the cases is left.
    static Reg LoadLanes(const uint8_t* src, const size_t (&at)[kLanes]) {
        if (at[1] == at[0]) {
            return _mm256_broadcastsi128_si256(LoadHalf(src + at[0]));
        }
        return at[1] == at[0] + kPieceBytes ? Load(src + at[0]) : LoadLanes(src + at[0], at[1] - at[0]);
    }
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

    // Brings the eights, fours or twos of bytes, which come from the two lanes by turns, to the order of the row.
    static Reg JoinEights(Reg value) {
        return _mm256_permutevar8x32_epi32(value, _mm256_setr_epi32(0, 1, 4, 5, 2, 3, 6, 7));
    }
    static Reg JoinFours(Reg value) {
        return _mm256_permutevar8x32_epi32(value, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
    }
    static Reg JoinTwos(Reg value) {
        const Reg pattern = _mm256_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15,  //
                                             0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15);
        return Shuffle(JoinEights(value), pattern);
    }
    static void StoreHalf(uint8_t* dst, Reg value) { StoreHalf(dst, _mm256_castsi256_si128(value)); }

    static Reg JoinLanes(const uint8_t* const (&src)[kLanes]) {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(LoadHalf(src[0])), LoadHalf(src[1]), 1);
    }
    static Reg Pattern(const Shuffle16& shuffle) { return _mm256_broadcastsi128_si256(LoadHalf(shuffle.byte)); }
    static Reg LoadWords(const uint16_t (&words)[kLanes * 8]) {
        return _mm256_loadu_si256(reinterpret_cast<const Reg*>(words));
    }
    static Reg Shuffle(Reg value, Reg pattern) { return _mm256_shuffle_epi8(value, pattern); }

    static Reg Bytes(int a, int b) { return _mm256_set1_epi16(static_cast<short>(a | b << 8)); }
    static Reg Words(int a, int b) { return _mm256_set1_epi32(a | b << 16); }
    static Reg WordsOf4(int a, int b, int c, int d) {
        return _mm256_broadcastsi128_si256(_mm_setr_epi32(a | b << 16, c | d << 16, a | b << 16, c | d << 16));
    }
    static Reg And(Reg a, Reg b) { return _mm256_and_si256(a, b); }
    static Reg Or(Reg a, Reg b) { return _mm256_or_si256(a, b); }
    static Reg Multiply16(Reg a, Reg b) { return _mm256_mullo_epi16(a, b); }
    static Reg MultiplyHigh16(Reg a, Reg b) { return _mm256_mulhi_epu16(a, b); }
    // The compiler would make shifts and additions of a multiplication by a factor that it knows.
    static Reg MultiplyByHidden(Reg words, int factor) {
        Reg factors = Words(factor, factor);
        asm("" : "+x"(factors));
        return Multiply16(words, factors);
    }
    // The top bits of all bytes.
    static uint64_t TopBits(Reg a, Reg b) {
        return uint64_t{static_cast<uint32_t>(_mm256_movemask_epi8(a))} |
               uint64_t{static_cast<uint32_t>(_mm256_movemask_epi8(b))} << 32;
    }
    static Reg MultiplyAdd8(Reg a, Reg b) { return _mm256_maddubs_epi16(a, b); }
    static Reg MultiplyAdd16(Reg a, Reg b) { return _mm256_madd_epi16(a, b); }
    static Reg PackWords(Reg a, Reg b) { return _mm256_packus_epi16(a, b); }
    static Reg PackDwords(Reg a, Reg b) { return _mm256_packs_epi32(a, b); }

    static Reg Fixed14ToFloat(Reg value) {
        return _mm256_castps_si256(_mm256_mul_ps(_mm256_cvtepi32_ps(value), _mm256_set1_ps(0x1p-30F)));
    }
};

}  // namespace

constinit const RowKernels kAvx2RowKernels = VectorRowKernels<Vector32>();

}  // namespace plenar
