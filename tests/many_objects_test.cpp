// Objects at work side by side, and one object over thousands of batches: food for the thread sanitizer.
#include <atomic>

#include "codec_fixture.h"

namespace plenar_test {
namespace {

// One frame through both objects; false when a byte is wrong.
bool roundTrips(TestEncoder& encoder, TestDecoder& decoder, const UncompressedParams& params, const Bytes& picture,
                const Bytes& expectedPayload, const Bytes& expectedBack) {
    const Frame payload = encode(encoder, params, picture);
    const Frame back = decode(decoder, params, payload.bytes, Bytes(picture.size()));
    return payload.bytes == expectedPayload && back.bytes == expectedBack;
}

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
                    const UncompressedParams params = makeParams(order, plenar::Uint16, 2 + 2 * host, 2 + 2 * frame);
                    const Bytes picture = noise(pictureSize(params), host + frame);
                    const Bytes expected = payloadOf(encodedPlanes(params, picture));
                    wrong += roundTrips(encoder, decoder, params, picture, expected, picture) ? 0 : 1;
                    const Frame refused = encode(encoder, makeParams(order, 99, 2, 2), Bytes(64));
                    wrong += refused.message.empty() ? 1 : 0;
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
    constexpr std::array<std::pair<uint32_t, uint32_t>, 4> kPairs{{{10, 3}, {8, 1}, {2, 5}, {1, 4}}};
    std::vector<UncompressedParams> params;
    std::vector<Bytes> pictures;
    std::vector<Bytes> payloads;
    std::vector<Bytes> backs;
    for (const auto& [order, type] : kPairs) {
        params.push_back(makeParams(order, type, 6, 4 + 2 * (order % 3)));
        pictures.push_back(noise(pictureSize(params.back()), order));
        const std::vector<Plane> planes = encodedPlanes(params.back(), pictures.back());
        payloads.push_back(payloadOf(planes));
        backs.emplace_back(pictures.back().size());
        decodeInto(params.back(), planes, payloads.back(), backs.back());
    }
    for (uint32_t frame = 0; frame < 4000; ++frame) {
        const size_t k = frame % kPairs.size();
        ASSERT_TRUE(roundTrips(encoder, decoder, params[k], pictures[k], payloads[k], backs[k])) << "frame " << frame;
    }
}

}  // namespace
}  // namespace plenar_test
