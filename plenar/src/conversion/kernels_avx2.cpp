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
    static __m128i LoadHalf(const uint8_t* src) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(src)); }

    // 16 bytes from each of two places, `distance` bytes apart.
    static Reg LoadLanes(const uint8_t* src, size_t distance) {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(LoadHalf(src)), LoadHalf(src + distance), 1);
    }

    template <size_t N>
    static Chunks<Vector32, N> LoadChunks(const uint8_t* src) {
        Chunks<Vector32, N> chunks;
        for (size_t i = 0; i < N; ++i) {
            chunks[i] = N == 1 ? Load(src) : LoadLanes(src + i * chunkBytes, N * chunkBytes);
        }
        return chunks;
    }

    // Piece i of the row: of the lower lanes' pieces first, then of the upper lanes'.
    template <size_t N>
    static Reg JoinPieces(const Chunks<Vector32, N>& chunks, size_t first) {
        if (first + 1 < N) {
            return _mm256_permute2x128_si256(chunks[first], chunks[first + 1], 0x20);
        }
        if (first < N) {
            return _mm256_blend_epi32(chunks[first], chunks[0], 0xF0);
        }
        return _mm256_permute2x128_si256(chunks[first - N], chunks[first - N + 1], 0x31);
    }

    template <size_t N>
    static void StoreChunks(uint8_t* dst, const Chunks<Vector32, N>& chunks) {
        if constexpr (N == 1) {
            Store(dst, chunks[0]);
        } else {
            for (size_t i = 0; i < N; ++i) {
                Store(dst + i * sizeof(Reg), JoinPieces(chunks, 2 * i));
            }
        }
    }

    template <size_t Bytes>
    static Reg LoadStarts(const uint8_t* src) {
        return LoadLanes(src, Bytes);
    }
    template <size_t Bytes>
    static void StoreStarts(uint8_t* dst, Reg value) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), _mm256_castsi256_si128(value));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + Bytes), _mm256_extracti128_si256(value, 1));
    }

    static Reg Pattern(const Shuffle16& shuffle) { return _mm256_broadcastsi128_si256(LoadHalf(shuffle.byte)); }
    static Reg Shuffle(Reg value, Reg pattern) { return _mm256_shuffle_epi8(value, pattern); }
    template <int Bytes>
    static Reg Concat(Reg high, Reg low) {
        return _mm256_alignr_epi8(high, low, Bytes);
    }
    template <int Bytes>
    static Reg ShiftUp(Reg value) {
        return _mm256_slli_si256(value, Bytes);
    }
    template <int Bytes>
    static Reg ShiftDown(Reg value) {
        return _mm256_srli_si256(value, Bytes);
    }
    static Reg MiddleDwords(Reg a, Reg b) {
        return _mm256_castps_si256(
            _mm256_shuffle_ps(_mm256_castsi256_ps(a), _mm256_castsi256_ps(b), _MM_SHUFFLE(1, 0, 2, 1)));
    }
    static Reg UnpackLo8(Reg a, Reg b) { return _mm256_unpacklo_epi8(a, b); }
    static Reg UnpackHi8(Reg a, Reg b) { return _mm256_unpackhi_epi8(a, b); }
    static Reg UnpackLo16(Reg a, Reg b) { return _mm256_unpacklo_epi16(a, b); }
    static Reg UnpackHi16(Reg a, Reg b) { return _mm256_unpackhi_epi16(a, b); }
    static Reg UnpackLo32(Reg a, Reg b) { return _mm256_unpacklo_epi32(a, b); }
    static Reg UnpackHi32(Reg a, Reg b) { return _mm256_unpackhi_epi32(a, b); }
    static Reg UnpackLo64(Reg a, Reg b) { return _mm256_unpacklo_epi64(a, b); }
    static Reg UnpackHi64(Reg a, Reg b) { return _mm256_unpackhi_epi64(a, b); }

    static Reg Zero() { return _mm256_setzero_si256(); }
    static Reg Bytes(int a, int b) { return _mm256_set1_epi16(static_cast<short>(a | b << 8)); }
    static Reg Words(int a, int b) { return _mm256_set1_epi32(a | b << 16); }
    static Reg Words(int a, int b, int c, int d) { return WordsOf8(a, b, c, d, a, b, c, d); }
    static Reg WordsOf8(int a, int b, int c, int d, int e, int f, int g, int h) {
        return _mm256_broadcastsi128_si256(_mm_setr_epi32(a | b << 16, c | d << 16, e | f << 16, g | h << 16));
    }
    static Reg And(Reg a, Reg b) { return _mm256_and_si256(a, b); }
    static Reg Or(Reg a, Reg b) { return _mm256_or_si256(a, b); }
    static Reg Add8(Reg a, Reg b) { return _mm256_add_epi8(a, b); }
    static Reg Multiply16(Reg a, Reg b) { return _mm256_mullo_epi16(a, b); }
    static Reg MultiplyAdd8(Reg a, Reg b) { return _mm256_maddubs_epi16(a, b); }
    static Reg MultiplyAdd16(Reg a, Reg b) { return _mm256_madd_epi16(a, b); }
    template <int Bits>
    static Reg ShiftRight16(Reg value) {
        return _mm256_srli_epi16(value, Bits);
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
