// Whole files in and out.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "buffer.h"
#include "pending_file.h"

namespace plenar_tool {

// The sizes that the library takes have 32 bits.
inline constexpr uint64_t kMaxBufferBytes = UINT32_MAX;

// Throws std::runtime_error when the file can't be read or has more than maxBufferBytes.
Buffer ReadFile(const std::filesystem::path& path);

// The file appears under its name when all of it is written, or not at all; pipes take the bytes as they come. Throws
// std::runtime_error.
void WriteFile(const std::filesystem::path& path, std::span<const uint8_t> bytes,
               const WriteOptions& options = {.overwrite = true});

}  // namespace plenar_tool
