// The kernels in vectors of 16 bytes with byte shuffles: the baseline, which every processor served has.
#include <tmmintrin.h>

#include "conversion/kernels_vector.h"

namespace plenar {
namespace {

struct Vector16 {
    using Reg = __m128i;
    static constexpr size_t lanes = 1;

    static const RowKernels& Next() { return plainRowKernels; }

    static Reg Load(const uint8_t* src) { return _mm_loadu_si128(reinterpret_cast<const Reg*>(src)); }
    static void Store(uint8_t* dst, Reg value) { _mm_storeu_si128(reinterpret_cast<Reg*>(dst), value); }
    // Past the caches; dst is a multiple of the register's size.
    static void StoreStream(uint8_t* dst, Reg value) { _mm_stream_si128(reinterpret_cast<Reg*>(dst), value); }
    static void FinishStream() { _mm_sfence(); }
    static Reg LoadEight(const uint8_t* src) { return _mm_loadl_epi64(reinterpret_cast<const Reg*>(src)); }
    static void StoreEight(uint8_t* dst, Reg value) { _mm_storel_epi64(reinterpret_cast<Reg*>(dst), value); }

    static Reg LoadLanes(const uint8_t* src, size_t /*distance*/) { return Load(src); }
    template <size_t N>
    static void StorePieces(uint8_t* dst, const Pieces<Vector16, N>& pieces) {
        for (size_t i = 0; i < N; ++i) {
            Store(dst + i * pieceBytes, pieces[i]);
        }
    }

    // Units of 12 and of 24 bytes, exactly; the rest of the register is anything.
    static Reg LoadTwelve(const uint8_t* src) { return _mm_unpacklo_epi64(LoadEight(src), _mm_loadu_si32(src + 8)); }
    static void StoreTwelve(uint8_t* dst, Reg value) {
        StoreEight(dst, value);
        _mm_storeu_si32(dst + 8, _mm_srli_si128(value, 8));
    }
    static void StoreTwentyFour(uint8_t* dst, Reg first16, Reg last8) {
        Store(dst, first16);
        StoreEight(dst + pieceBytes, last8);
    }

    static Reg Pattern(const Shuffle16& shuffle) { return Load(shuffle.byte); }
    static Reg Factors(const uint16_t (&words)[8]) { return _mm_loadu_si128(reinterpret_cast<const Reg*>(words)); }
    static Reg Shuffle(Reg value, Reg pattern) { return _mm_shuffle_epi8(value, pattern); }
    static Reg UnpackLo16(Reg a, Reg b) { return _mm_unpacklo_epi16(a, b); }
    static Reg UnpackHi16(Reg a, Reg b) { return _mm_unpackhi_epi16(a, b); }

    static Reg Zero() { return _mm_setzero_si128(); }
    static Reg Bytes(int a, int b) { return _mm_set1_epi16(static_cast<short>(a | b << 8)); }
    static Reg Words(int a, int b) { return _mm_set1_epi32(a | b << 16); }
    static Reg WordsOf8(int a, int b, int c, int d, int e, int f, int g, int h) {
        return _mm_setr_epi32(a | b << 16, c | d << 16, e | f << 16, g | h << 16);
    }
    static Reg And(Reg a, Reg b) { return _mm_and_si128(a, b); }
    static Reg Or(Reg a, Reg b) { return _mm_or_si128(a, b); }
    static Reg Multiply16(Reg a, Reg b) { return _mm_mullo_epi16(a, b); }
    static Reg MultiplyAdd8(Reg a, Reg b) { return _mm_maddubs_epi16(a, b); }
    static Reg MultiplyAdd16(Reg a, Reg b) { return _mm_madd_epi16(a, b); }
    template <int Bits>
    static Reg ShiftRight16(Reg value) {
        return _mm_srli_epi16(value, Bits);
    }
    template <int Bits>
    static Reg ShiftRight32(Reg value) {
        return _mm_srli_epi32(value, Bits);
    }
    template <int Bits>
    static Reg ShiftLeft32(Reg value) {
        return _mm_slli_epi32(value, Bits);
    }
    static Reg PackWords(Reg a, Reg b) { return _mm_packus_epi16(a, b); }
    static Reg PackDwords(Reg a, Reg b) { return _mm_packs_epi32(a, b); }

    // The upper halves of dwords, with zero below, as fixed point with 14 fraction bits.
    static Reg Fixed14ToFloat(Reg value) {
        return _mm_castps_si128(_mm_mul_ps(_mm_cvtepi32_ps(value), _mm_set1_ps(0x1p-30F)));
    }
};

}  // namespace

constinit const RowKernels ssse3RowKernels = VectorRowKernels<Vector16>();

}  // namespace plenar
