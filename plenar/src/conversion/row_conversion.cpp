#include "conversion/row_conversion.h"

#include <cstring>

#include "base/exceptions.h"
#include "conversion/packed10_rows.h"
#include "format/sample_type.h"

namespace plenar {

namespace {

using PackKernel = decltype(RowKernels::packRow10);
using UnpackKernel = decltype(RowKernels::unpackRow10);

// A 4:2:2 row of odd width ends in a chroma sample that has no pixel of its own; only a decode meets one.
bool HasWholePixels(const RowShape& shape) {
    return shape.width % 2 == 0 || shape.order.picture != PictureKind::YCbCr422;
}

// Exchanges neighbouring samples. The plane's row of odd width is one sample shorter than the caller's: its last sample
// changes places with a zero.
void SwapRow(const RowShape& shape, const uint8_t* src, size_t srcBytes, uint8_t* dst, size_t dstBytes) {
    const size_t size = shape.sampleBytes;
    const size_t pairs = srcBytes / (2 * size);
    shape.kernels.swapPairs(size, src, dst, pairs);
    const size_t done = pairs * 2 * size;
    if (done < dstBytes) {
        std::memset(dst + done, 0, size);
        std::memcpy(dst + done + size, src + done, srcBytes - done);
    }
}

void ReverseRow(const RowShape& shape, const uint8_t* src, uint8_t* dst, size_t bytes) {
    shape.kernels.reverseTriples(shape.sampleBytes, src, dst, bytes / (3 * shape.sampleBytes));
}

// To the plane.

void SwapToPlane(const RowShape& shape, const uint8_t* caller, uint8_t* plane, uint8_t* /*alpha*/, size_t rows) {
    SwapRow(shape, caller, rows * shape.callerBytes, plane, rows * shape.planeBytes);
}

void ReverseToPlane(const RowShape& shape, const uint8_t* caller, uint8_t* plane, uint8_t* /*alpha*/, size_t rows) {
    ReverseRow(shape, caller, plane, rows * shape.callerBytes);
}

void SplitToPlane(const RowShape& shape, const uint8_t* caller, uint8_t* plane, uint8_t* alpha, size_t rows) {
    const size_t pixels = rows * shape.alphaBytes / shape.sampleBytes;
    shape.kernels.splitRow(shape.order, shape.sampleBytes, caller, plane, alpha, pixels);
}

template <PackKernel RowKernels::*Pack>
void PackToPlane(const RowShape& shape, const uint8_t* caller, uint8_t* plane, uint8_t* /*alpha*/, size_t /*rows*/) {
    const size_t samples = (shape.callerBytes - shape.alphaBytes) / shape.sampleBytes;
    (shape.kernels.*Pack)(shape.order, caller, samples, plane, plane + samples);
}

void PackGroupsToPlane(const RowShape& shape, const uint8_t* caller, uint8_t* plane, uint8_t* /*alpha*/,
                       size_t /*rows*/) {
    PackedRowToPlane(shape.kernels, shape.width, caller, plane);
}

// To the caller.

void SwapToCaller(const RowShape& shape, const uint8_t* plane, const uint8_t* /*alpha*/, uint8_t* caller, size_t rows) {
    SwapRow(shape, plane, rows * shape.planeBytes, caller, rows * shape.callerBytes);
}

void ReverseToCaller(const RowShape& shape, const uint8_t* plane, const uint8_t* /*alpha*/, uint8_t* caller,
                     size_t rows) {
    ReverseRow(shape, plane, caller, rows * shape.planeBytes);
}

void MergeToCaller(const RowShape& shape, const uint8_t* plane, const uint8_t* alpha, uint8_t* caller, size_t rows) {
    const size_t pixels = rows * shape.alphaBytes / shape.sampleBytes;
    shape.kernels.mergeRow(shape.order, shape.sampleBytes, plane, alpha, caller, pixels);
    const size_t done = pixels * shape.order.colourSamples * shape.sampleBytes;
    std::memcpy(caller + pixels * shape.order.samples * shape.sampleBytes, plane + done,
                rows * shape.planeBytes - done);
}

// Rows of one sample more than the plane's (luma first, odd width) ask for one byte behind the plane's row. At the end
// of what is readable that byte counts as 0; it is the last one of the low part.
template <UnpackKernel RowKernels::*Unpack, size_t LowBits>
void UnpackToCaller(const RowShape& shape, const uint8_t* plane, const uint8_t* /*alpha*/, uint8_t* caller,
                    size_t /*rows*/) {
    const auto unpack = shape.kernels.*Unpack;
    const size_t samples = shape.callerBytes / shape.sampleBytes;
    const uint8_t* low = plane + samples;
    const size_t lowBytes = (samples * LowBits + 7) / 8;
    if (lowBytes <= static_cast<size_t>(shape.planeEnd - plane) - samples) {
        return unpack(shape.order, plane, low, samples, caller);
    }
    const size_t whole = (lowBytes - 1) * 8 / LowBits;
    const uint8_t missing = 0;
    unpack(shape.order, plane, low, whole, caller);
    unpack(shape.order, plane + whole, &missing, samples - whole, caller + whole * shape.sampleBytes);
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

[[noreturn]] void RefuseType() {
    throw invalid_argument("component type is not supported");
}

[[noreturn]] void RefuseOrder() {
    throw invalid_argument("color component order is not supported");
}

}  // namespace

bool IsCopied(const Order& order, uint32_t componentType) {
    return order.IsKnown() && order.movement == Movement::InOrder && !NeedsPacking(componentType);
}

EncodeConversion EncodeConversionFor(const RowShape& shape, uint32_t componentType) {
    if (NeedsPacking(componentType)) {
        switch (componentType) {
            case Uint10:
                return {PackToPlane<&RowKernels::packRow10>, false};
            case Uint12:
                return {PackToPlane<&RowKernels::packRow12>, false};
            case Packed10:
                return {PackGroupsToPlane, false};
            default:
                RefuseType();
        }
    }
    switch (shape.order.movement) {
        case Movement::SwapPairs:
            return {SwapToPlane, true};
        case Movement::ReverseTriples:
            return {ReverseToPlane, true};
        case Movement::SplitAlpha:
            return {SplitToPlane, true};
        default:
            RefuseOrder();
    }
}

DecodeConversion DecodeConversionFor(const RowShape& shape, uint32_t componentType) {
    if (NeedsPacking(componentType)) {
        switch (componentType) {
            case Uint10:
                return {UnpackToCaller<&RowKernels::unpackRow10, 2>, false};
            case Uint12:
                return {UnpackToCaller<&RowKernels::unpackRow12, 4>, false};
            case Packed10:
                return {UnpackGroupsToCaller, false};
            default:
                RefuseType();
        }
    }
    switch (shape.order.movement) {
        case Movement::SwapPairs:
            return {SwapToCaller, HasWholePixels(shape)};
        case Movement::ReverseTriples:
            return {ReverseToCaller, true};
        case Movement::SplitAlpha:
            return {MergeToCaller, HasWholePixels(shape)};
        default:
            RefuseOrder();
    }
}

DecodeConversion FixedToFloatConversionFor(const RowShape& shape) {
    return {FloatToCaller, HasWholePixels(shape)};
}

}  // namespace plenar
