#include "testing/row_kernel_cases.h"

#include <utility>

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

// Makes the cases; the parts of a row stand in the order in which the kernels take them.
class CaseTable {
public:
    std::vector<RowKernelCase> Make() {
        AddCopy<&RowKernels::copy>("copy");
        AddCopy<&RowKernels::streamCopy>("streamCopy");
        for (const size_t bytes : kSampleSizes) {
            AddExchange<&RowKernels::swapPairs>("swapPairs", bytes, 16 * bytes);
            AddExchange<&RowKernels::reverseTriples>("reverseTriples", bytes, 24 * bytes);
        }
        Add("packedGroupsToPlane", "", 0, {128}, {96, 24},
            [](const RowKernels& kernels, const RowParts& row, size_t n) {
                kernels.packedGroupsToPlane(row.src[0], n, row.dst[0], row.dst[1]);
            });
        Add("planeToPackedGroups", "", 0, {96, 24}, {128},
            [](const RowKernels& kernels, const RowParts& row, size_t n) {
                kernels.planeToPackedGroups(row.src[0], row.src[1], n, row.dst[0]);
            });
        for (uint32_t number = 1; number <= kOrderCount; ++number) {
            AddOrder(OrderName(number), FindOrder(number));
        }
        return cases_;
    }

private:
    using Bits = std::array<size_t, 2>;

    template <class Run>
    void Add(const char* kernel, const std::string& order, size_t bytes, Bits source, Bits target, const Run& run,
             const char* variant = "") {
        cases_.push_back({kernel, order, bytes, source, target, run, variant});
    }

    template <auto Kernel>
    void AddCopy(const char* name) {
        Add(name, "", 0, {8}, {8}, [](const RowKernels& kernels, const RowParts& row, size_t n) {
            (kernels.*Kernel)(row.src[0], row.dst[0], n);
        });
    }

    template <auto Kernel>
    void AddExchange(const char* name, size_t bytes, size_t bits) {
        const auto run = [bytes](const RowKernels& kernels, const RowParts& row, size_t n) {
            (kernels.*Kernel)(bytes, row.src[0], row.dst[0], n);
        };
        Add(name, "", bytes, {bits}, {bits}, run);
        Add(name, "", bytes, {bits}, {}, run, " in place");
    }

    void AddOrder(const std::string& name, const Order& order) {
        const size_t unit = order.movement == Movement::InOrder ? 1 : order.colourSamples;
        const size_t callers = order.movement == Movement::SplitAlpha ? order.samples : unit;
        AddPacking<&RowKernels::packRow10, &RowKernels::unpackRow10>("packRow10", "unpackRow10", name, order, unit,
                                                                     {16 * callers}, {8 * unit, 2 * unit});
        AddPacking<&RowKernels::packRow12, &RowKernels::unpackRow12>("packRow12", "unpackRow12", name, order, unit,
                                                                     {16 * callers}, {8 * unit, 4 * unit});
        if (order.alpha != AlphaPlace::Interleaved) {
            Add("fixedRowToFloat", name, 0, {16 * unit}, {32 * unit},
                [&order, unit](const RowKernels& kernels, const RowParts& row, size_t n) {
                    kernels.fixedRowToFloat(order, row.src[0], unit * n, row.dst[0]);
                });
            return;
        }
        for (const size_t bytes : kSampleSizes) {
            AddAlpha(name, order, bytes);
        }
    }

    template <auto Pack, auto Unpack>
    void AddPacking(const char* packName, const char* unpackName, const std::string& name, const Order& order,
                    size_t unit, Bits words, Bits parts) {
        Add(packName, name, 0, words, parts, [&order, unit](const RowKernels& kernels, const RowParts& row, size_t n) {
            (kernels.*Pack)(order, row.src[0], unit * n, row.dst[0], row.dst[1]);
        });
        if (order.alpha != AlphaPlace::Interleaved) {
            Add(unpackName, name, 0, parts, words,
                [&order, unit](const RowKernels& kernels, const RowParts& row, size_t n) {
                    (kernels.*Unpack)(order, row.src[0], row.src[1], unit * n, row.dst[0]);
                });
        }
    }

    void AddAlpha(const std::string& name, const Order& order, size_t bytes) {
        const Bits pixel = {8 * bytes * order.samples};
        const Bits parts = {8 * bytes * order.colourSamples, 8 * bytes};
        const auto split = [&order, bytes](const RowKernels& kernels, const RowParts& row, size_t n) {
            kernels.splitRow(order, bytes, row.src[0], row.dst[0], row.dst[1], n);
        };
        const auto drop = [&order, bytes](const RowKernels& kernels, const RowParts& row, size_t n) {
            kernels.splitRow(order, bytes, row.src[0], row.dst[0], nullptr, n);
        };
        Add("splitRow", name, bytes, pixel, parts, split);
        Add("splitRow", name, bytes, pixel, {parts[0]}, drop, " without alpha");
        Add("mergeRow", name, bytes, parts, pixel,
            [&order, bytes](const RowKernels& kernels, const RowParts& row, size_t n) {
                kernels.mergeRow(order, bytes, row.src[0], row.src[1], row.dst[0], n);
            });
    }

    std::vector<RowKernelCase> cases_;
};

struct Result {
    Bytes bytes;  // of all parts
    bool staysInside;
};

Result Run(const RowKernelCase& kernelCase, const RowKernels& kernels, size_t units, const RowPlaces& places,
           const Bytes& content) {
    const auto bytesOf = [units](size_t bits) { return (bits * units + 7) / 8; };
    const auto source = [&](size_t bits) {
        Bytes bytes(bytesOf(bits));
        for (size_t i = 0; i < bytes.size() && !content.empty(); ++i) {
            bytes[i] = content[i % content.size()];
        }
        return bytes;
    };
    const auto [srcBits, dstBits] = std::pair(kernelCase.sourceBits, kernelCase.targetBits);
    const ExactBuffer buffers[] = {{source(srcBits[0]), places.source, places.sourceShift},
                                   {source(srcBits[1]), places.source, places.sourceShift},
                                   {Bytes(bytesOf(dstBits[0]), 0xCD), places.target, places.targetShift},
                                   {Bytes(bytesOf(dstBits[1]), 0xCD), places.target, places.targetShift}};
    const bool isInPlace = dstBits[0] == 0;
    kernelCase.run(kernels,
                   {{buffers[0].data(), buffers[1].data()}, {buffers[isInPlace ? 0 : 2].data(), buffers[3].data()}},
                   units);
    Result result = {{}, true};
    for (const ExactBuffer& buffer : buffers) {
        result.bytes.insert(result.bytes.end(), buffer.data(), buffer.data() + buffer.size());
        result.staysInside = result.staysInside && buffer.IsIntact();
    }
    return result;
}

}  // namespace

std::string RowPlaces::Name() const {
    const auto name = [](uint32_t place, size_t shift) {
        constexpr const char* kNames[] = {"a heap block", " bytes before the end", " bytes behind the start"};
        return (place % 3 == kHeapBlock ? "" : std::to_string(shift)) + kNames[place % 3];
    };
    return name(source, sourceShift) + " to " + name(target, targetShift);
}

const std::vector<RowKernelCase>& RowKernelCases() {
    static const std::vector<RowKernelCase> kCases = CaseTable().Make();
    return kCases;
}

std::string RowKernelFailure(const RowKernelCase& kernelCase, size_t units, const RowPlaces& places,
                             const Bytes& content) {
    Bytes expected;
    for (const plenar::Target target : plenar::RunnableTargets()) {
        static std::string what;
        what = kernelCase.kernel + kernelCase.variant + " of " + NameOf(target) +
               (kernelCase.order.empty() ? "" : ", order " + kernelCase.order) +
               (kernelCase.sampleBytes == 0 ? "" : ", " + std::to_string(kernelCase.sampleBytes) + " bytes a sample") +
               ", " + std::to_string(units) + " units, from " + places.Name() + ": ";
        NoteForFaults(what.c_str());
        const Result result = Run(kernelCase, plenar::RowKernelsFor(target), units, places, content);
        expected = target == plenar::Target::Plain ? result.bytes : expected;
        if (!result.staysInside) {
            return what + "writes outside its target";
        }
        if (result.bytes != expected) {
            return what + Difference(result.bytes, expected);
        }
    }
    return "";
}

}  // namespace plenar_test
