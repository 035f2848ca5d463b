// Encoders and decoders with their messages, and buffers that show what was written where.
#pragma once

#include <gtest/gtest.h>
#include <plenar_sdk.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "payload_builder.h"
#include "sample_model.h"

namespace plenar_test {

// A picture or a payload at any alignment, with marked bytes on both sides. Without a tail the memory ends where the
// content does, for the address sanitizer to see.
class Buffer {
public:
    Buffer(const Bytes& content, size_t lead, size_t tail)
        : lead_(lead, kMark), tail_(tail, kMark), size_(content.size()), bytes_(Join({lead_, content, tail_})) {}

    uint8_t* data() { return bytes_.data() + lead_.size(); }
    uint32_t size() const { return static_cast<uint32_t>(size_); }
    Bytes Content() { return {data(), data() + size_}; }
    bool GuardsIntact() { return bytes_ == Join({lead_, Content(), tail_}); }

private:
    static constexpr uint8_t kMark = 0xA5;
    Bytes lead_;
    Bytes tail_;
    size_t size_;
    Bytes bytes_;
};

// "" for equal buffers; says where two differ instead of printing them.
inline std::string Difference(const Bytes& actual, const Bytes& expected) {
    if (actual.size() != expected.size()) {
        return "size " + std::to_string(actual.size()) + ", expected " + std::to_string(expected.size());
    }
    const auto [a, e] = std::mismatch(actual.begin(), actual.end(), expected.begin());
    if (a == actual.end()) {
        return "";
    }
    return "byte " + std::to_string(a - actual.begin()) + " of " + std::to_string(actual.size()) + " is " +
           std::to_string(*a) + ", expected " + std::to_string(*e);
}

// An object and what its callback was told.
template <typename Object, auto Create, auto Destroy>
class Codec {
public:
    explicit Codec(uint32_t threads = 1) {
        const CreateParams params{sizeof(CreateParams), threads, this, &Codec::Take};
        EXPECT_EQ(Create(&params, &object_), 0U);
    }
    ~Codec() { Destroy(object_); }
    Codec(const Codec&) = delete;
    Codec& operator=(const Codec&) = delete;

    Object* get() { return object_; }

    // What came of the call that just returned `code`: "" for success without a message, or its one message, given on
    // this thread.
    std::string Outcome(uint32_t code) {
        const std::vector<std::string> messages = std::move(messages_);
        messages_.clear();
        if (code == 0 && messages.empty()) {
            return "";
        }
        if (code != 1 || messages.size() != 1) {
            return "code " + std::to_string(code) + " with " + std::to_string(messages.size()) + " messages";
        }
        return thread_ == std::this_thread::get_id() ? messages[0] : "message from another thread";
    }

private:
    static void Take(const char* message, void* userData) {
        auto* self = static_cast<Codec*>(userData);
        self->messages_.emplace_back(message);
        self->thread_ = std::this_thread::get_id();
    }

    Object* object_ = nullptr;
    std::vector<std::string> messages_;
    std::thread::id thread_;
};

using TestEncoder = Codec<Encoder, Plenar_CreateEncoder, Plenar_DestroyEncoder>;
using TestDecoder = Codec<Decoder, Plenar_CreateDecoder, Plenar_DestroyDecoder>;

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
                    const CompressedParams& compressed = MakeCompressed(), uint32_t seed = 1) {
    Buffer src(picture, 1 + seed % 5, 0);
    Buffer dst(Noise(Plenar_GetCompressedBufSize(&params, &compressed), seed), 1 + seed % 7, seed % 3 * 32);
    uint32_t written = 0;
    const uint32_t code = Plenar_EncodeFrame(encoder.get(), &params, &compressed, src.data(), src.size(), dst.data(),
                                             dst.size(), &written);
    EXPECT_TRUE(dst.GuardsIntact());
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
                    uint32_t seed = 1) {
    Buffer src(payload, 1 + seed % 3, 0);
    Buffer dst(before, 1 + seed % 5, seed % 2 * 48);
    uint32_t written = 0;
    const uint32_t code =
        Plenar_DecodeFrame(decoder.get(), &params, src.data(), src.size(), dst.data(), dst.size(), &written);
    EXPECT_TRUE(dst.GuardsIntact());
    EXPECT_EQ(Difference(src.Content(), payload), "");
    Frame frame{decoder.Outcome(code)};
    if (code == 0) {
        EXPECT_EQ(written, Plenar_GetUncompressedBufSize(&params));
        frame.bytes = dst.Content();
    }
    return frame;
}

inline Frame ReadMetadata(TestDecoder& decoder, const Bytes& payload, UncompressedParams& params) {
    Buffer src(payload, 3, 0);
    return {decoder.Outcome(Plenar_ReadMetadata(decoder.get(), src.data(), src.size(), &params))};
}

inline Bytes RecordBytes(const UncompressedParams& params) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(&params);
    return {bytes, bytes + sizeof(params)};
}

}  // namespace plenar_test
