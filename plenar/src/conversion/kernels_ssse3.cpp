// The kernels in vectors of 16 bytes with byte shuffles: the baseline, which every processor served has.
#include <tmmintrin.h>

#include "conversion/kernels_vector.h"

namespace plenar {
namespace {

struct Vector16 {
    using Reg = __m128i;
    static constexpr size_t kLanes = 1;

    static const RowKernels& Next() { return kPlainRowKernels; }

    static Reg Load(const uint8_t* src) { return _mm_loadu_si128(reinterpret_cast<const Reg*>(src)); }
    static void Store(uint8_t* dst, Reg value) { _mm_storeu_si128(reinterpret_cast<Reg*>(dst), value); }
    // Past the caches; dst is a multiple of the register's size.
    static void StoreStream(uint8_t* dst, Reg value) { _mm_stream_si128(reinterpret_cast<Reg*>(dst), value); }
    static void FinishStream() { _mm_sfence(); }
    static void StoreHalf(uint8_t* dst, Reg value) { _mm_storel_epi64(reinterpret_cast<Reg*>(dst), value); }

    static Reg LoadLanes(const uint8_t* src, size_t /*distance*/) { return Load(src); }
    static Reg LoadLanes(const uint8_t* src, const size_t (&at)[kLanes]) { return Load(src + at[0]); }
    template <size_t N>
    static void StorePieces(uint8_t* dst, const Pieces<Vector16, N>& pieces) {
        for (size_t i = 0; i < N; ++i) {
            Store(dst + i * kPieceBytes, pieces[i]);
        }
    }

    static Reg JoinEights(Reg value) { return value; }
    static Reg JoinFours(Reg value) { return value; }
    static Reg JoinTwos(Reg value) { return value; }

    static Reg JoinLanes(const uint8_t* const (&src)[kLanes]) { return Load(src[0]); }
    static Reg Pattern(const Shuffle16& shuffle) { return Load(shuffle.byte); }
    static Reg LoadWords(const uint16_t (&words)[kLanes * 8]) {
        return _mm_loadu_si128(reinterpret_cast<const Reg*>(words));
    }
    static Reg Shuffle(Reg value, Reg pattern) { return _mm_shuffle_epi8(value, pattern); }

    static Reg Bytes(int a, int b) { return _mm_set1_epi16(static_cast<short>(a | b << 8)); }
    static Reg Words(int a, int b) { return _mm_set1_epi32(a | b << 16); }
    static Reg WordsOf4(int a, int b, int c, int d) {
        return _mm_setr_epi32(a | b << 16, c | d << 16, a | b << 16, c | d << 16);
    }
    static Reg And(Reg a, Reg b) { return _mm_and_si128(a, b); }
    static Reg Or(Reg a, Reg b) { return _mm_or_si128(a, b); }
    static Reg Multiply16(Reg a, Reg b) { return _mm_mullo_epi16(a, b); }
    static Reg MultiplyHigh16(Reg a, Reg b) { return _mm_mulhi_epu16(a, b); }
    // The compiler would make shifts and additions of a multiplication by a factor that it knows.
    static Reg MultiplyByHidden(Reg words, int factor) {
        Reg factors = Words(factor, factor);
        asm("" : "+x"(factors));
        return Multiply16(words, factors);
    }
    // The top bits of all bytes.
    static uint32_t TopBits(Reg a, Reg b) {
        return static_cast<uint32_t>(_mm_movemask_epi8(a) | _mm_movemask_epi8(b) << 16);
    }
    static Reg MultiplyAdd8(Reg a, Reg b) { return _mm_maddubs_epi16(a, b); }
    static Reg MultiplyAdd16(Reg a, Reg b) { return _mm_madd_epi16(a, b); }
    static Reg PackWords(Reg a, Reg b) { return _mm_packus_epi16(a, b); }
    static Reg PackDwords(Reg a, Reg b) { return _mm_packs_epi32(a, b); }

    // The upper halves of dwords, with zero below, as fixed point with 14 fraction bits.
    static Reg Fixed14ToFloat(Reg value) {
        return _mm_castps_si128(_mm_mul_ps(_mm_cvtepi32_ps(value), _mm_set1_ps(0x1p-30F)));
    }
};

}  // namespace

constinit const RowKernels kSsse3RowKernels = VectorRowKernels<Vector16>();

}  // namespace plenar
