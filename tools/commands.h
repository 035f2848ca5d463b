// The program's commands. Each returns the exit status, and throws what isn't bound to one file of many.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "file_batch.h"
#include "file_options.h"
#include "pixel_limit.h"

namespace plenar_tool {

// The layout of a headerless picture, and the order and type of any. 0 stands for what the picture or the payload
// suggests.
struct PictureOptions {
    uint32_t order = 0;
    uint32_t type = 0;
    bool raw = false;
    uint32_t rowBytes = 0;
    uint32_t rowBytes2 = 0;
};

struct EncodeOptions {
    BatchOptions batch;
    FileOptions file;
    PictureOptions picture;
    uint32_t width = 0;  // of a raw picture
    uint32_t height = 0;
    bool alphaRle = false;
    uint32_t alphaBands = 0;
    uint32_t frameLayout = 0;
};

struct DecodeOptions {
    BatchOptions batch;
    FileOptions file;
    PictureOptions picture;
    std::string extension;
};

struct InfoOptions {
    std::vector<std::string> files;
    bool json = false;
    bool hash = false;
    uint64_t maxPixels = kDefaultMaxPixels;
};

// Of two frames, each a payload or a picture; with `verify` the first is a payload and the second a picture.
struct CompareOptions {
    std::string first;
    std::string second;
    PictureOptions picture;
    uint64_t maxPixels = kDefaultMaxPixels;
};

int RunEncode(const EncodeOptions& options);
int RunDecode(const DecodeOptions& options);
int RunInfo(const InfoOptions& options);
int RunVerify(const CompareOptions& options);
int RunCompare(const CompareOptions& options);
int RunFormats(bool json);

}  // namespace plenar_tool
