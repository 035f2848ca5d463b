#include "sample_difference.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <vector>

#include "formats.h"

namespace plenar_tool {

namespace {

constexpr double kFixedOne = 16384;

// The samples that repeat along a row, and the pixels that they make. A plane of its own repeats one.
struct PlaneSamples {
    std::vector<const char*> names;
    uint32_t pixels;
    bool halved = false;  // in both directions
};

struct OrderSamples {
    uint32_t order;
    std::vector<PlaneSamples> planes;
};

const OrderSamples kOrderSamples[] = {
    {plenar::CbYCrY, {{{"Cb", "Y", "Cr", "Y"}, 2}}},
    {plenar::ARGB, {{{"A", "R", "G", "B"}, 1}}},
    {plenar::RGB, {{{"R", "G", "B"}, 1}}},
    {plenar::CbYCr, {{{"Cb", "Y", "Cr"}, 1}}},
    {plenar::YCbCr420Planar, {{{"Y"}, 1}, {{"Cb"}, 1, true}, {{"Cr"}, 1, true}}},
    {plenar::CbYACrYA, {{{"Cb", "Y", "A", "Cr", "Y", "A"}, 2}}},
    {plenar::YCbCrA, {{{"Y", "Cb", "Cr", "A"}, 1}}},
    {plenar::YCbCrA420Planar, {{{"Y"}, 1}, {{"Cb"}, 1, true}, {{"Cr"}, 1, true}, {{"A"}, 1}}},
    {plenar::AlphaOnly, {{{"A"}, 1}}},
};

double HalfValue(uint16_t bits) {
    const int exponent = bits >> 10 & 0x1F;
    const int fraction = bits & 0x3FF;
    const double magnitude = exponent == 0x1F ? (fraction != 0 ? std::numeric_limits<double>::quiet_NaN()
                                                               : std::numeric_limits<double>::infinity())
                             : exponent == 0  ? std::ldexp(fraction, -24)
                                              : std::ldexp(fraction + 0x400, exponent - 25);
    return bits >> 15 != 0 ? -magnitude : magnitude;
}

template <class Word>
double Value(Word word, const TypeInfo& type) {
    if constexpr (sizeof(Word) == sizeof(float)) {
        float value = 0;
        std::memcpy(&value, &word, sizeof(value));
        return value;
    } else if (type.value == plenar::Half16) {
        return HalfValue(word);
    } else if (type.value == plenar::Fixed2p14) {
        return static_cast<int16_t>(word) / kFixedOne;
    }
    return word >> (8 * sizeof(Word) - type.depth);
}

template <class Word>
class Comparison {
public:
    explicit Comparison(const TypeInfo& type) : type_(type) {}

    // Rows without padding. Equal rows, which are most, cost no more than a look at their bytes.
    void TakePlane(const PlaneSamples& plane, const uint8_t* first, const uint8_t* second, size_t rowSamples,
                   size_t rows) {
        for (size_t row = 0; row < rows; ++row) {
            const size_t offset = row * rowSamples * sizeof(Word);
            if (std::memcmp(first + offset, second + offset, rowSamples * sizeof(Word)) != 0) {
                TakeRow(plane, first + offset, second + offset, rowSamples, row);
            }
        }
        difference_.samples += rows * rowSamples;
    }

    SampleDifference Result() const { return difference_; }

private:
    void TakeRow(const PlaneSamples& plane, const uint8_t* first, const uint8_t* second, size_t rowSamples,
                 size_t row) {
        for (size_t i = 0; i < rowSamples; ++i) {
            Word a{};
            Word b{};
            std::memcpy(&a, first + i * sizeof(Word), sizeof(Word));
            std::memcpy(&b, second + i * sizeof(Word), sizeof(Word));
            if (a != b) {
                TakeSample(Value(a, type_), Value(b, type_), [&] { return Place(plane, i, row); });
            }
        }
    }

    template <class MakePlace>
    void TakeSample(double a, double b, MakePlace makePlace) {
        if (difference_.different++ == 0) {
            difference_.first = makePlace() + ", " + SampleText(a) + " and " + SampleText(b);
        }
        const double size = std::abs(a - b);
        const bool isGreatest = !(size <= difference_.greatest) && !std::isnan(difference_.greatest);
        if (isGreatest || difference_.greatestPlace.empty()) {
            difference_.greatest = size;
            difference_.greatestPlace = makePlace();
        }
    }

    static std::string Place(const PlaneSamples& plane, size_t sample, size_t row) {
        const size_t count = plane.names.size();
        const size_t position = sample % count;
        const size_t pixel = sample / count * plane.pixels + (plane.pixels == 2 && position > count / 2 ? 1 : 0);
        const size_t scale = plane.halved ? 2 : 1;
        return std::string(plane.names[position]) + " of pixel " + std::to_string(pixel * scale) + " in row " +
               std::to_string(row * scale);
    }

    const TypeInfo& type_;
    SampleDifference difference_;
};

const OrderSamples& FindSamples(uint32_t order) {
    const auto* const found = std::find_if(std::begin(kOrderSamples), std::end(kOrderSamples),
                                           [&](const OrderSamples& entry) { return entry.order == order; });
    if (found == std::end(kOrderSamples)) {
        throw std::logic_error("no payload is reported as " + std::string(FindOrder(order).name));
    }
    return *found;
}

template <class Word>
SampleDifference Compare(const UncompressedParams& format, const uint8_t* first, const uint8_t* second) {
    Comparison<Word> comparison(FindType(format.componentType));
    const std::vector<PlaneSamples>& planes = FindSamples(format.colorComponentOrder).planes;
    size_t offset = 0;
    for (const PlaneSamples& plane : planes) {
        const size_t width = plane.halved ? (size_t{format.width} + 1) / 2 : format.width;
        const size_t rows = plane.halved ? (size_t{format.height} + 1) / 2 : format.height;
        // A row of an odd width ends within a group.
        const size_t groups = (width + plane.pixels - 1) / plane.pixels;
        const size_t missing = plane.pixels == 2 && width % 2 == 1 ? plane.names.size() / 2 - 1 : 0;
        const size_t rowSamples = groups * plane.names.size() - missing;
        comparison.TakePlane(plane, first + offset, second + offset, rowSamples, rows);
        offset += rowSamples * rows * sizeof(Word);
    }
    return comparison.Result();
}

}  // namespace

std::string SampleText(double value) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.9g", value);
    return text;
}

SampleDifference CompareSamples(const UncompressedParams& format, std::span<const uint8_t> first,
                                std::span<const uint8_t> second) {
    if (first.size() != second.size() || first.size() != Plenar_GetUncompressedBufSize(&format)) {
        throw std::logic_error("pictures of other sizes than their format's");
    }
    switch (FindType(format.componentType).sampleBytes) {
        case sizeof(uint8_t):
            return Compare<uint8_t>(format, first.data(), second.data());
        case sizeof(uint16_t):
            return Compare<uint16_t>(format, first.data(), second.data());
        default:
            return Compare<uint32_t>(format, first.data(), second.data());
    }
}

}  // namespace plenar_tool
