// Every pair of order and type against the plain model: payloads, and decodes into everything that takes them.
#include "worker_counts.h"

namespace plenar_test {
namespace {

constexpr uint32_t kWidest = 0xFFFFFFFE;

// A tight picture, or one whose rows are padded to odd strides. A stride that the order doesn't have is nonsense.
UncompressedParams Shaped(uint32_t order, uint32_t type, uint32_t width, uint32_t height, uint32_t padding) {
    UncompressedParams params = MakeParams(order, type, width, height);
    if (padding != 0 && width != kWidest) {
        const uint64_t second = TightRowBytes2(params);
        params.rowBytes = static_cast<uint32_t>(TightRowBytes(params)) + padding;
        params.rowBytes2 = second == 0 ? 1 : static_cast<uint32_t>(second) + 2 * padding - 1;
    }
    return params;
}

// Decodes `src`, which begins with the planes' payload, into every order and type that it fits, over old bytes.
void CheckDecodes(const std::vector<Plane>& planes, const Bytes& src, uint32_t width, uint32_t height, uint32_t seed) {
    for (const auto& [order, type] : AllPairs()) {
        if (!DecodeRefusal(planes, order, type).empty()) {
            continue;
        }
        for (const uint32_t padding : {0U, 1 + seed % 4}) {
            UncompressedParams params = Shaped(order, type, width, height, padding);
            SCOPED_TRACE("into " + Describe(params));
            params.frameLayout = seed;
            const Bytes before = Noise(PictureSize(params), ++seed);
            Bytes expected = before;
            DecodeInto(params, planes, src, expected);
            const size_t workers = seed % (kWorkerCounts.size() - (height < 64 ? 1 : 0));
            const Frame decoded = Decode(WithWorkers<TestDecoder>(workers), params, src, before, seed);
            ASSERT_EQ(decoded.message, "");
            ASSERT_EQ(Difference(decoded.bytes, expected), "");
        }
    }
}

void CheckRoundTrip(UncompressedParams params, uint32_t seed) {
    SCOPED_TRACE(Describe(params));
    params.frameLayout = 0xABCDEF00 + seed % 2;
    const Bytes picture = Noise(PictureSize(params), seed);
    const std::vector<Plane> planes = EncodedPlanes(params, picture);
    const Bytes expected = PayloadOf(planes);
    const CompressedParams compressed = MakeCompressed();
    ASSERT_EQ(Plenar_GetUncompressedBufSize(&params), picture.size());
    ASSERT_EQ(Plenar_GetCompressedBufSize(&params, &compressed), expected.size());
    for (size_t workers = 0; workers < kWorkerCounts.size(); ++workers) {
        if (kWorkerCounts.at(workers) == 64 && params.height < 64 && seed % 8 != 0) {
            continue;  // many more workers than rows: now and then is enough
        }
        const Frame payload = Encode(WithWorkers<TestEncoder>(workers), params, picture, compressed, seed);
        ASSERT_EQ(payload.message, "");
        ASSERT_EQ(Difference(payload.bytes, expected), "") << kWorkerCounts.at(workers) << " workers";
    }
    CheckDecodes(planes, expected, params.width, params.height, seed);
}

class EveryPair : public ::testing::TestWithParam<std::pair<uint32_t, uint32_t>> {};

// Rows of 0 to 40 pixels and some longer have all the tails that blocks of 16, 32 and 64 bytes can leave.
TEST_P(EveryPair, EncodesAndDecodesAsTheModelDoes) {
    const auto [order, type] = GetParam();
    const uint32_t step = Is422(order) || Is420(order) ? 2 : 1;
    std::vector<std::array<uint32_t, 3>> sizes{
        {6, 68, 132}, {22, 132, 70}, {130 / step * step, 4, 2}, {131 / step * step, 2, 6}};
    constexpr std::array<uint32_t, 5> kHeights{1, 2, 3, 5, 0};
    for (uint32_t width = 0; width <= 70; width += width == 40 ? 22 : step) {
        const uint32_t height = kHeights.at(sizes.size() % 5);
        const uint32_t other = kHeights.at((sizes.size() + 2) % 5);
        sizes.push_back({width, Is420(order) ? height / 2 * 2 : height, Is420(order) ? other / 2 * 2 : other});
    }
    uint32_t seed = 1000 * order + type;
    for (const auto& [width, height, paddedHeight] : sizes) {
        seed += 2;
        ASSERT_NO_FATAL_FAILURE(CheckRoundTrip(Shaped(order, type, width, height, 0), seed));
        ASSERT_NO_FATAL_FAILURE(CheckRoundTrip(Shaped(order, type, width, paddedHeight, 1 + seed % 18), seed + 1));
    }
    // Without rows there are no samples, however wide they would be and however many workers wait for some.
    CheckRoundTrip(MakeParams(order, type, kWidest, 0), 8 * seed);
}

// Odd sizes can't be encoded with shared chroma, but arrive in payloads. Noise fills the bits that encoders leave zero.
TEST_P(EveryPair, DecodesPlanesThatNoEncoderWrote) {
    const auto [order, type] = GetParam();
    uint32_t seed = 3000 * order + type;
    for (const uint32_t width : {1U, 2U, 3U, 4U, 5U, 7U, 8U, 9U, 11U, 13U, 15U, 17U, 21U, 23U, 31U, 33U, 63U, 65U}) {
        for (const uint32_t height : {1U, 4U, 7U}) {
            SCOPED_TRACE(::testing::Message() << width << " x " << height);
            const std::vector<Plane> planes = NoisePlanes(MakeParams(order, type, width, height), ++seed);
            const Bytes payload = PayloadOf(planes);
            ASSERT_NO_FATAL_FAILURE(CheckDecodes(planes, payload, width, height, seed));
            ASSERT_NO_FATAL_FAILURE(CheckDecodes(planes, Join({payload, {0xB7, 0x5E}}), width, height, seed));
        }
    }
}

// Every request against every payload: the right ones pass, the others are told why they don't.
TEST_P(EveryPair, IsRefusedByEveryOtherRequestWithTheRightMessage) {
    const auto [order, type] = GetParam();
    const std::vector<Plane> planes = NoisePlanes(MakeParams(order, type, 4, 2), 7);
    TestDecoder& decoder = WithWorkers<TestDecoder>(0);
    for (uint32_t wantedOrder = 0; wantedOrder <= 17; ++wantedOrder) {
        for (const uint32_t wantedType : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 214U}) {
            EXPECT_EQ(Decode(decoder, MakeParams(wantedOrder, wantedType, 4, 2), PayloadOf(planes), Bytes(256)).message,
                      DecodeRefusal(planes, wantedOrder, wantedType))
                << "as " << PairName(wantedOrder, wantedType);
        }
    }
}

// Among the other samples alpha is coded a few rows at a time, or one if it is long, and runs go on from some to the
// next.
void CheckCodedAlpha(uint32_t width, uint32_t height) {
    constexpr size_t kFirstPlane = 37;
    uint32_t seed = 0;
    for (const uint32_t type : {plenar::Uint8, plenar::Uint16}) {
        const uint32_t bytes = type == plenar::Uint8 ? 1 : 2;
        for (const uint32_t values : {1U, 2U, 7U, 256U}) {  // from one run to noise
            const UncompressedParams with = MakeParams(plenar::RGBA, type, width, height);
            const UncompressedParams alone = MakeParams(plenar::AlphaOnly, type, width, height);
            Bytes picture = Noise(PictureSize(with), ++seed);
            Bytes alpha;
            for (size_t i = 3 * bytes; i < picture.size(); i += 4 * bytes) {
                for (size_t byte = 0; byte < bytes; ++byte) {
                    picture[i + byte] = static_cast<uint8_t>(picture[i + byte] % values + i / 90000);
                    alpha.push_back(picture[i + byte]);
                }
            }
            const CompressedParams compressed = MakeCompressed(1, static_cast<uint8_t>(values % 5));
            const Bytes coded = Encode(WithWorkers<TestEncoder>(0), alone, alpha, compressed).bytes;
            for (size_t workers = 0; workers < kWorkerCounts.size(); ++workers) {
                const Bytes payload = Encode(WithWorkers<TestEncoder>(workers), with, picture, compressed).bytes;
                ASSERT_GT(payload.size(), coded.size());
                EXPECT_TRUE(std::equal(coded.rbegin(), coded.rend() - kFirstPlane, payload.rbegin())) << seed;
                const Frame decoded =
                    Decode(WithWorkers<TestDecoder>(workers), with, payload, Bytes(picture.size()), seed);
                EXPECT_EQ(Difference(decoded.bytes, picture), "") << decoded.message;
            }
        }
    }
}

TEST(CodedAlpha, IsTheSameAmongOtherSamplesAndAlone) {
    CheckCodedAlpha(701, 131);
    CheckCodedAlpha(40001, 5);
}

INSTANTIATE_TEST_SUITE_P(Formats, EveryPair, ::testing::ValuesIn(AllPairs()),
                         [](const auto& test) { return PairName(test.param.first, test.param.second); });

}  // namespace
}  // namespace plenar_test
