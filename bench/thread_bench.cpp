// What a second thread brings, and what waking the threads costs.
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "benchmarks.h"
#include "frame_work.h"
#include "matte_contents.h"
#include "measurement.h"
#include "reference_work.h"

namespace plenar_bench {

namespace {

constexpr Direction kBothDirections[] = {Direction::Encode, Direction::Decode};

struct Kind {
    std::string name;
    Format format;
    bool codesAlpha = false;
    Matte matte = Matte::Flat;
};

std::vector<Kind> AllKinds() {
    std::vector<Kind> kinds = {
        {"copy", {PLENAR_ORDER_CBYCRY, PLENAR_TYPE_UINT16}},
        {"planar", {PLENAR_ORDER_YCBCR420_PLANAR, PLENAR_TYPE_UINT8}},
        {"reorder", {PLENAR_ORDER_BGRA, PLENAR_TYPE_UINT8}},
        {"pack-Uint10", {PLENAR_ORDER_CBYCRY, PLENAR_TYPE_UINT10}},
        {"pack-Uint12", {PLENAR_ORDER_BGR, PLENAR_TYPE_UINT12}},
        {"pack-Packed10", {PLENAR_ORDER_CBYCRY, PLENAR_TYPE_PACKED10}},
        {"float", {PLENAR_ORDER_RGB, PLENAR_TYPE_FIXED2P14, PLENAR_TYPE_FLOAT32}},
    };
    for (const Matte matte : {Matte::Flat, Matte::Shapes, Matte::SoftEdges, Matte::Glyphs, Matte::Hair, Matte::Noise}) {
        kinds.push_back({"alpha-" + NameOf(matte), {PLENAR_ORDER_ALPHA_ONLY, PLENAR_TYPE_UINT8}, true, matte});
    }
    return kinds;
}

std::vector<uint8_t> ContentsOf(const Kind& kind, PictureSize size) {
    return kind.codesAlpha ? MatteSamples(kind.matte, size, 8) : std::vector<uint8_t>();
}

void AddScaling(const char* sizeName, PictureSize size) {
    for (const Kind& kind : AllKinds()) {
        for (const Direction direction : kBothDirections) {
            if (kind.format.decodedType != 0 && direction == Direction::Encode) {
                continue;  // an encode of fixed point is a copy
            }
            const std::string prefix =
                std::string("threads/") + sizeName + "/t2/" + kind.name + "-" + NameOf(direction);
            const Frame frame = {kind.format, size, kind.codesAlpha};
            Measure(
                prefix + "/one", [=] { return FrameWork(frame, direction, 1, ContentsOf(kind, size)); }, Clock::Wall);
            Measure(
                prefix + "/two", [=] { return FrameWork(frame, direction, 2, ContentsOf(kind, size)); }, Clock::Wall);
        }
    }
}

Work WakingWork() {
    const auto pair = std::make_shared<SleepingPair>();
    return {[pair] {
        pair->Run([](int) {});
        return true;
    }};
}

void AddSmallFrames() {
    const Kind kinds[] = {
        {"CbYCrY-Uint8", {PLENAR_ORDER_CBYCRY, PLENAR_TYPE_UINT8}},
        {"BGRA-Uint8", {PLENAR_ORDER_BGRA, PLENAR_TYPE_UINT8}},
        {"CbYCrY-Uint10", {PLENAR_ORDER_CBYCRY, PLENAR_TYPE_UINT10}},
        {"YCbCr420Planar-Uint8", {PLENAR_ORDER_YCBCR420_PLANAR, PLENAR_TYPE_UINT8}},
        {"AlphaOnly-Uint8-shapes", {PLENAR_ORDER_ALPHA_ONLY, PLENAR_TYPE_UINT8}, true, Matte::Shapes},
    };
    constexpr PictureSize kSmall = {16, 16};
    for (const Kind& kind : kinds) {
        for (const Direction direction : kBothDirections) {
            const Frame frame = {kind.format, kSmall, kind.codesAlpha};
            const std::string name = "/" + kind.name + "-" + NameOf(direction) + "/";
            const size_t moved =
                kind.codesAlpha ? size_t{2} * frame.PictureBytes(direction) : frame.MovedBytes(direction);
            Measure("small/16x16/t1" + name + "memcpy", [=] { return MemcpyWork(moved, direction); });
            Measure("small/16x16/t1" + name + "plenar",
                    [=] { return FrameWork(frame, direction, 1, ContentsOf(kind, kSmall)); });
            Measure("small/16x16/t2" + name + "waking", WakingWork, Clock::Wall);
            Measure(
                "small/16x16/t2" + name + "plenar",
                [=] { return FrameWork(frame, direction, 2, ContentsOf(kind, kSmall)); }, Clock::Wall);
        }
    }
}

// A host's own work between two frames: some additions on each of two threads, or none at all. Threads of ours that
// still spin then take processors from it.
constexpr int kOwnRounds = 800;

void OwnShare(int) {
    for (int i = 0; i < kOwnRounds; ++i) {
        RunChainedAdditions();
    }
}

Work OwnWork() {
    const auto pair = std::make_shared<SleepingPair>();
    return {[pair] {
        pair->Run(OwnShare);
        return true;
    }};
}

Work FrameThenOwnWork(const Frame& frame) {
    const Work encode = FrameWork(frame, Direction::Encode, 2);
    const Work own = OwnWork();
    return {[=] { return encode.run() && own.run(); }, encode.bytes};
}

void AddPauses() {
    const Frame frame = {{PLENAR_ORDER_BGRA, PLENAR_TYPE_UINT8}, kHd};
    const std::string name = "pauses/HD/t2/BGRA-Uint8/";
    const auto encode = [=] { return FrameWork(frame, Direction::Encode, 2); };
    Measure(name + "backtoback", encode, Clock::Wall);
    MeasureAfter(name + "aftersleep", encode, [] { std::this_thread::sleep_for(std::chrono::milliseconds(2)); });
    Measure(name + "own", OwnWork, Clock::Wall);
    Measure(
        name + "frameandown", [=] { return FrameThenOwnWork(frame); }, Clock::Wall);
}

}  // namespace

void AddThreadBenchmarks() {
    AddScaling("HD", kHd);
    AddScaling("UHD", kUhd);
    AddSmallFrames();
    AddPauses();
}

}  // namespace plenar_bench
