// Payloads built by hand: what is refused and with which words, and what is read all the same.
#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "table.h"
#include "testing/allocations.h"
#include "worker_counts.h"

namespace plenar_test {
namespace {

using namespace plenar;  // orders and types

constexpr uint32_t kMax = std::numeric_limits<uint32_t>::max();
constexpr uint32_t kHalf = 0x80000000;

constexpr char kBadSet[] = "Invalid combination of planes";
constexpr char kDepths[] = "planes with different bitdepth is not supported by this decoder";

// Samples that follow from the plane's code, and that those of larger planes of the same code begin with.
Bytes DataOf(const std::string& code, size_t size) {
    return Noise(size, static_cast<uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(code.data()), 4)));
}

// From text: boxes, and in them numbers of bytes, the fields of planes, single bytes, planes with their data, or that
// alone:
//   pack{ sinf:20{ y208@4x2 =0 } sdat{ 16 } plane:_a08@4x2/8 sdat{ _a08/8 } }
// A number behind a box's kind is what it states as its size. In codes _ stands for a space.
Bytes ContentFrom(std::istringstream& words) {
    Bytes content;
    for (std::string word; words >> word && word != "}";) {
        const auto numberBehind = [&word](char mark) {
            return static_cast<uint32_t>(std::stoul(word.substr(word.find(mark) + 1)));
        };
        const bool isPlane = word.starts_with("plane:");
        word = isPlane ? word.substr(6) : word;
        std::string code = word.substr(0, 4);
        std::replace(code.begin(), code.end(), '_', ' ');
        const bool hasSize = word.find('/') != std::string::npos;
        Bytes item;
        if (word.back() == '{') {
            const Bytes inside = ContentFrom(words);
            const auto trueSize = static_cast<uint32_t>(inside.size() + 8);
            item = Box(code, inside, word[4] == ':' ? numberBehind(':') : trueSize);
        } else if (word.find('@') != std::string::npos) {
            Plane plane{code, numberBehind('@'), numberBehind('x')};
            const size_t usual = isPlane ? size_t{4} * plane.width * plane.height : 0;
            plane.data = DataOf(code, hasSize ? numberBehind('/') : usual);
            item = isPlane ? Join({Sinf(plane), Sdat(plane)})
                           : Join({LittleEndian(plane.width), LittleEndian(plane.height), Letters(code)});
        } else if (hasSize) {
            item = DataOf(code, numberBehind('/'));
        } else {
            item = word[0] == '=' ? Bytes{static_cast<uint8_t>(numberBehind('='))} : Bytes(std::stoul(word), 0x5C);
        }
        content = Join({content, item});
    }
    return content;
}

Bytes PayloadFrom(const std::string& text) {
    std::istringstream words(text);
    return ContentFrom(words);
}

// Both readers refuse the payload with these words, and the object reads a good one after it.
void ExpectRefused(TestDecoder& decoder, const Bytes& payload, const std::string& message) {
    const UncompressedParams wanted = MakeParams(CbYCrY, Uint8, 4, 2);
    const Bytes good = PayloadOf(NoisePlanes(wanted, 3));
    UncompressedParams read = MakeParams(9, 9, 9, 9, 9, 9, 9);
    EXPECT_EQ(ReadMetadata(decoder, payload, read), message);
    EXPECT_EQ(RecordBytes(read), RecordBytes(MakeParams(9, 9, 9, 9, 9, 9, 9)));
    EXPECT_EQ(Decode(decoder, wanted, payload, Bytes(64)).message, message);
    EXPECT_EQ(ReadMetadata(decoder, good, read), "");
    EXPECT_EQ(Decode(decoder, wanted, good, Bytes(16)).message, "");
}

TEST(Reader, RefusesWithTheExactMessage) {
    TestDecoder decoder(2);
    for (const TableRow& row : ReadTable("payload_refusals.tsv")) {
        SCOPED_TRACE(row.Text("name"));
        ExpectRefused(decoder, PayloadFrom(row.Text("payload")), row.Text("message"));
    }
}

// An alpha plane fits every integer picture's set of planes, but only one of the same depth can be read.
TEST(Reader, TakesAlphaOfThePicturesOwnDepthAlone) {
    TestDecoder decoder;
    for (const auto& [order, type] : AllPairs()) {
        if (HasAlpha(order)) {
            continue;
        }
        const bool integer = type != Half16 && type != Float32 && type != Fixed2p14;
        for (const std::string code : {" a08", " a16", "rl08", "rl16"}) {
            std::vector<Plane> planes = NoisePlanes(MakeParams(order, type, 4, 2), 1);
            planes.push_back({code, 4, 2, 0, Bytes(16)});
            UncompressedParams read = MakeParams(0, 0, 0, 0);
            const bool sameDepth = TypeBits(type) == (code[3] == '8' ? 8 : 16);
            EXPECT_EQ(ReadMetadata(decoder, PayloadOf(planes), read), !integer    ? kBadSet
                                                                      : sameDepth ? ""
                                                                                  : kDepths)
                << planes[0].code << " with " << code;
        }
    }
}

// The payload gives the same metadata and the same picture as one that an encoder would have laid out.
void ExpectSame(const UncompressedParams& params, const std::vector<Plane>& planes, const Bytes& payload) {
    TestDecoder& decoder = WithWorkers<TestDecoder>(2);
    Bytes expected(PictureSize(params));
    DecodeInto(params, planes, PayloadOf(planes), expected);
    UncompressedParams read = MakeParams(0, 0, 0, 0);
    EXPECT_EQ(ReadMetadata(decoder, payload, read), "");
    EXPECT_EQ(RecordBytes(read), RecordBytes(params));
    const Frame picture = Decode(decoder, params, payload, Bytes(expected.size()));
    EXPECT_EQ(picture.message, "");
    EXPECT_EQ(Difference(picture.bytes, expected), "");
}

TEST(TolerantReader, TakesTheAlternativeSpellings) {
    for (const TableRow& row : ReadTable("alternative_spellings.tsv")) {
        SCOPED_TRACE(row.Text("codes"));
        const UncompressedParams params = MakeParams(row.Order(), row.Type(), 6, 4);
        const std::vector<Plane> planes = NoisePlanes(params, 5);
        std::vector<Plane> spelled = planes;
        for (size_t k = 0; k < planes.size(); ++k) {
            spelled[k].code = row.Text("codes").substr(4 * k, 4);
        }
        ExpectSame(params, planes, PayloadOf(spelled));
    }
}

TEST(TolerantReader, TakesBoxesAndOrdersOfPlanesThatNoEncoderWrites) {
    const UncompressedParams params = MakeParams(YCbCrA420Planar, Uint8, 6, 4);
    std::vector<Plane> planes = NoisePlanes(params, 11);
    for (Plane& plane : planes) {
        plane.data = DataOf(plane.code, plane.data.size());
    }
    for (const TableRow& row : ReadTable("odd_payloads.tsv")) {
        SCOPED_TRACE(row.Text("name"));
        ExpectSame(params, planes, PayloadFrom(row.Text("payload")));
    }
}

TEST(CodedAlpha, GivesNothingButItsOwnBytes) {
    TestEncoder& encoder = WithWorkers<TestEncoder>(1);
    TestDecoder& decoder = WithWorkers<TestDecoder>(1);
    const UncompressedParams rgba = MakeParams(RGBA, Uint8, 64, 8);
    const UncompressedParams rgb = MakeParams(RGB, Uint8, 64, 8);
    const Bytes picture = Noise(2048, 1);
    const Bytes whole = Encode(encoder, rgba, picture, MakeCompressed(1)).bytes;
    EXPECT_EQ(Decode(decoder, rgba, whole, Bytes(2048)).bytes, picture);

    // Without bands the plane decodes to nothing: alpha is 0, not that of the frame before.
    Bytes clear = picture;
    for (size_t i = 3; i < clear.size(); i += 4) {
        clear[i] = 0;
    }
    Bytes bandless = whole;
    bandless[45 + 1536 + 37] = 0;
    EXPECT_EQ(Decode(decoder, rgba, bandless, picture).bytes, clear);

    // The end of the last band is still there, but behind the payload.
    Bytes cut = whole;
    const auto size = static_cast<uint32_t>(whole.size() - 40);
    StateSize(cut, 0, size);
    Bytes target(2048);
    EXPECT_EQ(decoder.Outcome(Plenar_DecodeFrame(decoder.get(), &rgba, cut.data(), size, target.data(), 2048, nullptr)),
              "rle stream runs past the end of the coded plane");
    cut.resize(size);
    EXPECT_EQ(Decode(decoder, rgb, cut, Bytes(1536)).message, "");  // alpha that isn't asked for isn't decoded
}

// Whatever a payload states about what it doesn't hold, and wherever it is cut off: both readers say the same of it,
// what still passes for the true frame is that, and nothing is as large as what was stated.
TEST(Reader, BelievesNoStatedNumber) {
    const UncompressedParams params = MakeParams(ARGB, Uint8, 16, 4);
    const Bytes picture = Noise(256, 1);
    const Bytes whole = Encode(WithWorkers<TestEncoder>(0), params, picture, MakeCompressed(1)).bytes;
    TestDecoder& decoder = WithWorkers<TestDecoder>(1);
    const AllocationWatch watch;
    const auto check = [&](uint32_t field, uint32_t stated, size_t size) {
        SCOPED_TRACE(::testing::Message() << stated << " at " << field);
        Bytes payload(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size));
        std::memcpy(payload.data() + field, &stated, std::min<size_t>(size, 4));
        UncompressedParams read = MakeParams(0, 0, 0, 0);
        const std::string refusal = ReadMetadata(decoder, payload, read);
        const Frame frame = Decode(decoder, params, payload, Bytes(256));
        EXPECT_TRUE(refusal.empty() || frame.message == refusal) << refusal << " but " << frame.message;
        if (frame.message.empty()) {
            EXPECT_EQ(RecordBytes(read), RecordBytes(params));
            EXPECT_EQ(Difference(frame.bytes, picture), "");
        }
    };
    // The sizes of boxes, widths and heights of the first plane, then of the second.
    for (const uint32_t field : {0U, 8U, 16U, 24U, 28U, 37U, 237U, 245U, 253U, 257U, 266U}) {
        uint32_t truth = 0;
        std::memcpy(&truth, &whole[field], 4);
        for (const uint32_t stated : {0U, 1U, 7U, 8U, 9U, 19U, 20U, 21U, truth - 1, truth + 1, kHalf - 1, kHalf,
                                      kHalf + 1, kMax - 8, kMax - 7, kMax - 1, kMax}) {
            check(field, stated, whole.size());
        }
    }
    for (uint32_t size = 1; size < whole.size(); ++size) {
        check(0, size, size);
    }
    EXPECT_LT(watch.LargestBlock(), 4096U);
    EXPECT_EQ(Decode(decoder, params, whole, Bytes(256)).bytes, picture);
}

// Row samples are counted in 32 bits, and planes in 64, so some of these take no bytes, and coded ones state none. No
// picture in memory is as large.
TEST(Reader, ReportsPlanesBeyondAllMemoryAndDecodesNone) {
    TestDecoder decoder(2);
    const Plane planes[] = {{"y208", kHalf, 5},
                            {" y2f", kHalf, 1},
                            {" y2f", kHalf / 2, kHalf},
                            {"rl08", kMax, kMax, 0, Bytes(23)},
                            {"rl16", kHalf, 2, 0, Bytes(23)}};
    const AllocationWatch watch;
    for (const Plane& plane : planes) {
        UncompressedParams read = MakeParams(0, 0, 0, 0);
        EXPECT_EQ(ReadMetadata(decoder, PayloadOf({plane}), read), "");
        EXPECT_EQ((std::pair<uint32_t, uint32_t>{read.width, read.height}), (std::pair{plane.width, plane.height}));
        EXPECT_EQ(Decode(decoder, read, PayloadOf({plane}), Bytes(64)).message, "dst size is too small");
    }
    EXPECT_LT(watch.LargestBlock(), 4096U);
}

}  // namespace
}  // namespace plenar_test
