// What targets share: records from the input, and the ways of calls.
#pragma once

#include <array>
#include <tuple>

#include "pool/work_pool.h"
#include "testing/frame_calls.h"
#include "testing/fuzz_input.h"
#include "testing/targets.h"

namespace plenar_fuzz {

using namespace plenar_test;

// Of a buffer, as a rule and for one input in 2^kLargeRarity. Where a record asks for more, buffers are smaller than it
// says, and must be refused.
constexpr uint32_t kUsualBytes = 1U << 13;
constexpr uint32_t kMostBytes = 1U << 17;
constexpr uint32_t kLargeRarity = 9;

inline uint32_t RoomFor(uint32_t needed, bool isShort, uint32_t rarity = 0) {
    return std::min(needed, rarity < kLargeRarity ? kUsualBytes : kMostBytes) - (isShort && needed != 0 ? 1 : 0);
}

inline std::pair<uint32_t, uint32_t> TakePair(FuzzInput& input) {
    static const auto kPairs = AllPairs();
    const uint32_t choice = input.Number(static_cast<uint32_t>(kPairs.size()));
    const uint32_t type = choice / 18 % 10;
    return choice < kPairs.size() ? kPairs[choice] : std::pair(choice % 18, type == 9 ? 214 : type);
}

inline UncompressedParams TakePicture(FuzzInput& input) {
    const auto [order, type] = TakePair(input);
    const uint32_t width = input.Number(80);
    const uint32_t height = input.Number(6);
    return MakeParams(order, type, width, height, 0, 0, input.Byte() % 3);
}

inline uint32_t TakeStride(FuzzInput& input, uint64_t tight) {
    const uint32_t padding = input.Number(40);
    return padding == 0 ? 0 : padding < 40 ? static_cast<uint32_t>(tight) + padding - 1 : padding;
}

inline void TakeStrides(FuzzInput& input, UncompressedParams& params) {
    params.rowBytes = TakeStride(input, TightRowBytes(params));
    params.rowBytes2 = TakeStride(input, TightRowBytes2(params));
}

inline CompressedParams TakeOptions(FuzzInput& input) {
    const uint8_t codesAlpha = input.Byte() % 2;
    return MakeCompressed(codesAlpha, input.Byte());
}

// The targets from the best one down, over and over.
inline plenar::Target TargetOf(uint32_t choice) {
    const auto targets = plenar::RunnableTargets();
    return targets[targets.size() - 1 - choice % targets.size()];
}

// How a call is made that must give the same as any other way.
struct Way {
    uint32_t codec = 0;
    uint32_t target = 0;  // see TargetOf
    uint32_t places = 0;  // of the source and of the target
    uint8_t fill = 0;     // of an encode's target, and of a decode's by choice
    bool streams = false;
};

inline Way TakeOtherWay(FuzzInput& input) {
    const uint32_t choice = input.Byte();
    const uint32_t codec = input.Byte();
    return {codec < 0xFC ? 1 : 2 + codec % 2, 1 + choice % 2, choice / 2, 0xFF, true};
}

class ForcedWay {
public:
    explicit ForcedWay(const Way& way) : target_(TargetOf(way.target)) {
        plenar::ForceLastLevelCacheBytes(way.streams ? 0 : SIZE_MAX);
    }

private:
    ForcedTarget target_;
};

// One of a few objects that live on. Those with threads come up seldom, as waking threads costs more than all else;
// they wake for the smallest frame.
template <class Codec>
Codec& CodecFor(const Way& way) {
    plenar::WakeWorkersFrom(0);
    static std::array<Codec, 4> codecs = {Codec(1), Codec(1), Codec(2), Codec(0)};
    return codecs[way.codec];
}

inline Frame Encode(const Way& way, const UncompressedParams& params, const CompressedParams& options,
                    const Bytes& picture, size_t room) {
    const ForcedWay forced(way);
    return Encode(CodecFor<TestEncoder>(way), params, picture, options, Bytes(room, way.fill), way.places);
}

inline Frame Decode(const Way& way, const UncompressedParams& params, const Bytes& payload, const Bytes& before) {
    const ForcedWay forced(way);
    return Decode(CodecFor<TestDecoder>(way), params, payload, before, way.places);
}

}  // namespace plenar_fuzz
