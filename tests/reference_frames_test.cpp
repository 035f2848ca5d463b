// Frames with known checksums of their payloads and decodes, from a table.
#include <zlib.h>

#include <sstream>

#include "table.h"
#include "worker_counts.h"

namespace plenar_test {
namespace {

Bytes PictureOf(const TableRow& f) {
    const std::string& content = f.Text("content");
    const uint32_t seed = f.Number("seed");
    Bytes picture(f.Number("srcBytes"));
    uint32_t state = seed;
    const auto step = [&state] { return state = state * 1664525 + 1013904223; };
    size_t run = 0;
    uint8_t value = 0;
    for (size_t i = 0; i < picture.size(); ++i) {
        if (content == "noise") {
            value = static_cast<uint8_t>(step() >> 24);
        } else if (content == "runs" && run-- == 0) {
            step();
            run = (state >> 8) & 63;
            value = static_cast<uint8_t>(state >> 24);
        } else if (content == "ramp") {
            value = static_cast<uint8_t>(3 * i + seed);
        } else if (content == "flat") {
            value = static_cast<uint8_t>(seed);
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

void Check(const TableRow& f, size_t workers) {
    UncompressedParams params = MakeParams(f.Number("order"), f.Number("type"), f.Number("width"), f.Number("height"),
                                           f.Number("rowBytes"), f.Number("rowBytes2"), f.Number("frameLayout"));
    SCOPED_TRACE("frame " + f.Text("case") + ", " + Describe(params));
    const CompressedParams compressed = MakeCompressed(f.Byte("alphaRle"), f.Byte("alphaBandLimit"));
    EXPECT_EQ(Plenar_GetUncompressedBufSize(&params), f.Number("srcBytes"));
    EXPECT_EQ(Plenar_GetCompressedBufSize(&params, &compressed), f.Number("compressedBufSize"));
    const Frame payload = Encode(WithWorkers<TestEncoder>(workers), params, PictureOf(f), compressed, f.Number("case"));
    ASSERT_EQ(payload.message, "");
    EXPECT_EQ(payload.bytes.size(), f.Number("payloadBytes"));
    EXPECT_EQ(CrcOf(payload.bytes), f.Text("payloadCrc32"));

    const Bytes before(f.Number("srcBytes"), 0xCD);
    const Frame decoded = Decode(WithWorkers<TestDecoder>(workers), params, payload.bytes, before);
    EXPECT_EQ(decoded.message.empty() ? "0" : "1", f.Text("decodeCode"));
    EXPECT_EQ(decoded.message.empty() ? CrcOf(decoded.bytes) : "-", f.Text("decodedCrc32"));

    const UncompressedParams found = MakeParams(f.Number("metadataOrder"), f.Number("metadataType"), params.width,
                                                params.height, 0, 0, params.frameLayout);
    EXPECT_EQ(f.Text("metadataCode"), "0");
    EXPECT_EQ(ReadMetadata(WithWorkers<TestDecoder>(workers), payload.bytes, params), "");
    EXPECT_EQ(RecordBytes(params), RecordBytes(found));
}

class ReferenceFrames : public ::testing::TestWithParam<size_t> {};

TEST_P(ReferenceFrames, HaveTheirChecksums) {
    const std::vector<TableRow> all = ReadTable("frames.tsv");
    ASSERT_EQ(all.size(), 312U);
    for (const TableRow& f : all) {
        Check(f, GetParam());
    }
}

INSTANTIATE_TEST_SUITE_P(With, ReferenceFrames, ::testing::Range(size_t{0}, kWorkerCounts.size()),
                         [](const auto& test) { return std::to_string(kWorkerCounts.at(test.param)) + "Workers"; });

}  // namespace
}  // namespace plenar_test
