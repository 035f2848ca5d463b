// Which files are read and which are written: from the names, patterns, folders and globs of a command line.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace plenar_tool {

// The options don't make sense together.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct Task {
    std::string input;
    std::string output;
};

// Which files of a folder are meant when the folder is given in their place.
enum class FolderFiles { Pictures, Payloads, All };

// What `encode` and `decode` have in common.
struct BatchOptions {
    std::vector<std::string> files;  // INPUT OUTPUT, or inputs only when outDir is given
    std::string outDir;
    std::string frames;  // the numbers of the frames that patterns stand for; empty: those that exist
    FolderFiles folderFiles = FolderFiles::All;
    uint32_t jobs = 0;     // 0: one for each processor
    int64_t threads = -1;  // of one encoder or decoder, -1: chosen by the number of files
    bool resume = false;
    bool quiet = false;
    bool timing = false;
    std::string report;  // the file that takes a report as JSON
};

// With a folder to write to, each output is named after its input, with `extension` in place of the input's. Throws
// UsageError when the files don't make sense together.
std::vector<Task> PlanTasks(const BatchOptions& options, const std::string& extension);

// The folder that the outputs go to, which may have to be made; empty where the user gives each output's name.
std::string OutputFolder(const BatchOptions& options);

}  // namespace plenar_tool
