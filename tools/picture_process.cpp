#include "picture_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "buffer.h"
#include "stop_request.h"

extern char** environ;  // NOLINT(readability-redundant-declaration): unistd.h has it for GNU only

namespace plenar_tool {

namespace {

constexpr const char* kProgram = "plenar-pictures";
constexpr int kPollMilliseconds = 50;
constexpr off_t kMostLastWords = 300;

void Check(int code, const char* what) {
    if (code != 0) {
        throw std::runtime_error(std::string(what) + ": " + std::generic_category().message(code));
    }
}

// What the process starts with: the channel as its input, nowhere to print to but `errorOutput`, and the signals that
// end a batch kept away from it, as a terminal sends them to all processes.
class SpawnSettings {
public:
    SpawnSettings(int channel, int errorOutput) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawnattr_init(&attributes_);
        posix_spawn_file_actions_adddup2(&actions_, channel, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions_, errorOutput, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions_, errorOutput, STDERR_FILENO);
        sigset_t blocked;
        sigemptyset(&blocked);
        for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP}) {
            sigaddset(&blocked, signalNumber);
        }
        posix_spawnattr_setsigmask(&attributes_, &blocked);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK);
    }
    ~SpawnSettings() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&actions_);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    // Beside this program, or else where programs are.
    int Spawn(pid_t& process) const {
        std::error_code ignored;
        const auto self = std::filesystem::read_symlink("/proc/self/exe", ignored);
        const std::string beside = self.parent_path() / kProgram;
        std::array<char*, 2> arguments{const_cast<char*>(kProgram), nullptr};
        const bool isBeside = access(beside.c_str(), X_OK) == 0;
        return posix_spawnp(&process, isBeside ? beside.c_str() : kProgram, &actions_, &attributes_, arguments.data(),
                            environ);
    }

private:
    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
};

std::string HowItEnded(int status) {
    return WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                               : "exit status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

void PictureProcess::Start() {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        Check(errno, "can't reach the picture libraries");
    }
    MessageChannel channel{FileDescriptor(ends[0])};
    const FileDescriptor theirs(ends[1]);
    errorOutput_ = MakeSharedMemory(0);
    fcntl(errorOutput_.Get(), F_SETFL, O_APPEND);
    Check(SpawnSettings(theirs.Get(), errorOutput_.Get()).Spawn(process_), "can't start plenar-pictures");
    channel_.emplace(std::move(channel));
}

// Ends the process, whatever it does: it has nothing that would have to be put in order. Returns how it ended.
int PictureProcess::End() {
    int status = 0;
    channel_.reset();
    if (process_ > 0) {
        while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
        }
        process_ = -1;
    }
    return status;
}

std::string PictureProcess::LastWords() {
    const off_t end = lseek(errorOutput_.Get(), 0, SEEK_END);
    std::string text(static_cast<size_t>(std::min(end, kMostLastWords)), ' ');
    const ssize_t count = pread(errorOutput_.Get(), text.data(), text.size(), end - static_cast<off_t>(text.size()));
    text.resize(static_cast<size_t>(std::max<ssize_t>(count, 0)));
    return text.empty() ? text : ": " + text;
}

void PictureProcess::WaitForAnswer() {
    pollfd waited{channel_->Descriptor(), POLLIN, 0};
    while (poll(&waited, 1, kPollMilliseconds) <= 0) {
        if (StopRequested()) {
            kill(process_, SIGKILL);
            End();
            throw Stopped("stopped while waiting for a picture");
        }
    }
}

Message PictureProcess::Call(const Message& request) {
    if (!channel_) {
        Start();
    }
    std::optional<Message> answer;
    if (channel_->Send(request)) {
        WaitForAnswer();
        answer = channel_->Receive();
    }
    if (!answer) {
        const std::string how = HowItEnded(End());
        throw std::runtime_error("the picture library ended its process (" + how + ")" + LastWords());
    }
    if (const auto error = answer->text.find("error"); error != answer->text.end()) {
        throw std::runtime_error(error->get<std::string>());
    }
    return std::move(*answer);
}

}  // namespace plenar_tool
