#include "mapped_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>

#include "stream_io.h"

namespace plenar_tool {

namespace {

[[noreturn]] void FailToRead(int code) {
    throw std::runtime_error("can't be read: " + std::generic_category().message(code));
}

size_t FileBytes(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) {
        FailToRead(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        FailToRead(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    const auto size = static_cast<uint64_t>(status.st_size);
    if (size > kMaxBufferBytes) {
        throw std::runtime_error("has " + std::to_string(size) + " bytes, more than the 4 GiB that a frame can take");
    }
    return size;
}

}  // namespace

MappedFile::MappedFile(const std::filesystem::path& path) {
    if (IsStream(path)) {
        streamed_ = ReadStream(path);
        bytes_ = streamed_.Bytes();
        return;
    }
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        FailToRead(errno);
    }
    try {
        const size_t size = FileBytes(descriptor);
        if (size != 0) {
            void* const mapping = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
            if (mapping == MAP_FAILED) {
                FailToRead(errno);
            }
            mapping_ = mapping;
            bytes_ = {static_cast<const uint8_t*>(mapping), size};
        }
    } catch (...) {
        close(descriptor);
        throw;
    }
    close(descriptor);
}

MappedFile::~MappedFile() {
    if (mapping_ != nullptr) {
        munmap(mapping_, bytes_.size());
    }
}

}  // namespace plenar_tool
