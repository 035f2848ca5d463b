// Frames whose samples are copied, reordered or packed, beside memcpy of as many bytes.
#include <string>
#include <vector>

#include "benchmarks.h"
#include "conversion_peers.h"
#include "frame_work.h"
#include "measurement.h"

namespace plenar_bench {

namespace {

constexpr Direction kBothDirections[] = {Direction::Encode, Direction::Decode};

struct Setting {
    const char* name;
    PictureSize size;  // 0: small enough for the second-level cache
    uint32_t threads;
};

constexpr Setting kSettings[] = {
    {"L2/t1", {0, 0}, 1}, {"HD/t1", kHd, 1}, {"HD/t2", kHd, 2}, {"UHD/t1", kUhd, 1}, {"UHD/t2", kUhd, 2}};

bool HasAlphaAmongSamples(uint32_t order) {
    switch (order) {
        case PLENAR_ORDER_ARGB:
        case PLENAR_ORDER_BGRA:
        case PLENAR_ORDER_RGBA:
        case PLENAR_ORDER_ABGR:
        case PLENAR_ORDER_CBYACRYA:
        case PLENAR_ORDER_YCBCRA:
            return true;
        default:
            return false;
    }
}

bool KeepsAlpha(uint32_t type) {
    return type == PLENAR_TYPE_UINT8 || type == PLENAR_TYPE_UINT16;
}

// Alpha that was dropped can't be asked for again.
bool Decodes(const Format& format) {
    return KeepsAlpha(format.type) ||
           (!HasAlphaAmongSamples(format.order) && format.order != PLENAR_ORDER_YCBYCR_PLUS_ALPHA &&
            format.order != PLENAR_ORDER_CBYCRY_PLUS_ALPHA && format.order != PLENAR_ORDER_YCBCRA420_PLANAR);
}

void AddReferences(const std::string& prefix, const Frame& frame, Direction direction) {
    const size_t moved = frame.MovedBytes(direction);
    Measure(prefix + "streaming", [=] { return StreamingCopyWork(moved, direction); });
    Measure(prefix + "shifted", [=] { return ShiftedMemcpyWork(moved, direction); });
}

void AddCase(const std::string& group, const Format& format, Direction direction, const Setting& setting) {
    const Frame frame = {format, setting.size.width != 0 ? setting.size : CachedSize(format, direction)};
    const std::string prefix = group + "/" + setting.name + "/" + format.Name() + "-" + NameOf(direction) + "/";
    const bool alone = setting.threads == 1;
    const Clock clock = alone ? Clock::Processor : Clock::Wall;
    const size_t moved = frame.MovedBytes(direction);
    const auto copy = alone ? MemcpyWork : TwoThreadMemcpyWork;
    Measure(
        prefix + "memcpy", [=] { return copy(moved, direction); }, clock);
    Measure(
        prefix + "plenar", [=, threads = setting.threads] { return FrameWork(frame, direction, threads); }, clock);
    if (!alone) {
        return;
    }
    if (group == "copies") {
        AddReferences(prefix, frame, direction);
    }
    for (const Peer& peer : ConversionPeers(frame, direction)) {
        Measure(prefix + peer.name, peer.prepare);
    }
}

void AddFormat(const std::string& group, const Format& format, Direction direction) {
    for (const Setting& setting : kSettings) {
        AddCase(group, format, direction, setting);
    }
}

void AddCopies() {
    constexpr Format kFormats[] = {
        {PLENAR_ORDER_CBYCRY, PLENAR_TYPE_UINT8},
        {PLENAR_ORDER_CBYCRY, PLENAR_TYPE_UINT16},
        {PLENAR_ORDER_CBYCRY, PLENAR_TYPE_FIXED2P14},
        {PLENAR_ORDER_CBYCRY, PLENAR_TYPE_FLOAT32},
        {PLENAR_ORDER_RGB, PLENAR_TYPE_HALF16},
        {PLENAR_ORDER_CBYCR, PLENAR_TYPE_UINT8},
        {PLENAR_ORDER_YCBCR420_PLANAR, PLENAR_TYPE_UINT8},
        {PLENAR_ORDER_YCBCR420_PLANAR, PLENAR_TYPE_HALF16},
        {PLENAR_ORDER_YCBCRA420_PLANAR, PLENAR_TYPE_UINT16},
        {PLENAR_ORDER_ALPHA_ONLY, PLENAR_TYPE_UINT8},
        {PLENAR_ORDER_ALPHA_ONLY, PLENAR_TYPE_UINT16},
        {PLENAR_ORDER_CBYCRY_PLUS_ALPHA, PLENAR_TYPE_UINT8},
    };
    for (const Format& format : kFormats) {
        for (const Direction direction : kBothDirections) {
            AddFormat("copies", format, direction);
        }
    }
}

// One stream becomes two where alpha leaves its pixels for a plane of its own.
void AddReorders() {
    constexpr uint32_t kOrders[] = {PLENAR_ORDER_YCBYCR,   PLENAR_ORDER_ARGB,   PLENAR_ORDER_BGRA,
                                    PLENAR_ORDER_BGR,      PLENAR_ORDER_RGBA,   PLENAR_ORDER_ABGR,
                                    PLENAR_ORDER_CBYACRYA, PLENAR_ORDER_YCBCRA, PLENAR_ORDER_YCBYCR_PLUS_ALPHA};
    for (const uint32_t order : kOrders) {
        for (const uint32_t type : {PLENAR_TYPE_UINT8, PLENAR_TYPE_UINT16, PLENAR_TYPE_FLOAT32}) {
            const Format format = {order, type};
            const bool splits = HasAlphaAmongSamples(order) && KeepsAlpha(type);
            AddFormat(splits ? "split" : "reorder", format, Direction::Encode);
            if (Decodes(format)) {
                AddFormat("reorder", format, Direction::Decode);
            }
        }
    }
}

void AddPacking() {
    constexpr uint32_t kOrders[] = {
        PLENAR_ORDER_CBYCRY,   PLENAR_ORDER_YCBYCR,         PLENAR_ORDER_RGB, PLENAR_ORDER_BGR, PLENAR_ORDER_BGRA,
        PLENAR_ORDER_CBYACRYA, PLENAR_ORDER_YCBCR420_PLANAR};
    for (const uint32_t order : kOrders) {
        for (const uint32_t type : {PLENAR_TYPE_UINT10, PLENAR_TYPE_UINT12}) {
            const Format format = {order, type};
            AddFormat("pack", format, Direction::Encode);
            if (Decodes(format)) {
                AddFormat("pack", format, Direction::Decode);
            }
        }
    }
    for (const Direction direction : kBothDirections) {
        AddFormat("packed10", {PLENAR_ORDER_CBYCRY, PLENAR_TYPE_PACKED10}, direction);
    }
}

void AddFloats() {
    for (const uint32_t order : {PLENAR_ORDER_RGB, PLENAR_ORDER_CBYCRY, PLENAR_ORDER_BGR, PLENAR_ORDER_YCBYCR}) {
        AddFormat("float", {order, PLENAR_TYPE_FIXED2P14, PLENAR_TYPE_FLOAT32}, Direction::Decode);
    }
}

}  // namespace

void AddConversionBenchmarks() {
    AddCopies();
    AddReorders();
    AddPacking();
    AddFloats();
}

}  // namespace plenar_bench
