// Pipes: "-" for the standard streams, fifos and character devices. They have no size that could be asked for, and what
// is written to them can't be taken back.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "file_io.h"

namespace plenar_tool {

inline constexpr const char* kStandardStream = "-";

// Whether a file of this name is read and written in one go, from front to end, rather than replaced as a whole.
bool IsStream(const std::filesystem::path& path);

// All bytes up to the end of the stream. Both functions throw std::runtime_error when that fails, and Stopped when a
// stop is requested while they wait for the other side.
Buffer ReadStream(const std::filesystem::path& path);
void WriteStream(const std::filesystem::path& path, std::span<const uint8_t> bytes);

}  // namespace plenar_tool
