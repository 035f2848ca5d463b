// Messages between the program and the process that runs the picture libraries.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>

#include "file_descriptor.h"

namespace plenar_tool {

struct Message {
    nlohmann::json text;      // strings are bytes, as file names are
    FileDescriptor memory{};  // shared memory with samples or a file, where there is any
};

// One end of a pair of sockets.
class MessageChannel {
public:
    explicit MessageChannel(FileDescriptor socket) : socket_(std::move(socket)) {}

    int Descriptor() const { return socket_.Get(); }

    // Both report false or nothing when the other end is gone. Throw std::runtime_error for anything else.
    bool Send(const Message& message) const;
    std::optional<Message> Receive() const;

private:
    FileDescriptor socket_;
};

}  // namespace plenar_tool
