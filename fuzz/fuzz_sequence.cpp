// Many calls on one encoder and one decoder, most of them wrong in one way or another. A good frame has to come out
// after each as it did at first.
#include "ways.h"

namespace plenar_fuzz {
namespace {

class Sequence {
public:
    explicit Sequence(uint32_t threads) : encoder_(threads), decoder_(threads), payload_(Good()) {}

    void Step(FuzzInput& input) {
        const uint32_t kind = input.Byte() % 4;
        UncompressedParams other = TakePicture(input);
        TakeStrides(input, other);
        const uint32_t pictureBytes = RoomFor(Plenar_GetUncompressedBufSize(&other), input.Byte() % 4 == 3);
        if (kind == 0) {
            Bytes damaged = payload_;
            damaged[input.Word() % damaged.size()] ^= input.Byte();
            UncompressedParams read = params_;
            ReadMetadata(decoder_, damaged, read);
            Decode(decoder_, params_, damaged, Bytes(picture_.size()));
        } else if (kind == 1) {
            const CompressedParams options = TakeOptions(input);
            const uint32_t room = RoomFor(Plenar_GetCompressedBufSize(&other, &options), input.Byte() % 4 == 3);
            Encode(encoder_, other, Noise(pictureBytes, 2), options, Bytes(room), kGuardedPlaces);
        } else if (kind == 2) {
            UncompressedParams held = other;
            held.width %= 64;
            held.height %= 64;
            Decode(decoder_, other, PayloadOf(NoisePlanes(held, 3)), Bytes(pictureBytes));
        } else {
            CallWithoutPointers(input.Byte());
        }
        Require(Good() == payload_, "a good frame gives the bytes that it gave at first");
        Require(Decode(decoder_, params_, payload_, Bytes(picture_.size())).bytes == picture_,
                "and comes back as it was");
    }

private:
    Bytes Good() { return Encode(encoder_, params_, picture_, MakeCompressed(1, 3)).bytes; }

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
    const UncompressedParams params_ = MakeParams(PLENAR_ORDER_RGBA, PLENAR_TYPE_UINT8, 13, 9);
    const Bytes picture_ = Noise(PictureSize(params_), 1);
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
