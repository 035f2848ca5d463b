// Payloads made to cost as much as possible: the time and the memory of a decode, beside an honest payload of the same
// picture and the same size. What is refused counts as well as what decodes.
#include <memory>
#include <string>
#include <vector>

#include "benchmarks.h"
#include "frame_work.h"
#include "hostile_payloads.h"
#include "measurement.h"
#include "testing/allocations.h"
#include "testing/codecs.h"

namespace plenar_bench {

namespace {

// A decoder and the frame that it is asked for, in any of its states.
class Victim {
public:
    Victim(const Frame& frame, uint32_t threads, std::vector<uint8_t> bytes)
        : decoder_(threads),
          params_(frame.Picture(Direction::Decode)),
          payload_(std::move(bytes)),
          pictureBytes_(frame.PictureBytes(Direction::Decode)),
          picture_(PictureMemory(pictureBytes_)) {}

    size_t PayloadBytes() const { return payload_.size(); }

    bool Decode() {
        return Plenar_DecodeFrame(decoder_.get(), &params_, payload_.data(), static_cast<uint32_t>(payload_.size()),
                                  picture_, pictureBytes_, nullptr) == PLENAR_RESULT_OK;
    }
    bool ReadMetadata() {
        UncompressedParams found = params_;
        return Plenar_ReadMetadata(decoder_.get(), payload_.data(), static_cast<uint32_t>(payload_.size()), &found) ==
               PLENAR_RESULT_OK;
    }

    // The most that a call allocates at one time.
    size_t MemoryOfDecode() {
        const plenar_test::AllocationWatch watch;
        Decode();
        return watch.MostBytes();
    }

private:
    plenar_test::DecoderHandle decoder_;
    UncompressedParams params_;
    std::vector<uint8_t> payload_;
    uint32_t pictureBytes_;
    uint8_t* picture_;
};

Work VictimWork(const Frame& frame, uint32_t threads, const std::vector<uint8_t>& payload, bool (Victim::*call)()) {
    const auto victim = std::make_shared<Victim>(frame, threads, payload);
    Work work;
    work.bytes = frame.PictureBytes(Direction::Decode);
    work.counts["memory"] = static_cast<double>(victim->MemoryOfDecode());
    work.counts["payload"] = static_cast<double>(victim->PayloadBytes());
    work.counts["accepted"] = ((*victim).*call)() ? 1 : 0;
    work.run = [victim, call] {
        ((*victim).*call)();
        return true;
    };
    return work;
}

void AddPayload(const HostilePayload& hostile) {
    const std::string prefix = "hostile/" + hostile.name + "/";
    const uint32_t threads = hostile.name.find("/t2/") != std::string::npos ? 2 : 1;
    const Clock clock = threads > 1 ? Clock::Wall : Clock::Processor;
    const Frame& frame = hostile.frame;
    Measure(
        prefix + "honest",
        [=] { return VictimWork(frame, threads, HonestPayload(frame, hostile.make().size()), &Victim::Decode); },
        clock);
    Measure(
        prefix + "plenar", [=] { return VictimWork(frame, threads, hostile.make(), &Victim::Decode); }, clock);
    Measure(
        prefix + "metadata", [=] { return VictimWork(frame, threads, hostile.make(), &Victim::ReadMetadata); }, clock);
}

}  // namespace

void AddAdversarialBenchmarks() {
    for (const HostilePayload& hostile : HostilePayloads()) {
        AddPayload(hostile);
    }
}

}  // namespace plenar_bench
