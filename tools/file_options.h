// How files are read and written, as the user wants it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "file_batch.h"
#include "picture_file.h"
#include "pixel_limit.h"

namespace CLI {  // NOLINT(readability-identifier-naming): the name of the library's own namespace
class App;
}

namespace plenar_tool {

struct FileOptions {
    bool overwrite = false;
    bool sync = false;
    bool strict = false;
    bool sidecar = false;
    bool lowBits = false;  // of raw words
    AlphaChange alphaChange = AlphaChange::None;
    bool associated = false;  // decode: what the payload doesn't say
    uint64_t maxPixels = kDefaultMaxPixels;
};

// The options of both encode and decode, and decode's own.
void AddFileOptions(CLI::App& command, FileOptions& options);
void AddDecodeFileOptions(CLI::App& command, FileOptions& options);

FileIdentities InputsOf(const std::vector<Task>& tasks);
WriteOptions WriteOptionsOf(const FileOptions& options, const FileIdentities& inputs);

// "a; b; c"
std::string JoinLosses(const std::vector<std::string>& losses);

// One line about what of a file is lost, if anything is. With --strict, throws std::runtime_error in its place.
void ReportLosses(const std::string& file, const std::vector<std::string>& losses, const FileOptions& options);

}  // namespace plenar_tool
