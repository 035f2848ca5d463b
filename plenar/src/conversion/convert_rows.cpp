#include "conversion/convert_rows.h"

#include <algorithm>

#include "conversion/row_conversion.h"
#include "conversion/row_kernels.h"
#include "format/sample_type.h"
#include "pool/bands.h"
#include "simd/target.h"

namespace plenar {

namespace {

// Calls run(band) for bands that make up `height` rows of `rowBytes` bytes: one for each worker, or one if there are
// none.
template <class Run>
void RunInBands(WorkPool& pool, uint32_t height, size_t rowBytes, const Run& run) {
    if (height == 0 || rowBytes == 0) {
        return;
    }
    const RowBands bands = SplitRows(height, std::max(pool.WorkerCount(), 1U));
    RunBatch(pool, bands.Count(), [&](uint32_t i) { run(bands[i]); });
}

// Whether rows are the same on both sides.
bool IsCopied(const UncompressedParams& params) {
    return !NeedsReorder(params.colorComponentOrder) && !NeedsPacking(params.componentType);
}

// The kernel for rows that are copied as part of so many bytes read and written. What outgrows the last cache is
// written past it; a smaller result is kept for whoever reads it next.
auto CopyKernelFor(uint64_t bytesMoved) {
    const RowKernels& kernels = ActiveRowKernels();
    return bytesMoved > LastLevelCacheBytes() ? kernels.streamCopy : kernels.copy;
}

RowShape ShapeOf(const UncompressedParams& params, size_t callerBytes, size_t planeBytes, const uint8_t* planeEnd) {
    return {.kernels = ActiveRowKernels(),
            .order = FindOrder(params.colorComponentOrder),
            .sampleBytes = SampleBytes(params.componentType),
            .width = params.width,
            .callerBytes = callerBytes,
            .planeBytes = planeBytes,
            .planeEnd = planeEnd};
}

}  // namespace

void EncodeRows(WorkPool& pool, const EncodeRowsArgs& args) {
    const UncompressedParams& params = args.params;
    if (IsCopied(params)) {
        return CopyRows(pool, {.src = args.src,
                               .srcStride = args.srcStride,
                               .dst = args.dst,
                               .dstStride = args.dstStride,
                               .rowLength = args.dstStride,
                               .rows = params.height});
    }
    const RowShape shape = ShapeOf(params, args.rowLength, args.dstStride, nullptr);
    const EncodeConversion conversion = EncodeConversionFor(shape, params.componentType);
    const bool joinsRows = conversion.joinsRows && args.srcStride == args.rowLength;
    RunInBands(pool, params.height, args.rowLength, [&](const Band& band) {
        conversion.run(shape, band, joinsRows ? band.rows : 1, {args.src, args.srcStride}, {args.dst, args.dstStride},
                       {args.alphaDst, args.alphaStride});
    });
}

void DecodeRows(WorkPool& pool, const DecodeRowsArgs& args) {
    const UncompressedParams& params = args.params;
    if (IsCopied(params) && !args.fixedToFloat) {
        return CopyRows(pool, {.src = args.plane,
                               .srcStride = args.planeStride,
                               .dst = args.dst,
                               .dstStride = args.dstStride,
                               .rowLength = args.planeStride,
                               .rows = params.height});
    }
    const RowShape shape = ShapeOf(params, args.rowLength, args.planeStride, args.planeEnd);
    const DecodeConversion conversion =
        args.fixedToFloat ? FixedToFloatConversionFor(shape) : DecodeConversionFor(shape, params.componentType);
    const bool joinsRows = conversion.joinsRows && args.dstStride == args.rowLength;
    RunInBands(pool, params.height, args.rowLength, [&](const Band& band) {
        conversion.run(shape, band, joinsRows ? band.rows : 1, {args.plane, args.planeStride},
                       {args.alpha, args.alphaStride}, {args.dst, args.dstStride});
    });
}

void CopyRows(WorkPool& pool, const CopyRowsArgs& args) {
    const auto copy = CopyKernelFor(args.rows * uint64_t{2} * args.rowLength);
    const bool joinsRows = args.srcStride == args.rowLength && args.dstStride == args.rowLength;
    RunInBands(pool, args.rows, args.rowLength, [&](const Band& band) {
        const uint8_t* src = args.src + band.firstRow * args.srcStride;
        uint8_t* dst = args.dst + band.firstRow * args.dstStride;
        const size_t together = joinsRows ? band.rows : 1;
        for (size_t row = 0; row < band.rows; row += together) {
            copy(src + row * args.srcStride, dst + row * args.dstStride, together * args.rowLength);
        }
    });
}

}  // namespace plenar
