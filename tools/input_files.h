// The files that one argument of a command line stands for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "task_plan.h"

namespace plenar_tool {

struct InputFile {
    std::string name;
    std::optional<uint32_t> frame;  // the number that it has in a pattern
};

// A name of an existing file stands for itself, whatever characters it has. Else a pattern stands for the frames
// listed, or with an empty list for those that exist; a glob for what matches it; a folder for its files of the kind
// meant. Throws UsageError when a pattern, a glob or a folder has no file.
std::vector<InputFile> ExpandInput(const std::string& argument, const std::vector<uint32_t>& frames,
                                   FolderFiles folderFiles);

}  // namespace plenar_tool
