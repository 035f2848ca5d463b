// A file name for shared memory.
#pragma once

#include <string>

#include "file_descriptor.h"

namespace plenar_tool {

// Libraries that open files by themselves find the memory under this name while the object lives.
class MemoryName {
public:
    // Of formats whose libraries go by the extension, the name has it; that takes a symbolic link in a folder for
    // temporary files. Throws std::runtime_error.
    MemoryName(const FileDescriptor& memory, const std::string& format, const std::string& extension);
    ~MemoryName();
    MemoryName(const MemoryName&) = delete;
    MemoryName& operator=(const MemoryName&) = delete;

    const std::string& Text() const { return name_; }

private:
    std::string folder_;
    std::string name_;
};

}  // namespace plenar_tool
