#include "testing/row_kernel_cases.h"

#include <cstdio>
#include <tuple>
#include <type_traits>

#include "testing/exact_buffer.h"
#include "testing/sample_model.h"

namespace plenar_test {
namespace {

using plenar::AlphaPlace;
using plenar::FindOrder;
using plenar::Movement;
using plenar::Order;
using plenar::RowKernels;

constexpr size_t kSampleSizes[] = {1, 2, 4};
constexpr const char* kSizeTexts[] = {"", ", 1 byte a sample", ", 2 bytes a sample", "", ", 4 bytes a sample"};

// What a kernel is called with, handed out in the order of its parameters.
class Arguments {
public:
    Arguments(const RowKernelCase& kernelCase, const RowParts& row, size_t units)
        : kernelCase_(kernelCase), row_(row), count_(units * kernelCase.unit) {}

    template <class Argument>
    Argument Next() {
        if constexpr (std::is_same_v<Argument, const Order&>) {
            return *kernelCase_.order;
        } else if constexpr (std::is_same_v<Argument, const uint8_t*>) {
            return row_.src[sources_++];
        } else if constexpr (std::is_same_v<Argument, uint8_t*>) {
            return row_.dst[targets_++];
        } else {  // the size of a sample stands ahead of all rows, the count behind some
            return sources_ == 0 ? kernelCase_.sampleBytes : count_;
        }
    }

private:
    const RowKernelCase& kernelCase_;
    const RowParts& row_;
    size_t count_;
    size_t sources_ = 0;
    size_t targets_ = 0;
};

template <class... Parameters>
auto CallOf(void (*RowKernels::*kernel)(Parameters...)) {
    return [kernel](const RowKernels& kernels, const RowKernelCase& kernelCase, const RowParts& row, size_t units) {
        Arguments arguments(kernelCase, row, units);
        // Braces keep the order.
        std::apply(kernels.*kernel, std::tuple<Parameters...>{arguments.Next<Parameters>()...});
    };
}

using Bits = std::array<size_t, 2>;

void AddCasesOf(const std::string& name, const Order& order, std::vector<RowKernelCase>& cases) {
    const auto add = [&](const char* kernel, auto member, size_t bytes, Bits source, Bits target, size_t unit = 1,
                         const char* variant = "") {
        cases.push_back({kernel, name, &order, bytes, source, target, unit, CallOf(member), variant});
    };
    const size_t unit = order.movement == Movement::InOrder ? 1 : order.colourSamples;
    const Bits words = {16 * (order.movement == Movement::SplitAlpha ? order.samples : unit)};
    add("packRow10", &RowKernels::packRow10, 0, words, {8 * unit, 2 * unit}, unit);
    add("packRow12", &RowKernels::packRow12, 0, words, {8 * unit, 4 * unit}, unit);
    if (order.alpha != AlphaPlace::Interleaved) {
        add("unpackRow10", &RowKernels::unpackRow10, 0, {8 * unit, 2 * unit}, words, unit);
        add("unpackRow12", &RowKernels::unpackRow12, 0, {8 * unit, 4 * unit}, words, unit);
        add("fixedRowToFloat", &RowKernels::fixedRowToFloat, 0, {16 * unit}, {32 * unit}, unit);
        return;
    }
    for (const size_t bytes : kSampleSizes) {
        const Bits pixel = {8 * bytes * order.samples};
        const Bits parts = {8 * bytes * order.colourSamples, 8 * bytes};
        add("splitRow", &RowKernels::splitRow, bytes, pixel, parts);
        add("splitRow", &RowKernels::splitRow, bytes, pixel, {parts[0]}, 1, " without alpha");
        add("mergeRow", &RowKernels::mergeRow, bytes, parts, pixel);
    }
}

std::vector<RowKernelCase> MakeCases() {
    std::vector<RowKernelCase> cases;
    const auto add = [&](const char* kernel, auto member, size_t bytes, Bits source, Bits target,
                         const char* variant = "", size_t unit = 1) {
        cases.push_back({kernel, "", nullptr, bytes, source, target, unit, CallOf(member), variant});
    };
    add("copy", &RowKernels::copy, 0, {8}, {8});
    add("streamCopy", &RowKernels::streamCopy, 0, {8}, {8});
    add("streamLines", &RowKernels::streamLines, 0, {512}, {512}, "", 64);
    add("packedGroupsToPlane", &RowKernels::packedGroupsToPlane, 0, {128}, {96, 24});
    add("planeToPackedGroups", &RowKernels::planeToPackedGroups, 0, {96, 24}, {128});
    for (const size_t bytes : kSampleSizes) {
        add("swapPairs", &RowKernels::swapPairs, bytes, {16 * bytes}, {16 * bytes});
        add("swapPairs", &RowKernels::swapPairs, bytes, {16 * bytes}, {}, " in place");
        add("reverseTriples", &RowKernels::reverseTriples, bytes, {24 * bytes}, {24 * bytes});
        add("reverseTriples", &RowKernels::reverseTriples, bytes, {24 * bytes}, {}, " in place");
    }
    for (uint32_t number = 1; number <= kOrderCount; ++number) {
        AddCasesOf(OrderName(number), FindOrder(number), cases);
    }
    return cases;
}

struct Result {
    Bytes bytes;  // of all parts
    bool staysInside;
};

// What the parts of a row hold before a call.
struct RowContent {
    std::array<Bytes, 2> src;
    std::array<Bytes, 2> dst;
};

RowContent ContentOf(const RowKernelCase& kernelCase, size_t units, const Bytes& content) {
    const auto bytesOf = [units](size_t bits) { return (bits * units + 7) / 8; };
    const auto [srcBits, dstBits] = std::pair(kernelCase.sourceBits, kernelCase.targetBits);
    return {{Repeated(content, bytesOf(srcBits[0])), Repeated(content, bytesOf(srcBits[1]))},
            {Bytes(bytesOf(dstBits[0]), 0xCD), Bytes(bytesOf(dstBits[1]), 0xCD)}};
}

Result Run(const RowKernelCase& kernelCase, const RowKernels& kernels, size_t units, const RowPlaces& places,
           const RowContent& row) {
    const ExactBuffer buffers[] = {{row.src[0], places.source, places.sourceShift},
                                   {row.src[1], places.source, places.sourceShift},
                                   {row.dst[0], places.target, places.targetShift},
                                   {row.dst[1], places.target, places.targetShift}};
    uint8_t* const first = buffers[kernelCase.targetBits[0] == 0 ? 0 : 2].data();
    uint8_t* const second = kernelCase.targetBits[1] == 0 ? nullptr : buffers[3].data();
    kernelCase.run(kernels, kernelCase, {{buffers[0].data(), buffers[1].data()}, {first, second}}, units);
    Result result = {{}, true};
    for (const ExactBuffer& buffer : buffers) {
        result.bytes.insert(result.bytes.end(), buffer.data(), buffer.data() + buffer.size());
        result.staysInside = result.staysInside && buffer.IsIntact();
    }
    return result;
}

}  // namespace

const std::vector<RowKernelCase>& RowKernelCases() {
    static const std::vector<RowKernelCase> kCases = MakeCases();
    return kCases;
}

std::string RowKernelFailure(const RowKernelCase& kernelCase, size_t units, const RowPlaces& places,
                             const Bytes& content) {
    const RowContent row = ContentOf(kernelCase, units, content);
    Bytes expected;
    plenar::Target target = {};
    const std::function<std::string()> what = [&] {
        std::array<char, 160> text;
        std::snprintf(
            text.data(), text.size(), "%s%s of %s%s%s%s, %zu units, places %u and %u: ", kernelCase.kernel.c_str(),
            kernelCase.variant.c_str(), NameOf(target), kernelCase.orderName.empty() ? "" : ", order ",
            kernelCase.orderName.c_str(), kSizeTexts[kernelCase.sampleBytes], units, places.source, places.target);
        return std::string(text.data());
    };
    const FaultNote note(what);
    for (const plenar::Target each : plenar::RunnableTargets()) {
        target = each;
        const Result result = Run(kernelCase, plenar::RowKernelsFor(target), units, places, row);
        expected = target == plenar::Target::Plain ? result.bytes : expected;
        if (!result.staysInside) {
            return what() + "writes outside its target";
        }
        if (result.bytes != expected) {
            return what() + Difference(result.bytes, expected);
        }
    }
    return "";
}

}  // namespace plenar_test
