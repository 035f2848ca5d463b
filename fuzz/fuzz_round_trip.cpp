// Arbitrary pictures and records: encodes in two ways, compares the payload with the plain model's, and decodes it into
// any order and type that the input asks for. Likewise decodes planes that no encoder writes, as their width is odd or
// bits are set that are always clear.
#include "ways.h"

namespace plenar_fuzz {
namespace {

constexpr uint32_t kMostSide = 200;

UncompressedParams TakeRequest(FuzzInput& input, UncompressedParams params, bool codesAlpha) {
    const uint32_t change = input.Byte() % 3;
    if (change == 1) {
        params.colorComponentOrder = 1 + input.Byte() % 16;
    } else if (change == 2) {
        std::tie(params.colorComponentOrder, params.componentType) = TakePair(input);
    }
    params.rowBytes = params.rowBytes2 = 0;
    if (!codesAlpha) {  // it leaves parts of its rows between them
        TakeStrides(input, params);
    }
    return params;
}

bool Fits(const UncompressedParams& params, size_t room) {
    return PictureSize(params) <= room && (params.rowBytes == 0 || params.rowBytes >= TightRowBytes(params)) &&
           (params.rowBytes2 == 0 || params.rowBytes2 >= TightRowBytes2(params));
}

bool IsEncodable(const UncompressedParams& params, bool codesAlpha, size_t pictureBytes) {
    const uint32_t order = params.colorComponentOrder;
    const bool isEven =
        (params.width % 2 == 0 || !(Is422(order) || Is420(order))) && (params.height % 2 == 0 || !Is420(order));
    const bool hasCode = StoresAlpha(params.componentType) && params.width != 0 && params.height != 0;
    return isEven && Fits(params, pictureBytes) && (!codesAlpha || hasCode);
}

void RequireDecodes(const UncompressedParams& request, const Way& way, uint32_t rarity,
                    const std::vector<Plane>& planes, const Bytes& payload) {
    const uint32_t room = RoomFor(Plenar_GetUncompressedBufSize(&request), false, rarity);
    Bytes expected = Noise(room, request.width);
    const Frame decoded = Decode(way, request, payload, expected);
    const bool fits = Fits(request, room);
    const std::string refusal = request.frameLayout > 1
                                    ? "Undefined value of frame layout: 2"
                                    : DecodeRefusal(planes, request.colorComponentOrder, request.componentType);
    Require(fits ? decoded.message == refusal : !decoded.message.empty(), "what the model refuses is refused");
    if (decoded.message.empty()) {
        DecodeInto(request, planes, PayloadOf(planes), expected);
        Require(decoded.bytes == expected, "a picture is as the model has it");
    }
}

}  // namespace
}  // namespace plenar_fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace plenar_fuzz;
    FuzzInput input(data, size);
    FuzzInput decoding = input.Part(24);
    UncompressedParams params = TakePicture(input);
    TakeStrides(input, params);
    const CompressedParams options = TakeOptions(input);
    const Way first = {};
    const Way second = TakeOtherWay(input);
    const uint32_t rarity = Rarity(data, size);
    const uint32_t shortfall = input.Byte() % 16;
    const uint32_t needed = Plenar_GetCompressedBufSize(&params, &options);
    const uint32_t room = RoomFor(needed, shortfall == 14, rarity);
    const Bytes picture = input.Fill(RoomFor(Plenar_GetUncompressedBufSize(&params), shortfall == 15, rarity));

    const bool codesAlpha = options.alphaRle != 0 && HasAlpha(params.colorComponentOrder);
    const UncompressedParams request = TakeRequest(decoding, params, codesAlpha);
    const Way decodingWay = TakeOtherWay(decoding);

    const bool isSupported = !PlaneCodes(params.colorComponentOrder, params.componentType).empty();
    const bool isModelled = params.width < kMostSide && params.height < kMostSide;  // it goes sample by sample
    // Of other widths as well, for all the ways in which a row can end.
    if (isSupported && isModelled) {
        UncompressedParams held = params;
        UncompressedParams narrow = request;
        held.width = narrow.width = params.width - std::min(params.width, decoding.Byte() % 6U);
        const std::vector<Plane> planes = NoisePlanes(held, shortfall);
        RequireDecodes(narrow, decodingWay, rarity, planes, PayloadOf(planes));
    }

    const Frame a = Encode(first, params, options, picture, room);
    const Frame b = Encode(second, params, options, picture, room);
    Require(a.message == b.message, "a failure follows from the record alone");
    const bool isSound = isSupported && IsEncodable(params, codesAlpha, picture.size()) && room >= needed;
    Require(!isModelled || a.message.empty() == isSound, "just what is sound is encoded");
    if (!a.message.empty() || !isModelled) {
        return 0;
    }
    Require(a.bytes == b.bytes, "a payload follows from the picture alone");
    const std::vector<Plane> planes = EncodedPlanes(params, picture);
    Require(codesAlpha || a.bytes == PayloadOf(planes), "a payload is as the model has it");
    RequireDecodes(request, decodingWay, rarity, planes, a.bytes);
    return 0;
}
