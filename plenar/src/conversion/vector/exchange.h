// Pairs and triples whose samples change places.
#pragma once

#include "conversion/vector/gather.h"
#include "conversion/vector/rounds.h"

namespace plenar {
namespace {

constexpr Shuffle16 MakePairShuffle(size_t sampleBytes) {
    return PieceShuffle(0, 0, [&](size_t i) { return MovedByte(Movement::SwapPairs, i, sampleBytes); });
}

constexpr Shuffle16 kPairShuffles[kSampleSizes] = {MakePairShuffle(1), MakePairShuffle(2), MakePairShuffle(4)};

void SwapPairs(size_t sampleBytes, const uint8_t* src, uint8_t* dst, size_t pairs) {
    const Bytes pattern = InEachLane(kPairShuffles[SampleSizeIndex(sampleBytes)]);
    const size_t bytes = pairs * 2 * sampleBytes;
    const size_t done =
        CoverInRounds(bytes, kLineBytes, 2 * sampleBytes, src != dst, LoadsMeetStores(src, dst), [&](size_t at) {
            Pieces<kLineVectors> out;
            for (size_t i = 0; i < kLineVectors; ++i) {
                out[i] = TargetVector::Shuffle(Load<uint8_t>(src + at + i * kVectorBytes), pattern);
            }
            StoreAll(dst + at, out);
        });
    if (done != bytes) {
        narrower.swapPairs(sampleBytes, src + done, dst + done, (bytes - done) / (2 * sampleBytes));
    }
}

// The vectors of a unit of triples; they repeat for the units behind it.
template <size_t SampleBytes>
constexpr Tables<GatherTwo, 3> kTripleGathers([](size_t index) {
    return MakeGatherTwo(index, 3 * kVectorBytes,
                         [](size_t i) { return MovedByte(Movement::ReverseTriples, i, SampleBytes); });
});

template <size_t SampleBytes>
size_t TripleRounds(const uint8_t* src, uint8_t* dst, size_t bytes) {
    return CoverInRounds(
        bytes, 3 * kVectorBytes, 3 * SampleBytes, src != dst, LoadsMeetStores(src, dst), [&](size_t at) {
            Pieces<3> out;
            Repeat<3>([&]<size_t I>() { out[I] = Gathered(src + at, kTripleGathers<SampleBytes>[I]); });
            StoreAll(dst + at, out);
        });
}

void ReverseTriples(size_t sampleBytes, const uint8_t* src, uint8_t* dst, size_t pixels) {
    const size_t bytes = pixels * 3 * sampleBytes;
    const auto rounds = sampleBytes == 1 ? TripleRounds<1> : sampleBytes == 2 ? TripleRounds<2> : TripleRounds<4>;
    const size_t done = rounds(src, dst, bytes);
    if (done != bytes) {
        narrower.reverseTriples(sampleBytes, src + done, dst + done, (bytes - done) / (3 * sampleBytes));
    }
}

}  // namespace
}  // namespace plenar
