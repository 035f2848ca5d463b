#include "conversion/convert_rows.h"

#include <cstring>
#include <vector>

#include "conversion/packing.h"
#include "conversion/reorder.h"
#include "conversion/row_kernels.h"
#include "pool/split_rows.h"

namespace plenar {

namespace {

struct Band {
    uint32_t firstRow;
    uint32_t rows;
};

std::vector<Band> SplitBands(uint32_t height, uint32_t parts) {
    std::vector<Band> bands;
    bands.reserve(parts < height ? parts : height);
    uint32_t firstRow = 0;
    for (const uint32_t rows : SplitRows(height, parts)) {
        bands.push_back({firstRow, rows});
        firstRow += rows;
    }
    return bands;
}

// Runs runBand(band, intermediateRow) for bands that make up `height` rows of `rowBytes` bytes, with an intermediate
// row of its own for each band: on the workers, one band for each, or here as one band if there are none.
template <class RunBand>
void RunInBands(CodecState& state, uint32_t height, size_t rowBytes, size_t intermediateBytes, const RunBand& runBand) {
    if (height == 0 || rowBytes == 0) {
        return;
    }
    WorkPool& pool = state.Pool();
    if (pool.WorkerCount() < 2) {
        return runBand(Band{0, height}, state.Scratch(intermediateBytes));
    }
    const std::vector<Band> bands = SplitBands(height, pool.WorkerCount());
    uint8_t* intermediate = state.Scratch(bands.size() * intermediateBytes);
    RunBatch(pool, static_cast<uint32_t>(bands.size()),
             [&](uint32_t i) { runBand(bands[i], intermediate + i * intermediateBytes); });
}

// Rows of `length` bytes; rows without padding on either side are one copy.
void CopyBand(const uint8_t* src, size_t srcStride, uint8_t* dst, size_t dstStride, size_t length, size_t rows) {
    if (srcStride == length && dstStride == length) {
        std::memcpy(dst, src, rows * length);
        return;
    }
    for (size_t row = 0; row < rows; ++row) {
        std::memcpy(dst + row * dstStride, src + row * srcStride, length);
    }
}

// The bytes of a row between reordering and packing. Rows that need only one of the two go straight to their target.
size_t IntermediateBytes(const UncompressedParams& params, size_t length) {
    return NeedsReorder(params.colorComponentOrder) && NeedsPacking(params.componentType) ? length : 0;
}

void EncodeRow(const EncodeRowsArgs& args, const uint8_t* src, uint8_t* dst, uint8_t* alphaDst,
               uint8_t* intermediateRow) {
    const uint32_t order = args.params.colorComponentOrder;
    const uint32_t type = args.params.componentType;
    size_t length = args.rowLength;
    if (NeedsReorder(order)) {
        uint8_t* target = NeedsPacking(type) ? intermediateRow : dst;
        ReorderRowToPlane(order, type, src, length, target, alphaDst);
        src = target;
        length -= args.alphaStride;
    }
    if (NeedsPacking(type)) {
        PackRow(type, args.params.width, src, length, dst);
    }
}

void EncodeBand(const EncodeRowsArgs& args, const Band& band, uint8_t* intermediateRow) {
    const uint8_t* src = args.src + band.firstRow * args.srcStride;
    uint8_t* dst = args.dst + band.firstRow * args.dstStride;
    if (!NeedsReorder(args.params.colorComponentOrder) && !NeedsPacking(args.params.componentType)) {
        return CopyBand(src, args.srcStride, dst, args.dstStride, args.dstStride, band.rows);
    }
    uint8_t* alpha = args.alphaDst != nullptr ? args.alphaDst + band.firstRow * args.alphaStride : nullptr;
    for (size_t row = 0; row < band.rows; ++row) {
        EncodeRow(args, src + row * args.srcStride, dst + row * args.dstStride,
                  alpha != nullptr ? alpha + row * args.alphaStride : nullptr, intermediateRow);
    }
}

// Widens the samples straight into the caller's row, which is twice as long, and orders them there.
void DecodeFixedRow(const DecodeRowsArgs& args, const uint8_t* planeRow, uint8_t* dst) {
    const uint32_t order = args.params.colorComponentOrder;
    ActiveRowKernels().fixedToFloat(planeRow, args.planeStride / sizeof(int16_t), dst);
    if (NeedsReorder(order)) {
        ReorderRowInPlace(order, args.params.componentType, dst, args.rowLength);
    }
}

void DecodeRow(const DecodeRowsArgs& args, const uint8_t* planeRow, const uint8_t* alphaRow, uint8_t* dst,
               uint8_t* intermediateRow) {
    const uint32_t order = args.params.colorComponentOrder;
    const uint32_t type = args.params.componentType;
    const uint8_t* colour = planeRow;
    size_t colourLength = args.planeStride;
    if (NeedsPacking(type)) {
        uint8_t* target = NeedsReorder(order) ? intermediateRow : dst;
        UnpackRow(type, args.params.width, planeRow, args.planeEnd, target, args.rowLength);
        colour = target;
        colourLength = args.rowLength;
    }
    if (NeedsReorder(order)) {
        ReorderRowFromPlane(order, type, colour, colourLength, alphaRow, args.alphaStride, dst, args.rowLength);
    }
}

void DecodeBand(const DecodeRowsArgs& args, const Band& band, uint8_t* intermediateRow) {
    const uint8_t* plane = args.plane + band.firstRow * args.planeStride;
    uint8_t* dst = args.dst + band.firstRow * args.dstStride;
    if (!NeedsReorder(args.params.colorComponentOrder) && !NeedsPacking(args.params.componentType) &&
        !args.fixedToFloat) {
        return CopyBand(plane, args.planeStride, dst, args.dstStride, args.planeStride, band.rows);
    }
    const uint8_t* alpha = args.alpha != nullptr ? args.alpha + band.firstRow * args.alphaStride : nullptr;
    for (size_t row = 0; row < band.rows; ++row) {
        const uint8_t* planeRow = plane + row * args.planeStride;
        uint8_t* dstRow = dst + row * args.dstStride;
        if (args.fixedToFloat) {
            DecodeFixedRow(args, planeRow, dstRow);
        } else {
            DecodeRow(args, planeRow, alpha != nullptr ? alpha + row * args.alphaStride : nullptr, dstRow,
                      intermediateRow);
        }
    }
}

}  // namespace

void EncodeRows(CodecState& state, const EncodeRowsArgs& args) {
    RunInBands(state, args.params.height, args.rowLength,
               IntermediateBytes(args.params, args.rowLength - args.alphaStride),
               [&](const Band& band, uint8_t* intermediateRow) { EncodeBand(args, band, intermediateRow); });
}

void DecodeRows(CodecState& state, const DecodeRowsArgs& args) {
    RunInBands(state, args.params.height, args.rowLength, IntermediateBytes(args.params, args.rowLength),
               [&](const Band& band, uint8_t* intermediateRow) { DecodeBand(args, band, intermediateRow); });
}

void CopyRows(CodecState& state, const CopyRowsArgs& args) {
    RunInBands(state, args.rows, args.rowLength, 0, [&](const Band& band, uint8_t*) {
        CopyBand(args.src + band.firstRow * args.srcStride, args.srcStride, args.dst + band.firstRow * args.dstStride,
                 args.dstStride, args.rowLength, band.rows);
    });
}

}  // namespace plenar
