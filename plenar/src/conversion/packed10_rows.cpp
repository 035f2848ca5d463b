#include "conversion/packed10_rows.h"

#include "base/bytes.h"
#include "format/packed10.h"

namespace plenar {

namespace {

// Where the high and the low part of a row stand. The low part is looked for behind two samples a pixel, also where the
// width is odd and the plane has one sample more.
template <class Byte>
struct SplitRowParts {
    Byte* high;
    Byte* low;

    SplitRowParts(Byte* row, size_t width) : high(row), low(row + 2 * width) {}

    void SkipGroups(size_t groups) {
        high += groups * kPackedGroupSamples;
        low += groups * kPackedGroupLowBytes;
    }
};

// Four samples of a group from `first` on: 4 bytes of the high part and one of the low part.
void PackFour(const uint8_t* packed, size_t first, const SplitRowParts<uint8_t>& row) {
    uint32_t bits = 0;
    for (size_t i = 0; i < 4; ++i) {
        const size_t sample = first + i;
        const uint32_t field = LoadAs<uint32_t>(packed + sample / kPackedWordFields * sizeof(uint32_t)) >>
                               (sample % kPackedWordFields * kPackedFieldBits);
        row.high[sample] = static_cast<uint8_t>(field >> 2);
        bits |= (field & 3U) << (2 * i);
    }
    row.low[first / 4] = static_cast<uint8_t>(bits);
}

// Up to three samples of a group from `first` on, in the fields of one word.
uint32_t JoinFields(const SplitRowParts<const uint8_t>& row, size_t first, size_t count) {
    uint32_t word = 0;
    for (size_t i = 0; i < count; ++i) {
        const size_t sample = first + i;
        const uint32_t lowBits = static_cast<uint32_t>(row.low[sample / 4]) >> (sample % 4 * 2) & 3U;
        word |= (row.high[sample] * 4U + lowBits) << (i * kPackedFieldBits);
    }
    return word;
}

}  // namespace

// The last pixels of a row go by twos.
void PackedRowToPlane(const RowKernels& kernels, size_t width, const uint8_t* src, uint8_t* dst) {
    const size_t groups = width / kPackedGroupPixels;
    SplitRowParts row(dst, width);
    kernels.packedGroupsToPlane(src, groups, row.high, row.low);
    src += groups * kPackedGroupBytes;
    row.SkipGroups(groups);
    const size_t left = width % kPackedGroupPixels;
    if (left >= 2) {
        PackFour(src, 0, row);
    }
    if (left >= 4) {
        PackFour(src, 4, row);
    }
}

// The words of an unfinished last group are as hosts have always got them: what isn't named here keeps the target's
// bytes, and with 4 or 5 pixels left the second word is added to them, so that a cleared buffer gets the plain word.
void PlaneRowToPacked(const RowKernels& kernels, size_t width, const uint8_t* src, uint8_t* dst) {
    const size_t groups = width / kPackedGroupPixels;
    SplitRowParts row(src, width);
    kernels.planeToPackedGroups(row.high, row.low, groups, dst);
    row.SkipGroups(groups);
    dst += groups * kPackedGroupBytes;
    const size_t left = width % kPackedGroupPixels;
    if (left >= 2) {
        StoreAs(dst, JoinFields(row, 0, 3));
    }
    if (left == 2 || left == 3) {
        StoreAs(dst + 4, JoinFields(row, 3, 1));
    }
    if (left >= 4) {
        StoreAs(dst + 4, LoadAs<uint32_t>(dst + 4) + JoinFields(row, 3, 3));
        StoreAs(dst + 8, JoinFields(row, 6, 2));
    }
}

}  // namespace plenar
