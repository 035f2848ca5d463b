// A file descriptor that is closed with its owner.
#pragma once

#include <unistd.h>

#include <utility>

namespace plenar_tool {

class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor = -1) : descriptor_(descriptor) {}
    ~FileDescriptor() { Close(); }
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }

    explicit operator bool() const { return descriptor_ >= 0; }
    int Get() const { return descriptor_; }

    // Whether all went well: some file systems tell only now that bytes were lost.
    bool Close() { return descriptor_ < 0 || close(std::exchange(descriptor_, -1)) == 0; }

private:
    int descriptor_;
};

}  // namespace plenar_tool
