// Time by picture size, from what fits in the nearest cache to what fits in none.
#include <string>
#include <vector>

#include "benchmarks.h"
#include "frame_work.h"
#include "matte_contents.h"
#include "measurement.h"

namespace plenar_bench {

namespace {

constexpr Direction kBothDirections[] = {Direction::Encode, Direction::Decode};
constexpr PictureSize kSizes[] = {{64, 64},     {128, 128},   {256, 256},   {512, 512},  {1280, 720},
                                  {1920, 1080}, {3840, 2160}, {5760, 3240}, {7680, 4320}};

// memcpy moves what the frame moves; for coded alpha it copies the plain plane.
void AddFrame(const Frame& frame, Direction direction) {
    const std::string prefix = "growth/" + std::to_string(frame.size.width) + "x" + std::to_string(frame.size.height) +
                               "/t1/" + frame.format.Name() + "-" + NameOf(direction);
    const size_t moved = frame.codesAlpha ? 2 * size_t{frame.PictureBytes(direction)} : frame.MovedBytes(direction);
    Measure(prefix + "/memcpy", [=] {
        Work work = MemcpyWork(moved, direction);
        work.counts["pixels"] = static_cast<double>(frame.Pixels());
        return work;
    });
    Measure(prefix + "/plenar", [=] {
        return frame.codesAlpha ? FrameWork(frame, direction, 1, MatteSamples(Matte::Glyphs, frame.size, 8))
                                : FrameWork(frame, direction, 1);
    });
}

}  // namespace

void AddGrowthBenchmarks() {
    constexpr Format kFormats[] = {{PLENAR_ORDER_CBYCRY, PLENAR_TYPE_UINT8},
                                   {PLENAR_ORDER_BGRA, PLENAR_TYPE_UINT8},
                                   {PLENAR_ORDER_YCBYCR, PLENAR_TYPE_UINT8},
                                   {PLENAR_ORDER_CBYCRY, PLENAR_TYPE_UINT10},
                                   {PLENAR_ORDER_ALPHA_ONLY, PLENAR_TYPE_UINT8}};
    for (const Format& format : kFormats) {
        for (const PictureSize size : kSizes) {
            for (const Direction direction : kBothDirections) {
                AddFrame({format, size, format.order == PLENAR_ORDER_ALPHA_ONLY}, direction);
            }
        }
    }
}

}  // namespace plenar_bench
