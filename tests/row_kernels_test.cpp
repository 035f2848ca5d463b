// Every set of kernels that this processor can run against the plain set: all short lengths, rows at all alignments,
// and buffers that end where the row ends, with an inaccessible page behind them.
#include "conversion/row_kernels.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "plenar/cpu_features.h"

namespace plenar {
namespace {

constexpr uint8_t untouched = 0xCD;

// Bytes whose first or last one borders on an inaccessible page.
class GuardedBytes {
public:
    explicit GuardedBytes(size_t capacity) : page(static_cast<size_t>(sysconf(_SC_PAGESIZE))) {
        inner = (capacity + page - 1) / page * page;
        base = static_cast<uint8_t*>(mmap(nullptr, inner + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(base + page, inner, PROT_READ | PROT_WRITE);
    }
    ~GuardedBytes() { munmap(base, inner + 2 * page); }
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;

    uint8_t* Place(size_t size, bool atEnd) const { return atEnd ? base + page + inner - size : base + page; }

private:
    size_t page;
    size_t inner;
    uint8_t* base;
};

// A kernel as bytes in, bytes out: the sizes of its buffers for a length in its own units, and the call.
struct KernelCase {
    std::string name;
    size_t inA, inB, outA, outB;  // of a unit: bytes, and for the second buffer of a side 1 / shareB of a byte
    size_t shareB;
    std::function<void(const RowKernels&, const uint8_t*, const uint8_t*, uint8_t*, uint8_t*, size_t)> run;
};

struct ReorderingCase {
    std::string name;
    Reordering reordering;
    size_t samples;  // of the plane, that are moved together
    size_t callerSamples;
};

void AddPackingCases(std::vector<KernelCase>& cases) {
    std::vector<ReorderingCase> reorderings = {{"plain", {Reordering::None}, 1, 1},
                                               {"pairs", {Reordering::Pairs}, 2, 2},
                                               {"triples", {Reordering::Triples}, 3, 3}};
    for (const ReorderingCase& r : reorderings) {
        const Reordering reordering = r.reordering;
        const size_t n = r.samples;
        cases.push_back({"unpack10 " + r.name, n, n, 2 * n, 0, 4,
                         [=](const RowKernels& k, auto* a, auto* b, auto* c, auto*, size_t units) {
                             k.unpack10(reordering, a, b, n * units, c);
                         }});
        cases.push_back({"unpack12 " + r.name, n, n, 2 * n, 0, 2,
                         [=](const RowKernels& k, auto* a, auto* b, auto* c, auto*, size_t units) {
                             k.unpack12(reordering, a, b, n * units, c);
                         }});
        cases.push_back({"fixed to float " + r.name, 2 * n, 0, 4 * n, 0, 1,
                         [=](const RowKernels& k, auto* a, auto*, auto* c, auto*, size_t units) {
                             k.fixedToFloat(reordering, a, n * units, c);
                         }});
    }
    for (const uint32_t order : {ARGB, BGRA, RGBA, ABGR, YCbCrA, CbYACrYA}) {
        const PixelLayout* layout = FindPixelLayout(order);
        reorderings.push_back(
            {"order " + std::to_string(order), {Reordering::Alpha, layout}, layout->colourSamples, layout->samples});
    }
    for (const ReorderingCase& r : reorderings) {
        const Reordering reordering = r.reordering;
        const size_t n = r.samples;
        cases.push_back({"pack10 " + r.name, 2 * r.callerSamples, 0, n, n, 4,
                         [=](const RowKernels& k, auto* a, auto*, auto* c, auto* d, size_t units) {
                             k.pack10(reordering, a, n * units, c, d);
                         }});
        cases.push_back({"pack12 " + r.name, 2 * r.callerSamples, 0, n, n, 2,
                         [=](const RowKernels& k, auto* a, auto*, auto* c, auto* d, size_t units) {
                             k.pack12(reordering, a, n * units, c, d);
                         }});
    }
}

std::vector<KernelCase> AllCases() {
    std::vector<KernelCase> cases;
    for (const size_t width : {size_t{1}, size_t{2}, size_t{4}}) {
        const std::string suffix = " of " + std::to_string(width);
        for (const uint32_t order : {ARGB, BGRA, RGBA, ABGR, YCbCrA, CbYACrYA}) {
            const PixelLayout& layout = *FindPixelLayout(order);
            const size_t colour = layout.colourSamples * width;
            const std::string name = "order " + std::to_string(order) + suffix;
            cases.push_back({"split " + name, colour + width, 0, colour, width, 1,
                             [&layout, width](const RowKernels& k, auto* a, auto*, auto* c, auto* d, size_t n) {
                                 k.split(layout, width, a, c, d, n);
                             }});
            cases.push_back({"drop alpha " + name, colour + width, 0, colour, 0, 1,
                             [&layout, width](const RowKernels& k, auto* a, auto*, auto* c, auto*, size_t n) {
                                 k.split(layout, width, a, c, nullptr, n);
                             }});
            cases.push_back({"merge " + name, colour, width, colour + width, 0, 1,
                             [&layout, width](const RowKernels& k, auto* a, auto* b, auto* c, auto*, size_t n) {
                                 k.merge(layout, width, a, b, c, n);
                             }});
        }
        cases.push_back(
            {"swap" + suffix, 2 * width, 0, 2 * width, 0, 1,
             [width](const RowKernels& k, auto* a, auto*, auto* c, auto*, size_t n) { k.swapPairs(width, a, c, n); }});
        cases.push_back({"reverse" + suffix, 3 * width, 0, 3 * width, 0, 1,
                         [width](const RowKernels& k, auto* a, auto*, auto* c, auto*, size_t n) {
                             k.reverseTriples(width, a, c, n);
                         }});
        cases.push_back({"swap in place" + suffix, 2 * width, 0, 2 * width, 0, 1,
                         [width](const RowKernels& k, auto* a, auto*, auto* c, auto*, size_t n) {
                             std::memcpy(c, a, 2 * width * n);
                             k.swapPairs(width, c, c, n);
                         }});
        cases.push_back({"reverse in place" + suffix, 3 * width, 0, 3 * width, 0, 1,
                         [width](const RowKernels& k, auto* a, auto*, auto* c, auto*, size_t n) {
                             std::memcpy(c, a, 3 * width * n);
                             k.reverseTriples(width, c, c, n);
                         }});
    }
    // Units of 7 bytes, so that the lengths go beyond several rounds of the copy.
    cases.push_back({"copy", 7, 0, 7, 0, 1,
                     [](const RowKernels& k, auto* a, auto*, auto* c, auto*, size_t n) { k.copy(a, c, 7 * n); }});
    cases.push_back({"stream copy", 7, 0, 7, 0, 1,
                     [](const RowKernels& k, auto* a, auto*, auto* c, auto*, size_t n) { k.streamCopy(a, c, 7 * n); }});
    AddPackingCases(cases);
    cases.push_back(
        {"packed groups to plane", 16, 0, 12, 3, 1,
         [](const RowKernels& k, auto* a, auto*, auto* c, auto* d, size_t n) { k.packedGroupsToPlane(a, n, c, d); }});
    cases.push_back(
        {"plane to packed groups", 12, 3, 16, 0, 1,
         [](const RowKernels& k, auto* a, auto* b, auto* c, auto*, size_t n) { k.planeToPackedGroups(a, b, n, c); }});
    return cases;
}

struct KernelSet {
    const char* name;
    const RowKernels* kernels;
};

std::vector<KernelSet> RunnableSets() {
    std::vector<KernelSet> sets = {{"ssse3", &ssse3RowKernels}};
    if (DetectedCpuFeatures().hasAvx2) {
        sets.push_back({"avx2", &avx2RowKernels});
    }
    return sets;
}

void PrintTo(const KernelCase& c, std::ostream* out) {
    *out << c.name;
}

class RowKernelsTest : public testing::TestWithParam<KernelCase> {
protected:
    static constexpr size_t capacity = 1 << 16;

    // What the kernel writes for `units` units, its second output behind its first, with both ends of all buffers
    // `shift` bytes from the guard page.
    std::vector<uint8_t> Run(const RowKernels& kernels, size_t units, bool atEnd, size_t shift) {
        const KernelCase& c = GetParam();
        const auto bytesB = [&](size_t shares) { return (units * shares + c.shareB - 1) / c.shareB; };
        const auto place = [&](const GuardedBytes& bytes, size_t size) {
            return atEnd ? bytes.Place(size + shift, true) : bytes.Place(size, false) + shift;
        };
        uint8_t* inA = place(guarded[0], units * c.inA);
        uint8_t* inB = place(guarded[1], bytesB(c.inB));
        uint8_t* outA = place(guarded[2], units * c.outA);
        uint8_t* outB = place(guarded[3], bytesB(c.outB));
        std::copy_n(noise.begin(), units * c.inA, inA);
        std::copy_n(noise.rbegin(), bytesB(c.inB), inB);
        for (const auto& [out, size] : {std::pair{outA, units * c.outA}, std::pair{outB, bytesB(c.outB)}}) {
            std::fill_n(out - (atEnd ? 16 : 0), size + 16, untouched);
        }
        c.run(kernels, inA, inB, outA, outB, units);
        std::vector<uint8_t> result(outA - (atEnd ? 16 : 0), outA + units * c.outA + (atEnd ? 0 : 16));
        result.insert(result.end(), outB - (atEnd ? 16 : 0), outB + bytesB(c.outB) + (atEnd ? 0 : 16));
        return result;
    }

    static std::vector<uint8_t> MakeNoise() {
        std::mt19937 random(7);
        std::vector<uint8_t> bytes(capacity);
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(random()); });
        return bytes;
    }

    GuardedBytes guarded[4] = {GuardedBytes(capacity), GuardedBytes(capacity), GuardedBytes(capacity),
                               GuardedBytes(capacity)};
    std::vector<uint8_t> noise = MakeNoise();
};

TEST_P(RowKernelsTest, AgreeWithThePlainOnes) {
    for (const KernelSet& set : RunnableSets()) {
        for (size_t units = 0; units <= 300; ++units) {
            const bool atEnd = units % 2 == 0;
            for (const size_t shift : {size_t{0}, units % 64}) {
                ASSERT_EQ(Run(*set.kernels, units, atEnd, shift), Run(plainRowKernels, units, atEnd, shift))
                    << set.name << " " << units << " units, at " << (atEnd ? "end" : "start") << ", shift " << shift;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Kernels, RowKernelsTest, testing::ValuesIn(AllCases()), [](const auto& param) {
    std::string name = param.param.name;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
});

}  // namespace
}  // namespace plenar
