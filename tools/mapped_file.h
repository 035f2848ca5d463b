// A file's bytes as memory, of which the system reads only what is touched.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "file_io.h"

namespace plenar_tool {

class MappedFile {
public:
    // Pipes are read to their end. Throws std::runtime_error when the file can't be read or has more than
    // kMaxBufferBytes.
    explicit MappedFile(const std::filesystem::path& path);
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    std::span<const uint8_t> Bytes() const { return bytes_; }

private:
    Buffer streamed_{0};
    void* mapping_ = nullptr;
    std::span<const uint8_t> bytes_;
};

}  // namespace plenar_tool
