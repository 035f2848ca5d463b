#include "stream_io.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "stop_request.h"

namespace plenar_tool {

namespace fs = std::filesystem;

namespace {

constexpr size_t kFirstBufferBytes = size_t{1} << 20;
constexpr size_t kLargestWrite = PIPE_BUF;  // what a pipe that poll() calls ready takes without a wait
constexpr std::chrono::milliseconds kReaderInterval{20};

enum class Direction { Read, Write };

[[noreturn]] void FailWith(const std::string& what, int code) {
    throw std::runtime_error(what + ": " + std::generic_category().message(code));
}

// What a shell sends to a regular file has to be taken from, and go to, the place where the shell's file stands.
bool IsStandardStream(const fs::path& path) {
    return path == kStandardStream || path == "/dev/stdin" || path == "/dev/stdout";
}

std::string Name(const fs::path& path, Direction direction) {
    if (!IsStandardStream(path)) {
        return path.string();
    }
    return direction == Direction::Read ? "standard input" : "standard output";
}

// A descriptor of the stream; the standard ones stay open.
class Stream {
public:
    Stream(const fs::path& path, Direction direction) : name_(Name(path, direction)), direction_(direction) {
        if (IsStandardStream(path)) {
            descriptor_ = direction == Direction::Read ? STDIN_FILENO : STDOUT_FILENO;
        } else {
            descriptor_ = Open(path.c_str());
            owned_ = true;
        }
    }
    ~Stream() {
        if (owned_) {
            close(descriptor_);
        }
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    // Reads or writes some bytes, at least one, or 0 at the end of what is read.
    size_t Move(void* bytes, size_t count) const {
        while (true) {
            WaitUntilReady();
            const ssize_t moved =
                direction_ == Direction::Read ? read(descriptor_, bytes, count) : write(descriptor_, bytes, count);
            if (moved >= 0) {
                return static_cast<size_t>(moved);
            }
            if (errno != EINTR && errno != EAGAIN) {
                FailWith((direction_ == Direction::Read ? "can't read " : "can't write ") + name_, errno);
            }
        }
    }

private:
    // A fifo that nobody reads yet refuses to be opened at once, and an open that waits could not be stopped.
    int Open(const char* path) const {
        const int flags = (direction_ == Direction::Read ? O_RDONLY : O_WRONLY) | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
        while (true) {
            const int descriptor = open(path, flags);
            if (descriptor >= 0) {
                return descriptor;
            }
            if (errno != ENXIO || direction_ == Direction::Read) {
                FailWith("can't open " + name_, errno);
            }
            CheckStop();
            std::this_thread::sleep_for(kReaderInterval);
        }
    }

    void CheckStop() const {
        if (StopRequested()) {
            throw Stopped("stopped while waiting for " + name_);
        }
    }

    void WaitUntilReady() const {
        pollfd waits[] = {{descriptor_, static_cast<short>(direction_ == Direction::Read ? POLLIN : POLLOUT), 0},
                          {StopDescriptor(), POLLIN, 0}};
        while (poll(waits, std::size(waits), -1) < 0 && errno == EINTR) {
        }
        CheckStop();
    }

    std::string name_;
    Direction direction_;
    int descriptor_ = -1;
    bool owned_ = false;
};

}  // namespace

bool IsStream(const fs::path& path) {
    std::error_code ignored;
    const fs::file_type type = fs::status(path, ignored).type();
    return IsStandardStream(path) || type == fs::file_type::fifo || type == fs::file_type::character ||
           type == fs::file_type::socket;
}

Buffer ReadStream(const fs::path& path) {
    const Stream stream(path, Direction::Read);
    Buffer buffer(kFirstBufferBytes);
    size_t filled = 0;
    while (const size_t count = stream.Move(buffer.Data() + filled, buffer.Size() - filled)) {
        filled += count;
        if (filled < buffer.Size()) {
            continue;
        }
        if (filled > kMaxBufferBytes) {
            throw std::runtime_error("has more than the 4 GiB that a frame can take");
        }
        Buffer larger(std::min<size_t>(2 * filled, kMaxBufferBytes + 1));
        std::memcpy(larger.Data(), buffer.Data(), filled);
        buffer = std::move(larger);
    }
    buffer.Shrink(filled);
    return buffer;
}

void WriteStream(const fs::path& path, std::span<const uint8_t> bytes) {
    const Stream stream(path, Direction::Write);
    while (!bytes.empty()) {
        // write() takes its bytes as they are; only read() needs them writable.
        auto* const next = const_cast<uint8_t*>(bytes.data());
        bytes = bytes.subspan(stream.Move(next, std::min(bytes.size(), kLargestWrite)));
    }
}

}  // namespace plenar_tool
