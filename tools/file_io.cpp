#include "file_io.h"

#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

#include "phase_timer.h"
#include "stream_io.h"

namespace plenar_tool {

namespace fs = std::filesystem;

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

void WriteFile(const fs::path& path, std::span<const uint8_t> bytes, const WriteOptions& options) {
    const PhaseTimer timer(Phase::Write);
    if (IsStream(path)) {
        WriteStream(path, bytes);
        return;
    }
    PendingFile pending(path, options);
    pending.Write(bytes);
    pending.Commit();
}

}  // namespace plenar_tool
