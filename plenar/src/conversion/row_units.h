// What each conversion does with so many units of a row, and with whole rows. A unit is the least that it moves.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "conversion/packed10_rows.h"
#include "conversion/row_conversion.h"
#include "conversion/row_kernels.h"
#include "format/order.h"
#include "format/packed10.h"

namespace plenar {

using PackKernel = decltype(RowKernels::packRow10);
using UnpackKernel = decltype(RowKernels::unpackRow10);

inline constexpr size_t kWordBytes = 2;  // of a sample of 10 or 12 bits

// Whether a 4:2:2 row ends in a chroma sample behind its last pixel: an odd width, which only a decode meets.
inline bool EndsInChroma(const RowShape& shape) {
    return shape.order->picture == PictureKind::YCbCr422 && shape.width % 2 != 0;
}

// A stretch of rows, or of a row, on both sides. The parts of a packed row, the high and the low one, are two sides.
struct Stretch {
    const uint8_t* src[2];
    uint8_t* dst[2];
};

// What a unit takes of each side.
struct UnitBits {
    size_t src[2];
    size_t dst[2];
};

// Of the way back.
inline UnitBits Back(const UnitBits& bits) {
    return {{bits.dst[0], bits.dst[1]}, {bits.src[0], bits.src[1]}};
}

// A conversion has
//     Units     of a row
//     Bits      of a unit
//     Convert   so many units from one place to another
//     Whole     for what is special about a row, or about its ends; only a row without that can be cut
template <class Conversion>
struct InUnits {
    static bool CanBeCut(const RowShape& /*shape*/) { return true; }
    static Stretch PartsOf(const RowShape& /*shape*/, const Stretch& row) { return row; }
    static void Whole(const RowShape& shape, const Stretch& row, size_t rows) {
        Conversion::Convert(shape, Conversion::PartsOf(shape, row), rows * Conversion::Units(shape));
    }
};

struct Copying : InUnits<Copying> {
    static size_t Units(const RowShape& shape) { return shape.planeBytes; }
    static void Convert(const RowShape& shape, const Stretch& row, size_t units) {
        shape.kernels->copy(row.src[0], row.dst[0], units);
    }
};

// Behind the last pixel of an odd width the caller's row has two places: the plane's last sample changes places with a
// zero.
struct Swapping : InUnits<Swapping> {
    static size_t Units(const RowShape& shape) { return shape.width; }
    static UnitBits Bits(const RowShape& shape) { return {{16 * shape.sampleBytes}, {16 * shape.sampleBytes}}; }
    static bool CanBeCut(const RowShape& shape) { return !EndsInChroma(shape); }
    static void Convert(const RowShape& shape, const Stretch& row, size_t units) {
        shape.kernels->swapPairs(shape.sampleBytes, row.src[0], row.dst[0], units);
    }
    static void Whole(const RowShape& shape, const Stretch& row, size_t rows) {
        const size_t size = shape.sampleBytes;
        Convert(shape, row, rows * shape.width);
        if (EndsInChroma(shape)) {
            const size_t done = shape.width * 2 * size;
            std::memset(row.dst[0] + done, 0, size);
            std::memcpy(row.dst[0] + done + size, row.src[0] + done, size);
        }
    }
};

struct Reversing : InUnits<Reversing> {
    static size_t Units(const RowShape& shape) { return shape.width; }
    static UnitBits Bits(const RowShape& shape) { return {{24 * shape.sampleBytes}, {24 * shape.sampleBytes}}; }
    static void Convert(const RowShape& shape, const Stretch& row, size_t units) {
        shape.kernels->reverseTriples(shape.sampleBytes, row.src[0], row.dst[0], units);
    }
};

struct Splitting : InUnits<Splitting> {
    static size_t Units(const RowShape& shape) { return shape.width; }
    static UnitBits Bits(const RowShape& shape) {
        const size_t bits = 8 * shape.sampleBytes;
        return {{bits * shape.order->samples}, {bits * shape.order->colourSamples, bits}};
    }
    static void Convert(const RowShape& shape, const Stretch& row, size_t units) {
        shape.kernels->splitRow(*shape.order, shape.sampleBytes, row.src[0], row.dst[0], row.dst[1], units);
    }
};

struct Merging : InUnits<Merging> {
    static size_t Units(const RowShape& shape) { return shape.width; }
    static UnitBits Bits(const RowShape& shape) {
        const size_t bits = 8 * shape.sampleBytes;
        return {{bits * shape.order->colourSamples, bits}, {bits * shape.order->samples}};
    }
    static bool CanBeCut(const RowShape& shape) { return !EndsInChroma(shape); }
    static void Convert(const RowShape& shape, const Stretch& row, size_t units) {
        shape.kernels->mergeRow(*shape.order, shape.sampleBytes, row.src[0], row.src[1], row.dst[0], units);
    }
    static void Whole(const RowShape& shape, const Stretch& row, size_t rows) {
        const size_t size = shape.sampleBytes;
        Convert(shape, row, rows * shape.width);
        if (EndsInChroma(shape)) {
            std::memcpy(row.dst[0] + shape.width * shape.order->samples * size,
                        row.src[0] + shape.width * shape.order->colourSamples * size, size);
        }
    }
};

// Packing moves what the order moves together: samples of the plane, and of the caller, who may have alpha among them.
inline size_t PlaneSamplesOfUnit(const Order& order) {
    return order.movement == Movement::InOrder ? 1 : order.colourSamples;
}
inline size_t CallerSamplesOfUnit(const Order& order) {
    return order.movement == Movement::SplitAlpha ? order.samples : PlaneSamplesOfUnit(order);
}

inline size_t UnitsOfWords(const RowShape& shape) {
    return shape.callerBytes / kWordBytes / CallerSamplesOfUnit(*shape.order);
}

template <size_t LowBits>
UnitBits BitsOfWords(const RowShape& shape) {
    const size_t samples = PlaneSamplesOfUnit(*shape.order);
    return {{8 * kWordBytes * CallerSamplesOfUnit(*shape.order)}, {8 * samples, LowBits * samples}};
}

template <PackKernel RowKernels::*Kernel, size_t LowBits>
struct Packing : InUnits<Packing<Kernel, LowBits>> {
    static size_t Units(const RowShape& shape) { return UnitsOfWords(shape); }
    static UnitBits Bits(const RowShape& shape) { return BitsOfWords<LowBits>(shape); }
    static Stretch PartsOf(const RowShape& shape, const Stretch& row) {
        return {{row.src[0]}, {row.dst[0], row.dst[0] + Units(shape) * PlaneSamplesOfUnit(*shape.order)}};
    }
    static void Convert(const RowShape& shape, const Stretch& row, size_t units) {
        (shape.kernels->*Kernel)(*shape.order, row.src[0], units * PlaneSamplesOfUnit(*shape.order), row.dst[0],
                                 row.dst[1]);
    }
};

// Rows of one sample more than the plane's (luma first, odd width) ask for one byte behind the plane's row. At the end
// of what is readable that byte counts as 0; it is the last one of the low part.
template <UnpackKernel RowKernels::*Kernel, size_t LowBits>
struct Unpacking : InUnits<Unpacking<Kernel, LowBits>> {
    static size_t Units(const RowShape& shape) { return UnitsOfWords(shape); }
    static UnitBits Bits(const RowShape& shape) { return Back(BitsOfWords<LowBits>(shape)); }
    static bool CanBeCut(const RowShape& shape) { return !EndsInChroma(shape); }
    static Stretch PartsOf(const RowShape& shape, const Stretch& row) {
        return {{row.src[0], row.src[0] + shape.callerBytes / kWordBytes}, {row.dst[0]}};
    }
    static void Convert(const RowShape& shape, const Stretch& row, size_t units) {
        (shape.kernels->*Kernel)(*shape.order, row.src[0], row.src[1], units * PlaneSamplesOfUnit(*shape.order),
                                 row.dst[0]);
    }
    static void Whole(const RowShape& shape, const Stretch& row, size_t /*rows*/) {
        const auto unpack = shape.kernels->*Kernel;
        const auto [plane, caller] = std::pair(row.src[0], row.dst[0]);
        const size_t samples = shape.callerBytes / kWordBytes;
        const uint8_t* low = plane + samples;
        const size_t lowBytes = (samples * LowBits + 7) / 8;
        if (lowBytes <= static_cast<size_t>(shape.planeEnd - plane) - samples) {
            return unpack(*shape.order, plane, low, samples, caller);
        }
        const size_t whole = (lowBytes - 1) * 8 / LowBits;
        const uint8_t missing = 0;
        unpack(*shape.order, plane, low, whole, caller);
        unpack(*shape.order, plane + whole, &missing, samples - whole, caller + whole * kWordBytes);
    }
};

// Groups of six pixels; fewer at the end of a row are a matter of their own.
struct PackingGroups : InUnits<PackingGroups> {
    static size_t Units(const RowShape& shape) { return shape.width / kPackedGroupPixels; }
    static UnitBits Bits(const RowShape& /*shape*/) {
        return {{size_t{8} * kPackedGroupBytes}, {8 * kPackedGroupSamples, 8 * kPackedGroupLowBytes}};
    }
    static bool CanBeCut(const RowShape& shape) { return shape.width % kPackedGroupPixels == 0; }
    static Stretch PartsOf(const RowShape& shape, const Stretch& row) {
        return {{row.src[0]}, {row.dst[0], row.dst[0] + 2 * shape.width}};
    }
    static void Convert(const RowShape& shape, const Stretch& row, size_t units) {
        shape.kernels->packedGroupsToPlane(row.src[0], units, row.dst[0], row.dst[1]);
    }
    static void Whole(const RowShape& shape, const Stretch& row, size_t /*rows*/) {
        PackedRowToPlane(*shape.kernels, shape.width, row.src[0], row.dst[0]);
    }
};

struct UnpackingGroups : InUnits<UnpackingGroups> {
    static size_t Units(const RowShape& shape) { return PackingGroups::Units(shape); }
    static UnitBits Bits(const RowShape& shape) { return Back(PackingGroups::Bits(shape)); }
    static bool CanBeCut(const RowShape& shape) { return PackingGroups::CanBeCut(shape); }
    static Stretch PartsOf(const RowShape& shape, const Stretch& row) {
        return {{row.src[0], row.src[0] + 2 * shape.width}, {row.dst[0]}};
    }
    static void Convert(const RowShape& shape, const Stretch& row, size_t units) {
        shape.kernels->planeToPackedGroups(row.src[0], row.src[1], units, row.dst[0]);
    }
    static void Whole(const RowShape& shape, const Stretch& row, size_t /*rows*/) {
        PlaneRowToPacked(*shape.kernels, shape.width, row.src[0], row.dst[0]);
    }
};

// A row of odd width with luma first lacks its last sample: that place takes its pair's first one, whose own place
// takes what the target held there before.
struct FixedToFloat : InUnits<FixedToFloat> {
    static size_t Units(const RowShape& shape) {
        return shape.planeBytes / sizeof(int16_t) / PlaneSamplesOfUnit(*shape.order);
    }
    static UnitBits Bits(const RowShape& shape) {
        const size_t samples = PlaneSamplesOfUnit(*shape.order);
        return {{8 * sizeof(int16_t) * samples}, {8 * sizeof(float) * samples}};
    }
    static bool CanBeCut(const RowShape& shape) { return !EndsInChroma(shape); }
    static void Convert(const RowShape& shape, const Stretch& row, size_t units) {
        shape.kernels->fixedRowToFloat(*shape.order, row.src[0], units * PlaneSamplesOfUnit(*shape.order), row.dst[0]);
    }
    static void Whole(const RowShape& shape, const Stretch& row, size_t rows) {
        const auto convert = shape.kernels->fixedRowToFloat;
        const size_t samples = rows * shape.planeBytes / sizeof(int16_t);
        if (samples * sizeof(float) == rows * shape.callerBytes) {
            return convert(*shape.order, row.src[0], samples, row.dst[0]);
        }
        const size_t whole = samples - 1;
        convert(*shape.order, row.src[0], whole, row.dst[0]);
        uint8_t* last = row.dst[0] + whole * sizeof(float);
        std::memcpy(last, last + sizeof(float), sizeof(float));
        convert(FindOrder(CbYCrY), row.src[0] + whole * sizeof(int16_t), 1, last + sizeof(float));
    }
};

}  // namespace plenar
