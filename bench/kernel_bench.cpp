// Single kernels in each of their versions, on one long row that stays in the second-level cache, beside memcpy of as
// many bytes.
#include <memory>
#include <string>

#include "benchmarks.h"
#include "frame_work.h"
#include "matte_contents.h"
#include "measurement.h"
#include "testing/row_kernel_cases.h"
#include "testing/targets.h"

namespace plenar_bench {

namespace {

using plenar_test::RowKernelCase;

constexpr size_t kRowBytes = size_t{256} * 1024;  // read plus written
constexpr size_t kFarPart = kRowBytes;            // where a row of alpha stands
constexpr size_t kUnitsTogether = 4;              // rows are whole bytes and groups

bool MovesAlpha(const RowKernelCase& kernelCase) {
    return kernelCase.kernel == "splitRow" || kernelCase.kernel == "mergeRow";
}

// One order stands for those whose kernels do the same.
bool IsMeasured(const RowKernelCase& kernelCase) {
    const std::string& order = kernelCase.orderName;
    const bool isOneOfMany = MovesAlpha(kernelCase) ? order == "BGRA" || order == "CbYACrYA" : order == "RGB";
    return kernelCase.variant.empty() && (order.empty() || isOneOfMany);
}

std::string NameOf(const RowKernelCase& kernelCase) {
    std::string name = kernelCase.kernel;
    if (const size_t row = name.find("Row"); row != std::string::npos) {
        name.erase(row, 3);
    }
    return name + (kernelCase.orderName.empty() || kernelCase.orderName == "RGB" ? "" : "-" + kernelCase.orderName) +
           (kernelCase.sampleBytes == 0 ? "" : "-" + std::to_string(kernelCase.sampleBytes));
}

void AddRowKernel(const RowKernelCase& kernelCase) {
    const auto [firstSource, secondSource] = kernelCase.sourceBits;
    const auto [firstTarget, secondTarget] = kernelCase.targetBits;
    const size_t unitBits = firstSource + secondSource + firstTarget + secondTarget;
    const bool hasAlpha = MovesAlpha(kernelCase);
    const size_t units = 8 * kRowBytes / unitBits / kUnitsTogether * kUnitsTogether;
    const size_t moved = units * unitBits / 8;
    const std::string prefix = "kernels/L2/t1/" + NameOf(kernelCase) + "/";
    Measure(prefix + "memcpy", [=] { return MemcpyWork(moved, Direction::Encode); });
    for (const plenar::Target target : plenar::RunnableTargets()) {
        const plenar::RowKernels* kernels = &plenar::RowKernelsFor(target);
        Measure(
            prefix + NameOf(target), [=, &kernelCase, firstSource = firstSource, firstTarget = firstTarget]() -> Work {
                const uint8_t* src = PictureMemory(2 * kRowBytes);
                uint8_t* dst = PayloadMemory(2 * kRowBytes);
                // Low parts of samples follow their high parts, alpha has a plane of its own.
                const auto second = [=](size_t firstBits) { return hasAlpha ? kFarPart : units * firstBits / 8; };
                const plenar_test::RowParts row = {{src, src + second(firstSource)}, {dst, dst + second(firstTarget)}};
                return {[=, &kernelCase] {
                            kernelCase.run(*kernels, kernelCase, row, units);
                            return true;
                        },
                        moved};
            });
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
                    const auto forced = std::make_shared<plenar_test::ForcedTarget>(target);
                    return {[run = work.run, forced] { return run(); }, work.bytes};
                });
            }
        }
    }
}

}  // namespace

void AddKernelBenchmarks() {
    for (const RowKernelCase& kernelCase : plenar_test::RowKernelCases()) {
        if (IsMeasured(kernelCase)) {
            AddRowKernel(kernelCase);
        }
    }
    AddBandCoders();
}

}  // namespace plenar_bench
