// Which files are meant, whatever names lead to them.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <set>
#include <utility>

namespace plenar_tool {

class FileIdentities {
public:
    // A file that doesn't exist has no identity.
    void Add(const std::filesystem::path& path);
    bool Contains(const std::filesystem::path& path) const;

private:
    std::set<std::pair<dev_t, ino_t>> files_;
};

}  // namespace plenar_tool
