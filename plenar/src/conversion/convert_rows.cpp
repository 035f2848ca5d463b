#include "conversion/convert_rows.h"

#include <algorithm>

#include "conversion/packing.h"
#include "conversion/reorder.h"
#include "conversion/row_kernels.h"
#include "format/picture_layout.h"
#include "pool/bands.h"
#include "simd/target.h"

namespace plenar {

namespace {

// Runs runBand(band) for bands that make up `height` rows of `rowBytes` bytes: one for each worker, or one if there are
// none.
template <class RunBand>
void RunInBands(WorkPool& pool, uint32_t height, size_t rowBytes, const RunBand& runBand) {
    if (height == 0 || rowBytes == 0) {
        return;
    }
    const RowBands bands = SplitRows(height, std::max(pool.WorkerCount(), 1U));
    RunBatch(pool, bands.Count(), [&](uint32_t i) { runBand(bands[i]); });
}

// The kernel for rows that are copied as part of so many bytes read and written. What outgrows the last cache is
// written past it; a smaller result is kept for whoever reads it next.
auto CopyKernelFor(uint64_t bytesMoved) {
    const RowKernels& kernels = ActiveRowKernels();
    return bytesMoved > LastLevelCacheBytes() ? kernels.streamCopy : kernels.copy;
}

// Whether all rows are made of whole pixels, so that rows of bytes that are moved one by one can be taken as one long
// row where there is no padding. A 4:2:2 row of odd width ends in a chroma sample of its own.
bool CanJoinRows(const UncompressedParams& params) {
    return params.width % 2 == 0 || SubsamplingClass(params.colorComponentOrder) != 422;
}

EncodeRowsArgs BandOf(EncodeRowsArgs args, const Band& band) {
    args.params.height = band.rows;
    args.src += band.firstRow * args.srcStride;
    args.dst += band.firstRow * args.dstStride;
    args.alphaDst = args.alphaDst != nullptr ? args.alphaDst + band.firstRow * args.alphaStride : nullptr;
    return args;
}

void JoinRows(EncodeRowsArgs& band) {
    band.rowLength *= band.params.height;
    band.dstStride *= band.params.height;
    band.alphaStride *= band.params.height;
    band.params.height = 1;
}

void PackBand(const EncodeRowsArgs& band, const Order& order) {
    const UncompressedParams& params = band.params;
    const RowPacker packer(params.componentType);
    const size_t samples = (band.rowLength - band.alphaStride) / SampleBytes(params.componentType);
    for (size_t row = 0; row < params.height; ++row) {
        packer.Pack(order, params.width, band.src + row * band.srcStride, samples, band.dst + row * band.dstStride);
    }
}

void EncodeBand(EncodeRowsArgs band) {
    const Order& order = OrderOf(band.params.colorComponentOrder);
    if (NeedsPacking(band.params.componentType)) {
        return PackBand(band, order);
    }
    if (CanJoinRows(band.params) && band.srcStride == band.rowLength) {
        JoinRows(band);
    }
    for (size_t row = 0; row < band.params.height; ++row) {
        ReorderRowToPlane(order, band.params.componentType, band.src + row * band.srcStride, band.rowLength,
                          band.dst + row * band.dstStride,
                          band.alphaDst != nullptr ? band.alphaDst + row * band.alphaStride : nullptr);
    }
}

DecodeRowsArgs BandOf(DecodeRowsArgs args, const Band& band) {
    args.params.height = band.rows;
    args.plane += band.firstRow * args.planeStride;
    args.alpha = args.alpha != nullptr ? args.alpha + band.firstRow * args.alphaStride : nullptr;
    args.dst += band.firstRow * args.dstStride;
    return args;
}

void JoinRows(DecodeRowsArgs& band) {
    band.planeStride *= band.params.height;
    band.alphaStride *= band.params.height;
    band.rowLength *= band.params.height;
    band.params.height = 1;
}

void UnpackBand(const DecodeRowsArgs& band, const Order& order) {
    const UncompressedParams& params = band.params;
    const RowPacker packer(params.componentType);
    const size_t samples = band.rowLength / SampleBytes(params.componentType);
    for (size_t row = 0; row < params.height; ++row) {
        packer.Unpack(order, params.width, band.plane + row * band.planeStride, band.planeEnd,
                      band.dst + row * band.dstStride, samples);
    }
}

void DecodeRow(const DecodeRowsArgs& band, const Order& order, const uint8_t* planeRow, const uint8_t* alphaRow,
               uint8_t* dst) {
    if (band.fixedToFloat) {
        FixedRowToFloat(order, planeRow, band.planeStride, dst, band.rowLength);
    } else {
        ReorderRowFromPlane(order, band.params.componentType, planeRow, band.planeStride, alphaRow, band.alphaStride,
                            dst, band.rowLength);
    }
}

void DecodeBand(DecodeRowsArgs band) {
    const Order& order = OrderOf(band.params.colorComponentOrder);
    if (NeedsPacking(band.params.componentType) && !band.fixedToFloat) {
        return UnpackBand(band, order);
    }
    if (CanJoinRows(band.params) && band.dstStride == band.rowLength) {
        JoinRows(band);
    }
    for (size_t row = 0; row < band.params.height; ++row) {
        DecodeRow(band, order, band.plane + row * band.planeStride,
                  band.alpha != nullptr ? band.alpha + row * band.alphaStride : nullptr,
                  band.dst + row * band.dstStride);
    }
}

void CopyBand(const CopyRowsArgs& args, const Band& band) {
    const auto copy = CopyKernelFor(args.rows * uint64_t{2} * args.rowLength);
    const uint8_t* src = args.src + band.firstRow * args.srcStride;
    uint8_t* dst = args.dst + band.firstRow * args.dstStride;
    if (args.srcStride == args.rowLength && args.dstStride == args.rowLength) {
        return copy(src, dst, band.rows * args.rowLength);
    }
    for (size_t row = 0; row < band.rows; ++row) {
        copy(src + row * args.srcStride, dst + row * args.dstStride, args.rowLength);
    }
}

bool IsCopied(const UncompressedParams& params) {
    return !NeedsReorder(params.colorComponentOrder) && !NeedsPacking(params.componentType);
}

}  // namespace

void EncodeRows(WorkPool& pool, const EncodeRowsArgs& args) {
    if (IsCopied(args.params)) {
        return CopyRows(pool, {.src = args.src,
                               .srcStride = args.srcStride,
                               .dst = args.dst,
                               .dstStride = args.dstStride,
                               .rowLength = args.dstStride,
                               .rows = args.params.height});
    }
    RunInBands(pool, args.params.height, args.rowLength, [&](const Band& band) { EncodeBand(BandOf(args, band)); });
}

void DecodeRows(WorkPool& pool, const DecodeRowsArgs& args) {
    if (IsCopied(args.params) && !args.fixedToFloat) {
        return CopyRows(pool, {.src = args.plane,
                               .srcStride = args.planeStride,
                               .dst = args.dst,
                               .dstStride = args.dstStride,
                               .rowLength = args.planeStride,
                               .rows = args.params.height});
    }
    RunInBands(pool, args.params.height, args.rowLength, [&](const Band& band) { DecodeBand(BandOf(args, band)); });
}

void CopyRows(WorkPool& pool, const CopyRowsArgs& args) {
    RunInBands(pool, args.rows, args.rowLength, [&](const Band& band) { CopyBand(args, band); });
}

}  // namespace plenar
