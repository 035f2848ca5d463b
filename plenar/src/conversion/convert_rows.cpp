#include "conversion/convert_rows.h"

#include <algorithm>

#include "conversion/row_conversion.h"
#include "conversion/row_kernels.h"
#include "format/sample_type.h"
#include "pool/bands.h"
#include "simd/target.h"

namespace plenar {

namespace {

// The rows of one side of a conversion; a side that isn't there has no first row.
template <class Byte>
struct RowsOf {
    Byte* first;
    size_t stride;

    Byte* At(size_t row) const { return first != nullptr ? first + row * stride : nullptr; }
};

// Calls convert(rows of each side..., count) for `height` rows of `rowBytes` bytes, in bands: one for each worker, or
// one if there are none. The count is 1, or, where rows are joined, that of a band's rows.
template <class Convert, class... Byte>
void ConvertInBands(WorkPool& pool, uint32_t height, size_t rowBytes, bool joinsRows, const Convert& convert,
                    const RowsOf<Byte>&... sides) {
    if (height == 0 || rowBytes == 0) {
        return;
    }
    const RowBands bands = SplitRows(height, std::max(pool.WorkerCount(), 1U));
    RunBatch(pool, bands.Count(), [&](uint32_t i) {
        const Band band = bands[i];
        const size_t count = joinsRows ? band.rows : 1;
        for (size_t row = 0; row < band.rows; row += count) {
            convert(sides.At(band.firstRow + row)..., count);
        }
    });
}

// The kernel for rows that are copied as part of so many bytes read and written. What outgrows the last cache is
// written past it; a smaller result is kept for whoever reads it next.
auto CopyKernelFor(uint64_t bytesMoved) {
    const RowKernels& kernels = ActiveRowKernels();
    return bytesMoved > LastLevelCacheBytes() ? kernels.streamCopy : kernels.copy;
}

}  // namespace

void EncodeRows(WorkPool& pool, const EncodeRowsArgs& args) {
    const UncompressedParams& params = args.params;
    const Order& order = FindOrder(params.colorComponentOrder);
    if (IsCopied(order, params.componentType)) {
        return CopyRows(pool, {.src = args.src,
                               .srcStride = args.srcStride,
                               .dst = args.dst,
                               .dstStride = args.dstStride,
                               .rowLength = args.dstStride,
                               .rows = params.height});
    }
    const RowShape shape = {.kernels = ActiveRowKernels(),
                            .order = order,
                            .sampleBytes = SampleBytes(params.componentType),
                            .width = params.width,
                            .callerBytes = args.rowLength,
                            .planeBytes = args.dstStride,
                            .planeEnd = nullptr};
    const EncodeConversion conversion = EncodeConversionFor(shape, params.componentType);
    const bool joinsRows = conversion.joinsRows && args.srcStride == args.rowLength;
    ConvertInBands(
        pool, params.height, args.rowLength, joinsRows,
        [&](const uint8_t* caller, uint8_t* plane, uint8_t* alpha, size_t rows) {
            conversion.run(shape, caller, plane, alpha, rows);
        },
        RowsOf<const uint8_t>{args.src, args.srcStride}, RowsOf<uint8_t>{args.dst, args.dstStride},
        RowsOf<uint8_t>{args.alphaDst, args.alphaStride});
}

void DecodeRows(WorkPool& pool, const DecodeRowsArgs& args) {
    const UncompressedParams& params = args.params;
    const Order& order = FindOrder(params.colorComponentOrder);
    if (IsCopied(order, params.componentType) && !args.fixedToFloat) {
        return CopyRows(pool, {.src = args.plane,
                               .srcStride = args.planeStride,
                               .dst = args.dst,
                               .dstStride = args.dstStride,
                               .rowLength = args.planeStride,
                               .rows = params.height});
    }
    const RowShape shape = {.kernels = ActiveRowKernels(),
                            .order = order,
                            .sampleBytes = SampleBytes(params.componentType),
                            .width = params.width,
                            .callerBytes = args.rowLength,
                            .planeBytes = args.planeStride,
                            .planeEnd = args.planeEnd};
    const DecodeConversion conversion =
        args.fixedToFloat ? FixedToFloatConversionFor(shape) : DecodeConversionFor(shape, params.componentType);
    const bool joinsRows = conversion.joinsRows && args.dstStride == args.rowLength;
    ConvertInBands(
        pool, params.height, args.rowLength, joinsRows,
        [&](const uint8_t* plane, const uint8_t* alpha, uint8_t* caller, size_t rows) {
            conversion.run(shape, plane, alpha, caller, rows);
        },
        RowsOf<const uint8_t>{args.plane, args.planeStride}, RowsOf<const uint8_t>{args.alpha, args.alphaStride},
        RowsOf<uint8_t>{args.dst, args.dstStride});
}

void CopyRows(WorkPool& pool, const CopyRowsArgs& args) {
    const auto copy = CopyKernelFor(args.rows * uint64_t{2} * args.rowLength);
    const bool joinsRows = args.srcStride == args.rowLength && args.dstStride == args.rowLength;
    ConvertInBands(
        pool, args.rows, args.rowLength, joinsRows,
        [&](const uint8_t* src, uint8_t* dst, size_t rows) { copy(src, dst, rows * args.rowLength); },
        RowsOf<const uint8_t>{args.src, args.srcStride}, RowsOf<uint8_t>{args.dst, args.dstStride});
}

}  // namespace plenar
