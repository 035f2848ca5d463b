#include "pending_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <mutex>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "stop_request.h"
#include "stream_io.h"

namespace plenar_tool {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kPrefix = ".plenar-partial-";
constexpr size_t kRandomLetters = 12;
constexpr mode_t kFileMode = 0666;               // less what the user's mask takes away
constexpr size_t kWriteBytes = size_t{1} << 24;  // between two looks for a stop

std::string TemporaryName() {
    constexpr std::string_view kLetters = "0123456789abcdefghijklmnopqrstuv";
    std::random_device random;
    std::string name(kPrefix);
    for (size_t i = 0; i < kRandomLetters; ++i) {
        name += kLetters[random() % kLetters.size()];
    }
    return name;
}

bool IsTemporaryName(std::string_view name) {
    return name.size() == kPrefix.size() + kRandomLetters && name.substr(0, kPrefix.size()) == kPrefix;
}

void RemoveIfAbandoned(const fs::path& path) {
    const FileDescriptor file(open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (file && fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
        flock(file.Get(), LOCK_EX | LOCK_NB) == 0) {
        unlink(path.c_str());
    }
}

// Once for each folder.
void RemoveAbandonedFiles(const fs::path& folder) {
    static std::mutex mutex;
    static std::set<fs::path> visited;
    const std::scoped_lock lock(mutex);
    if (!visited.insert(folder).second) {
        return;
    }
    std::error_code ignored;
    for (fs::directory_iterator entry(folder, ignored); entry != fs::directory_iterator(); entry.increment(ignored)) {
        if (IsTemporaryName(entry->path().filename().string())) {
            RemoveIfAbandoned(entry->path());
        }
    }
}

[[noreturn]] void FailToWrite(const fs::path& target, const std::string& why) {
    throw std::runtime_error("can't write " + target.string() + ": " + why);
}

}  // namespace

void CheckTarget(const fs::path& target, const WriteOptions& options) {
    if (IsStream(target)) {
        return;
    }
    if (options.inputs != nullptr && options.inputs->Contains(target)) {
        FailToWrite(target, "it is an input of this run, and inputs are never replaced");
    }
    std::error_code error;
    const fs::file_status status = fs::symlink_status(target, error);
    if (!fs::status_known(status)) {
        FailToWrite(target, error.message());
    }
    if (fs::exists(status) && !fs::is_regular_file(status) && !fs::is_symlink(status)) {
        FailToWrite(target, "it exists and is not a regular file");
    }
    if (fs::exists(status) && !options.overwrite) {
        FailToWrite(target, "it exists; --overwrite replaces it");
    }
}

PendingFile::PendingFile(fs::path target, const WriteOptions& options)
    : target_(std::move(target)),
      folder_(target_.has_parent_path() ? target_.parent_path() : fs::path(".")),
      options_(options) {
    CheckTarget(target_, options_);
    RemoveAbandonedFiles(folder_);
    Create();
}

PendingFile::~PendingFile() {
    if (!temporary_.empty()) {
        unlink(temporary_.c_str());
    }
}

void PendingFile::Fail(int code) const {
    FailToWrite(target_, std::generic_category().message(code));
}

// Between the making of the file and its lock, another process may take it for abandoned: then it has no name any more,
// and another one is made.
void PendingFile::Create() {
    struct stat status {};
    do {
        temporary_ = folder_ / TemporaryName();
        file_ =
            FileDescriptor(open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kFileMode));
        if (!file_) {
            const int code = errno;
            temporary_.clear();
            if (code != EEXIST) {
                Fail(code);
            }
            continue;
        }
        // A file system without locks keeps other processes from taking the file away, too.
        flock(file_.Get(), LOCK_EX);
        if (fstat(file_.Get(), &status) != 0) {
            Fail(errno);
        }
    } while (status.st_nlink == 0);
}

void PendingFile::Write(std::span<const uint8_t> bytes) {
    while (!bytes.empty()) {
        if (StopRequested()) {
            throw Stopped("stopped while writing " + target_.string());
        }
        const ssize_t written = write(file_.Get(), bytes.data(), std::min(bytes.size(), kWriteBytes));
        if (written < 0 && errno != EINTR) {
            Fail(errno);
        }
        bytes = bytes.subspan(static_cast<size_t>(std::max<ssize_t>(written, 0)));
    }
}

void PendingFile::MoveIntoPlace() {
    const char* const from = temporary_.c_str();
    const char* const to = target_.c_str();
    int result = options_.overwrite ? rename(from, to) : renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE);
    if (result != 0 && !options_.overwrite && errno == EINVAL) {
        // Some network file systems know no such rename. The name that remains is removed by the destructor.
        result = link(from, to);
        if (result == 0) {
            return;
        }
    }
    if (result != 0) {
        Fail(errno);
    }
    temporary_.clear();
}

void PendingFile::Commit() {
    if (options_.sync && fsync(file_.Get()) != 0) {
        Fail(errno);
    }
    CheckTarget(target_, options_);
    // The lock goes with the descriptor, so it is closed behind the rename. A second descriptor is closed first, as
    // some network file systems report lost bytes only at a close.
    if (!FileDescriptor(dup(file_.Get())).Close()) {
        Fail(errno);
    }
    MoveIntoPlace();
    if (options_.sync) {
        const FileDescriptor folder(open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!folder || fsync(folder.Get()) != 0) {
            Fail(errno);
        }
    }
}

}  // namespace plenar_tool
