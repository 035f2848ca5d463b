#include "conversion/convert_rows.h"

#include <algorithm>

#include "conversion/row_kernels.h"
#include "format/sample_type.h"
#include "pool/bands.h"
#include "simd/target.h"

namespace plenar {

namespace {

// Whether rows are the same on both sides.
bool IsCopied(const UncompressedParams& params) {
    return !NeedsReorder(params.colorComponentOrder) && !NeedsPacking(params.componentType);
}

RowShape ShapeOf(const UncompressedParams& params, size_t callerBytes, size_t planeBytes, const uint8_t* planeEnd) {
    return {.kernels = &ActiveRowKernels(),
            .order = &FindOrder(params.colorComponentOrder),
            .sampleBytes = SampleBytes(params.componentType),
            .width = params.width,
            .callerBytes = callerBytes,
            .planeBytes = planeBytes,
            .planeEnd = planeEnd};
}

// The first of the plane's rows that begin at `place` or behind it, where its first row begins at `start`.
uint32_t RowFrom(const PlaneRows& plane, uint64_t start, uint64_t place) {
    if (place <= start) {
        return 0;
    }
    const uint64_t bytes = place - start;
    return bytes >= BytesOf(plane) ? plane.rows : static_cast<uint32_t>((bytes + plane.rowBytes - 1) / plane.rowBytes);
}

void Run(const PlaneRows& plane, const RowSides& sides, const Band& band, bool stream) {
    const auto run = stream ? plane.conversion.stream : plane.conversion.run;
    run(plane.shape, band, plane.joinsRows ? band.rows : 1, sides);
}

// The rows that begin between two places in the planes' bytes, read and written, as they come one behind the other.
void ConvertBetween(const PlaneRowsList& planes, uint64_t begin, uint64_t end, bool stream) {
    uint64_t start = 0;
    for (const PlaneRows& plane : planes) {
        const uint32_t first = RowFrom(plane, start, begin);
        const Band band = {first, RowFrom(plane, start, end) - first};
        if (band.rows != 0) {
            Run(plane, plane.sides, band, stream);
        }
        start += BytesOf(plane);
    }
}

}  // namespace

uint64_t BytesOf(const PlaneRows& plane) {
    return plane.rows * uint64_t{plane.rowBytes};
}

PlaneRows RowsToEncode(const EncodeRowsArgs& args) {
    const UncompressedParams& params = args.params;
    if (IsCopied(params)) {
        return RowsToCopy({.src = args.src,
                           .srcStride = args.srcStride,
                           .dst = args.dst,
                           .dstStride = args.dstStride,
                           .rowLength = args.dstStride,
                           .rows = params.height});
    }
    const RowShape shape = ShapeOf(params, args.rowLength, args.dstStride, nullptr);
    const RowConversion conversion = EncodeConversionFor(shape, params.componentType);
    return {
        .shape = shape,
        .conversion = conversion,
        .sides = {{{args.src, args.srcStride}, {}}, {{args.dst, args.dstStride}, {args.alphaDst, args.alphaStride}}},
        .rows = params.height,
        .rowBytes = args.rowLength + args.dstStride + args.alphaStride,
        .joinsRows = conversion.joinsRows && args.srcStride == args.rowLength};
}

PlaneRows RowsToDecode(const DecodeRowsArgs& args) {
    const UncompressedParams& params = args.params;
    if (IsCopied(params) && !args.fixedToFloat) {
        return RowsToCopy({.src = args.plane,
                           .srcStride = args.planeStride,
                           .dst = args.dst,
                           .dstStride = args.dstStride,
                           .rowLength = args.planeStride,
                           .rows = params.height});
    }
    const RowShape shape = ShapeOf(params, args.rowLength, args.planeStride, args.planeEnd);
    const RowConversion conversion =
        args.fixedToFloat ? FixedToFloatConversionFor(shape) : DecodeConversionFor(shape, params.componentType);
    return {
        .shape = shape,
        .conversion = conversion,
        .sides = {{{args.plane, args.planeStride}, {args.alpha, args.alphaStride}}, {{args.dst, args.dstStride}, {}}},
        .rows = params.height,
        .rowBytes = args.planeStride + args.alphaStride + args.rowLength,
        .joinsRows = conversion.joinsRows && args.dstStride == args.rowLength};
}

PlaneRows RowsToCopy(const CopyRowsArgs& args) {
    RowShape shape = {};
    shape.kernels = &ActiveRowKernels();
    shape.planeBytes = args.rowLength;
    return {.shape = shape,
            .conversion = kCopyConversion,
            .sides = {{{args.src, args.srcStride}, {}}, {{args.dst, args.dstStride}, {}}},
            .rows = args.rows,
            .rowBytes = 2 * args.rowLength,
            .joinsRows = args.srcStride == args.rowLength && args.dstStride == args.rowLength};
}

bool OutgrowsCache(uint64_t bytes) {
    return bytes > LastLevelCacheBytes();
}

void ConvertRows(const PlaneRows& plane, const Band& band, uint8_t* alpha, bool stream) {
    RowSides sides = plane.sides;
    sides.src[0].first = sides.src[0].At(band.firstRow);
    sides.dst[0].first = sides.dst[0].At(band.firstRow);
    // One side has alpha apart from the others, and says by its stride how far its rows lie from one another.
    if (sides.dst[1].stride != 0) {
        sides.dst[1].first = alpha;
    } else {
        sides.src[1].first = alpha;
    }
    sides.alphaStays = true;
    Run(plane, sides, {0, band.rows}, stream);
}

void ConvertPlanes(WorkPool& pool, const PlaneRowsList& planes) {
    uint64_t bytes = 0;
    for (const PlaneRows& plane : planes) {
        bytes += BytesOf(plane);
    }
    const bool stream = OutgrowsCache(bytes);
    const uint32_t shares = ThreadsFor(pool, bytes);
    RunBatch(pool, bytes, shares, [&planes, bytes, shares, stream](uint32_t i) {
        ConvertBetween(planes, bytes * i / shares, bytes * (i + 1) / shares, stream);
    });
}

}  // namespace plenar
