#include "buffer.h"

#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>

namespace plenar_tool {

namespace {

[[noreturn]] void FailWithoutMemory(size_t byteCount) {
    throw std::runtime_error("can't share " + std::to_string(byteCount) +
                             " bytes of memory: " + std::generic_category().message(errno));
}

size_t SizeOf(const FileDescriptor& sharedMemory) {
    struct stat status {};
    if (fstat(sharedMemory.Get(), &status) != 0) {
        FailWithoutMemory(0);
    }
    return static_cast<size_t>(status.st_size);
}

}  // namespace

Buffer::Buffer(size_t byteCount)
    : bytes_(static_cast<uint8_t*>(std::calloc(std::max<size_t>(byteCount, 1), 1))), size_(byteCount) {
    if (!bytes_) {
        throw std::bad_alloc();
    }
}

Buffer::Buffer(const FileDescriptor& sharedMemory) {
    const size_t byteCount = SizeOf(sharedMemory);
    if (byteCount == 0) {
        return;
    }
    void* const memory = mmap(nullptr, byteCount, PROT_READ | PROT_WRITE, MAP_SHARED, sharedMemory.Get(), 0);
    if (memory == MAP_FAILED) {
        FailWithoutMemory(byteCount);
    }
    bytes_ = {static_cast<uint8_t*>(memory), Release{byteCount}};
    size_ = byteCount;
}

void Buffer::Release::operator()(uint8_t* memory) const {
    if (mappedBytes != 0) {
        munmap(memory, mappedBytes);
    } else {
        std::free(memory);
    }
}

FileDescriptor MakeSharedMemory(size_t byteCount) {
    FileDescriptor memory(memfd_create("plenar", MFD_CLOEXEC));
    if (!memory || ftruncate(memory.Get(), static_cast<off_t>(byteCount)) != 0) {
        FailWithoutMemory(byteCount);
    }
    return memory;
}

}  // namespace plenar_tool
