// Payloads built by hand: what is refused and with which words, and what is read all the same.
#include <algorithm>
#include <cstring>
#include <limits>
#include <map>

#include "testing/allocations.h"
#include "worker_counts.h"

namespace plenar_test {
namespace {

using namespace plenar;  // orders and types

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

std::string NoHeaderAt(uint64_t offset) {
    return "can't read box header(8 bytes) at offset " + std::to_string(offset);
}

// A plane with enough data for every code that stands for no more than 4 bytes a pixel.
Plane SomePlane(const std::string& code, uint32_t width = 4, uint32_t height = 2, uint8_t layout = 0) {
    return {code, width, height, layout, Bytes(size_t{4} * width * height, 0x5C)};
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
    const Plane y208{"y208", 4, 2, 0, Bytes(16, 0x11)};
    const Plane wide{"y208", kMax, kMax, 0, Bytes(16)};
    const Bytes pair = Join({Sinf(y208), Sdat(y208)});
    const Bytes described = Sinf(y208);
    const Bytes fields(described.begin() + 8, described.end());
    const Bytes twelve(fields.begin(), fields.begin() + 12);
    Plane shortData = y208;
    shortData.data.pop_back();
    const struct {
        const char* name;
        Bytes payload;
        std::string message;
    } cases[] = {
        {"nothing", {}, "buffer size should be at least 8"},
        {"another box first", pair, "'pack' box expected at offset 4"},
        {"pack beyond the buffer", Box("pack", pair, 54), "pack box size(54) is greater than buffer size(53)"},
        {"largest pack", Box("pack", pair, kMax), "pack box size(4294967295) is greater than buffer size(53)"},
        {"pack of size 0", Box("pack", pair, 0), kNoPlanes},
        {"unknown boxes only", Pack({Box("junk", Bytes(20)), Box("pack", {}), Sdat(y208)}), kNoPlanes},
        {"unknown box without end", Pack({Box("junk", {}), Box("junk", {}, kMax - 7), pair}), kNoPlanes},
        {"empty icmp at the end", Pack({Box("icmp", {})}), NoHeaderAt(16)},
        {"sdat first in icmp", Pack({Box("icmp", Join({Sdat(y208), Sinf(y208)}))}), "'sinf' box expected at offset 20"},
        {"short sinf", Pack({Box("sinf", fields, 19), Sdat(y208)}),
         "sinf box size expected to be at least 20 bytes at offset 8"},
        {"short sinf in icmp", Pack({Box("icmp", Join({Box("sinf", fields, 0), Sdat(y208)}))}),
         "sinf box size expected to be at least 20 bytes at offset 16"},
        {"layout 2", PayloadOf({SomePlane("y208", 4, 2, 2)}), "Undefined value of frame layout: 2"},
        {"sinf fields beyond the pack", Pack({Box("sinf", {}, 21)}), NoHeaderAt(29)},
        {"sinf fields outside the pack", Box("pack", pair, 16), NoHeaderAt(29)},
        {"sinf layout outside the pack", Box("pack", pair, 28), NoHeaderAt(29)},
        {"20 bytes of sinf outside the pack", Box("pack", Join({Box("sinf", twelve, 20), Sdat(y208)}), 27),
         NoHeaderAt(28)},
        {"long sinf cut off", Pack({Box("sinf", {}, 1000)}), NoHeaderAt(1008)},
        {"20 bytes of sinf at the end", Pack({Sinf(y208, 20), Bytes(7)}), NoHeaderAt(28)},
        {"sinf past the end", Pack({Box("sinf", fields, kMax), Sdat(y208)}), NoHeaderAt(4294967303)},
        {"no sdat behind sinf", Pack({Sinf(y208), Box("junk", Bytes(24)), Sdat(y208)}),
         "'sdat' box expected at offset 33"},
        {"sdat too small", PayloadOf({shortData}), "'sdat' box size expected to be at least 24 at offset 29"},
        {"sdat far too small", PayloadOf({wide}),
         "'sdat' box size expected to be at least 18446744065119617033 at offset 29"},
        {"4 GiB less 9 bytes", Pack({Sinf({" a08", kMax - 8, 1}), Box("sdat", Bytes(23), kMax)}),
         "can't read 4294967295 bytes at offset 37"},
        {"4 GiB less 8 bytes", Pack({Sinf({" a08", kMax - 7, 1}), Box("sdat", Bytes(23), kMax)}),
         "'sdat' box size expected to be at least 4294967296 at offset 29"},
        {"empty coded plane", PayloadOf({{"rl08", 4, 2}}), "'sdat' box size expected to be at least 9 at offset 29"},
        {"empty coded plane cut off", Pack({Sinf({"rl16", 4, 2}), Box("sdat", {}, 9)}),
         "can't read 9 bytes at offset 37"},
        {"plane cut off", Box("pack", Join({Sinf(y208), Box("sdat", Bytes(15), 24)}), 52),
         "can't read 24 bytes at offset 37"},
        {"two bare pairs", Pack({pair, pair}), kSecondBare},
        {"bare pair behind icmp", Pack({Icmp(y208), pair}), kSecondBare},
        {"unknown code", PayloadOf({SomePlane("y209")}), kBadSet},
        {"unknown code without data", PayloadOf({{"    ", 9, 9}}), kBadSet},
        {"a code twice", PayloadOf({y208, y208}), kBadSet},
        {"two pictures", PayloadOf({SomePlane("y208"), SomePlane("rg08")}), kBadSet},
        {"no Cr", PayloadOf({SomePlane(" y08"), SomePlane("cb08", 2, 1), SomePlane(" a08")}), kBadSet},
        {"two alphas", PayloadOf({y208, SomePlane(" a08"), SomePlane("rl08")}), kBadSet},
        {"five planes",
         PayloadOf({SomePlane(" y08"), SomePlane("cb08"), SomePlane("cr08"), SomePlane(" a08"), SomePlane("rl08")}),
         kBadSet},
        {"icmp below 8 ends the walk",
         Pack({Box("icmp", Join({Sinf(SomePlane(" y08")), Sdat(SomePlane(" y08"))}), 7), Icmp(SomePlane("cb08", 2, 1)),
               Icmp(SomePlane("cr08", 2, 1))}),
         kBadSet},
        {"alpha of another depth", PayloadOf({y208, SomePlane(" a16")}), kDepths},
        {"chroma of another layout",
         PayloadOf({SomePlane(" y08"), SomePlane("cb08", 2, 1, 1), SomePlane("cr08", 2, 1)}), kLayouts},
        {"alpha of another layout", PayloadOf({y208, SomePlane(" a08", 4, 2, 1)}), kLayouts},
        {"alpha of another width", PayloadOf({y208, SomePlane(" a08", 3, 2)}), kAlphaSize},
        {"alpha of another height, in front", PayloadOf({SomePlane(" a08", 4, 3), y208}), kAlphaSize},
        {"Cb width", PayloadOf({SomePlane(" y08"), SomePlane("cb08", 4, 1), SomePlane("cr08", 2, 1)}), kCbSize},
        {"Cb height", PayloadOf({SomePlane("cr08", 2, 1), SomePlane("cb08", 2, 2), SomePlane(" y08")}), kCbSize},
        {"Cr width, rounded down",
         PayloadOf({SomePlane(" y08", 5, 3), SomePlane("cb08", 3, 2), SomePlane("cr08", 2, 2)}), kCrSize},
        {"Cr height",
         PayloadOf({SomePlane(" y08"), SomePlane("cb08", 2, 1), SomePlane("cr08", 2, 3), SomePlane(" a08")}), kCrSize},
        {"planar alpha",
         PayloadOf({SomePlane(" y08"), SomePlane("cb08", 2, 1), SomePlane("cr08", 2, 1), SomePlane(" a08", 2, 1)}),
         kAlphaSize},
    };
    TestDecoder decoder(2);
    for (const auto& [name, payload, message] : cases) {
        SCOPED_TRACE(name);
        ExpectRefused(decoder, payload, message);
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
            planes.push_back(SomePlane(code));
            UncompressedParams read = MakeParams(0, 0, 0, 0);
            const bool sameDepth = TypeBits(type) == (code[3] == '8' ? 8 : 16);
            EXPECT_EQ(ReadMetadata(decoder, PayloadOf(planes), read), !integer    ? kBadSet
                                                                      : sameDepth ? ""
                                                                                  : kDepths)
                << planes[0].code << " with " << code;
        }
    }
    for (const std::string code : {"rl08", "rl16"}) {
        UncompressedParams read = MakeParams(0, 0, 0, 0);
        EXPECT_EQ(ReadMetadata(decoder, PayloadOf({SomePlane(code)}), read), "");
        EXPECT_EQ(RecordBytes(read), RecordBytes(MakeParams(AlphaOnly, code == "rl08" ? 1 : 2, 4, 2)));
    }
}

class TolerantReader : public ::testing::Test {
protected:
    UncompressedParams params_ = MakeParams(YCbCrA420Planar, Uint8, 6, 4);
    std::vector<Plane> planes_ = NoisePlanes(params_, 11);
    TestDecoder decoder_{3};

    // The payload gives the same metadata and the same picture as one that an encoder would have laid out.
    void ExpectSameAs(const UncompressedParams& params, const std::vector<Plane>& planes, const Bytes& payload) {
        Bytes expected(PictureSize(params));
        DecodeInto(params, planes, PayloadOf(planes), expected);
        UncompressedParams read = MakeParams(0, 0, 0, 0);
        EXPECT_EQ(ReadMetadata(decoder_, payload, read), "");
        EXPECT_EQ(RecordBytes(read), RecordBytes(params));
        const Frame picture = Decode(decoder_, params, payload, Bytes(expected.size()));
        EXPECT_EQ(picture.message, "");
        EXPECT_EQ(Difference(picture.bytes, expected), "");
    }
    void ExpectSame(const Bytes& payload) { ExpectSameAs(params_, planes_, payload); }
};

TEST_F(TolerantReader, TakesPlanesInAnyOrder) {
    std::array<size_t, 4> order{0, 1, 2, 3};
    do {
        SCOPED_TRACE(::testing::PrintToString(order));
        ExpectSame(PayloadOf({planes_[order[0]], planes_[order[1]], planes_[order[2]], planes_[order[3]]}));
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(TolerantReader, TakesTheAlternativeSpellings) {
    struct Spelling {
        uint32_t order, type;
        std::vector<std::string> codes;
    };
    const Spelling spellings[] = {
        {CbYCrY, Half16, {"  h2"}},
        {CbYCrY, Float32, {"  f2"}},
        {CbYCr, Half16, {"  h4"}},
        {CbYCr, Float32, {"  f4"}},
        {RGB, Half16, {"rg h"}},
        {RGB, Float32, {"rg f"}},
        {YCbCr420Planar, Half16, {"  yh", "cb h", "cr h"}},
        {YCbCr420Planar, Float32, {"  yf", "cb f", "cr f"}},
    };
    for (const Spelling& spelling : spellings) {
        const UncompressedParams params = MakeParams(spelling.order, spelling.type, 6, 4);
        const std::vector<Plane> planes = NoisePlanes(params, 5);
        std::vector<Plane> spelled = planes;
        for (size_t k = 0; k < planes.size(); ++k) {
            spelled[k].code = spelling.codes[k];
        }
        SCOPED_TRACE(spelling.codes[0]);
        ExpectSameAs(params, planes, PayloadOf(spelled));
    }
}

TEST_F(TolerantReader, TakesBoxesThatNoEncoderWrites) {
    const Bytes junk = Box("junk", Bytes(13, 0x73));
    const Bytes stopped = Box("\1\2\3\4", {}, 0);
    const Bytes y = Icmp(planes_[0]);
    const Bytes cb = Icmp(planes_[1]);
    const Bytes cr = Icmp(planes_[2]);
    const Bytes a = Icmp(planes_[3]);
    const Bytes alphaPair = Join({Sinf(planes_[3]), Sdat(planes_[3])});
    Plane longer = planes_[1];
    longer.data.resize(longer.data.size() + 5, 0xEE);
    const Bytes whole = PayloadOf(planes_);
    const std::pair<const char*, Bytes> cases[] = {
        {"unknown boxes all around", Pack({junk, y, stopped, cb, junk, junk, cr, a, junk})},
        {"planes in a second pack are none", Pack({y, cb, cr, a, Box("pack", a)})},
        {"sdat without sinf", Pack({Sdat(planes_[2]), y, cb, cr, a})},
        {"less than a header behind the planes", Pack({y, cb, cr, a, Bytes(7, 0xEE)})},
        {"box without end behind the planes", Pack({y, cb, cr, a, Box("junk", {}, kMax - 15)})},
        {"tails in icmp", Pack({Icmp(planes_[0], junk), Icmp(planes_[1], {1}), Icmp(planes_[2], a), a})},
        {"sinf of 20 bytes", Pack({Box("icmp", Join({Sinf(planes_[0], 20), Sdat(planes_[0])})), cb, cr, a})},
        {"sinf of 40 bytes", Pack({y, cb, Box("icmp", Join({Sinf(planes_[2], 40), Sdat(planes_[2])})), a})},
        {"bare pair, then icmp", Pack({alphaPair, y, cb, cr})},
        {"larger sdat", Pack({y, Icmp(longer), cr, a})},
        {"larger sdat, past the end",
         Pack({y, cb, cr, Box("icmp", Join({Sinf(planes_[3]), Box("sdat", planes_[3].data, kMax)}))})},
        {"icmp smaller than its planes", Pack({Box("icmp", Join({Sinf(planes_[0]), Sdat(planes_[0])}), 8), cb,
                                               Box("icmp", Join({Sinf(planes_[2]), Sdat(planes_[2])}), 30), a})},
        {"last icmp below 8", Pack({y, cb, cr, Box("icmp", alphaPair, 0)})},
        {"bytes behind the payload", Join({whole, whole, {1, 2, 3}})},
    };
    for (const auto& [name, payload] : cases) {
        SCOPED_TRACE(name);
        ExpectSame(payload);
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
    std::copy_n(LittleEndian(size).begin(), 4, cut.begin());
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
    std::map<std::string, Bytes> payloads;
    const auto addWith = [&](uint32_t field, uint32_t stated, size_t size) {
        const std::string name = std::to_string(stated) + " at " + std::to_string(field);
        Bytes& payload = payloads[name] = Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size));
        std::memcpy(payload.data() + field, &stated, std::min<size_t>(size, 4));
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
    TestDecoder& decoder = WithWorkers<TestDecoder>(1);
    const AllocationWatch watch;
    for (const auto& [name, payload] : payloads) {
        SCOPED_TRACE(name);
        UncompressedParams read = MakeParams(0, 0, 0, 0);
        const std::string refusal = ReadMetadata(decoder, payload, read);
        const Frame frame = Decode(decoder, params, payload, Bytes(256));
        EXPECT_TRUE(refusal.empty() || frame.message == refusal) << refusal << " but " << frame.message;
        if (frame.message.empty()) {
            EXPECT_EQ(RecordBytes(read), RecordBytes(params));
            EXPECT_EQ(Difference(frame.bytes, picture), "");
        }
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
