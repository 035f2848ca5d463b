// Coded alpha planes by what they show. Bytes are those of the plain plane, for the library and for its peers.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks.h"
#include "coder_peers.h"
#include "frame_work.h"
#include "matte_contents.h"
#include "measurement.h"
#include "reference_work.h"
#include "token_count.h"

namespace plenar_bench {

namespace {

struct Plane {
    Matte matte;
    PictureSize size;
    uint32_t bits;

    Frame AsFrame() const {
        const uint32_t type = bits == 8 ? PLENAR_TYPE_UINT8 : PLENAR_TYPE_UINT16;
        return {{PLENAR_ORDER_ALPHA_ONLY, type}, size, true};
    }
    const std::vector<uint8_t>& Samples() const { return MatteSamples(matte, size, bits); }
    bool operator==(const Plane& other) const {
        return matte == other.matte && size.width == other.size.width && bits == other.bits;
    }
};

// Counted once for all measurements of a plane, which follow one another.
double TokensOf(const Plane& plane) {
    static Plane counted = {};
    static double tokens = 0;
    if (tokens == 0 || !(counted == plane)) {
        tokens = static_cast<double>(CountTokens(plane.AsFrame(), plane.Samples()));
        counted = plane;
    }
    return tokens;
}

Work CodingWork(const Plane& plane, Direction direction) {
    Work work = FrameWork(plane.AsFrame(), direction, 1, plane.Samples());
    work.counts["tokens"] = TokensOf(plane);
    return work;
}

// The pass over memory that each direction can't do without.
Work MemoryPass(const Plane& plane, Direction direction) {
    const size_t size = plane.AsFrame().PictureBytes(direction);
    uint8_t* samples = PictureMemory(size);
    if (direction == Direction::Encode) {
        return {[=] {
                    benchmark::DoNotOptimize(ReadPass(samples, size));
                    return true;
                },
                size};
    }
    return {[=] {
                std::memset(samples, 0xFF, size);
                return true;
            },
            size};
}

Work Cycles() {
    return {[] {
                RunChainedAdditions();
                return true;
            },
            kChainedAdditions};
}

void AddPlane(const char* sizeName, const Plane& plane, Direction direction) {
    const bool encode = direction == Direction::Encode;
    const std::string prefix = std::string("alpha_") + NameOf(direction) + "/" + sizeName + "/t1/" +
                               NameOf(plane.matte) + "-" + std::to_string(plane.bits) + "/";
    Measure(prefix + "cycles", Cycles);
    Measure(prefix + (encode ? "read" : "memset"), [=] { return MemoryPass(plane, direction); });
    Measure(prefix + "plenar", [=] { return CodingWork(plane, direction); });
    if (plane.size.width != kHd.width) {
        return;
    }
    for (const CoderPeer& peer : CoderPeers()) {
        const auto& prepare = encode ? peer.encode : peer.decode;
        Measure(prefix + peer.name, [=] { return prepare(plane.Samples()); });
    }
}

// RGBA pixels whose alpha is the matte.
std::vector<uint8_t> WithColour(const std::vector<uint8_t>& alpha, size_t sampleBytes) {
    std::vector<uint8_t> pixels(4 * alpha.size());
    for (size_t i = 0; i < pixels.size(); i += 4 * sampleBytes) {
        for (size_t byte = 0; byte < 3 * sampleBytes; ++byte) {
            pixels[i + byte] = static_cast<uint8_t>((i + byte) * 37);
        }
        std::memcpy(&pixels[i + 3 * sampleBytes], &alpha[i / 4], sampleBytes);
    }
    return pixels;
}

// A picture whose alpha is split off and coded, or decoded and merged.
void AddPicture(const char* sizeName, const Plane& plane, Direction direction, uint32_t threads) {
    const uint32_t type = plane.bits == 8 ? PLENAR_TYPE_UINT8 : PLENAR_TYPE_UINT16;
    const Frame frame = {{PLENAR_ORDER_RGBA, type}, plane.size, true};
    const std::string prefix = std::string("picture/") + sizeName + "/t" + std::to_string(threads) + "/" +
                               NameOf(plane.matte) + "-" + std::to_string(plane.bits) + "-" + NameOf(direction) + "/";
    const Clock clock = threads == 1 ? Clock::Processor : Clock::Wall;
    const size_t moved = size_t{2} * frame.PictureBytes(direction);
    const auto copy = threads == 1 ? MemcpyWork : TwoThreadMemcpyWork;
    Measure(
        prefix + "memcpy", [=] { return copy(moved, direction); }, clock);
    Measure(
        prefix + "plenar",
        [=] { return FrameWork(frame, direction, threads, WithColour(plane.Samples(), plane.bits / 8)); }, clock);
}

}  // namespace

void AddAlphaBenchmarks() {
    for (const auto& [name, size] : {std::pair{"HD", kHd}, std::pair{"UHD", kUhd}}) {
        for (const uint32_t bits : {8U, 16U}) {
            for (const Matte matte : {Matte::SoftEdges, Matte::Hair, Matte::Shapes}) {
                for (const uint32_t threads : {1U, 2U}) {
                    AddPicture(name, {matte, size, bits}, Direction::Encode, threads);
                    AddPicture(name, {matte, size, bits}, Direction::Decode, threads);
                }
            }
        }
    }
    for (const auto& [name, size] :
         {std::pair{"HD", kHd}, std::pair{"UHD", kUhd}, std::pair{"L2", PictureSize{480, 270}}}) {
        for (const uint32_t bits : {8U, 16U}) {
            for (const Matte matte : kAllMattes) {
                AddPlane(name, {matte, size, bits}, Direction::Encode);
                AddPlane(name, {matte, size, bits}, Direction::Decode);
            }
        }
    }
}

}  // namespace plenar_bench
