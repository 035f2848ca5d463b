// Whole files in and out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <span>

namespace plenar_tool {

// Zeroed bytes. The system provides their pages when they are first touched, so that a size claimed by a damaged
// payload costs nothing. Throws std::bad_alloc.
class Buffer {
public:
    explicit Buffer(size_t byteCount);

    uint8_t* Data() const { return bytes_.get(); }
    size_t Size() const { return size_; }
    std::span<const uint8_t> Bytes() const { return {bytes_.get(), size_}; }
    void Shrink(size_t byteCount) { size_ = byteCount; }

private:
    struct Release {
        void operator()(uint8_t* memory) const { std::free(memory); }
    };

    std::unique_ptr<uint8_t, Release> bytes_;
    size_t size_;
};

// The sizes that the library takes have 32 bits.
inline constexpr uint64_t kMaxBufferBytes = UINT32_MAX;

// Throws std::runtime_error when the file can't be read or has more than maxBufferBytes.
Buffer ReadFile(const std::filesystem::path& path);

// A file that appears under its name only when it is complete: it is written beside the target, under a name with the
// same extension, and removed again unless Commit was called.
class PendingFile {
public:
    // Throws std::runtime_error when the target exists and isn't a regular file.
    explicit PendingFile(std::filesystem::path targetPath);
    ~PendingFile();
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;

    const std::filesystem::path& Path() const { return temporary_; }
    void Commit();

private:
    std::filesystem::path target_;
    std::filesystem::path temporary_;
};

void WriteFile(const std::filesystem::path& path, std::span<const uint8_t> bytes);

}  // namespace plenar_tool
