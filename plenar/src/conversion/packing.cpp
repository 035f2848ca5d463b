#include "conversion/packing.h"

#include <cstring>

#include "base/exceptions.h"
#include "conversion/row_kernels.h"
#include "format/sample_type.h"
#include "plenar_sdk.h"

namespace plenar {

namespace {

constexpr size_t kWordBytes = 2;

// Packed10: groups of 6 pixels, 12 samples, in 4 words of three fields.
constexpr uint32_t kGroupPixels = 6;
constexpr size_t kGroupBytes = 16;
constexpr size_t kGroupSamples = 12;
constexpr size_t kGroupLowBytes = 3;
constexpr unsigned kFieldBits = 10;

uint32_t LoadWord(const uint8_t* packed, size_t index) {
    uint32_t word;
    std::memcpy(&word, packed + index * sizeof word, sizeof word);
    return word;
}

void StoreWord(uint8_t* packed, size_t index, uint32_t word) {
    std::memcpy(packed + index * sizeof word, &word, sizeof word);
}

// Sample `i` of a group, as a field of 10 bits.
uint32_t FieldOf(const uint8_t* packed, size_t i) {
    return LoadWord(packed, i / 3) >> (i % 3 * kFieldBits);
}
uint32_t FieldOf(const uint8_t* high, const uint8_t* low, size_t i) {
    return high[i] * 4U + (static_cast<uint32_t>(low[i / 4]) >> (i % 4 * 2) & 3U);
}

// Four samples of a group from `first` on: 4 bytes of the high part and one of the low part.
void PackFour(const uint8_t* packed, size_t first, uint8_t* high, uint8_t* low) {
    uint32_t bits = 0;
    for (size_t i = 0; i < 4; ++i) {
        const uint32_t field = FieldOf(packed, first + i);
        high[first + i] = static_cast<uint8_t>(field >> 2);
        bits |= (field & 3U) << (2 * i);
    }
    low[first / 4] = static_cast<uint8_t>(bits);
}

// The last pixels of a row go by twos.
void PackedRowToPlane(const RowKernels& kernels, uint32_t width, const uint8_t* src, uint8_t* dst) {
    const size_t groups = width / kGroupPixels;
    uint8_t* high = dst;
    uint8_t* low = dst + size_t{2} * width;
    kernels.packedGroupsToPlane(src, groups, high, low);
    src += groups * kGroupBytes;
    high += groups * kGroupSamples;
    low += groups * kGroupLowBytes;
    const uint32_t left = width % kGroupPixels;
    if (left >= 2) {
        PackFour(src, 0, high, low);
    }
    if (left >= 4) {
        PackFour(src, 4, high, low);
    }
}

// Up to three samples of a group from `first` on, in the fields of one word.
uint32_t JoinFields(const uint8_t* high, const uint8_t* low, size_t first, size_t count) {
    uint32_t word = 0;
    for (size_t i = 0; i < count; ++i) {
        word |= FieldOf(high, low, first + i) << (i * kFieldBits);
    }
    return word;
}

// The words of an unfinished last group are as hosts have always got them: what isn't named here keeps the target's
// bytes, and with 4 or 5 pixels left the second word is added to them, so that a cleared buffer gets the plain word.
void PlaneRowToPacked(const RowKernels& kernels, uint32_t width, const uint8_t* src, uint8_t* dst) {
    const size_t groups = width / kGroupPixels;
    const uint8_t* high = src;
    const uint8_t* low = src + size_t{2} * width;
    kernels.planeToPackedGroups(high, low, groups, dst);
    high += groups * kGroupSamples;
    low += groups * kGroupLowBytes;
    dst += groups * kGroupBytes;
    const uint32_t left = width % kGroupPixels;
    if (left >= 2) {
        StoreWord(dst, 0, JoinFields(high, low, 0, 3));
    }
    if (left == 2 || left == 3) {
        StoreWord(dst, 1, JoinFields(high, low, 3, 1));
    }
    if (left >= 4) {
        StoreWord(dst, 1, LoadWord(dst, 1) + JoinFields(high, low, 3, 3));
        StoreWord(dst, 2, JoinFields(high, low, 6, 2));
    }
}

}  // namespace

RowPacker::RowPacker(uint32_t type) : kernels_(ActiveRowKernels()) {
    switch (type) {
        case Uint10:
            pack_ = kernels_.packRow10;
            unpack_ = kernels_.unpackRow10;
            lowBits_ = 2;
            break;
        case Uint12:
            pack_ = kernels_.packRow12;
            unpack_ = kernels_.unpackRow12;
            lowBits_ = 4;
            break;
        case Packed10:
            break;
        default:
            throw invalid_argument("component type is not supported");
    }
}

void RowPacker::Pack(const Order& order, uint32_t width, const uint8_t* src, size_t samples, uint8_t* planeRow) const {
    if (pack_ == nullptr) {
        return PackedRowToPlane(kernels_, width, src, planeRow);
    }
    pack_(order, src, samples, planeRow, planeRow + samples);
}

void RowPacker::Unpack(const Order& order, uint32_t width, const uint8_t* planeRow, const uint8_t* planeEnd,
                       uint8_t* dst, size_t samples) const {
    if (unpack_ == nullptr) {
        return PlaneRowToPacked(kernels_, width, planeRow, dst);
    }
    const uint8_t* low = planeRow + samples;
    const size_t lowBytes = (samples * lowBits_ + 7) / 8;
    if (lowBytes <= static_cast<size_t>(planeEnd - planeRow) - samples) {
        return unpack_(order, planeRow, low, samples, dst);
    }
    // Only the last byte of the low part can be missing.
    const size_t whole = (lowBytes - 1) * 8 / lowBits_;
    const uint8_t missing = 0;
    unpack_(order, planeRow, low, whole, dst);
    unpack_(order, planeRow + whole, &missing, samples - whole, dst + whole * kWordBytes);
}

}  // namespace plenar
