#include "testing/row_kernel_cases.h"

#include <cstdio>

#include "testing/exact_buffer.h"
#include "testing/names.h"

namespace plenar_test {
namespace {

using plenar::AlphaPlace;
using plenar::FindOrder;
using plenar::Movement;
using plenar::Order;
using plenar::RowKernels;

using Cases = std::vector<RowKernelCase>;

constexpr size_t kSampleSizes[] = {1, 2, 4};

template <auto Kernel>
void AddCopy(const char* name, Cases& cases) {
    cases.push_back({name, "", 0, {8}, {8}, [](const RowKernels& kernels, const RowParts& row, size_t bytes) {
                         (kernels.*Kernel)(row.src[0], row.dst[0], bytes);
                     }});
}

template <auto Kernel>
void AddExchange(const char* name, size_t group, Cases& cases) {
    for (const size_t sampleBytes : kSampleSizes) {
        const size_t bits = 8 * group * sampleBytes;
        const auto run = [sampleBytes](const RowKernels& kernels, const RowParts& row, size_t groups) {
            (kernels.*Kernel)(sampleBytes, row.src[0], row.dst[0], groups);
        };
        cases.push_back({name, "", sampleBytes, {bits}, {bits}, run});
        cases.push_back({name, "", sampleBytes, {bits}, {}, run, " in place"});
    }
}

void AddAlpha(const std::string& name, const Order& order, Cases& cases) {
    for (const size_t size : kSampleSizes) {
        const size_t sample = 8 * size;
        const size_t pixel = sample * order.samples;
        const size_t colour = sample * order.colourSamples;
        const auto split = [&order, size](const RowKernels& kernels, const RowParts& row, size_t pixels) {
            kernels.splitRow(order, size, row.src[0], row.dst[0], row.dst[1], pixels);
        };
        const auto drop = [&order, size](const RowKernels& kernels, const RowParts& row, size_t pixels) {
            kernels.splitRow(order, size, row.src[0], row.dst[0], nullptr, pixels);
        };
        const auto merge = [&order, size](const RowKernels& kernels, const RowParts& row, size_t pixels) {
            kernels.mergeRow(order, size, row.src[0], row.src[1], row.dst[0], pixels);
        };
        cases.push_back({"splitRow", name, size, {pixel}, {colour, sample}, split});
        cases.push_back({"splitRow", name, size, {pixel}, {colour}, drop, " without alpha"});
        cases.push_back({"mergeRow", name, size, {colour, sample}, {pixel}, merge});
    }
}

// Units of these are what the order moves together.
size_t SamplesMovedTogether(const Order& order) {
    return order.movement == Movement::InOrder ? 1 : order.colourSamples;
}

template <auto Pack, auto Unpack>
void AddPacking(const char* packName, const char* unpackName, size_t lowBits, const std::string& name,
                const Order& order, Cases& cases) {
    const size_t unit = SamplesMovedTogether(order);
    const size_t words = 16 * (order.movement == Movement::SplitAlpha ? order.samples : unit);
    const size_t high = 8 * unit;
    const size_t low = lowBits * unit;
    const auto pack = [&order, unit](const RowKernels& kernels, const RowParts& row, size_t units) {
        (kernels.*Pack)(order, row.src[0], unit * units, row.dst[0], row.dst[1]);
    };
    const auto unpack = [&order, unit](const RowKernels& kernels, const RowParts& row, size_t units) {
        (kernels.*Unpack)(order, row.src[0], row.src[1], unit * units, row.dst[0]);
    };
    cases.push_back({packName, name, 0, {words}, {high, low}, pack});
    if (order.alpha != AlphaPlace::Interleaved) {
        cases.push_back({unpackName, name, 0, {high, low}, {words}, unpack});
    }
}

void AddFixedToFloat(const std::string& name, const Order& order, Cases& cases) {
    const size_t unit = SamplesMovedTogether(order);
    const auto run = [&order, unit](const RowKernels& kernels, const RowParts& row, size_t units) {
        kernels.fixedRowToFloat(order, row.src[0], unit * units, row.dst[0]);
    };
    cases.push_back({"fixedRowToFloat", name, 0, {16 * unit}, {32 * unit}, run});
}

void AddPackedGroups(Cases& cases) {
    const auto toPlane = [](const RowKernels& kernels, const RowParts& row, size_t groups) {
        kernels.packedGroupsToPlane(row.src[0], groups, row.dst[0], row.dst[1]);
    };
    const auto toGroups = [](const RowKernels& kernels, const RowParts& row, size_t groups) {
        kernels.planeToPackedGroups(row.src[0], row.src[1], groups, row.dst[0]);
    };
    cases.push_back({"packedGroupsToPlane", "", 0, {128}, {96, 24}, toPlane});
    cases.push_back({"planeToPackedGroups", "", 0, {96, 24}, {128}, toGroups});
}

Cases MakeCases() {
    Cases cases;
    AddCopy<&RowKernels::copy>("copy", cases);
    AddCopy<&RowKernels::streamCopy>("streamCopy", cases);
    AddExchange<&RowKernels::swapPairs>("swapPairs", 2, cases);
    AddExchange<&RowKernels::reverseTriples>("reverseTriples", 3, cases);
    AddPackedGroups(cases);
    for (uint32_t number = 1; number <= kOrderCount; ++number) {
        const Order& order = FindOrder(number);
        const std::string name = OrderName(number);
        AddPacking<&RowKernels::packRow10, &RowKernels::unpackRow10>("packRow10", "unpackRow10", 2, name, order, cases);
        AddPacking<&RowKernels::packRow12, &RowKernels::unpackRow12>("packRow12", "unpackRow12", 4, name, order, cases);
        if (order.alpha == AlphaPlace::Interleaved) {
            AddAlpha(name, order, cases);
        } else {
            AddFixedToFloat(name, order, cases);
        }
    }
    return cases;
}

Bytes PartOf(const Bytes& content, size_t bytes) {
    Bytes part(bytes);
    for (size_t i = 0; i < bytes && !content.empty(); ++i) {
        part[i] = content[i % content.size()];
    }
    return part;
}

struct Result {
    Bytes bytes;  // of all parts
    bool staysInside;
};

Result Run(const RowKernelCase& kernelCase, const RowKernels& kernels, size_t units, const RowPlaces& places,
           const Bytes& content) {
    const auto bytesOf = [units](size_t bits) { return (bits * units + 7) / 8; };
    const auto source = [&](size_t bits) { return PartOf(content, bytesOf(bits)); };
    const auto target = [&](size_t bits) { return Bytes(bytesOf(bits), 0xCD); };
    const ExactBuffer src0(source(kernelCase.sourceBits[0]), places.source, places.sourceShift);
    const ExactBuffer src1(source(kernelCase.sourceBits[1]), places.source, places.sourceShift);
    const ExactBuffer dst0(target(kernelCase.targetBits[0]), places.target, places.targetShift);
    const ExactBuffer dst1(target(kernelCase.targetBits[1]), places.target, places.targetShift);
    uint8_t* const first = kernelCase.targetBits[0] == 0 ? src0.data() : dst0.data();
    kernelCase.run(kernels, {{src0.data(), src1.data()}, {first, dst1.data()}}, units);
    return {Join({dst0.Content(), dst1.Content(), src0.Content(), src1.Content()}),
            src0.IsIntact() && src1.IsIntact() && dst0.IsIntact() && dst1.IsIntact()};
}

}  // namespace

const std::vector<RowKernelCase>& RowKernelCases() {
    static const Cases kCases = MakeCases();
    return kCases;
}

std::string RowKernelFailure(const RowKernelCase& kernelCase, size_t units, const RowPlaces& places,
                             const Bytes& content) {
    const Bytes expected = Run(kernelCase, plenar::kPlainRowKernels, units, places, content).bytes;
    for (const plenar::Target target : plenar::RunnableTargets()) {
        static char what[256];
        std::snprintf(
            what, sizeof what,
            "%s%s of %s, order %s, %zu bytes a sample, %zu units, places %u+%zu to %u+%zu: ", kernelCase.kernel.c_str(),
            kernelCase.variant.c_str(), NameOf(target), kernelCase.order.empty() ? "any" : kernelCase.order.c_str(),
            kernelCase.sampleBytes, units, places.source, places.sourceShift, places.target, places.targetShift);
        NoteForFaults(what);
        const Result result = Run(kernelCase, plenar::RowKernelsFor(target), units, places, content);
        if (!result.staysInside) {
            return std::string(what) + "writes outside its target";
        }
        if (result.bytes != expected) {
            return what + Difference(result.bytes, expected);
        }
    }
    return "";
}

}  // namespace plenar_test
