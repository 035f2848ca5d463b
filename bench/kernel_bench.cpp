// Single kernels in each of their versions, on one long row that stays in the second-level cache, beside memcpy of as
// many bytes.
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks.h"
#include "conversion/row_kernels.h"
#include "frame_work.h"
#include "matte_contents.h"
#include "measurement.h"
#include "simd/target.h"

namespace plenar_bench {

namespace {

using plenar::Order;
using plenar::RowKernels;

constexpr size_t kRowBytes = size_t{256} * 1024;  // read plus written
constexpr size_t kFarPart = kRowBytes;            // where the second part of a plane row stands
const plenar::Order& kInOrder = plenar::FindOrder(PLENAR_ORDER_RGB);            // samples stand in the caller's row as in the plane's

// `unitBytes` are read plus written for one of the kernel's units, and units come by `block`.
struct KernelCase {
    std::string name;
    double unitBytes;
    size_t block;
    std::function<void(const RowKernels&, const uint8_t* src, uint8_t* dst, size_t units)> run;
};

std::vector<KernelCase> RowCases() {
    std::vector<KernelCase> cases;
    for (const size_t width : {size_t{1}, size_t{2}, size_t{4}}) {
        const auto bytes = static_cast<double>(width);
        const std::string suffix = "-" + std::to_string(width);
        const Order& bgra = plenar::FindOrder(PLENAR_ORDER_BGRA);
        const Order& cbyacrya = plenar::FindOrder(PLENAR_ORDER_CBYACRYA);
        for (const auto& [name, order] : {std::pair{"BGRA", &bgra}, std::pair{"CbYACrYA", &cbyacrya}}) {
            const double unit = 2 * static_cast<double>(order->samples) * bytes;
            cases.push_back({std::string("split-") + name + suffix, unit, 4,
                             [order = order, width](const RowKernels& k, const uint8_t* src, uint8_t* dst, size_t n) {
                                 k.splitRow(*order, width, src, dst, dst + kFarPart, n);
                             }});
            cases.push_back({std::string("merge-") + name + suffix, unit, 4,
                             [order = order, width](const RowKernels& k, const uint8_t* src, uint8_t* dst, size_t n) {
                                 k.mergeRow(*order, width, src, src + kFarPart, dst, n);
                             }});
        }
        cases.push_back({"swapPairs" + suffix, 4 * bytes, 1,
                         [width](const RowKernels& k, const uint8_t* src, uint8_t* dst, size_t n) {
                             k.swapPairs(width, src, dst, n);
                         }});
        cases.push_back({"reverseTriples" + suffix, 6 * bytes, 1,
                         [width](const RowKernels& k, const uint8_t* src, uint8_t* dst, size_t n) {
                             k.reverseTriples(width, src, dst, n);
                         }});
    }
    cases.push_back({"pack10", 3.25, 4, [](const RowKernels& k, const uint8_t* src, uint8_t* dst, size_t n) {
                         k.packRow10(kInOrder, src, n, dst, dst + n);
                     }});
    cases.push_back({"pack12", 3.5, 4, [](const RowKernels& k, const uint8_t* src, uint8_t* dst, size_t n) {
                         k.packRow12(kInOrder, src, n, dst, dst + n);
                     }});
    cases.push_back({"unpack10", 3.25, 4, [](const RowKernels& k, const uint8_t* src, uint8_t* dst, size_t n) {
                         k.unpackRow10(kInOrder, src, src + n, n, dst);
                     }});
    cases.push_back({"unpack12", 3.5, 4, [](const RowKernels& k, const uint8_t* src, uint8_t* dst, size_t n) {
                         k.unpackRow12(kInOrder, src, src + n, n, dst);
                     }});
    cases.push_back({"packedGroupsToPlane", 31, 1, [](const RowKernels& k, const uint8_t* src, uint8_t* dst, size_t n) {
                         k.packedGroupsToPlane(src, n, dst, dst + 12 * n);
                     }});
    cases.push_back({"planeToPackedGroups", 31, 1, [](const RowKernels& k, const uint8_t* src, uint8_t* dst, size_t n) {
                         k.planeToPackedGroups(src, src + 12 * n, n, dst);
                     }});
    cases.push_back({"fixedToFloat", 6, 1, [](const RowKernels& k, const uint8_t* src, uint8_t* dst, size_t n) {
                         k.fixedRowToFloat(kInOrder, src, n, dst);
                     }});
    return cases;
}

void AddRowKernels() {
    for (const KernelCase& kernel : RowCases()) {
        const std::string prefix = "kernels/L2/t1/" + kernel.name + "/";
        const size_t units =
            static_cast<size_t>(static_cast<double>(kRowBytes) / kernel.unitBytes) / kernel.block * kernel.block;
        const auto moved = static_cast<size_t>(static_cast<double>(units) * kernel.unitBytes);
        Measure(prefix + "memcpy", [=] { return MemcpyWork(moved, Direction::Encode); });
        for (const plenar::Target target : plenar::RunnableTargets()) {
            const RowKernels* kernels = &plenar::RowKernelsFor(target);
            Measure(prefix + NameOf(target), [=, run = kernel.run]() -> Work {
                const uint8_t* src = PictureMemory(2 * kRowBytes);
                uint8_t* dst = PayloadMemory(2 * kRowBytes);
                return {[=] {
                            run(*kernels, src, dst, units);
                            return true;
                        },
                        moved};
            });
        }
    }
}

// The band coders work inside frames, on the target that is forced for the process.
void AddBandCoders() {
    constexpr PictureSize kSize = {480, 270};
    const Frame frame = {{PLENAR_ORDER_ALPHA_ONLY, PLENAR_TYPE_UINT8}, kSize, true};
    for (const Matte matte : {Matte::Flat, Matte::Shapes, Matte::SoftEdges, Matte::Glyphs, Matte::Noise}) {
        for (const Direction direction : {Direction::Encode, Direction::Decode}) {
            for (const plenar::Target target : plenar::RunnableTargets()) {
                const std::string prefix = "kernels/L2/t1/rle-" + NameOf(matte) + "-" + NameOf(direction) + "/";
                Measure(prefix + NameOf(target), [=]() -> Work {
                    Work work = FrameWork(frame, direction, 1, MatteSamples(matte, kSize, 8));
                    const std::shared_ptr<void> back(
                        nullptr, [](void*) { plenar::ForceTarget(plenar::RunnableTargets().back()); });
                    plenar::ForceTarget(target);
                    return {[run = work.run, back] { return run(); }, work.bytes};
                });
            }
        }
    }
}

}  // namespace

void AddKernelBenchmarks() {
    AddRowKernels();
    AddBandCoders();
}

}  // namespace plenar_bench
