#include "file_io.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <fstream>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

#include "phase_timer.h"
#include "stream_io.h"

namespace plenar_tool {

namespace fs = std::filesystem;

Buffer::Buffer(size_t byteCount)
    : bytes_(static_cast<uint8_t*>(std::calloc(std::max<size_t>(byteCount, 1), 1))), size_(byteCount) {
    if (!bytes_) {
        throw std::bad_alloc();
    }
}

Buffer ReadFile(const fs::path& path) {
    const PhaseTimer timer(Phase::Read);
    if (IsStream(path)) {
        return ReadStream(path);
    }
    std::error_code error;
    const uintmax_t size = fs::file_size(path, error);
    if (error) {
        throw std::runtime_error("can't be read: " + error.message());
    }
    if (size > kMaxBufferBytes) {
        throw std::runtime_error("has " + std::to_string(size) + " bytes, more than the 4 GiB that a frame can take");
    }
    Buffer buffer(size);
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(buffer.Data()), static_cast<std::streamsize>(size));
    if (!file) {
        throw std::runtime_error("can't be read: " + std::generic_category().message(errno));
    }
    return buffer;
}

PendingFile::PendingFile(fs::path targetPath) : target_(std::move(targetPath)) {
    if (fs::exists(target_) && !fs::is_regular_file(target_)) {
        throw std::runtime_error("can't write " + target_.string() + ": it exists and is not a regular file");
    }
    static std::atomic<unsigned> counter{0};
    const std::string mark = ".partial-" + std::to_string(getpid()) + "-" + std::to_string(counter++);
    temporary_ = target_.parent_path() / ("." + target_.stem().string() + mark + target_.extension().string());
}

PendingFile::~PendingFile() {
    std::error_code ignored;
    fs::remove(temporary_, ignored);
}

void PendingFile::Commit() {
    fs::rename(temporary_, target_);
}

void WriteFile(const fs::path& path, std::span<const uint8_t> bytes) {
    const PhaseTimer timer(Phase::Write);
    if (IsStream(path)) {
        WriteStream(path, bytes);
        return;
    }
    PendingFile pending(path);
    errno = 0;
    std::ofstream file(pending.Path(), std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        throw std::runtime_error("can't write " + path.string() + ": " + std::generic_category().message(errno));
    }
    pending.Commit();
}

}  // namespace plenar_tool
