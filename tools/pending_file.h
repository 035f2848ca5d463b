// A file that appears under its name only when it is complete.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "file_descriptor.h"
#include "file_identities.h"

namespace plenar_tool {

struct WriteOptions {
    bool overwrite = false;                  // a file that exists is replaced
    bool sync = false;                       // the bytes are on the disk before the file appears
    const FileIdentities* inputs = nullptr;  // what is never replaced
};

// Throws std::runtime_error when a file of this name would not be written: it exists, or is one of the inputs.
void CheckTarget(const std::filesystem::path& target, const WriteOptions& options);

// The bytes go into a file beside the target, which is removed again unless Commit was called. It is locked while its
// process lives: what a killed process left behind has no lock, whichever container or machine it ran in, and goes when
// a file is next written to that folder. All functions throw std::runtime_error.
class PendingFile {
public:
    PendingFile(std::filesystem::path target, const WriteOptions& options);
    ~PendingFile();
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;

    void Write(std::span<const uint8_t> bytes);
    void Commit();

private:
    [[noreturn]] void Fail(int code) const;
    void Create();
    void MoveIntoPlace();

    std::filesystem::path target_;
    std::filesystem::path folder_;
    std::filesystem::path temporary_;
    WriteOptions options_;
    FileDescriptor file_;
};

}  // namespace plenar_tool
