// The kernels sample by sample: what all other sets must agree with, and what they use for the ends of rows.
#include <cstring>

#include "base/bytes.h"
#include "conversion/row_kernels.h"
#include "format/packed10.h"

namespace plenar {

namespace {

void Copy(const uint8_t* src, uint8_t* dst, size_t bytes) {
    std::memcpy(dst, src, bytes);
}

template <class Sample>
void SplitSamples(const Order& order, const uint8_t* src, uint8_t* colour, uint8_t* alpha, size_t pixels) {
    for (size_t pixel = 0; pixel < pixels; ++pixel) {
        for (size_t i = 0; i < order.colourSamples; ++i) {
            StoreAs(colour, LoadAs<Sample>(src + order.colour[i] * sizeof(Sample)));
            colour += sizeof(Sample);
        }
        if (alpha != nullptr) {
            StoreAs(alpha, LoadAs<Sample>(src + order.alphaSample * sizeof(Sample)));
            alpha += sizeof(Sample);
        }
        src += order.samples * sizeof(Sample);
    }
}

template <class Sample>
void MergeSamples(const Order& order, const uint8_t* colour, const uint8_t* alpha, uint8_t* dst, size_t pixels) {
    for (size_t pixel = 0; pixel < pixels; ++pixel) {
        for (size_t i = 0; i < order.colourSamples; ++i) {
            StoreAs(dst + order.colour[i] * sizeof(Sample), LoadAs<Sample>(colour));
            colour += sizeof(Sample);
        }
        StoreAs(dst + order.alphaSample * sizeof(Sample), LoadAs<Sample>(alpha));
        alpha += sizeof(Sample);
        dst += order.samples * sizeof(Sample);
    }
}

// Exchanges the first and the last sample of each group.
template <size_t Group, class Sample>
void ExchangeSamples(const uint8_t* src, uint8_t* dst, size_t groups) {
    for (size_t i = 0; i < groups; ++i) {
        Sample samples[Group];
        std::memcpy(samples, src + i * sizeof samples, sizeof samples);
        const Sample first = samples[0];
        samples[0] = samples[Group - 1];
        samples[Group - 1] = first;
        std::memcpy(dst + i * sizeof samples, samples, sizeof samples);
    }
}

// Calls the function object with a sample of the size that is asked for.
template <class Function>
void WithSampleOf(size_t sampleBytes, const Function& function) {
    switch (sampleBytes) {
        case 1:
            return function(uint8_t{});
        case 2:
            return function(uint16_t{});
        default:
            return function(uint32_t{});
    }
}

void SplitRow(const Order& order, size_t sampleBytes, const uint8_t* src, uint8_t* colour, uint8_t* alpha,
              size_t pixels) {
    WithSampleOf(sampleBytes, [&](auto sample) { SplitSamples<decltype(sample)>(order, src, colour, alpha, pixels); });
}

void MergeRow(const Order& order, size_t sampleBytes, const uint8_t* colour, const uint8_t* alpha, uint8_t* dst,
              size_t pixels) {
    WithSampleOf(sampleBytes, [&](auto sample) { MergeSamples<decltype(sample)>(order, colour, alpha, dst, pixels); });
}

template <size_t Group>
void ExchangeEnds(size_t sampleBytes, const uint8_t* src, uint8_t* dst, size_t groups) {
    WithSampleOf(sampleBytes, [&](auto sample) { ExchangeSamples<Group, decltype(sample)>(src, dst, groups); });
}

// Which of the caller's samples becomes sample `i` of the plane.
size_t CallerSampleOf(const Order& order, size_t i) {
    return order.movement == Movement::InOrder
               ? i
               : i / order.colourSamples * order.samples + order.colour[i % order.colourSamples];
}

// The low part: each byte takes LowBits of each of as many samples as it holds.
template <unsigned LowBits>
void PackRow(const Order& order, const uint8_t* words, size_t samples, uint8_t* high, uint8_t* low) {
    constexpr size_t kPerByte = 8 / LowBits;
    constexpr unsigned kUnused = 8 - LowBits;
    for (size_t i = 0; i < samples; ++i) {
        const auto word = LoadAs<uint16_t>(words + 2 * CallerSampleOf(order, i));
        high[i] = static_cast<uint8_t>(word >> 8);
        const unsigned bits = (word & 0xFFU) >> kUnused << (i % kPerByte * LowBits);
        uint8_t& target = low[i / kPerByte];
        target = static_cast<uint8_t>(i % kPerByte == 0 ? bits : target | bits);
    }
}

template <unsigned LowBits>
void UnpackRow(const Order& order, const uint8_t* high, const uint8_t* low, size_t samples, uint8_t* words) {
    constexpr size_t kPerByte = 8 / LowBits;
    constexpr unsigned kUnused = 8 - LowBits;
    for (size_t i = 0; i < samples; ++i) {
        const unsigned bits = static_cast<unsigned>(low[i / kPerByte]) >> (i % kPerByte * LowBits) << kUnused;
        const auto word = static_cast<uint16_t>(static_cast<unsigned>(high[i]) << 8 | (bits & 0xFFU));
        StoreAs(words + 2 * CallerSampleOf(order, i), word);
    }
}

constexpr size_t kWordsInGroup = kPackedGroupBytes / sizeof(uint32_t);

void PackedGroupsToPlane(const uint8_t* packed, size_t groups, uint8_t* high, uint8_t* low) {
    for (size_t group = 0; group < groups; ++group) {
        std::memset(low, 0, kPackedGroupLowBytes);
        for (size_t i = 0; i < kPackedGroupSamples; ++i) {
            const auto word = LoadAs<uint32_t>(packed + i / kPackedWordFields * sizeof(uint32_t));
            const uint32_t field = word >> (i % kPackedWordFields * kPackedFieldBits);
            high[i] = static_cast<uint8_t>(field >> 2);
            low[i / 4] = static_cast<uint8_t>(low[i / 4] | (field & 3) << (i % 4 * 2));
        }
        packed += kPackedGroupBytes;
        high += kPackedGroupSamples;
        low += kPackedGroupLowBytes;
    }
}

void PlaneToPackedGroups(const uint8_t* high, const uint8_t* low, size_t groups, uint8_t* packed) {
    for (size_t group = 0; group < groups; ++group) {
        uint32_t words[kWordsInGroup] = {};
        for (size_t i = 0; i < kPackedGroupSamples; ++i) {
            const uint32_t field = high[i] * 4U + (static_cast<unsigned>(low[i / 4]) >> (i % 4 * 2) & 3U);
            words[i / kPackedWordFields] |= field << (i % kPackedWordFields * kPackedFieldBits);
        }
        std::memcpy(packed, words, sizeof words);
        packed += sizeof words;
        high += kPackedGroupSamples;
        low += kPackedGroupLowBytes;
    }
}

void FixedRowToFloat(const Order& order, const uint8_t* fixed, size_t samples, uint8_t* floats) {
    constexpr float kOne = 16384.0F;
    for (size_t i = 0; i < samples; ++i) {
        StoreAs(floats + 4 * CallerSampleOf(order, i), static_cast<float>(LoadAs<int16_t>(fixed + 2 * i)) / kOne);
    }
}

}  // namespace

constinit const RowKernels kPlainRowKernels = {
    .copy = Copy,
    .streamCopy = Copy,
    .streamLines = Copy,
    .finishStream = [] {},
    .splitRow = SplitRow,
    .mergeRow = MergeRow,
    .swapPairs = ExchangeEnds<2>,
    .reverseTriples = ExchangeEnds<3>,
    .packRow10 = PackRow<2>,
    .packRow12 = PackRow<4>,
    .unpackRow10 = UnpackRow<2>,
    .unpackRow12 = UnpackRow<4>,
    .packedGroupsToPlane = PackedGroupsToPlane,
    .planeToPackedGroups = PlaneToPackedGroups,
    .fixedRowToFloat = FixedRowToFloat,
};

}  // namespace plenar
