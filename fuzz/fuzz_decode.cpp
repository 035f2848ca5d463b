// Arbitrary payloads, decoded as the input or their own metadata say, in two ways that must not differ: in objects with
// other frames behind them, on other threads and kernels, from and into other memory.
#include <map>

#include "ways.h"

namespace plenar_fuzz {
namespace {

UncompressedParams TakeRequest(FuzzInput& input, const Bytes& payload) {
    const uint32_t source = input.Byte() % 4;
    UncompressedParams params = TakePicture(input);
    UncompressedParams read = params;
    if (source != 0 && ReadMetadata(CodecFor<TestDecoder>({}), payload, read).empty()) {
        if (source == 1) {
            read.colorComponentOrder = params.colorComponentOrder;
            read.componentType = params.componentType;
        }
        params = read;
    }
    TakeStrides(input, params);
    return params;
}

// Leaves `stain` as the alpha of a frame wherever the object may keep some of it.
void Stain(const Way& way, uint8_t stain) {
    static const UncompressedParams kParams = MakeParams(PLENAR_ORDER_RGBA, PLENAR_TYPE_UINT16, 64, 4);
    const auto stained = [](uint8_t byte) {
        return Encode({}, kParams, MakeCompressed(1), Bytes(PictureSize(kParams), byte), kUsualBytes).bytes;
    };
    static const std::map<uint8_t, Bytes> kFrames = {{0x5A, stained(0x5A)}, {0xA5, stained(0xA5)}};
    const Frame frame = Decode(way, kParams, kFrames.at(stain), Bytes(PictureSize(kParams)));
    Require(frame.message.empty() && frame.bytes[0] == stain, "a good frame is decoded");
}

// A byte is written in both ways or in none, and never with what either object held before.
void RequireSamePicture(const UncompressedParams& params, const Frame& a, const Way& wayA, const Frame& b,
                        const Way& wayB) {
    if (params.componentType == PLENAR_TYPE_PACKED10 && params.width % 6 >= 4) {
        return;  // a word of each row is added to what stood there
    }
    for (size_t i = 0; i < a.bytes.size(); ++i) {
        Require(a.bytes[i] == b.bytes[i] || (a.bytes[i] == wayA.fill && b.bytes[i] == wayB.fill),
                "a picture follows from the payload alone");
    }
}

}  // namespace
}  // namespace plenar_fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace plenar_fuzz;
    FuzzInput input(data, size);
    FuzzInput head = input.Part(28);
    const Bytes payload = input.Rest();
    const Way first = {};
    const Way second = TakeOtherWay(head);
    const bool isShort = head.Byte() % 16 == 15;
    const UncompressedParams params = TakeRequest(head, payload);
    const uint32_t needed = Plenar_GetUncompressedBufSize(&params);
    const uint32_t room = RoomFor(needed, isShort, Rarity(data, size));

    Stain(first, 0x5A);
    const Frame a = Decode(first, params, payload, Bytes(room, first.fill));
    Stain(second, 0xA5);
    const Frame b = Decode(second, params, payload, Bytes(room, second.fill));
    Require(a.message == b.message, "a failure follows from the payload alone");
    if (a.message.empty()) {
        Require(PictureSize(params) <= room, "a picture fits its buffer");
        RequireSamePicture(params, a, first, b, second);
    }
    return 0;
}
