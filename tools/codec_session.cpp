#include "codec_session.h"

#include "formats.h"
#include "phase_timer.h"

namespace plenar_tool {

namespace {

void KeepMessage(const char* text, void* userData) noexcept {
    static_cast<std::string*>(userData)->assign(text);
}

// Makes an object of the library whose messages go to `message`.
template <class Object, class Create>
Object* MakeObject(Create create, uint32_t numThreads, std::string* message) {
    const CreateParams params{sizeof(CreateParams), numThreads, message, KeepMessage};
    Object* object = nullptr;
    if (const uint32_t code = create(&params, &object); code != plenar::ResultOk) {
        throw CodecError("no codec could be made (code " + std::to_string(code) + ")");
    }
    return object;
}

void Check(uint32_t code, const std::string& message) {
    if (code != plenar::ResultOk) {
        throw CodecError(code == plenar::ResultFailed ? message : "refused call (code " + std::to_string(code) + ")");
    }
}

void Check(uint32_t code, const std::string& message, const UncompressedParams& params) {
    Check(code, DescribeFormat(params) + ": " + message);
}

uint32_t Size32(std::span<const uint8_t> bytes) {
    if (bytes.size() > kMaxBufferBytes) {
        throw CodecError("more than 4 GiB in one frame");
    }
    return static_cast<uint32_t>(bytes.size());
}

}  // namespace

UncompressedParams MakePictureParams() {
    UncompressedParams params{};
    params.size = sizeof(params);
    return params;
}

CompressedParams MakePayloadParams() {
    CompressedParams params{};
    params.size = sizeof(params);
    return params;
}

EncoderSession::EncoderSession(uint32_t numThreads)
    : message_(std::make_unique<std::string>()),
      encoder_(MakeObject<Encoder>(Plenar_CreateEncoder, numThreads, message_.get()), Plenar_DestroyEncoder) {}

Buffer EncoderSession::Encode(const UncompressedParams& params, const CompressedParams& compressedParams,
                              std::span<const uint8_t> picture) {
    const PhaseTimer timer(Phase::Code);
    // Unsupported pairs give a size of 0 here, and the encode then says so.
    Buffer payload(Plenar_GetCompressedBufSize(&params, &compressedParams));
    uint32_t written = 0;
    Check(Plenar_EncodeFrame(encoder_.get(), &params, &compressedParams, picture.data(), Size32(picture),
                             payload.Data(), Size32(payload.Bytes()), &written),
          *message_, params);
    payload.Shrink(written);
    return payload;
}

DecoderSession::DecoderSession(uint32_t numThreads)
    : message_(std::make_unique<std::string>()),
      decoder_(MakeObject<Decoder>(Plenar_CreateDecoder, numThreads, message_.get()), Plenar_DestroyDecoder) {}

UncompressedParams DecoderSession::ReadMetadata(std::span<const uint8_t> payload) {
    UncompressedParams params = MakePictureParams();
    Check(Plenar_ReadMetadata(decoder_.get(), payload.data(), Size32(payload), &params), *message_);
    return params;
}

Buffer DecoderSession::Decode(const UncompressedParams& params, std::span<const uint8_t> payload) {
    const PhaseTimer timer(Phase::Code);
    Buffer picture(Plenar_GetUncompressedBufSize(&params));
    uint32_t written = 0;
    Check(Plenar_DecodeFrame(decoder_.get(), &params, payload.data(), Size32(payload), picture.Data(),
                             Size32(picture.Bytes()), &written),
          *message_, params);
    picture.Shrink(written);
    return picture;
}

}  // namespace plenar_tool
