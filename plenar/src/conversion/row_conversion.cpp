#include "conversion/row_conversion.h"

#include <algorithm>

#include "base/exceptions.h"
#include "conversion/line_stager.h"
#include "conversion/row_units.h"
#include "format/sample_type.h"

namespace plenar {

namespace {

Stretch RowOf(const RowSides& sides, size_t row) {
    return {{sides.src[0].At(row), sides.src[1].IfAnyAt(row)}, {sides.dst[0].At(row), sides.dst[1].IfAnyAt(row)}};
}

template <class Conversion>
void ConvertBand(const RowShape& shape, const Band& band, size_t together, const RowSides& sides) {
    for (size_t i = 0; i < band.rows; i += together) {
        Conversion::Whole(shape, RowOf(sides, band.firstRow + i), together);
    }
}

// Of what is counted in samples and pixels: enough for whole vectors, and for whole bytes of a low part.
constexpr size_t kPieceStep = 96;

// A row in pieces that stay in the first cache.
template <class Conversion>
void StreamRow(const RowShape& shape, const Stretch& row, size_t units, bool alphaStays, LineStager (&stagers)[2]) {
    const UnitBits bits = Conversion::Bits(shape);
    const size_t most = LineStager::kPieceBytes * 8 / std::max(bits.dst[0], bits.dst[1]) / kPieceStep * kPieceStep;
    const size_t targets = row.dst[1] != nullptr && !alphaStays ? 2 : 1;
    for (size_t i = 0; i < targets; ++i) {
        stagers[i].Start(row.dst[i]);
    }
    for (size_t done = 0; done < units; done += most) {
        const size_t count = std::min(most, units - done);
        Stretch piece = {{row.src[0] + done * bits.src[0] / 8, row.src[1] + done * bits.src[1] / 8}, {}};
        if (row.dst[1] != nullptr) {
            piece.dst[1] = row.dst[1] + done * bits.dst[1] / 8;
        }
        for (size_t i = 0; i < targets; ++i) {
            piece.dst[i] = stagers[i].Room();
        }
        Conversion::Convert(shape, piece, count);
        for (size_t i = 0; i < targets; ++i) {
            stagers[i].Put((count * bits.dst[i] + 7) / 8);
        }
    }
    for (size_t i = 0; i < targets; ++i) {
        stagers[i].Finish();
    }
}

template <class Conversion>
void StreamBand(const RowShape& shape, const Band& band, size_t together, const RowSides& sides) {
    LineStager stagers[2] = {LineStager(*shape.kernels), LineStager(*shape.kernels)};
    for (size_t i = 0; i < band.rows; i += together) {
        const Stretch row = Conversion::PartsOf(shape, RowOf(sides, band.firstRow + i));
        StreamRow<Conversion>(shape, row, together * Conversion::Units(shape), sides.alphaStays, stagers);
    }
    shape.kernels->finishStream();
}

void StreamCopyBand(const RowShape& shape, const Band& band, size_t together, const RowSides& sides) {
    for (size_t i = 0; i < band.rows; i += together) {
        const Stretch row = RowOf(sides, band.firstRow + i);
        shape.kernels->streamCopy(row.src[0], row.dst[0], together * shape.planeBytes);
    }
}

template <class Kind>
RowConversion Conversion(const RowShape& shape, bool joinsRows) {
    return {ConvertBand<Kind>, Kind::CanBeCut(shape) ? StreamBand<Kind> : ConvertBand<Kind>, joinsRows};
}

[[noreturn]] void RefuseType() {
    throw invalid_argument("component type is not supported");
}

[[noreturn]] void RefuseOrder() {
    throw invalid_argument("color component order is not supported");
}

}  // namespace

const RowConversion kCopyConversion = {ConvertBand<Copying>, StreamCopyBand, true};

RowConversion EncodeConversionFor(const RowShape& shape, uint32_t componentType) {
    if (NeedsPacking(componentType)) {
        switch (componentType) {
            case Uint10:
                return Conversion<Packing<&RowKernels::packRow10, 2>>(shape, false);
            case Uint12:
                return Conversion<Packing<&RowKernels::packRow12, 4>>(shape, false);
            case Packed10:
                return Conversion<PackingGroups>(shape, false);
            default:
                RefuseType();
        }
    }
    switch (shape.order->movement) {
        case Movement::SwapPairs:
            return Conversion<Swapping>(shape, true);
        case Movement::ReverseTriples:
            return Conversion<Reversing>(shape, true);
        case Movement::SplitAlpha:
            return Conversion<Splitting>(shape, true);
        default:
            RefuseOrder();
    }
}

RowConversion DecodeConversionFor(const RowShape& shape, uint32_t componentType) {
    if (NeedsPacking(componentType)) {
        switch (componentType) {
            case Uint10:
                return Conversion<Unpacking<&RowKernels::unpackRow10, 2>>(shape, false);
            case Uint12:
                return Conversion<Unpacking<&RowKernels::unpackRow12, 4>>(shape, false);
            case Packed10:
                return Conversion<UnpackingGroups>(shape, false);
            default:
                RefuseType();
        }
    }
    switch (shape.order->movement) {
        case Movement::SwapPairs:
            return Conversion<Swapping>(shape, !EndsInChroma(shape));
        case Movement::ReverseTriples:
            return Conversion<Reversing>(shape, true);
        case Movement::SplitAlpha:
            return Conversion<Merging>(shape, !EndsInChroma(shape));
        default:
            RefuseOrder();
    }
}

RowConversion FixedToFloatConversionFor(const RowShape& shape) {
    return Conversion<FixedToFloat>(shape, !EndsInChroma(shape));
}

}  // namespace plenar
