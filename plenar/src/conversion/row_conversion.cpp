#include "conversion/row_conversion.h"

#include <cstring>

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
    return shape.order.picture == PictureKind::YCbCr422 && shape.width % 2 != 0;
}

// To the plane.

void SwapToPlane(const RowShape& shape, const uint8_t* caller, uint8_t* plane, uint8_t* /*alpha*/, size_t rows) {
    shape.kernels.swapPairs(shape.sampleBytes, caller, plane, rows * shape.width);
}

void ReverseToPlane(const RowShape& shape, const uint8_t* caller, uint8_t* plane, uint8_t* /*alpha*/, size_t rows) {
    shape.kernels.reverseTriples(shape.sampleBytes, caller, plane, rows * shape.width);
}

void SplitToPlane(const RowShape& shape, const uint8_t* caller, uint8_t* plane, uint8_t* alpha, size_t rows) {
    shape.kernels.splitRow(shape.order, shape.sampleBytes, caller, plane, alpha, rows * shape.width);
}

template <PackKernel RowKernels::*Pack>
void PackToPlane(const RowShape& shape, const uint8_t* caller, uint8_t* plane, uint8_t* /*alpha*/, size_t /*rows*/) {
    const size_t alphaSamples = shape.order.alpha == AlphaPlace::Interleaved ? shape.width : 0;
    const size_t samples = shape.callerBytes / kWordBytes - alphaSamples;
    (shape.kernels.*Pack)(shape.order, caller, samples, plane, plane + samples);
}

void PackGroupsToPlane(const RowShape& shape, const uint8_t* caller, uint8_t* plane, uint8_t* /*alpha*/,
                       size_t /*rows*/) {
    PackedRowToPlane(shape.kernels, shape.width, caller, plane);
}

// To the caller.

// Behind the last pixel of an odd width the caller's row has two places: the plane's last sample changes places with a
// zero.
void SwapToCaller(const RowShape& shape, const uint8_t* plane, const uint8_t* /*alpha*/, uint8_t* caller, size_t rows) {
    const size_t size = shape.sampleBytes;
    shape.kernels.swapPairs(size, plane, caller, rows * shape.width);
    if (EndsInChroma(shape)) {
        const size_t done = shape.width * 2 * size;
        std::memset(caller + done, 0, size);
        std::memcpy(caller + done + size, plane + done, size);
    }
}

void ReverseToCaller(const RowShape& shape, const uint8_t* plane, const uint8_t* /*alpha*/, uint8_t* caller,
                     size_t rows) {
    shape.kernels.reverseTriples(shape.sampleBytes, plane, caller, rows * shape.width);
}

void MergeToCaller(const RowShape& shape, const uint8_t* plane, const uint8_t* alpha, uint8_t* caller, size_t rows) {
    const size_t size = shape.sampleBytes;
    shape.kernels.mergeRow(shape.order, size, plane, alpha, caller, rows * shape.width);
    if (EndsInChroma(shape)) {
        std::memcpy(caller + shape.width * shape.order.samples * size,
                    plane + shape.width * shape.order.colourSamples * size, size);
    }
}

// Rows of one sample more than the plane's (luma first, odd width) ask for one byte behind the plane's row. At the end
// of what is readable that byte counts as 0; it is the last one of the low part.
template <UnpackKernel RowKernels::*Unpack, size_t LowBits>
void UnpackToCaller(const RowShape& shape, const uint8_t* plane, const uint8_t* /*alpha*/, uint8_t* caller,
                    size_t /*rows*/) {
    const auto unpack = shape.kernels.*Unpack;
    const size_t samples = shape.callerBytes / kWordBytes;
    const uint8_t* low = plane + samples;
    const size_t lowBytes = (samples * LowBits + 7) / 8;
    if (lowBytes <= static_cast<size_t>(shape.planeEnd - plane) - samples) {
        return unpack(shape.order, plane, low, samples, caller);
    }
    const size_t whole = (lowBytes - 1) * 8 / LowBits;
    const uint8_t missing = 0;
    unpack(shape.order, plane, low, whole, caller);
    unpack(shape.order, plane + whole, &missing, samples - whole, caller + whole * kWordBytes);
}

void UnpackGroupsToCaller(const RowShape& shape, const uint8_t* plane, const uint8_t* /*alpha*/, uint8_t* caller,
                          size_t /*rows*/) {
    PlaneRowToPacked(shape.kernels, shape.width, plane, caller);
}

// A row of odd width with luma first lacks its last sample: that place takes its pair's first one, whose own place
// takes what the target held there before.
void FloatToCaller(const RowShape& shape, const uint8_t* plane, const uint8_t* /*alpha*/, uint8_t* caller,
                   size_t rows) {
    const auto convert = shape.kernels.fixedRowToFloat;
    const size_t samples = rows * shape.planeBytes / sizeof(int16_t);
    if (samples * sizeof(float) == rows * shape.callerBytes) {
        return convert(shape.order, plane, samples, caller);
    }
    const size_t whole = samples - 1;
    convert(shape.order, plane, whole, caller);
    uint8_t* last = caller + whole * sizeof(float);
    std::memcpy(last, last + sizeof(float), sizeof(float));
    convert(FindOrder(CbYCrY), plane + whole * sizeof(int16_t), 1, last + sizeof(float));
}

template <auto ConvertRow, class... Sides>
void ConvertBand(const RowShape& shape, const Band& band, size_t together, const Sides&... sides) {
    for (size_t row = 0; row < band.rows; row += together) {
        ConvertRow(shape, sides.At(band.firstRow + row)..., together);
    }
}

[[noreturn]] void RefuseType() {
    throw invalid_argument("component type is not supported");
}

[[noreturn]] void RefuseOrder() {
    throw invalid_argument("color component order is not supported");
}

}  // namespace

EncodeConversion EncodeConversionFor(const RowShape& shape, uint32_t componentType) {
    if (NeedsPacking(componentType)) {
        switch (componentType) {
            case Uint10:
                return {ConvertBand<PackToPlane<&RowKernels::packRow10>>, false};
            case Uint12:
                return {ConvertBand<PackToPlane<&RowKernels::packRow12>>, false};
            case Packed10:
                return {ConvertBand<PackGroupsToPlane>, false};
            default:
                RefuseType();
        }
    }
    switch (shape.order.movement) {
        case Movement::SwapPairs:
            return {ConvertBand<SwapToPlane>, true};
        case Movement::ReverseTriples:
            return {ConvertBand<ReverseToPlane>, true};
        case Movement::SplitAlpha:
            return {ConvertBand<SplitToPlane>, true};
        default:
            RefuseOrder();
    }
}

DecodeConversion DecodeConversionFor(const RowShape& shape, uint32_t componentType) {
    if (NeedsPacking(componentType)) {
        switch (componentType) {
            case Uint10:
                return {ConvertBand<UnpackToCaller<&RowKernels::unpackRow10, 2>>, false};
            case Uint12:
                return {ConvertBand<UnpackToCaller<&RowKernels::unpackRow12, 4>>, false};
            case Packed10:
                return {ConvertBand<UnpackGroupsToCaller>, false};
            default:
                RefuseType();
        }
    }
    switch (shape.order.movement) {
        case Movement::SwapPairs:
            return {ConvertBand<SwapToCaller>, !EndsInChroma(shape)};
        case Movement::ReverseTriples:
            return {ConvertBand<ReverseToCaller>, true};
        case Movement::SplitAlpha:
            return {ConvertBand<MergeToCaller>, !EndsInChroma(shape)};
        default:
            RefuseOrder();
    }
}

DecodeConversion FixedToFloatConversionFor(const RowShape& shape) {
    return {ConvertBand<FloatToCaller>, !EndsInChroma(shape)};
}

}  // namespace plenar
