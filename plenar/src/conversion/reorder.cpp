#include "conversion/reorder.h"

#include <cstring>

#include "base/exceptions.h"
#include "conversion/row_kernels.h"
#include "format/picture_layout.h"

namespace plenar {

namespace {

// Samples of 10 and 12 bits are moved as the words that hold them.
size_t SampleWidth(uint32_t type) {
    switch (BitDepth(type)) {
        case 8:
            return 1;
        case 32:
            return 4;
        default:
            return 2;
    }
}

// Exchanges neighbouring samples. A row of an odd number of samples, from a plane of odd width, is one sample shorter
// than the caller's: its last sample changes places with a zero.
void SwapRow(size_t width, const uint8_t* src, size_t srcLength, uint8_t* dst, size_t dstLength) {
    const size_t pairs = srcLength / (2 * width);
    ActiveRowKernels().swapPairs(width, src, dst, pairs);
    const size_t done = pairs * 2 * width;
    if (done < dstLength) {
        std::memset(dst + done, 0, width);
        std::memcpy(dst + done + width, src + done, srcLength - done);
    }
}

void MergeRow(const Order& order, size_t width, const uint8_t* colour, size_t colourLength, const uint8_t* alpha,
              size_t alphaLength, uint8_t* dst) {
    const size_t pixels = alphaLength / width;
    ActiveRowKernels().mergeRow(order, width, colour, alpha, dst, pixels);
    // A 4:2:2 row of odd width ends in a chroma sample that has no pixel.
    const size_t done = pixels * order.colourSamples * width;
    std::memcpy(dst + pixels * order.samples * width, colour + done, colourLength - done);
}

}  // namespace

const Order& OrderOf(uint32_t colorComponentOrder) {
    const Order& order = FindOrder(colorComponentOrder);
    if (!order.IsKnown()) {
        throw invalid_argument("color component order is not supported");
    }
    return order;
}

void ReorderRowToPlane(const Order& order, uint32_t type, const uint8_t* src, size_t srcLength, uint8_t* dst,
                       uint8_t* alphaDst) {
    if (order.movement == Movement::SplitAlpha) {
        const size_t width = SampleWidth(type);
        const size_t pixels = srcLength / (order.samples * width);
        return ActiveRowKernels().splitRow(order, width, src, dst, alphaDst, pixels);
    }
    ReorderRowFromPlane(order, type, src, srcLength, nullptr, 0, dst, srcLength);
}

void ReorderRowFromPlane(const Order& order, uint32_t type, const uint8_t* colour, size_t colourLength,
                         const uint8_t* alpha, size_t alphaLength, uint8_t* dst, size_t dstLength) {
    const size_t width = SampleWidth(type);
    switch (order.movement) {
        case Movement::InOrder:
            return ActiveRowKernels().copy(colour, dst, colourLength);
        case Movement::SwapPairs:
            return SwapRow(width, colour, colourLength, dst, dstLength);
        case Movement::ReverseTriples:
            return ActiveRowKernels().reverseTriples(width, colour, dst, colourLength / (3 * width));
        case Movement::SplitAlpha:
            return MergeRow(order, width, colour, colourLength, alpha, alphaLength, dst);
    }
}

// A row of odd width in an order of pairs lacks its last sample: that place takes its pair's first one, whose own place
// takes what the target held there before.
void FixedRowToFloat(const Order& order, const uint8_t* fixed, size_t fixedLength, uint8_t* dst, size_t dstLength) {
    const size_t samples = fixedLength / sizeof(int16_t);
    const RowKernels& kernels = ActiveRowKernels();
    if (samples * sizeof(float) == dstLength) {
        return kernels.fixedRowToFloat(order, fixed, samples, dst);
    }
    const size_t whole = samples - 1;
    kernels.fixedRowToFloat(order, fixed, whole, dst);
    uint8_t* last = dst + whole * sizeof(float);
    std::memcpy(last, last + sizeof(float), sizeof(float));
    kernels.fixedRowToFloat(kUnknownOrder, fixed + whole * sizeof(int16_t), 1, last + sizeof(float));
}

}  // namespace plenar
