// Frames with known checksums of their payloads and decodes, from a table.
#include <zlib.h>

#include <fstream>
#include <sstream>

#include "codec_fixture.h"

namespace plenar_test {
namespace {

struct ReferenceFrame {
    uint32_t number, order, type, width, height, rowBytes, rowBytes2, frameLayout, alphaRle, alphaBandLimit;
    std::string content;
    uint32_t seed, srcBytes, compressedBufSize, payloadBytes;
    std::string payloadCrc32;
    uint32_t metadataCode, metadataOrder, metadataType, decodeCode;
    std::string decodedCrc32;
};

std::vector<ReferenceFrame> Frames() {
    std::ifstream file(PLENAR_TEST_DATA "/frames.tsv");
    std::vector<ReferenceFrame> all;
    std::string line;
    std::getline(file, line);
    while (std::getline(file, line)) {
        std::istringstream fields(line);
        ReferenceFrame f;
        fields >> f.number >> f.order >> f.type >> f.width >> f.height >> f.rowBytes >> f.rowBytes2 >> f.frameLayout >>
            f.alphaRle >> f.alphaBandLimit >> f.content >> f.seed >> f.srcBytes >> f.compressedBufSize >>
            f.payloadBytes >> f.payloadCrc32 >> f.metadataCode >> f.metadataOrder >> f.metadataType >> f.decodeCode >>
            f.decodedCrc32;
        EXPECT_FALSE(fields.fail()) << line;
        all.push_back(f);
    }
    return all;
}

Bytes PictureOf(const ReferenceFrame& f) {
    Bytes picture(f.srcBytes);
    uint32_t state = f.seed;
    const auto step = [&state] { return state = state * 1664525 + 1013904223; };
    size_t run = 0;
    uint8_t value = 0;
    for (size_t i = 0; i < picture.size(); ++i) {
        if (f.content == "noise") {
            value = static_cast<uint8_t>(step() >> 24);
        } else if (f.content == "runs" && run-- == 0) {
            step();
            run = (state >> 8) & 63;
            value = static_cast<uint8_t>(state >> 24);
        } else if (f.content == "ramp") {
            value = static_cast<uint8_t>(3 * i + f.seed);
        } else if (f.content == "flat") {
            value = static_cast<uint8_t>(f.seed);
        }
        picture[i] = value;
    }
    return picture;
}

std::string CrcOf(const Bytes& bytes) {
    std::ostringstream text;
    text.width(8);
    text.fill('0');
    text << std::hex << crc32(0, bytes.data(), static_cast<uInt>(bytes.size()));
    return text.str();
}

void Check(const ReferenceFrame& f, size_t workers) {
    UncompressedParams params = MakeParams(f.order, f.type, f.width, f.height, f.rowBytes, f.rowBytes2, f.frameLayout);
    const CompressedParams compressed =
        MakeCompressed(static_cast<uint8_t>(f.alphaRle), static_cast<uint8_t>(f.alphaBandLimit));
    EXPECT_EQ(Plenar_GetUncompressedBufSize(&params), f.srcBytes);
    EXPECT_EQ(Plenar_GetCompressedBufSize(&params, &compressed), f.compressedBufSize);
    const Frame payload = Encode(WithWorkers<TestEncoder>(workers), params, PictureOf(f), compressed, f.number);
    ASSERT_EQ(payload.message, "");
    EXPECT_EQ(payload.bytes.size(), f.payloadBytes);
    EXPECT_EQ(CrcOf(payload.bytes), f.payloadCrc32);

    const Frame decoded = Decode(WithWorkers<TestDecoder>(workers), params, payload.bytes, Bytes(f.srcBytes, 0xCD));
    EXPECT_EQ(decoded.message.empty() ? 0U : 1U, f.decodeCode);
    EXPECT_EQ(f.decodeCode == 0 ? CrcOf(decoded.bytes) : "-", f.decodedCrc32);

    EXPECT_EQ(ReadMetadata(WithWorkers<TestDecoder>(workers), payload.bytes, params).message, "");
    EXPECT_EQ(f.metadataCode, 0U);
    EXPECT_EQ(RecordBytes(params),
              RecordBytes(MakeParams(f.metadataOrder, f.metadataType, f.width, f.height, 0, 0, f.frameLayout)));
}

class ReferenceFrames : public ::testing::TestWithParam<size_t> {};

TEST_P(ReferenceFrames, HaveTheirChecksums) {
    const std::vector<ReferenceFrame> all = Frames();
    ASSERT_EQ(all.size(), 312U);
    for (const ReferenceFrame& f : all) {
        SCOPED_TRACE("frame " + std::to_string(f.number) + ", " + PairName({f.order, f.type}));
        Check(f, GetParam());
    }
}

INSTANTIATE_TEST_SUITE_P(With, ReferenceFrames, ::testing::Range(size_t{0}, kWorkerCounts.size()),
                         [](const auto& test) { return std::to_string(kWorkerCounts.at(test.param)) + "Workers"; });

}  // namespace
}  // namespace plenar_test
