#include "conversion/row_conversion.h"

#include <cstring>
#include <utility>

#include "base/exceptions.h"
#include "conversion/packed10_rows.h"
#include "format/sample_type.h"

namespace plenar {

namespace {

using PackKernel = decltype(RowKernels::packRow10);
using UnpackKernel = decltype(RowKernels::unpackRow10);

constexpr size_t kWordBytes = 2;  // of a sample of 10 or 12 bits

// Whether a 4:2:2 row ends in a chroma sample behind its last pixel: an odd width, which only a decode meets.
bool EndsInChroma(const RowShape& shape) {
    return shape.order->picture == PictureKind::YCbCr422 && shape.width % 2 != 0;
}

// Both ends of a row, or of several.
struct RowAt {
    const uint8_t* src[2];
    uint8_t* dst[2];
};

void Copy(const RowShape& shape, const RowAt& row, size_t rows) {
    shape.kernels->copy(row.src[0], row.dst[0], rows * shape.planeBytes);
}

void StreamCopy(const RowShape& shape, const RowAt& row, size_t rows) {
    shape.kernels->streamCopy(row.src[0], row.dst[0], rows * shape.planeBytes);
}

// Behind the last pixel of an odd width the caller's row has two places: the plane's last sample changes places with a
// zero.
void Swap(const RowShape& shape, const RowAt& row, size_t rows) {
    const size_t size = shape.sampleBytes;
    shape.kernels->swapPairs(size, row.src[0], row.dst[0], rows * shape.width);
    if (EndsInChroma(shape)) {
        const size_t done = shape.width * 2 * size;
        std::memset(row.dst[0] + done, 0, size);
        std::memcpy(row.dst[0] + done + size, row.src[0] + done, size);
    }
}

void Reverse(const RowShape& shape, const RowAt& row, size_t rows) {
    shape.kernels->reverseTriples(shape.sampleBytes, row.src[0], row.dst[0], rows * shape.width);
}

void Split(const RowShape& shape, const RowAt& row, size_t rows) {
    shape.kernels->splitRow(*shape.order, shape.sampleBytes, row.src[0], row.dst[0], row.dst[1], rows * shape.width);
}

void Merge(const RowShape& shape, const RowAt& row, size_t rows) {
    const size_t size = shape.sampleBytes;
    shape.kernels->mergeRow(*shape.order, size, row.src[0], row.src[1], row.dst[0], rows * shape.width);
    if (EndsInChroma(shape)) {
        std::memcpy(row.dst[0] + shape.width * shape.order->samples * size,
                    row.src[0] + shape.width * shape.order->colourSamples * size, size);
    }
}

template <PackKernel RowKernels::*Kernel>
void Pack(const RowShape& shape, const RowAt& row, size_t /*rows*/) {
    const size_t alphaSamples = shape.order->alpha == AlphaPlace::Interleaved ? shape.width : 0;
    const size_t samples = shape.callerBytes / kWordBytes - alphaSamples;
    (shape.kernels->*Kernel)(*shape.order, row.src[0], samples, row.dst[0], row.dst[0] + samples);
}

// Rows of one sample more than the plane's (luma first, odd width) ask for one byte behind the plane's row. At the end
// of what is readable that byte counts as 0; it is the last one of the low part.
template <UnpackKernel RowKernels::*Kernel, size_t LowBits>
void Unpack(const RowShape& shape, const RowAt& row, size_t /*rows*/) {
    const auto unpack = shape.kernels->*Kernel;
    const auto [plane, caller] = std::pair(row.src[0], row.dst[0]);
    const size_t samples = shape.callerBytes / kWordBytes;
    const uint8_t* low = plane + samples;
    const size_t lowBytes = (samples * LowBits + 7) / 8;
    if (lowBytes <= static_cast<size_t>(shape.planeEnd - plane) - samples) {
        return unpack(*shape.order, plane, low, samples, caller);
    }
    const size_t whole = (lowBytes - 1) * 8 / LowBits;
    const uint8_t missing = 0;
    unpack(*shape.order, plane, low, whole, caller);
    unpack(*shape.order, plane + whole, &missing, samples - whole, caller + whole * kWordBytes);
}

void PackGroups(const RowShape& shape, const RowAt& row, size_t /*rows*/) {
    PackedRowToPlane(*shape.kernels, shape.width, row.src[0], row.dst[0]);
}

void UnpackGroups(const RowShape& shape, const RowAt& row, size_t /*rows*/) {
    PlaneRowToPacked(*shape.kernels, shape.width, row.src[0], row.dst[0]);
}

// A row of odd width with luma first lacks its last sample: that place takes its pair's first one, whose own place
// takes what the target held there before.
void FixedToFloat(const RowShape& shape, const RowAt& row, size_t rows) {
    const auto convert = shape.kernels->fixedRowToFloat;
    const auto [plane, caller] = std::pair(row.src[0], row.dst[0]);
    const size_t samples = rows * shape.planeBytes / sizeof(int16_t);
    if (samples * sizeof(float) == rows * shape.callerBytes) {
        return convert(*shape.order, plane, samples, caller);
    }
    const size_t whole = samples - 1;
    convert(*shape.order, plane, whole, caller);
    uint8_t* last = caller + whole * sizeof(float);
    std::memcpy(last, last + sizeof(float), sizeof(float));
    convert(FindOrder(CbYCrY), plane + whole * sizeof(int16_t), 1, last + sizeof(float));
}

template <auto ConvertRow>
void ConvertBand(const RowShape& shape, const Band& band, size_t together, const RowSides& sides) {
    for (size_t i = 0; i < band.rows; i += together) {
        const size_t row = band.firstRow + i;
        ConvertRow(shape, {{sides.src[0].At(row), sides.src[1].At(row)}, {sides.dst[0].At(row), sides.dst[1].At(row)}},
                   together);
    }
}

template <auto ConvertRow>
RowConversion Conversion(bool joinsRows) {
    return {ConvertBand<ConvertRow>, ConvertBand<ConvertRow>, joinsRows};
}

[[noreturn]] void RefuseType() {
    throw invalid_argument("component type is not supported");
}

[[noreturn]] void RefuseOrder() {
    throw invalid_argument("color component order is not supported");
}

}  // namespace

const RowConversion kCopyConversion = {ConvertBand<Copy>, ConvertBand<StreamCopy>, true};

RowConversion EncodeConversionFor(const RowShape& shape, uint32_t componentType) {
    if (NeedsPacking(componentType)) {
        switch (componentType) {
            case Uint10:
                return Conversion<Pack<&RowKernels::packRow10>>(false);
            case Uint12:
                return Conversion<Pack<&RowKernels::packRow12>>(false);
            case Packed10:
                return Conversion<PackGroups>(false);
            default:
                RefuseType();
        }
    }
    switch (shape.order->movement) {
        case Movement::SwapPairs:
            return Conversion<Swap>(true);
        case Movement::ReverseTriples:
            return Conversion<Reverse>(true);
        case Movement::SplitAlpha:
            return Conversion<Split>(true);
        default:
            RefuseOrder();
    }
}

RowConversion DecodeConversionFor(const RowShape& shape, uint32_t componentType) {
    if (NeedsPacking(componentType)) {
        switch (componentType) {
            case Uint10:
                return Conversion<Unpack<&RowKernels::unpackRow10, 2>>(false);
            case Uint12:
                return Conversion<Unpack<&RowKernels::unpackRow12, 4>>(false);
            case Packed10:
                return Conversion<UnpackGroups>(false);
            default:
                RefuseType();
        }
    }
    switch (shape.order->movement) {
        case Movement::SwapPairs:
            return Conversion<Swap>(!EndsInChroma(shape));
        case Movement::ReverseTriples:
            return Conversion<Reverse>(true);
        case Movement::SplitAlpha:
            return Conversion<Merge>(!EndsInChroma(shape));
        default:
            RefuseOrder();
    }
}

RowConversion FixedToFloatConversionFor(const RowShape& shape) {
    return Conversion<FixedToFloat>(!EndsInChroma(shape));
}

}  // namespace plenar
