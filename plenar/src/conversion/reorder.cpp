#include "conversion/reorder.h"

#include <cstring>

#include "conversion/row_kernels.h"
#include "plenar/exceptions.h"
#include "plenar/params.h"

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

void MergeRow(const PixelLayout& layout, size_t width, const uint8_t* colour, size_t colourLength, const uint8_t* alpha,
              size_t alphaLength, uint8_t* dst) {
    const size_t pixels = alphaLength / width;
    ActiveRowKernels().merge(layout, width, colour, alpha, dst, pixels);
    // A 4:2:2 row of odd width ends in a chroma sample that has no pixel.
    const size_t done = pixels * layout.colourSamples * width;
    std::memcpy(dst + pixels * layout.samples * width, colour + done, colourLength - done);
}

[[noreturn]] void RefuseOrder() {
    throw invalid_argument("color component order is not supported");
}

}  // namespace

bool NeedsReorder(uint32_t colorComponentOrder) {
    switch (colorComponentOrder) {
        case CbYCrY:
        case RGB:
        case CbYCr:
        case YCbCr420Planar:
        case YCbCrA420Planar:
        case AlphaOnly:
        case CbYCrYPlusAlpha:
            return false;
        default:
            return true;
    }
}

void ReorderRowToPlane(uint32_t order, uint32_t type, const uint8_t* src, size_t srcLength, uint8_t* dst,
                       uint8_t* alphaDst) {
    if (const PixelLayout* layout = FindPixelLayout(order)) {
        const size_t width = SampleWidth(type);
        return ActiveRowKernels().split(*layout, width, src, dst, alphaDst, srcLength / (layout->samples * width));
    }
    ReorderRowFromPlane(order, type, src, srcLength, nullptr, 0, dst, srcLength);
}

void ReorderRowFromPlane(uint32_t order, uint32_t type, const uint8_t* colour, size_t colourLength,
                         const uint8_t* alpha, size_t alphaLength, uint8_t* dst, size_t dstLength) {
    const size_t width = SampleWidth(type);
    switch (order) {
        case YCbYCr:
        case YCbYCrPlusAlpha:
            return SwapRow(width, colour, colourLength, dst, dstLength);
        case BGR:
            return ActiveRowKernels().reverseTriples(width, colour, dst, colourLength / (3 * width));
        default:
            break;
    }
    const PixelLayout* layout = FindPixelLayout(order);
    if (layout == nullptr) {
        RefuseOrder();
    }
    MergeRow(*layout, width, colour, colourLength, alpha, alphaLength, dst);
}

void ReorderRowInPlace(uint32_t order, uint32_t type, uint8_t* row, size_t length) {
    ReorderRowFromPlane(order, type, row, length, nullptr, 0, row, length);
}

}  // namespace plenar
