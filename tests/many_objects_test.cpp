// Objects at work side by side, and one object over thousands of batches: food for the thread sanitizer.
#include <atomic>

#include "codec_fixture.h"

namespace plenar_test {
namespace {

// A picture, and what has to come of it.
struct Work {
    UncompressedParams params;
    Bytes picture = noise(pictureSize(params), params.height);
    std::vector<Plane> planes = encodedPlanes(params, picture);
    Bytes payload = payloadOf(planes);
    Bytes back = decodedPicture();

    Bytes decodedPicture() const {
        Bytes decoded(picture.size());
        decodeInto(params, planes, payload, decoded);
        return decoded;
    }
    bool isDoneBy(TestEncoder& encoder, TestDecoder& decoder) const {
        return encode(encoder, params, picture).bytes == payload &&
               decode(decoder, params, payload, Bytes(picture.size())).bytes == back;
    }
};

TEST(ManyObjects, WorkSideBySide) {
    std::atomic<uint32_t> wrong = 0;
    std::vector<std::thread> hosts;
    for (uint32_t host = 0; host < 8; ++host) {
        hosts.emplace_back([host, &wrong] {
            for (uint32_t round = 0; round < 6; ++round) {
                TestEncoder encoder((host + round) % 5);
                TestDecoder decoder((host + 2 * round) % 4);
                for (uint32_t frame = 0; frame < 20; ++frame) {
                    const uint32_t order = 1 + (host + frame) % 16;
                    const Work work{makeParams(order, plenar::Uint16, 2 + 2 * host, 2 + 2 * frame)};
                    wrong += work.isDoneBy(encoder, decoder) ? 0 : 1;
                    wrong += encode(encoder, makeParams(order, 99, 2, 2), Bytes(64)).message.empty() ? 1 : 0;
                }
            }
        });
    }
    for (std::thread& host : hosts) {
        host.join();
    }
    EXPECT_EQ(wrong, 0U);
}

TEST(OneObject, RunsThousandsOfBatches) {
    TestEncoder encoder(3);
    TestDecoder decoder(4);
    const std::array<Work, 4> works{
        {{makeParams(10, 3, 6, 6)}, {makeParams(8, 1, 6, 8)}, {makeParams(2, 5, 6, 8)}, {makeParams(1, 4, 6, 6)}}};
    for (uint32_t frame = 0; frame < 4000; ++frame) {
        ASSERT_TRUE(works.at(frame % works.size()).isDoneBy(encoder, decoder)) << "frame " << frame;
    }
}

}  // namespace
}  // namespace plenar_test
