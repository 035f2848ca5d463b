#include "message_channel.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace plenar_tool {

namespace {

constexpr uint32_t kMaxTextBytes = uint32_t{1} << 28;

// What stands before each message: the size of its text, with the shared memory's descriptor beside it.
struct Head {
    explicit Head(uint32_t* byteCount) : part{byteCount, sizeof(*byteCount)} {
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        header.msg_control = control.data();
        header.msg_controllen = control.size();
    }
    Head(const Head&) = delete;
    Head& operator=(const Head&) = delete;

    iovec part;
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    msghdr header{};
};

template <class Move>
bool MoveAll(Move move, uint8_t* bytes, size_t count) {
    while (count > 0) {
        const ssize_t moved = move(bytes, count);
        if (moved <= 0) {
            if (moved < 0 && errno == EINTR) {
                continue;
            }
            return false;
        }
        bytes += moved;
        count -= static_cast<size_t>(moved);
    }
    return true;
}

}  // namespace

bool MessageChannel::Send(const Message& message) const {
    std::vector<uint8_t> text = nlohmann::json::to_cbor(message.text);
    auto byteCount = static_cast<uint32_t>(text.size());
    Head head(&byteCount);
    if (message.memory) {
        cmsghdr* const item = CMSG_FIRSTHDR(&head.header);
        item->cmsg_level = SOL_SOCKET;
        item->cmsg_type = SCM_RIGHTS;
        item->cmsg_len = CMSG_LEN(sizeof(int));
        const int descriptor = message.memory.Get();
        std::memcpy(CMSG_DATA(item), &descriptor, sizeof(descriptor));
    } else {
        head.header.msg_controllen = 0;
    }
    const auto send = [this](const uint8_t* bytes, size_t count) {
        return ::send(socket_.Get(), bytes, count, MSG_NOSIGNAL);
    };
    return sendmsg(socket_.Get(), &head.header, MSG_NOSIGNAL) == sizeof(byteCount) &&
           MoveAll(send, text.data(), text.size());
}

std::optional<Message> MessageChannel::Receive() const {
    Message message;
    uint32_t byteCount = 0;
    Head head(&byteCount);
    if (recvmsg(socket_.Get(), &head.header, MSG_CMSG_CLOEXEC | MSG_WAITALL) != sizeof(byteCount)) {
        return std::nullopt;
    }
    const cmsghdr* const item = CMSG_FIRSTHDR(&head.header);
    if (item != nullptr && item->cmsg_type == SCM_RIGHTS) {
        int descriptor = -1;
        std::memcpy(&descriptor, CMSG_DATA(item), sizeof(descriptor));
        message.memory = FileDescriptor(descriptor);
    }
    if (byteCount > kMaxTextBytes) {
        throw std::runtime_error("a message of " + std::to_string(byteCount) + " bytes");
    }
    std::vector<uint8_t> text(byteCount);
    const auto receive = [this](uint8_t* bytes, size_t count) { return recv(socket_.Get(), bytes, count, 0); };
    if (!MoveAll(receive, text.data(), text.size())) {
        return std::nullopt;
    }
    message.text = nlohmann::json::from_cbor(text);
    return message;
}

}  // namespace plenar_tool
