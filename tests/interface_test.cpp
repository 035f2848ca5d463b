// Arguments, sizes and the checks at the head of an encode and a decode.
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <future>

#include "table.h"
#include "worker_counts.h"

namespace plenar_test {
namespace {

using namespace plenar;  // orders and types
using namespace std::string_literals;

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
    const ptrdiff_t before = ThreadCount();
    Encoder* withoutParams = nullptr;
    EXPECT_EQ(Plenar_CreateEncoder(nullptr, &withoutParams), 0U);
    EXPECT_EQ(ThreadCount() - before, processors == 1 ? 0 : processors);
    Plenar_DestroyEncoder(withoutParams);
    done.set_value();
    first.join();
}

// Pointers first, then the sizes of records; nothing is done, no message given, and no output touched. All ways in
// which the arguments of a call can be wrong at the same time.
TEST(Arguments, AreCheckedBeforeAnythingElse) {
    enum : uint32_t { Object = 1, Params = 2, Options = 4, Source = 8, Target = 16, ParamsSize = 32, OptionsSize = 64 };
    TestEncoder encoder;
    TestDecoder decoder;
    const Bytes payload = PayloadOf(NoisePlanes(MakeParams(AlphaOnly, Uint8, 2, 2), 1));
    const auto size = static_cast<uint32_t>(payload.size());
    Bytes room(64, 0x77);
    uint32_t written = 0x77777777;
    for (uint32_t wrong = 1; wrong < 2 * OptionsSize; ++wrong) {
        SCOPED_TRACE(wrong);
        const auto unless = [wrong](uint32_t part, auto* pointer) { return (wrong & part) != 0 ? nullptr : pointer; };
        UncompressedParams record = MakeParams(AlphaOnly, Uint8, 2, 2);
        CompressedParams wish = MakeCompressed();
        record.size += (wrong & ParamsSize) != 0 ? uint64_t{1} << 32 : 0;
        wish.size -= (wrong & OptionsSize) != 0 ? 1 : 0;
        auto* const params = unless(Params, &record);
        auto* const options = unless(Options, &wish);
        auto* const src = unless(Source, payload.data());
        auto* const dst = unless(Target, room.data());
        auto* const d = unless(Object, decoder.get());
        const auto expect = [wrong](uint32_t pointers, uint32_t sizes, const auto& call) {
            if ((wrong & (pointers | sizes)) != 0) {  // what is wrong may be of no concern to this call
                EXPECT_EQ(call(), (wrong & pointers) != 0 ? 2U : 3U);
            }
        };
        expect(Object | Params | Options | Source | Target, ParamsSize | OptionsSize, [&] {
            return Plenar_EncodeFrame(unless(Object, encoder.get()), params, options, src, size, dst, 64, &written);
        });
        expect(Object | Params | Source | Target, ParamsSize,
               [&] { return Plenar_DecodeFrame(d, params, src, size, dst, 64, &written); });
        expect(Object | Params | Source, ParamsSize, [&] { return Plenar_ReadMetadata(d, src, size, params); });
        EXPECT_TRUE(Plenar_GetCompressedBufSize(params, options) == 0 || (wrong & ~(Object | Source | Target)) == 0);
        EXPECT_TRUE(Plenar_GetUncompressedBufSize(params) == 0 || (wrong & (Params | ParamsSize)) == 0);
    }
    EXPECT_EQ(room, Bytes(64, 0x77));
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

}  // namespace
}  // namespace plenar_test
