#include "memory_name.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace plenar_tool {

namespace {

constexpr const char* kFormatByExtension = "jpeg2000";

}  // namespace

MemoryName::MemoryName(const FileDescriptor& memory, const std::string& format, const std::string& extension)
    : name_("/proc/self/fd/" + std::to_string(memory.Get())) {
    if (format != kFormatByExtension) {
        return;
    }
    std::string folder = (std::filesystem::temp_directory_path() / "plenar-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        throw std::runtime_error("can't make a folder as " + folder + ": " + std::generic_category().message(errno));
    }
    folder_ = folder;
    const std::string link = folder_ + "/picture" + extension;
    std::filesystem::create_symlink(name_, link);
    name_ = link;
}

MemoryName::~MemoryName() {
    if (!folder_.empty()) {
        unlink(name_.c_str());
        rmdir(folder_.c_str());
    }
}

}  // namespace plenar_tool
