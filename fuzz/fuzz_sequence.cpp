// Many calls on one encoder and one decoder, most of them wrong in one way or another. A good frame has to come out
// after each as it did at first.
#include "frame_calls.h"

namespace plenar_fuzz {
namespace {

class Sequence {
public:
    explicit Sequence(uint32_t threads)
        : encoder_(threads),
          decoder_(threads),
          params_(MakeParams(PLENAR_ORDER_RGBA, PLENAR_TYPE_UINT8, 13, 9)),
          picture_(Noise(Plenar_GetUncompressedBufSize(&params_), 1)),
          payload_(Good()) {}

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
        Require(Good() == payload_, "a good frame gives the bytes that it gave at first");
        Require(Decode(decoder_, {}, params_, payload_, Bytes(picture_.size())).target == picture_,
                "and comes back as it was");
    }

private:
    Bytes Good() {
        const CompressedParams options = MakeCompressed(1, 3);
        Outcome good =
            Encode(encoder_, {}, params_, options, picture_, Plenar_GetCompressedBufSize(&params_, &options));
        Require(good.message.empty(), "a good frame is taken");
        good.target.resize(good.written);
        return good.target;
    }

    void DecodeDamaged(FuzzInput& input) {
        Bytes damaged = payload_;
        uint8_t& hit = damaged[input.Word() % damaged.size()];
        hit = static_cast<uint8_t>(hit ^ input.Byte());
        UncompressedParams read = params_;
        ReadMetadata(decoder_, damaged, 0, read);
        Decode(decoder_, {}, params_, damaged, Bytes(picture_.size()));
    }

    void EncodeAnything(FuzzInput& input, const UncompressedParams& other) {
        const CompressedParams options = TakeOptions(input);
        const uint32_t room = RoomFor(Plenar_GetCompressedBufSize(&other, &options), input.Byte() % 4 == 3);
        const uint32_t size = RoomFor(Plenar_GetUncompressedBufSize(&other), false);
        Encode(encoder_, {}, other, options, Noise(size, 2), room);
    }

    void DecodeAnything(FuzzInput& input, const UncompressedParams& other) {
        UncompressedParams held = other;
        held.width %= 64;
        held.height %= 64;
        const uint32_t room = RoomFor(Plenar_GetUncompressedBufSize(&other), input.Byte() % 4 == 3);
        Decode(decoder_, {}, other, PayloadOf(NoisePlanes(held, 3)), Bytes(room));
    }

    // Each bit takes one pointer away, and the highest makes a record's size wrong.
    void CallWithoutPointers(uint32_t choice) {
        UncompressedParams record = params_;
        record.size += choice >> 7;
        Bytes target(picture_.size());
        const auto unless = [choice](uint32_t bit, auto* pointer) { return choice >> bit & 1U ? nullptr : pointer; };
        const uint32_t code = Plenar_DecodeFrame(unless(0, decoder_.get()), unless(1, &record),
                                                 unless(2, payload_.data()), 0, unless(3, target.data()), 0, nullptr);
        Require(code == ((choice & 0xFU) != 0 ? 2U : choice >> 7 != 0 ? 3U : 1U), "each kind of misuse has its code");
        decoder_.Outcome(0);
    }

    TestEncoder encoder_;
    TestDecoder decoder_;
    const UncompressedParams params_;
    const Bytes picture_;
    const Bytes payload_;
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
