// Many calls on one encoder and one decoder, most of them wrong in one way or another. A good frame has to come out
// after each as it did at first.
#include <cinttypes>
#include <cstdio>
#include <cstdlib>

#include "ways.h"

namespace plenar_fuzz {
namespace {

uint64_t calls = 0;  // told at the end, as an input is one execution whatever the number of its calls

class Sequence {
public:
    explicit Sequence(uint32_t threads) : encoder_(threads), decoder_(threads), payload_(Good()) {
        plenar::WakeWorkersFrom(0);
    }

    void Step(FuzzInput& input) {
        const uint32_t kind = input.Byte() % 3;
        calls += kind == 0 ? 4 : 3;
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
        } else {
            UncompressedParams held = other;
            held.width %= 64;
            held.height %= 8;
            Decode(decoder_, other, PayloadOf(NoisePlanes(held, 3)), Bytes(pictureBytes));
        }
        Require(Good() == payload_, "a good frame gives the bytes that it gave at first");
        Require(Decode(decoder_, params_, payload_, Bytes(picture_.size())).bytes == picture_,
                "and comes back as it was");
    }

private:
    Bytes Good() { return Encode(encoder_, params_, picture_, MakeCompressed(1, 3)).bytes; }

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
    static const int kTold = std::atexit([] { std::fprintf(stderr, "library_calls: %" PRIu64 "\n", calls); });
    Require(kTold == 0, "the calls are told");
    FuzzInput input(data, size);
    const uint8_t threads = input.Byte();
    Sequence sequence(threads < 0xFC ? 1 : threads % 4);
    for (int steps = 0; steps < 40 && input.HasMore(); ++steps) {
        sequence.Step(input);
    }
    return 0;
}
