// Payloads built by hand: what is refused and with which words, and what is read all the same.
#include <algorithm>
#include <cstring>
#include <limits>

#include "codec_fixture.h"
#include "fault_injection.h"

namespace plenar_test {
namespace {

constexpr uint32_t kMax = std::numeric_limits<uint32_t>::max();
constexpr uint32_t kHalf = 0x80000000;

constexpr char kNoPlanes[] = "at least one 'sinf' and one 'sdat' box expected";
constexpr char kBadSet[] = "Invalid combination of planes";
constexpr char kSecondBare[] = "only single 'sinf' box allowed outside of 'icmp' box";
constexpr char kDepths[] = "planes with different bitdepth is not supported by this decoder";
constexpr char kLayouts[] = "planes with different frame layout is not supported by this decoder";
constexpr char kAlphaSize[] = "Alpha plane with different width or height is not supported by this decoder";
constexpr char kCbSize[] = "Cb plane width and hight should be half of luma";
constexpr char kCrSize[] = "Cr plane width and hight should be half of luma";

std::string noHeaderAt(uint64_t offset) {
    return "can't read box header(8 bytes) at offset " + std::to_string(offset);
}

// A plane with enough data for every code that stands for no more than 4 bytes a pixel.
Plane plane(const std::string& code, uint32_t width = 4, uint32_t height = 2, uint8_t layout = 0) {
    return {code, width, height, layout, Bytes(size_t{4} * width * height, 0x5C)};
}

// Both readers refuse the payload with these words, and the object reads a good one after it.
void expectRefused(TestDecoder& decoder, const Bytes& payload, const std::string& message) {
    const UncompressedParams wanted = makeParams(plenar::CbYCrY, plenar::Uint8, 4, 2);
    const Bytes good = payloadOf(noisePlanes(wanted, 3));
    UncompressedParams read = makeParams(9, 9, 9, 9, 9, 9, 9);
    EXPECT_EQ(readMetadata(decoder, payload, read).message, message);
    EXPECT_EQ(recordBytes(read), recordBytes(makeParams(9, 9, 9, 9, 9, 9, 9)));
    EXPECT_EQ(decode(decoder, wanted, payload, Bytes(64)).message, message);
    EXPECT_EQ(readMetadata(decoder, good, read).message, "");
    EXPECT_EQ(decode(decoder, wanted, good, Bytes(16)).message, "");
}

TEST(Reader, RefusesWithTheExactMessage) {
    const Plane y208{"y208", 4, 2, 0, Bytes(16, 0x11)};
    const Plane wide{"y208", kMax, kMax, 0, Bytes(16)};
    const Bytes pair = join({sinf(y208), sdat(y208)});
    const Bytes described = sinf(y208);
    const Bytes fields(described.begin() + 8, described.end());
    const Bytes twelve(fields.begin(), fields.begin() + 12);
    Plane shortData = y208;
    shortData.data.pop_back();
    struct Case {
        std::string name;
        Bytes payload;
        std::string message;
    };
    const Case cases[] = {
        {"nothing", {}, "buffer size should be at least 8"},
        {"another box first", pair, "'pack' box expected at offset 4"},
        {"pack beyond the buffer", box("pack", pair, 54), "pack box size(54) is greater than buffer size(53)"},
        {"largest pack", box("pack", pair, kMax), "pack box size(4294967295) is greater than buffer size(53)"},
        {"pack of size 0", box("pack", pair, 0), kNoPlanes},
        {"unknown boxes only", pack({box("junk", Bytes(20)), box("pack", {}), sdat(y208)}), kNoPlanes},
        {"unknown box without end", pack({box("junk", {}), box("junk", {}, kMax - 7), pair}), kNoPlanes},
        {"empty icmp at the end", pack({box("icmp", {})}), noHeaderAt(16)},
        {"sdat first in icmp", pack({box("icmp", join({sdat(y208), sinf(y208)}))}), "'sinf' box expected at offset 20"},
        {"short sinf", pack({box("sinf", fields, 19), sdat(y208)}),
         "sinf box size expected to be at least 20 bytes at offset 8"},
        {"short sinf in icmp", pack({box("icmp", join({box("sinf", fields, 0), sdat(y208)}))}),
         "sinf box size expected to be at least 20 bytes at offset 16"},
        {"layout 2", payloadOf({plane("y208", 4, 2, 2)}), "Undefined value of frame layout: 2"},
        {"sinf fields beyond the pack", pack({box("sinf", {}, 21)}), noHeaderAt(29)},
        {"sinf fields outside the pack", box("pack", pair, 16), noHeaderAt(29)},
        {"sinf layout outside the pack", box("pack", pair, 28), noHeaderAt(29)},
        {"20 bytes of sinf outside the pack", box("pack", join({box("sinf", twelve, 20), sdat(y208)}), 27),
         noHeaderAt(28)},
        {"long sinf cut off", pack({box("sinf", {}, 1000)}), noHeaderAt(1008)},
        {"20 bytes of sinf at the end", pack({sinf(y208, 20), Bytes(7)}), noHeaderAt(28)},
        {"sinf past the end", pack({box("sinf", fields, kMax), sdat(y208)}), noHeaderAt(4294967303)},
        {"no sdat behind sinf", pack({sinf(y208), box("junk", Bytes(24)), sdat(y208)}),
         "'sdat' box expected at offset 33"},
        {"sdat too small", payloadOf({shortData}), "'sdat' box size expected to be at least 24 at offset 29"},
        {"sdat far too small", payloadOf({wide}),
         "'sdat' box size expected to be at least 18446744065119617033 at offset 29"},
        {"4 GiB less 9 bytes", pack({sinf({" a08", kMax - 8, 1}), box("sdat", Bytes(23), kMax)}),
         "can't read 4294967295 bytes at offset 37"},
        {"4 GiB less 8 bytes", pack({sinf({" a08", kMax - 7, 1}), box("sdat", Bytes(23), kMax)}),
         "'sdat' box size expected to be at least 4294967296 at offset 29"},
        {"empty coded plane", payloadOf({{"rl08", 4, 2}}), "'sdat' box size expected to be at least 9 at offset 29"},
        {"empty coded plane cut off", pack({sinf({"rl16", 4, 2}), box("sdat", {}, 9)}),
         "can't read 9 bytes at offset 37"},
        {"plane cut off", box("pack", join({sinf(y208), box("sdat", Bytes(15), 24)}), 52),
         "can't read 24 bytes at offset 37"},
        {"two bare pairs", pack({pair, pair}), kSecondBare},
        {"bare pair behind icmp", pack({icmp(y208), pair}), kSecondBare},
        {"unknown code", payloadOf({plane("y209")}), kBadSet},
        {"unknown code without data", payloadOf({{"    ", 9, 9}}), kBadSet},
        {"a code twice", payloadOf({y208, y208}), kBadSet},
        {"two pictures", payloadOf({plane("y208"), plane("rg08")}), kBadSet},
        {"no Cr", payloadOf({plane(" y08"), plane("cb08", 2, 1), plane(" a08")}), kBadSet},
        {"two alphas", payloadOf({y208, plane(" a08"), plane("rl08")}), kBadSet},
        {"five planes", payloadOf({plane(" y08"), plane("cb08"), plane("cr08"), plane(" a08"), plane("rl08")}),
         kBadSet},
        {"icmp below 8 ends the walk",
         pack({box("icmp", join({sinf(plane(" y08")), sdat(plane(" y08"))}), 7), icmp(plane("cb08", 2, 1)),
               icmp(plane("cr08", 2, 1))}),
         kBadSet},
        {"alpha of another depth", payloadOf({y208, plane(" a16")}), kDepths},
        {"chroma of another layout", payloadOf({plane(" y08"), plane("cb08", 2, 1, 1), plane("cr08", 2, 1)}), kLayouts},
        {"alpha of another layout", payloadOf({y208, plane(" a08", 4, 2, 1)}), kLayouts},
        {"alpha of another width", payloadOf({y208, plane(" a08", 3, 2)}), kAlphaSize},
        {"alpha of another height, in front", payloadOf({plane(" a08", 4, 3), y208}), kAlphaSize},
        {"Cb width", payloadOf({plane(" y08"), plane("cb08", 4, 1), plane("cr08", 2, 1)}), kCbSize},
        {"Cb height", payloadOf({plane("cr08", 2, 1), plane("cb08", 2, 2), plane(" y08")}), kCbSize},
        {"Cr width, rounded down", payloadOf({plane(" y08", 5, 3), plane("cb08", 3, 2), plane("cr08", 2, 2)}), kCrSize},
        {"Cr height", payloadOf({plane(" y08"), plane("cb08", 2, 1), plane("cr08", 2, 3), plane(" a08")}), kCrSize},
        {"planar alpha", payloadOf({plane(" y08"), plane("cb08", 2, 1), plane("cr08", 2, 1), plane(" a08", 2, 1)}),
         kAlphaSize},
    };
    TestDecoder decoder(2);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        expectRefused(decoder, c.payload, c.message);
    }
}

// An alpha plane fits every integer picture's set of planes, but only one of the same depth can be read.
TEST(Reader, TakesAlphaOfThePicturesOwnDepthAlone) {
    TestDecoder decoder;
    for (const auto& [order, type] : allPairs()) {
        if (hasAlpha(order)) {
            continue;
        }
        const bool integer = type != plenar::Half16 && type != plenar::Float32 && type != plenar::Fixed2p14;
        for (const std::string code : {" a08", " a16", "rl08", "rl16"}) {
            std::vector<Plane> planes = noisePlanes(makeParams(order, type, 4, 2), 1);
            planes.push_back(plane(code));
            UncompressedParams read = makeParams(0, 0, 0, 0);
            const bool sameDepth = typeBits(type) == (code[3] == '8' ? 8 : 16);
            EXPECT_EQ(readMetadata(decoder, payloadOf(planes), read).message, !integer    ? kBadSet
                                                                              : sameDepth ? ""
                                                                                          : kDepths)
                << planes[0].code << " with " << code;
        }
    }
    for (const std::string code : {"rl08", "rl16"}) {
        UncompressedParams read = makeParams(0, 0, 0, 0);
        EXPECT_EQ(readMetadata(decoder, payloadOf({plane(code)}), read).message, "");
        EXPECT_EQ(recordBytes(read), recordBytes(makeParams(plenar::AlphaOnly, code == "rl08" ? 1 : 2, 4, 2)));
    }
}

class TolerantReader : public ::testing::Test {
protected:
    UncompressedParams params_ = makeParams(plenar::YCbCrA420Planar, plenar::Uint8, 6, 4);
    std::vector<Plane> planes_ = noisePlanes(params_, 11);
    TestDecoder decoder_{3};

    // The payload gives the same metadata and the same picture as one that an encoder would have laid out.
    void expectSameAs(const UncompressedParams& params, const std::vector<Plane>& planes, const Bytes& payload) {
        Bytes expected(pictureSize(params));
        decodeInto(params, planes, payloadOf(planes), expected);
        UncompressedParams read = makeParams(0, 0, 0, 0);
        EXPECT_EQ(readMetadata(decoder_, payload, read).message, "");
        EXPECT_EQ(recordBytes(read), recordBytes(params));
        const Frame picture = decode(decoder_, params, payload, Bytes(expected.size()));
        EXPECT_EQ(picture.message, "");
        EXPECT_EQ(difference(picture.bytes, expected), "");
    }
    void expectSame(const Bytes& payload) { expectSameAs(params_, planes_, payload); }
};

TEST_F(TolerantReader, TakesPlanesInAnyOrder) {
    std::array<size_t, 4> order{0, 1, 2, 3};
    do {
        SCOPED_TRACE(::testing::PrintToString(order));
        expectSame(payloadOf({planes_[order[0]], planes_[order[1]], planes_[order[2]], planes_[order[3]]}));
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(TolerantReader, TakesTheAlternativeSpellings) {
    struct Spelling {
        uint32_t order, type;
        std::vector<std::string> codes;
    };
    const Spelling spellings[] = {
        {plenar::CbYCrY, plenar::Half16, {"  h2"}},
        {plenar::CbYCrY, plenar::Float32, {"  f2"}},
        {plenar::CbYCr, plenar::Half16, {"  h4"}},
        {plenar::CbYCr, plenar::Float32, {"  f4"}},
        {plenar::RGB, plenar::Half16, {"rg h"}},
        {plenar::RGB, plenar::Float32, {"rg f"}},
        {plenar::YCbCr420Planar, plenar::Half16, {"  yh", "cb h", "cr h"}},
        {plenar::YCbCr420Planar, plenar::Float32, {"  yf", "cb f", "cr f"}},
    };
    for (const Spelling& spelling : spellings) {
        const UncompressedParams params = makeParams(spelling.order, spelling.type, 6, 4);
        const std::vector<Plane> planes = noisePlanes(params, 5);
        std::vector<Plane> spelled = planes;
        for (size_t k = 0; k < planes.size(); ++k) {
            spelled[k].code = spelling.codes[k];
        }
        SCOPED_TRACE(spelling.codes[0]);
        expectSameAs(params, planes, payloadOf(spelled));
    }
}

TEST_F(TolerantReader, TakesBoxesThatNoEncoderWrites) {
    const Bytes junk = box("junk", Bytes(13, 0x73));
    const Bytes stopped = box("\1\2\3\4", {}, 0);
    const Bytes y = icmp(planes_[0]);
    const Bytes cb = icmp(planes_[1]);
    const Bytes cr = icmp(planes_[2]);
    const Bytes a = icmp(planes_[3]);
    const Bytes alphaPair = join({sinf(planes_[3]), sdat(planes_[3])});
    Plane longer = planes_[1];
    longer.data.resize(longer.data.size() + 5, 0xEE);
    const Bytes whole = payloadOf(planes_);
    struct Case {
        std::string name;
        Bytes payload;
    };
    const Case cases[] = {
        {"unknown boxes all around", pack({junk, y, stopped, cb, junk, junk, cr, a, junk})},
        {"planes in a second pack are none", pack({y, cb, cr, a, box("pack", a)})},
        {"sdat without sinf", pack({sdat(planes_[2]), y, cb, cr, a})},
        {"less than a header behind the planes", pack({y, cb, cr, a, Bytes(7, 0xEE)})},
        {"box without end behind the planes", pack({y, cb, cr, a, box("junk", {}, kMax - 15)})},
        {"tails in icmp", pack({icmp(planes_[0], junk), icmp(planes_[1], {1}), icmp(planes_[2], a), a})},
        {"sinf of 20 bytes", pack({box("icmp", join({sinf(planes_[0], 20), sdat(planes_[0])})), cb, cr, a})},
        {"sinf of 40 bytes", pack({y, cb, box("icmp", join({sinf(planes_[2], 40), sdat(planes_[2])})), a})},
        {"bare pair, then icmp", pack({alphaPair, y, cb, cr})},
        {"larger sdat", pack({y, icmp(longer), cr, a})},
        {"larger sdat, past the end",
         pack({y, cb, cr, box("icmp", join({sinf(planes_[3]), box("sdat", planes_[3].data, kMax)}))})},
        {"icmp smaller than its planes", pack({box("icmp", join({sinf(planes_[0]), sdat(planes_[0])}), 8), cb,
                                               box("icmp", join({sinf(planes_[2]), sdat(planes_[2])}), 30), a})},
        {"last icmp below 8", pack({y, cb, cr, box("icmp", alphaPair, 0)})},
        {"bytes behind the payload", join({whole, whole, {1, 2, 3}})},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        expectSame(c.payload);
    }
}

TEST(CodedAlpha, GivesNothingButItsOwnBytes) {
    TestEncoder& encoder = withWorkers<TestEncoder>(1);
    TestDecoder& decoder = withWorkers<TestDecoder>(1);
    const UncompressedParams rgba = makeParams(plenar::RGBA, plenar::Uint8, 64, 8);
    const UncompressedParams rgb = makeParams(plenar::RGB, plenar::Uint8, 64, 8);
    const Bytes picture = noise(2048, 1);
    const Bytes whole = encode(encoder, rgba, picture, makeCompressed(1)).bytes;
    EXPECT_EQ(decode(decoder, rgba, whole, Bytes(2048)).bytes, picture);

    // Without bands the plane decodes to nothing: alpha is 0, not that of the frame before.
    Bytes clear = picture;
    for (size_t i = 3; i < clear.size(); i += 4) {
        clear[i] = 0;
    }
    Bytes bandless = whole;
    bandless[45 + 1536 + 37] = 0;
    EXPECT_EQ(decode(decoder, rgba, bandless, picture).bytes, clear);

    // The end of the last band is still there, but behind the payload.
    Bytes cut = whole;
    const auto size = static_cast<uint32_t>(whole.size() - 40);
    std::copy_n(littleEndian(size).begin(), 4, cut.begin());
    Bytes target(2048);
    EXPECT_EQ(decoder.outcome(Plenar_DecodeFrame(decoder.get(), &rgba, cut.data(), size, target.data(), 2048, nullptr)),
              "rle stream runs past the end of the coded plane");
    cut.resize(size);
    EXPECT_EQ(decode(decoder, rgb, cut, Bytes(1536)).message, "");  // alpha that isn't asked for isn't decoded
}

// Whatever a payload states about what it doesn't hold, and wherever it is cut off: both readers say the same of it,
// what still passes for the true frame is that, and nothing is as large as what was stated.
TEST(Reader, BelievesNoStatedNumber) {
    const UncompressedParams params = makeParams(plenar::ARGB, plenar::Uint8, 16, 4);
    const Bytes picture = noise(256, 1);
    const Bytes whole = encode(withWorkers<TestEncoder>(0), params, picture, makeCompressed(1)).bytes;
    std::vector<Bytes> payloads;
    const auto addWith = [&](uint32_t field, uint32_t stated, size_t size) {
        payloads.emplace_back(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size));
        std::memcpy(payloads.back().data() + field, &stated, std::min<size_t>(size, 4));
    };
    // The sizes of boxes, widths and heights of the first plane, then of the second.
    for (const uint32_t field : {0U, 8U, 16U, 24U, 28U, 37U, 237U, 245U, 253U, 257U, 266U}) {
        uint32_t truth = 0;
        std::memcpy(&truth, &whole[field], 4);
        for (const uint32_t stated : {0U, 1U, 7U, 8U, 9U, 19U, 20U, 21U, truth - 1, truth + 1, kHalf - 1, kHalf,
                                      kHalf + 1, kMax - 8, kMax - 7, kMax - 1, kMax}) {
            addWith(field, stated, whole.size());
        }
    }
    for (uint32_t size = 1; size < whole.size(); ++size) {
        addWith(0, size, size);
    }
    TestDecoder& decoder = withWorkers<TestDecoder>(1);
    largestBlock = 0;
    for (const Bytes& payload : payloads) {
        SCOPED_TRACE(&payload - &payloads[0]);
        UncompressedParams read = makeParams(0, 0, 0, 0);
        const std::string refusal = readMetadata(decoder, payload, read).message;
        const Frame frame = decode(decoder, params, payload, Bytes(256));
        EXPECT_TRUE(refusal.empty() || frame.message == refusal) << refusal << " but " << frame.message;
        if (frame.message.empty()) {
            EXPECT_EQ(recordBytes(read), recordBytes(params));
            EXPECT_EQ(difference(frame.bytes, picture), "");
        }
    }
    EXPECT_LT(largestBlock, 4096U);
    EXPECT_EQ(decode(decoder, params, whole, Bytes(256)).bytes, picture);
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
    largestBlock = 0;
    for (const Plane& plane : planes) {
        UncompressedParams read = makeParams(0, 0, 0, 0);
        EXPECT_EQ(readMetadata(decoder, payloadOf({plane}), read).message, "");
        EXPECT_EQ((std::pair<uint32_t, uint32_t>{read.width, read.height}), (std::pair{plane.width, plane.height}));
        EXPECT_EQ(decode(decoder, read, payloadOf({plane}), Bytes(64)).message, "dst size is too small");
    }
    EXPECT_LT(largestBlock, 4096U);
}

}  // namespace
}  // namespace plenar_test
