// Memory for pictures and payloads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "file_descriptor.h"

namespace plenar_tool {

// Zeroed bytes. The system provides their pages when they are first touched, so that a size claimed by a damaged
// payload costs nothing.
class Buffer {
public:
    // Throws std::bad_alloc.
    explicit Buffer(size_t byteCount);

    // The contents of shared memory, all of it. Throws std::runtime_error.
    explicit Buffer(const FileDescriptor& sharedMemory);

    uint8_t* Data() const { return bytes_.get(); }
    size_t Size() const { return size_; }
    std::span<const uint8_t> Bytes() const { return {bytes_.get(), size_}; }
    void Shrink(size_t byteCount) { size_ = byteCount; }

private:
    struct Release {
        void operator()(uint8_t* memory) const;

        size_t mappedBytes;  // 0: from the heap
    };

    std::unique_ptr<uint8_t, Release> bytes_;
    size_t size_ = 0;
};

// Memory that can be handed to another process. Throws std::runtime_error.
FileDescriptor MakeSharedMemory(size_t byteCount);

}  // namespace plenar_tool
