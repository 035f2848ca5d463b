// Many calls on one encoder and one decoder, most of them wrong in one way or another. A good frame has to come out
// after each as it did at first.
#include "frame_calls.h"

namespace plenar_fuzz {
namespace {

class Sequence {
public:
    explicit Sequence(uint32_t threads)
        : encoder(threads),
          decoder(threads),
          params(plenar_test::makeParams(PLENAR_ORDER_RGBA, PLENAR_TYPE_UINT8, 13, 9)),
          picture(plenar_test::noise(Plenar_GetUncompressedBufSize(&params), 1)),
          payload(Good()) {}

    void Step(FuzzInput& input) {
        const uint32_t kind = input.Byte() % 4;
        UncompressedParams other = TakePicture(input);
        TakeStrides(input, other);
        if (kind == 0) {
            DecodeDamaged(input);
        } else if (kind == 1) {
            EncodeAnything(input, other);
        } else if (kind == 2) {
            DecodeAnything(input, other);
        } else {
            CallWithoutPointers(input.Byte());
        }
        Require(Good() == payload, "a good frame gives the bytes that it gave at first");
        Require(Decode(decoder, {}, params, payload, Bytes(picture.size())).target == picture,
                "and comes back as it was");
    }

private:
    Bytes Good() {
        const CompressedParams options = plenar_test::makeCompressed(1, 3);
        Outcome good = Encode(encoder, {}, params, options, picture, Plenar_GetCompressedBufSize(&params, &options));
        Require(good.message.empty(), "a good frame is taken");
        good.target.resize(good.written);
        return good.target;
    }

    void DecodeDamaged(FuzzInput& input) {
        Bytes damaged = payload;
        uint8_t& hit = damaged[input.Word() % damaged.size()];
        hit = static_cast<uint8_t>(hit ^ input.Byte());
        UncompressedParams read = params;
        ReadMetadata(decoder, damaged, 0, read);
        Decode(decoder, {}, params, damaged, Bytes(picture.size()));
    }

    void EncodeAnything(FuzzInput& input, const UncompressedParams& other) {
        const CompressedParams options = TakeOptions(input);
        const uint32_t room = RoomFor(Plenar_GetCompressedBufSize(&other, &options), input.Byte() % 4 == 3);
        const uint32_t size = RoomFor(Plenar_GetUncompressedBufSize(&other), false);
        Encode(encoder, {}, other, options, plenar_test::noise(size, 2), room);
    }

    void DecodeAnything(FuzzInput& input, const UncompressedParams& other) {
        UncompressedParams held = other;
        held.width %= 64;
        held.height %= 64;
        const uint32_t room = RoomFor(Plenar_GetUncompressedBufSize(&other), input.Byte() % 4 == 3);
        Decode(decoder, {}, other, plenar_test::payloadOf(plenar_test::noisePlanes(held, 3)), Bytes(room));
    }

    // Each bit takes one pointer away, and the highest makes a record's size wrong.
    void CallWithoutPointers(uint32_t choice) {
        UncompressedParams record = params;
        record.size += choice >> 7;
        Bytes target(picture.size());
        const auto unless = [choice](uint32_t bit, auto* pointer) { return choice >> bit & 1U ? nullptr : pointer; };
        const uint32_t code = Plenar_DecodeFrame(unless(0, decoder.get()), unless(1, &record),
                                                 unless(2, payload.data()), 0, unless(3, target.data()), 0, nullptr);
        Require(code == ((choice & 0xFU) != 0 ? 2U : choice >> 7 != 0 ? 3U : 1U), "each kind of misuse has its code");
        decoder.outcome(0);
    }

    TestEncoder encoder;
    TestDecoder decoder;
    const UncompressedParams params;
    const Bytes picture;
    const Bytes payload;
};

}  // namespace
}  // namespace plenar_fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace plenar_fuzz;
    FuzzInput input(data, size);
    const uint8_t threads = input.Byte();
    Sequence sequence(threads < 0xE0 ? 1 : threads % 4);
    for (int calls = 0; calls < 40 && input.HasMore(); ++calls) {
        sequence.Step(input);
    }
    return 0;
}
