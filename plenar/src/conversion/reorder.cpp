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

void MergeRow(const PixelLayout& layout, size_t width, const uint8_t* colour, size_t colourLength, const uint8_t* alpha,
              size_t alphaLength, uint8_t* dst) {
    const size_t pixels = alphaLength / width;
    ActiveRowKernels().merge(layout, width, colour, alpha, dst, pixels);
    // A 4:2:2 row of odd width ends in a chroma sample that has no pixel.
    const size_t done = pixels * layout.colourSamples * width;
    std::memcpy(dst + pixels * layout.samples * width, colour + done, colourLength - done);
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

Reordering ReorderingOf(uint32_t colorComponentOrder) {
    if (!NeedsReorder(colorComponentOrder)) {
        return {Reordering::None};
    }
    switch (colorComponentOrder) {
        case YCbYCr:
        case YCbYCrPlusAlpha:
            return {Reordering::Pairs};
        case BGR:
            return {Reordering::Triples};
        default:
            break;
    }
    const PixelLayout* layout = FindPixelLayout(colorComponentOrder);
    if (layout == nullptr) {
        throw invalid_argument("color component order is not supported");
    }
    return {Reordering::Alpha, layout};
}

void ReorderRowToPlane(const Reordering& reordering, uint32_t type, const uint8_t* src, size_t srcLength, uint8_t* dst,
                       uint8_t* alphaDst) {
    if (reordering.kind == Reordering::Alpha) {
        const size_t width = SampleWidth(type);
        const size_t pixels = srcLength / (reordering.layout->samples * width);
        return ActiveRowKernels().split(*reordering.layout, width, src, dst, alphaDst, pixels);
    }
    ReorderRowFromPlane(reordering, type, src, srcLength, nullptr, 0, dst, srcLength);
}

void ReorderRowFromPlane(const Reordering& reordering, uint32_t type, const uint8_t* colour, size_t colourLength,
                         const uint8_t* alpha, size_t alphaLength, uint8_t* dst, size_t dstLength) {
    const size_t width = SampleWidth(type);
    switch (reordering.kind) {
        case Reordering::None:
            return ActiveRowKernels().copy(colour, dst, colourLength);
        case Reordering::Pairs:
            return SwapRow(width, colour, colourLength, dst, dstLength);
        case Reordering::Triples:
            return ActiveRowKernels().reverseTriples(width, colour, dst, colourLength / (3 * width));
        case Reordering::Alpha:
            return MergeRow(*reordering.layout, width, colour, colourLength, alpha, alphaLength, dst);
    }
}

// A row of odd width in an order of pairs lacks its last sample: that place takes its pair's first one, whose own place
// takes what the target held there before.
void FixedRowToFloat(const Reordering& reordering, const uint8_t* fixed, size_t fixedLength, uint8_t* dst,
                     size_t dstLength) {
    const size_t samples = fixedLength / sizeof(int16_t);
    const RowKernels& kernels = ActiveRowKernels();
    if (samples * sizeof(float) == dstLength) {
        return kernels.fixedToFloat(reordering, fixed, samples, dst);
    }
    const size_t whole = samples - 1;
    kernels.fixedToFloat(reordering, fixed, whole, dst);
    uint8_t* last = dst + whole * sizeof(float);
    std::memcpy(last, last + sizeof(float), sizeof(float));
    kernels.fixedToFloat({Reordering::None}, fixed + whole * sizeof(int16_t), 1, last + sizeof(float));
}

}  // namespace plenar
