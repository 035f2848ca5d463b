// Arguments, sizes and the checks at the head of an encode and a decode.
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <future>
#include <limits>

#include "table.h"
#include "worker_counts.h"

namespace plenar_test {
namespace {

using namespace plenar;  // orders and types
using namespace std::string_literals;

constexpr uint32_t kMax = std::numeric_limits<uint32_t>::max();

ptrdiff_t ThreadCount() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return std::distance(begin(tasks), end(tasks));
}

TEST(Version, GoesToEachPointerAlone) {
    Plenar_GetVersion(nullptr, nullptr, nullptr, nullptr, nullptr);
    uint32_t major = 0, minor = 0, patch = 0, build = 0;
    char stage = 0;
    Plenar_GetVersion(nullptr, nullptr, &patch, nullptr, nullptr);
    EXPECT_EQ(patch, 2U);
    Plenar_GetVersion(&major, &minor, nullptr, &build, &stage);
    EXPECT_EQ((std::array<uint32_t, 3>{major, minor, build}), (std::array<uint32_t, 3>{2, 5, 39}));
    EXPECT_EQ(stage, 'r');
}

TEST(Objects, OwnAsManyThreadsAsAskedFor) {
    // The thread sanitizer starts a thread of its own with the first one: let that be this.
    std::promise<void> done;
    std::thread first([&done] { done.get_future().wait(); });
    const uint32_t processors = std::thread::hardware_concurrency();
    const std::pair<uint32_t, uint32_t> counts[] = {{1, 0}, {2, 2}, {5, 5}, {0, processors == 1 ? 0 : processors}};
    for (const auto& [asked, expected] : counts) {
        const ptrdiff_t before = ThreadCount();
        {
            TestEncoder encoder(asked);
            EXPECT_EQ(ThreadCount() - before, expected);
            TestDecoder decoder(asked);
            EXPECT_EQ(ThreadCount() - before, 2 * expected);
        }
        // A joined thread's entry may outlive it by a moment.
        for (int tries = 0; tries < 1000 && ThreadCount() != before; ++tries) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        EXPECT_EQ(ThreadCount(), before);
    }
    done.set_value();
    first.join();
}

// Pointers first, then the sizes of records; nothing is done, no message given, and no output touched.
TEST(Arguments, AreCheckedBeforeAnythingElse) {
    TestEncoder encoder;
    TestDecoder decoder;
    Encoder* const e = encoder.get();
    Decoder* const d = decoder.get();
    const UncompressedParams good = MakeParams(AlphaOnly, Uint8, 2, 2);
    const CompressedParams goodWish = MakeCompressed();
    UncompressedParams unsized = good;
    unsized.size = (uint64_t{1} << 32) + 36;
    CompressedParams unsizedWish = goodWish;
    unsizedWish.size = 11;
    const Bytes src = PayloadOf(NoisePlanes(good, 1));
    const auto size = static_cast<uint32_t>(src.size());
    Bytes dst(64, 0x77);
    uint32_t written = 0x77777777;
    const struct {
        const char* name;
        Encoder* encoder;
        Decoder* decoder;
        UncompressedParams* params;
        const CompressedParams* wish;
        const uint8_t* src;
        uint8_t* dst;
        uint32_t encode, decode, metadata;
    } cases[] = {
        {"no objects", nullptr, nullptr, &unsized, &unsizedWish, src.data(), dst.data(), 2, 2, 2},
        {"no picture record", e, d, nullptr, &goodWish, src.data(), dst.data(), 2, 2, 2},
        {"no options", e, d, &unsized, nullptr, src.data(), dst.data(), 2, 3, 3},
        {"no source", e, d, &unsized, &unsizedWish, nullptr, dst.data(), 2, 2, 2},
        {"no target", e, d, &unsized, &unsizedWish, src.data(), nullptr, 2, 2, 3},
        {"wrong sizes of records", e, d, &unsized, &goodWish, src.data(), dst.data(), 3, 3, 3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Plenar_EncodeFrame(c.encoder, c.params, c.wish, c.src, size, c.dst, 64, &written), c.encode);
        EXPECT_EQ(Plenar_DecodeFrame(c.decoder, c.params, c.src, size, c.dst, 64, &written), c.decode);
        EXPECT_EQ(Plenar_ReadMetadata(c.decoder, c.src, size, c.params), c.metadata);
        EXPECT_EQ(Plenar_GetCompressedBufSize(c.params, c.wish), 0U);
        EXPECT_EQ(Plenar_GetUncompressedBufSize(c.params), 0U);
    }
    EXPECT_EQ(Plenar_EncodeFrame(e, &good, &unsizedWish, src.data(), 4, dst.data(), 64, &written), 3U);
    EXPECT_EQ(Plenar_GetCompressedBufSize(&good, &unsizedWish), 0U);
    EXPECT_EQ(Plenar_GetCompressedBufSize(&good, nullptr), 0U);
    EXPECT_EQ(dst, Bytes(64, 0x77));
    EXPECT_EQ(written, 0x77777777U);
    EXPECT_EQ(encoder.Outcome(0), "");
    EXPECT_EQ(decoder.Outcome(0), "");
}

TEST(Arguments, ParamsCallbackAndByteCountMayBeLeftOut) {
    const UncompressedParams params = MakeParams(AlphaOnly, Uint8, 2, 2);
    const CompressedParams wish = MakeCompressed();
    const CreateParams unsized{27, 1, nullptr, nullptr};
    const Bytes picture = Noise(4, 1);
    Bytes payload(41);
    Bytes back(4);
    Encoder* encoder = nullptr;
    Decoder* decoder = nullptr;
    EXPECT_EQ(Plenar_CreateEncoder(&unsized, nullptr), 2U);
    EXPECT_EQ(Plenar_CreateDecoder(&unsized, nullptr), 2U);
    EXPECT_EQ(Plenar_CreateEncoder(&unsized, &encoder), 3U);
    EXPECT_EQ(Plenar_CreateDecoder(&unsized, &decoder), 3U);
    EXPECT_TRUE(encoder == nullptr && decoder == nullptr);
    Plenar_DestroyEncoder(nullptr);
    Plenar_DestroyDecoder(nullptr);
    ASSERT_EQ(Plenar_CreateEncoder(nullptr, &encoder), 0U);
    ASSERT_EQ(Plenar_CreateDecoder(nullptr, &decoder), 0U);
    for (const uint32_t missing : {1U, 0U}) {
        EXPECT_EQ(Plenar_EncodeFrame(encoder, &params, &wish, picture.data(), 4 - missing, payload.data(), 41, nullptr),
                  missing);
        EXPECT_EQ(Plenar_DecodeFrame(decoder, &params, payload.data(), 41 - missing, back.data(), 4, nullptr), missing);
    }
    EXPECT_EQ(back, picture);
    Plenar_DestroyEncoder(encoder);
    Plenar_DestroyDecoder(decoder);
}

UncompressedParams ParamsOf(const TableRow& row) {
    return MakeParams(row.Order(), row.Type(), row.Number("width"), row.Number("height"), row.Number("rowBytes"),
                      row.Number("rowBytes2"));
}

CompressedParams OptionsOf(const TableRow& row) {
    return MakeCompressed(row.Byte("alphaRle"), row.Byte("alphaBandLimit"));
}

// Sizes beside those of the supported frames that others encode. What isn't supported has no payload, but a picture of
// some size. Coded alpha takes its bound. Sums and products that don't fit are cut to 32 bits.
TEST(Sizes, OfPicturesAndPayloads) {
    for (const TableRow& row : ReadTable("sizes.tsv")) {
        SCOPED_TRACE(row.Text("name"));
        const UncompressedParams params = ParamsOf(row);
        const CompressedParams options = OptionsOf(row);
        EXPECT_EQ(Plenar_GetUncompressedBufSize(&params), row.Number("uncompressed"));
        EXPECT_EQ(Plenar_GetCompressedBufSize(&params, &options), row.Number("compressed"));
    }
}

// The checks come in the table's order: each row breaks the named rule and others that come later. The last ones have
// pictures and payloads beyond 32 and 64 bits, whatever is left of their sizes after wrapping.
TEST(Encode, RefusesWithTheFirstBrokenRule) {
    TestEncoder encoder(2);
    Bytes memory(4096, 0x77);
    for (const TableRow& row : ReadTable("encode_refusals.tsv")) {
        SCOPED_TRACE(row.Text("name"));
        const UncompressedParams params = ParamsOf(row);
        const CompressedParams options = OptionsOf(row);
        uint32_t written = 7;
        // The largest sizes are claims: a refused frame's memory isn't touched.
        EXPECT_EQ(
            encoder.Outcome(Plenar_EncodeFrame(encoder.get(), &params, &options, memory.data(), row.Number("srcSize"),
                                               memory.data() + 2048, row.Number("dstSize"), &written)),
            row.Text("message"));
        EXPECT_EQ(written, 7U);
        EXPECT_EQ(memory, Bytes(4096, 0x77));
        EXPECT_EQ(Encode(encoder, MakeParams(YCbYCr, Uint8, 4, 2), Noise(16, 1)).message, "");
    }
}

TEST(Encode, StoresAnyFrameLayoutThoughDecodersRefuseIt) {
    UncompressedParams params = MakeParams(AlphaOnly, Uint8, 2, 2, 0, 0, 0x1FE);
    const Bytes payload = Encode(WithWorkers<TestEncoder>(0), params, Noise(4, 1)).bytes;
    EXPECT_EQ(payload, PayloadOf(EncodedPlanes(params, Noise(4, 1))));
    EXPECT_EQ(ReadMetadata(WithWorkers<TestDecoder>(0), payload, params), "Undefined value of frame layout: 254");
}

TEST(Decode, RefusesWithTheFirstBrokenRule) {
    TestDecoder decoder(2);
    const Bytes sound = PayloadOf(NoisePlanes(MakeParams(CbYACrYA, Uint8, 4, 2), 1));
    for (const TableRow& row : ReadTable("decode_refusals.tsv")) {
        SCOPED_TRACE(row.Text("name"));
        const Bytes payload = row.Text("payload") == "sound" ? sound : Bytes(7);
        const Frame frame = Decode(decoder, ParamsOf(row), payload, Bytes(row.Number("dstSize")));
        EXPECT_EQ(frame.message.empty() ? "-" : frame.message, row.Text("message"));
        EXPECT_EQ(Decode(decoder, MakeParams(CbYCrY, Uint8, 4, 2), sound, Bytes(16)).message, "");
    }
}

// A frame without rows has no samples, however wide it is and however many workers wait for some.
TEST(EmptyFrames, PassForAnyWidthAndWorkerCount) {
    for (size_t workers = 0; workers < kWorkerCounts.size(); ++workers) {
        for (const auto& [order, type] : AllPairs()) {
            for (const uint32_t width : {0U, 6U, kMax - 1}) {
                const UncompressedParams params = MakeParams(order, type, width, 0);
                const Bytes expected = PayloadOf(NoisePlanes(params, 0));
                SCOPED_TRACE(Describe(params));
                const Frame payload = Encode(WithWorkers<TestEncoder>(workers), params, {});
                EXPECT_EQ(payload.message, "");
                EXPECT_EQ(Difference(payload.bytes, expected), "");
                EXPECT_EQ(Decode(WithWorkers<TestDecoder>(workers), params, expected, {}).message,
                          DecodeRefusal(NoisePlanes(params, 0), order, type));
            }
        }
    }
}

TEST(WorkedExample, ComesOutByteForByte) {
    const UncompressedParams params = MakeParams(CbYACrYA, Uint8, 4, 2);
    const Bytes picture{1, 2, 91, 3, 4, 92, 5, 6, 93, 7, 8, 94, 11, 12, 95, 13, 14, 96, 15, 16, 97, 17, 18, 98};
    const Bytes expected = Letters(
        "\x6A\0\0\0pack"
        "\x35\0\0\0icmp\x15\0\0\0sinf\4\0\0\0\2\0\0\0y208\0\x18\0\0\0sdat\1\2\3\4\5\6\7\10\13\14\15\16\17\20\21\22"
        "\x2D\0\0\0icmp\x15\0\0\0sinf\4\0\0\0\2\0\0\0 a08\0\x10\0\0\0sdat[\\]^_`ab"s);
    EXPECT_EQ(Encode(WithWorkers<TestEncoder>(0), params, picture).bytes, expected);
    EXPECT_EQ(Decode(WithWorkers<TestDecoder>(0), params, expected, Bytes(24)).bytes, picture);
}

}  // namespace
}  // namespace plenar_test
