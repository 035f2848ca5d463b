// Frames to compare: payloads, pictures and bare samples, all brought into the format that a payload is reported in.
#pragma once

#include <plenar_sdk.h>

#include <cstdint>
#include <string>

#include "commands.h"
#include "file_io.h"

namespace plenar_tool {

struct Frame {
    UncompressedParams format;  // rows without padding
    Buffer samples;
    std::string remark;  // what of the file is not in the samples
};

// Whether the file begins as payloads do. False for what can't be read.
bool IsPayload(const std::string& file);

// Pictures hold fixed-point numbers as floating-point ones.
enum class SampleUse { AsTheyAre, AsInPictures };

// All throw std::runtime_error when there is no such frame in the file.
Frame LoadPayload(const std::string& file, uint64_t maxPixels, SampleUse use);

// The picture as an encode would keep it, with the channels of `format` and in its type.
Frame LoadPictureLike(const std::string& file, const UncompressedParams& format);

// The same for bare samples of the size of `format`, arranged as `options` say, or as `format` where they don't.
Frame LoadRawLike(const std::string& file, const PictureOptions& options, const UncompressedParams& format);

// A picture that nothing is known of.
Frame LoadPicture(const std::string& file);

}  // namespace plenar_tool
