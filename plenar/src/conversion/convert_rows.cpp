#include "conversion/convert_rows.h"

#include <cstring>
#include <vector>

#include "conversion/packing.h"
#include "conversion/reorder.h"
#include "conversion/row_kernels.h"
#include "plenar/params.h"
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

// The bytes of a row between reordering and packing. Rows that need only one of the two go straight to their target.
size_t IntermediateBytes(const UncompressedParams& params, size_t length) {
    return NeedsReorder(params.colorComponentOrder) && NeedsPacking(params.componentType) ? length : 0;
}

// Whether all rows are made of whole pixels and of bytes that are moved one by one, so that rows without padding can be
// taken as one long row. A 4:2:2 row of odd width ends in a chroma sample of its own, and packed rows have two parts.
bool CanJoinRows(const UncompressedParams& params) {
    const bool wholePixels = params.width % 2 == 0 || SubsamplingClass(params.colorComponentOrder) != 422;
    return wholePixels && !NeedsPacking(params.componentType);
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

void EncodeRow(const EncodeRowsArgs& band, const uint8_t* src, uint8_t* dst, uint8_t* alphaDst,
               uint8_t* intermediateRow) {
    const uint32_t order = band.params.colorComponentOrder;
    const uint32_t type = band.params.componentType;
    const bool packs = NeedsPacking(type);
    if (!packs && !NeedsReorder(order)) {
        std::memcpy(dst, src, band.dstStride);
    } else if (!packs) {
        ReorderRowToPlane(order, type, src, band.rowLength, dst, alphaDst);
    } else if (!NeedsReorder(order)) {
        PackRow(type, band.params.width, src, band.rowLength, dst);
    } else {
        ReorderRowToPlane(order, type, src, band.rowLength, intermediateRow, alphaDst);
        PackRow(type, band.params.width, intermediateRow, band.rowLength - band.alphaStride, dst);
    }
}

void EncodeBand(EncodeRowsArgs band, uint8_t* intermediateRow) {
    if (CanJoinRows(band.params) && band.srcStride == band.rowLength) {
        JoinRows(band);
    }
    for (size_t row = 0; row < band.params.height; ++row) {
        EncodeRow(band, band.src + row * band.srcStride, band.dst + row * band.dstStride,
                  band.alphaDst != nullptr ? band.alphaDst + row * band.alphaStride : nullptr, intermediateRow);
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

// Widens the samples straight into the caller's row, which is twice as long, and orders them there.
void DecodeFixedRow(const DecodeRowsArgs& band, const uint8_t* planeRow, uint8_t* dst) {
    const uint32_t order = band.params.colorComponentOrder;
    ActiveRowKernels().fixedToFloat(planeRow, band.planeStride / sizeof(int16_t), dst);
    if (NeedsReorder(order)) {
        ReorderRowInPlace(order, band.params.componentType, dst, band.rowLength);
    }
}

void DecodeRow(const DecodeRowsArgs& band, const uint8_t* planeRow, const uint8_t* alphaRow, uint8_t* dst,
               uint8_t* intermediateRow) {
    const uint32_t order = band.params.colorComponentOrder;
    const uint32_t type = band.params.componentType;
    const auto reorder = [&](const uint8_t* colour, size_t length) {
        ReorderRowFromPlane(order, type, colour, length, alphaRow, band.alphaStride, dst, band.rowLength);
    };
    const auto unpack = [&](uint8_t* target) {
        UnpackRow(type, band.params.width, planeRow, band.planeEnd, target, band.rowLength);
    };
    if (band.fixedToFloat) {
        DecodeFixedRow(band, planeRow, dst);
    } else if (!NeedsPacking(type) && !NeedsReorder(order)) {
        std::memcpy(dst, planeRow, band.planeStride);
    } else if (!NeedsPacking(type)) {
        reorder(planeRow, band.planeStride);
    } else if (!NeedsReorder(order)) {
        unpack(dst);
    } else {
        unpack(intermediateRow);
        reorder(intermediateRow, band.rowLength);
    }
}

void DecodeBand(DecodeRowsArgs band, uint8_t* intermediateRow) {
    const bool reordersInPlace = band.fixedToFloat && NeedsReorder(band.params.colorComponentOrder);
    if (CanJoinRows(band.params) && band.dstStride == band.rowLength && !reordersInPlace) {
        JoinRows(band);
    }
    for (size_t row = 0; row < band.params.height; ++row) {
        DecodeRow(band, band.plane + row * band.planeStride,
                  band.alpha != nullptr ? band.alpha + row * band.alphaStride : nullptr,
                  band.dst + row * band.dstStride, intermediateRow);
    }
}

void CopyBand(const CopyRowsArgs& args, const Band& band) {
    const uint8_t* src = args.src + band.firstRow * args.srcStride;
    uint8_t* dst = args.dst + band.firstRow * args.dstStride;
    if (args.srcStride == args.rowLength && args.dstStride == args.rowLength) {
        std::memcpy(dst, src, band.rows * args.rowLength);
        return;
    }
    for (size_t row = 0; row < band.rows; ++row) {
        std::memcpy(dst + row * args.dstStride, src + row * args.srcStride, args.rowLength);
    }
}

}  // namespace

void EncodeRows(CodecState& state, const EncodeRowsArgs& args) {
    RunInBands(state, args.params.height, args.rowLength,
               IntermediateBytes(args.params, args.rowLength - args.alphaStride),
               [&](const Band& band, uint8_t* intermediateRow) { EncodeBand(BandOf(args, band), intermediateRow); });
}

void DecodeRows(CodecState& state, const DecodeRowsArgs& args) {
    RunInBands(state, args.params.height, args.rowLength, IntermediateBytes(args.params, args.rowLength),
               [&](const Band& band, uint8_t* intermediateRow) { DecodeBand(BandOf(args, band), intermediateRow); });
}

void CopyRows(CodecState& state, const CopyRowsArgs& args) {
    RunInBands(state, args.rows, args.rowLength, 0, [&](const Band& band, uint8_t*) { CopyBand(args, band); });
}

}  // namespace plenar
