// Frames with known checksums of their payloads and decodes, from a table.
#include <zlib.h>

#include "table.h"
#include "worker_counts.h"

namespace plenar_test {
namespace {

Bytes PictureOf(const TableRow& f) {
    const std::string& content = f.Text("content");
    const uint32_t seed = f.Number("seed");
    Bytes picture(f.Number("srcBytes"));
    uint32_t state = seed;
    uint32_t run = 0;
    uint8_t value = 0;
    for (size_t i = 0; i < picture.size(); ++i) {
        if (content == "noise" || (content == "runs" && run-- == 0)) {
            state = state * 1664525 + 1013904223;
            run = (state >> 8) & 63;
            value = static_cast<uint8_t>(state >> 24);
        }
        const size_t smooth = (content == "ramp" ? 3 * i : 0) + seed;
        picture[i] = content == "ramp" || content == "flat" ? static_cast<uint8_t>(smooth) : value;
    }
    return picture;
}

void ExpectCrc(const Bytes& bytes, const std::string& hexadecimal) {
    EXPECT_EQ(crc32(0, bytes.data(), static_cast<uInt>(bytes.size())), std::stoul(hexadecimal, nullptr, 16));
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
    ExpectCrc(payload.bytes, f.Text("payloadCrc32"));

    const Bytes before(f.Number("srcBytes"), 0xCD);
    const Frame decoded = Decode(WithWorkers<TestDecoder>(workers), params, payload.bytes, before);
    EXPECT_EQ(decoded.message.empty() ? "0" : "1", f.Text("decodeCode"));
    if (decoded.message.empty()) {
        ExpectCrc(decoded.bytes, f.Text("decodedCrc32"));
    }

    const UncompressedParams found = MakeParams(f.Number("metadataOrder"), f.Number("metadataType"), params.width,
                                                params.height, 0, 0, params.frameLayout);
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
