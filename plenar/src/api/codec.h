// What encoders and decoders are: both kinds are alike.
#pragma once

#include <memory>
#include <utility>

#include "frame/codec_state.h"
#include "plenar_sdk.h"

namespace plenar {

// A fork may copy an object into another process, without its threads, and in the middle of a call of another thread.
class Codec {
public:
    explicit Codec(const CreateParams& params)
        : state_(std::make_unique<CodecState>(WorkerCountFor(params.numThreads))), params_(params) {}
    ~Codec() { DropState(); }

    Codec(const Codec&) = delete;
    Codec& operator=(const Codec&) = delete;

    const CreateParams& Params() const { return params_; }

    // Runs a frame call's body(state).
    template <class Body>
    void Call(const Body& body) {
        if (IsInherited()) {
            auto withoutWorkers = std::make_unique<CodecState>(0);
            DropState();
            state_ = std::move(withoutWorkers);
        }
        body(*state_);
    }

private:
    bool IsChanging() const { return state_->isGrowing || state_->pool.IsInBatch(); }

    // Asks the system only where it matters: a state without workers that nobody is changing is good in any process.
    bool IsInherited() const { return (state_->pool.WorkerCount() != 0 || IsChanging()) && state_->pool.IsInherited(); }

    // What a fork found being changed stays as it is, memory and all: nobody here will finish the change.
    void DropState() {
        if (IsChanging() && state_->pool.IsInherited()) {
            static_cast<void>(state_.release());
        }
        state_.reset();
    }

    std::unique_ptr<CodecState> state_;
    CreateParams params_;
};

}  // namespace plenar
