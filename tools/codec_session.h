// An encoder or a decoder of the library, with its failures as exceptions.
#pragma once

#include <plenar_sdk.h>

#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>

#include "file_io.h"

namespace plenar_tool {

// The text is the library's own message.
class CodecError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

UncompressedParams MakePictureParams();
CompressedParams MakePayloadParams();

// One session serves one thread at a time. numThreads is the library's: 0 means one for each processor, 1 none beside
// the calling thread.
class EncoderSession {
public:
    explicit EncoderSession(uint32_t numThreads);

    Buffer Encode(const UncompressedParams& params, const CompressedParams& compressedParams,
                  std::span<const uint8_t> picture);

private:
    std::unique_ptr<std::string> message_;
    std::unique_ptr<Encoder, void (*)(Encoder*)> encoder_;
};

class DecoderSession {
public:
    explicit DecoderSession(uint32_t numThreads);

    UncompressedParams ReadMetadata(std::span<const uint8_t> payload);
    Buffer Decode(const UncompressedParams& params, std::span<const uint8_t> payload);

private:
    std::unique_ptr<std::string> message_;
    std::unique_ptr<Decoder, void (*)(Decoder*)> decoder_;
};

}  // namespace plenar_tool
