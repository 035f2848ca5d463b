#include "hostile_payloads.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <random>

#include "rle/band_table.h"
#include "testing/payload_builder.h"
#include "testing/plane_bits.h"

namespace plenar_bench {

namespace {

using namespace plenar_test;

constexpr Format kUyvy = {PLENAR_ORDER_CBYCRY, PLENAR_TYPE_UINT8};
constexpr Format kAlpha8 = {PLENAR_ORDER_ALPHA_ONLY, PLENAR_TYPE_UINT8};
constexpr Format kAlpha16 = {PLENAR_ORDER_ALPHA_ONLY, PLENAR_TYPE_UINT16};
constexpr PictureSize kTiny = {16, 16};
constexpr uint32_t kHeaderBytes = 8;

std::minstd_rand SameEachTime(uint32_t seed) {
    return std::minstd_rand(seed);
}

// Boxes

// A pack box as large as the frame's honest payload, filled with what makeOne() makes, over and over.
template <class MakeOne>
Bytes FilledPack(const Frame& frame, const MakeOne& makeOne) {
    const uint32_t size = frame.PayloadLimit();
    Bytes bytes = Box("pack", {}, size);
    while (bytes.size() < size) {
        const Bytes one = makeOne();
        bytes.insert(bytes.end(), one.begin(), one.end());
    }
    bytes.resize(size);
    return bytes;
}

// The least box there is, and nothing else.
Bytes LeastBoxes(const Frame& frame) {
    return FilledPack(frame, [] { return Box("none", {}, 0); });
}

// Small boxes of sizes that make branches unpredictable.
Bytes UnevenBoxes(const Frame& frame) {
    std::minstd_rand random = SameEachTime(5);
    return FilledPack(frame, [&random] {
        const auto size = static_cast<uint32_t>(7 + (random() >> 8) % 4);
        return Box("none", Bytes(std::max(size, kHeaderBytes) - kHeaderBytes), size);
    });
}

// Planes without data, each in the least boxes that are accepted.
Bytes LeastPlanes(const Frame& frame, const char* code) {
    const Plane plane = {code, 1, 0};
    const Bytes boxes = Join({Box("icmp", {}), Sinf(plane, 20), Sdat(plane)});
    return FilledPack(frame, [&boxes] { return boxes; });
}

// Coded planes

using PutTokens = std::function<void(PlaneBits&, uint32_t depth, uint64_t samples)>;

// Tokens by the forms of their values: the shortest, the longest, and the plain number.
void PutShortest(PlaneBits& bits, uint32_t depth, uint32_t mode, uint64_t run, uint32_t low) {
    bits.Token(mode, run, low, depth, true);
}
void PutLongest(PlaneBits& bits, uint32_t depth, uint32_t mode, uint64_t run) {
    bits.Bits(mode, 1);
    bits.RunLength(run);
    bits.NineOnes(1, depth);
}

void OneSampleRuns(PlaneBits& bits, uint32_t depth, uint64_t samples) {
    for (uint64_t i = 0; i < samples; ++i) {
        PutShortest(bits, depth, i % 2, 1, 2);
    }
}

void LongestCodes(PlaneBits& bits, uint32_t depth, uint64_t samples) {
    for (uint64_t i = 0; i < samples; ++i) {
        PutLongest(bits, depth, 1, 1);
    }
}

void EmptyRuns(PlaneBits& bits, uint32_t depth, uint64_t samples) {
    for (uint64_t i = 0; i < samples; ++i) {
        PutShortest(bits, depth, 0, 0, 0);
        PutShortest(bits, depth, 0, 1, 2);
    }
}

// Kinds of tokens whose ways through a decoder part, in an order that makes branches unpredictable.
void UnforeseenTokens(PlaneBits& bits, uint32_t depth, uint64_t samples) {
    std::minstd_rand random = SameEachTime(7);
    for (uint64_t done = 0; done < samples;) {
        const auto chance = static_cast<uint32_t>(random() >> 8);
        const uint64_t run = std::min<uint64_t>(chance % 16 == 0 ? 17 + chance % 7 : 1 + chance % 2, samples - done);
        switch (chance / 16 % 3) {
            case 0:
                PutShortest(bits, depth, chance & 1, run, chance % 4);
                break;
            case 1:
                PutLongest(bits, depth, chance & 1, run);
                break;
            default:
                bits.Token(chance & 1, run, chance & 0xFF, depth, false);
        }
        done += run;
    }
}

// Runs of constant second difference, the most expensive to compute.
PutTokens Curves(uint64_t length) {
    return [length](PlaneBits& bits, uint32_t depth, uint64_t samples) {
        for (uint64_t done = 0; done < samples; done += length) {
            PutShortest(bits, depth, 1, std::min(length, samples - done), 2);
        }
    };
}

void OneFlatRun(PlaneBits& bits, uint32_t depth, uint64_t samples) {
    PutShortest(bits, depth, 0, samples, 0);
}

uint32_t DepthOf(const Frame& frame) {
    return frame.format.type == PLENAR_TYPE_UINT16 ? 16 : 8;
}

// Around a coded plane's data.
Bytes Boxed(const Frame& frame, const Bytes& coded) {
    const Plane plane = {DepthOf(frame) == 16 ? "rl16" : "rl08", frame.size.width, frame.size.height, 0, coded};
    return Pack({Sinf(plane, 20), Sdat(plane)});
}

// With the table as encoders write it: equal entries take next to nothing.
Bytes Boxed(const Frame& frame, const plenar::RleBandTable& table, const Bytes& streams) {
    Bytes coded(plenar::RleHeadReserve);
    coded.resize(plenar::RleWriteBandTable(table, coded.data()));
    return Boxed(frame, Join({coded, streams}));
}

// How a plane is cut into bands: all with streams of their own, or all with the same.
struct Cut {
    uint32_t bands;
    bool shared;
};

Bytes CodedPlane(const Frame& frame, const Cut& cut, const PutTokens& putTokens) {
    plenar::RleBandTable table = {};
    table.count = cut.bands;
    Bytes streams;
    for (uint32_t band = 0; band < cut.bands; ++band) {
        table.rows[band] = frame.size.height / cut.bands + (band < frame.size.height % cut.bands ? 1 : 0);
        if (band == 0 || !cut.shared) {
            PlaneBits bits;
            putTokens(bits, DepthOf(frame), uint64_t{frame.size.width} * table.rows[band]);
            streams.insert(streams.end(), bits.Get().begin(), bits.Get().end());
            table.sizes[band] = cut.shared ? 0 : static_cast<uint32_t>(bits.Get().size());
        }
    }
    return Boxed(frame, table, streams);
}

// A table that goes on to the end of the payload: groups of no entries, or one value with a prefix without end.
Bytes EndlessTable(const Frame& frame, bool groups) {
    PlaneBits bits;
    bits.Bits(plenar::kRleMaxBands, 8);
    const uint64_t wanted = frame.PayloadLimit();
    if (!groups) {
        bits.RunLength(1);
    }
    while (bits.Get().size() < wanted) {
        if (groups) {
            bits.RunLength(0);
            bits.Value(0, 24, true);
        } else {
            bits.Bits(~uint64_t{0}, 64);
        }
    }
    return Boxed(frame, bits.Get());
}

// All rows in the first band, and 254 bands without any.
Bytes IdleBands(const Frame& frame) {
    PlaneBits bits;
    OneFlatRun(bits, DepthOf(frame), frame.Pixels());
    plenar::RleBandTable table = {};
    table.count = plenar::kRleMaxBands;
    table.rows[0] = frame.size.height;
    table.sizes[0] = static_cast<uint32_t>(bits.Get().size());
    return Boxed(frame, table, bits.Get());
}

// Noise in the first `rows` rows, flat below.
Bytes PartlyNoise(const Frame& frame, uint32_t rows) {
    Bytes samples(frame.PictureBytes(Direction::Encode), 0xFF);
    std::minstd_rand random = SameEachTime(3);
    std::generate_n(samples.begin(), samples.size() / frame.size.height * rows,
                    [&] { return static_cast<uint8_t>(random() >> 8); });
    return samples;
}

}  // namespace

std::vector<HostilePayload> HostilePayloads() {
    std::vector<HostilePayload> all;
    const auto add = [&](const std::string& name, const Frame& frame, const std::function<Bytes(const Frame&)>& make) {
        all.push_back({name, frame, [=] { return make(frame); }});
    };
    for (const auto& [sizeName, size] : {std::pair{"HD", kHd}, std::pair{"L2", CachedSize(kUyvy, Direction::Decode)}}) {
        const Frame frame = {kUyvy, size};
        const std::string prefix = std::string(sizeName) + "/t1/";
        add(prefix + "boxes-least", frame, LeastBoxes);
        add(prefix + "boxes-uneven", frame, UnevenBoxes);
        add(prefix + "boxes-planes", frame, [](const Frame& f) { return LeastPlanes(f, "cr f"); });
        add(prefix + "boxes-unknown", frame, [](const Frame& f) { return LeastPlanes(f, "none"); });
    }
    struct Streams {
        const char* name;
        Cut cut;
        PutTokens putTokens;
    };
    const Streams kinds[] = {
        {"one-sample", {16, false}, OneSampleRuns},
        {"one-sample-255", {255, false}, OneSampleRuns},
        {"one-sample-255-shared", {255, true}, OneSampleRuns},
        {"longest-codes", {16, false}, LongestCodes},
        {"unforeseen", {16, false}, UnforeseenTokens},
        {"unforeseen-255-shared", {255, true}, UnforeseenTokens},
        {"empty-runs", {16, false}, EmptyRuns},
        {"empty-runs-255-shared", {255, true}, EmptyRuns},
        {"curves", {16, false}, Curves(uint64_t{1} << 62)},
        {"short-curves", {16, false}, Curves(16)},
        {"long-run", {1, false}, OneFlatRun},
    };
    for (const auto& [depthName, format] : {std::pair{"-8", kAlpha8}, std::pair{"-16", kAlpha16}}) {
        const Frame frame = {format, kHd, true};
        for (const Streams& kind : kinds) {
            add(std::string("HD/t1/") + kind.name + depthName, frame,
                [kind](const Frame& f) { return CodedPlane(f, kind.cut, kind.putTokens); });
        }
    }
    const Frame coded = {kAlpha8, kHd, true};
    add("HD/t1/table-groups-8", coded, [](const Frame& f) { return EndlessTable(f, true); });
    add("HD/t1/table-prefix-8", coded, [](const Frame& f) { return EndlessTable(f, false); });
    add("16x16/t1/idle-bands-8", {kAlpha8, kTiny, true}, IdleBands);
    add("16x16/t2/idle-bands-8", {kAlpha8, kTiny, true}, IdleBands);
    return all;
}

std::vector<uint8_t> HonestPayload(const Frame& frame, size_t size) {
    if (!frame.codesAlpha) {
        return EncodedFrame(frame, PartlyNoise(frame, frame.size.height));
    }
    uint32_t fits = 0;
    for (uint32_t step = std::bit_floor(frame.size.height); step != 0; step /= 2) {
        if (fits + step <= frame.size.height && EncodedFrame(frame, PartlyNoise(frame, fits + step)).size() <= size) {
            fits += step;
        }
    }
    Bytes payload = EncodedFrame(frame, PartlyNoise(frame, fits));
    if (payload.size() < size) {
        payload.resize(size);
        StateSize(payload, 0, size);
        StateSize(payload, kFirstPlaneOffset - kHeaderBytes, size - kFirstPlaneOffset + kHeaderBytes);
    }
    return payload;
}

}  // namespace plenar_bench
