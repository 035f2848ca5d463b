#include "file_identities.h"

#include <sys/stat.h>

namespace plenar_tool {

void FileIdentities::Add(const std::filesystem::path& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0) {
        files_.emplace(status.st_dev, status.st_ino);
    }
}

bool FileIdentities::Contains(const std::filesystem::path& path) const {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && files_.contains({status.st_dev, status.st_ino});
}

}  // namespace plenar_tool
