// Encoders and decoders as objects that destroy themselves, and with the messages that they are told.
#pragma once

#include <plenar_sdk.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace plenar_test {

template <class Object, auto Create, auto Destroy>
class Handle {
public:
    explicit Handle(uint32_t threads, PlenarMessageCallback callback = nullptr, void* userData = nullptr) {
        const CreateParams params{sizeof(CreateParams), threads, userData, callback};
        if (Create(&params, &object_) != PLENAR_RESULT_OK) {
            throw std::runtime_error("no object");
        }
    }
    ~Handle() { Destroy(object_); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    Object* get() const { return object_; }

private:
    Object* object_ = nullptr;
};

using EncoderHandle = Handle<Encoder, Plenar_CreateEncoder, Plenar_DestroyEncoder>;
using DecoderHandle = Handle<Decoder, Plenar_CreateDecoder, Plenar_DestroyDecoder>;

// An object and what its callback was told.
template <class ObjectHandle>
class Codec {
public:
    explicit Codec(uint32_t threads = 1) : handle_(threads, &Codec::Take, this) {}

    auto* get() const { return handle_.get(); }

    // What came of the call that just returned `code`: "" for success without a message, or its one message, given on
    // this thread.
    std::string Outcome(uint32_t code) {
        const std::vector<std::string> messages = std::exchange(messages_, {});
        if (code == 0 && messages.empty()) {
            return "";
        }
        if (code != 1 || messages.size() != 1) {
            return "code " + std::to_string(code) + " with " + std::to_string(messages.size()) + " messages";
        }
        return thread_ == std::this_thread::get_id() ? messages[0] : "message from another thread";
    }

private:
    static void Take(const char* message, void* userData) {
        auto* self = static_cast<Codec*>(userData);
        self->messages_.emplace_back(message);
        self->thread_ = std::this_thread::get_id();
    }

    std::vector<std::string> messages_;
    std::thread::id thread_;
    ObjectHandle handle_;
};

using TestEncoder = Codec<EncoderHandle>;
using TestDecoder = Codec<DecoderHandle>;

}  // namespace plenar_test
