// The process that runs the picture libraries. Their crashes, their exits and the 260 libraries that they load stay
// out of this program; one that is stuck is ended by force.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "message_channel.h"

namespace plenar_tool {

// One process, started at the first call, and again when a call finds that the last one has ended it.
class PictureProcess {
public:
    PictureProcess() = default;
    ~PictureProcess() { End(); }
    PictureProcess(const PictureProcess&) = delete;
    PictureProcess& operator=(const PictureProcess&) = delete;

    // The answer to a request. Throws std::runtime_error with what the process says is wrong, how it ended, or that a
    // stop was requested.
    Message Call(const Message& request);

private:
    void Start();
    void WaitForAnswer();
    int End();
    std::string LastWords();

    pid_t process_ = -1;
    std::optional<MessageChannel> channel_;
    FileDescriptor errorOutput_;  // what the libraries print; shown only when a library ends its process
};

}  // namespace plenar_tool
