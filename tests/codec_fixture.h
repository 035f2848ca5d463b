// Calls on encoders and decoders that check what every call has to keep to.
#pragma once

#include <gtest/gtest.h>
#include <plenar_sdk.h>

#include <array>
#include <memory>

#include "testing/codecs.h"
#include "testing/exact_buffer.h"
#include "testing/names.h"
#include "testing/sample_model.h"

namespace plenar_test {

// One object for each number of workers that the tests use, made when first asked for.
constexpr std::array<uint32_t, 5> kWorkerCounts{1, 2, 3, 8, 64};

template <typename TestCodec>
TestCodec& WithWorkers(size_t index) {
    static std::array<std::unique_ptr<TestCodec>, kWorkerCounts.size()> codecs;
    std::unique_ptr<TestCodec>& codec = codecs.at(index % kWorkerCounts.size());
    if (!codec) {
        codec = std::make_unique<TestCodec>(kWorkerCounts.at(index % kWorkerCounts.size()));
    }
    return *codec;
}

struct Frame {
    std::string message;
    Bytes bytes = {};
};

// Encodes into a buffer of the size that the library asks for; on success the payload, cut to what was written.
inline Frame Encode(TestEncoder& encoder, const UncompressedParams& params, const Bytes& picture,
                    const CompressedParams& compressed = MakeCompressed(), uint32_t seed = 0) {
    const ExactBuffer src(picture, seed + 1);
    const ExactBuffer dst(Noise(Plenar_GetCompressedBufSize(&params, &compressed), seed), seed / 3 + 1, seed % 7);
    uint32_t written = 0;
    const uint32_t code = Plenar_EncodeFrame(encoder.get(), &params, &compressed, src.data(), src.size(), dst.data(),
                                             dst.size(), &written);
    EXPECT_TRUE(dst.IsIntact());
    EXPECT_EQ(Difference(src.Content(), picture), "");
    Frame frame{encoder.Outcome(code)};
    if (code == 0) {
        EXPECT_LE(written, dst.size());
        frame.bytes = dst.Content();
        frame.bytes.resize(std::min(written, dst.size()));
    }
    return frame;
}

// Decodes over `before`; on success the whole target buffer.
inline Frame Decode(TestDecoder& decoder, const UncompressedParams& params, const Bytes& payload, const Bytes& before,
                    uint32_t seed = 0) {
    const ExactBuffer src(payload, seed + 1);
    const ExactBuffer dst(before, seed / 3 + 1, seed % 5);
    uint32_t written = 0;
    const uint32_t code =
        Plenar_DecodeFrame(decoder.get(), &params, src.data(), src.size(), dst.data(), dst.size(), &written);
    EXPECT_TRUE(dst.IsIntact());
    EXPECT_EQ(Difference(src.Content(), payload), "");
    Frame frame{decoder.Outcome(code)};
    if (code == 0) {
        EXPECT_EQ(written, Plenar_GetUncompressedBufSize(&params));
        frame.bytes = dst.Content();
    }
    return frame;
}

inline Frame ReadMetadata(TestDecoder& decoder, const Bytes& payload, UncompressedParams& params) {
    const ExactBuffer src(payload);
    return {decoder.Outcome(Plenar_ReadMetadata(decoder.get(), src.data(), src.size(), &params))};
}

}  // namespace plenar_test
