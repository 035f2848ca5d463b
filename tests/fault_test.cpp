// Objects that come, work and go, alone and side by side: what their calls allocate, and what becomes of a call when an
// allocation or the start of a thread fails, each in turn.
#include <cstdlib>
#include <new>
#include <optional>
#include <string_view>

#include "testing/allocations.h"
#include "testing/message_of.h"
#include "worker_counts.h"

namespace plenar_test {
namespace {

constexpr char kNoMemory[] = "std::bad_alloc";
constexpr char kNoThread[] = "a worker thread can't be started: Resource temporarily unavailable";

enum class Call { Encode, Decode, ReadMetadata };

// An encoder and a decoder with the buffers of a frame. Its calls allocate nothing but what the library does.
class Host {
public:
    Host(uint32_t order, uint32_t type, uint8_t alphaRle, uint32_t threads)
        : params_(MakeParams(order, type, 128, 80)), compressed_(MakeCompressed(alphaRle)), threads_(threads) {
        // The last plane's end is missing.
        damaged_.resize(std::max<size_t>(damaged_.size(), 13) - 9);
        StateSize(damaged_, 0, damaged_.size());
    }

    void Create() {
        encoder_.emplace(threads_, Take, this);
        decoder_.emplace(threads_, Take, this);
    }
    void Destroy() {
        encoder_.reset();
        decoder_.reset();
    }
    bool HasObjects() const { return encoder_ && decoder_; }

    // The message, "" for success. What is spoilt is refused: a stride, the end of a payload, or nearly all of it.
    std::string_view Run(Call call, bool spoilt = false) {
        UncompressedParams params = params_;
        message_.fill('\0');
        uint32_t code = 0;
        if (call == Call::Encode) {
            params.rowBytes = spoilt ? 1 : 0;
            code = Plenar_EncodeFrame(encoder_->get(), &params, &compressed_, picture_.data(), size(picture_),
                                      room_.data(), size(room_), nullptr);
        } else if (call == Call::Decode) {
            const Bytes& payload = spoilt ? damaged_ : payload_;
            code = Plenar_DecodeFrame(decoder_->get(), &params, payload.data(), size(payload), back_.data(),
                                      size(back_), nullptr);
        } else {
            code = Plenar_ReadMetadata(decoder_->get(), payload_.data(), spoilt ? 7 : size(payload_), &params);
        }
        return (code == 0) == (message_[0] == '\0') ? message_.data() : "code and message differ";
    }

    // "" for an encode and a decode that give the right bytes.
    std::string_view RunFrame() {
        std::fill(room_.begin(), room_.end(), 0);
        std::fill(back_.begin(), back_.end(), 0);
        const std::string_view encoded = Run(Call::Encode);
        const std::string_view failure = encoded.empty() ? Run(Call::Decode) : encoded;
        const bool right = std::equal(payload_.begin(), payload_.end(), room_.begin()) && back_ == decoded_;
        return failure.empty() && !right ? "wrong bytes" : failure;
    }

private:
    static uint32_t size(const Bytes& bytes) { return static_cast<uint32_t>(bytes.size()); }
    static void Take(const char* message, void* host) {
        std::string_view(message).copy(static_cast<Host*>(host)->message_.data(), 99);
    }

    UncompressedParams params_;
    CompressedParams compressed_;
    uint32_t threads_;
    Bytes picture_ = Noise(PictureSize(params_), 7);
    Bytes payload_ = Encode(WithWorkers<TestEncoder>(0), params_, picture_, compressed_).bytes;
    Bytes damaged_ = payload_;
    Bytes decoded_ = Decode(WithWorkers<TestDecoder>(0), params_, payload_, Bytes(picture_.size())).bytes;
    Bytes room_ = Bytes(Plenar_GetCompressedBufSize(&params_, &compressed_));
    Bytes back_ = Bytes(picture_.size());
    std::array<char, 100> message_{};
    std::optional<EncoderHandle> encoder_;
    std::optional<DecoderHandle> decoder_;
};

// A thread that isn't joined holds a block, so that counting blocks counts threads as well.
TEST(Faults, ACreateCallThatFailsLeavesNothing) {
    for (const uint32_t threads : {1U, 2U, 17U}) {
        for (FaultSite* site : {&allocations, &threadStarts}) {
            Host host(plenar::RGBA, plenar::Uint8, 1, threads);
            const AllocationWatch watch;
            bool struck = true;
            for (uint64_t nth = 1; struck; ++nth) {
                site->Arm(nth);
                const bool isToldSo =
                    MessageOf([&] { host.Create(); }) == (site == &allocations ? kNoMemory : kNoThread);
                struck = site->Disarm();
                EXPECT_EQ(isToldSo, struck);
                EXPECT_EQ(host.HasObjects(), !struck);
                EXPECT_EQ(struck ? "" : host.RunFrame(), "");
                host.Destroy();
                EXPECT_EQ(watch.Blocks(), 0) << threads << " threads, failure " << nth;
            }
        }
    }
}

// The first frame of an object and a later one, good ones and refused ones, one allocation failing and all from there.
TEST(Faults, AFrameThatLacksMemoryLeavesTheObjectUsable) {
    for (const uint32_t threads : {1U, 2U, 3U, 5U}) {
        Host host(threads == 3 ? plenar::YCbCrA420Planar : plenar::RGBA, plenar::Uint16, threads != 5, threads);
        uint32_t strikes = 0;
        for (uint32_t variant = 0; variant < 24; ++variant) {
            const bool later = (variant & 1) != 0, spoilt = (variant & 2) != 0, lasting = (variant & 4) != 0;
            const auto call = static_cast<Call>(variant / 8);
            constexpr const char* kCalls[] = {"encode", "decode", "metadata"};
            bool struck = true;
            for (uint64_t nth = 1; struck; ++nth) {
                SCOPED_TRACE(::testing::Message()
                             << kCalls[variant / 8] << (later ? ", a later frame" : "") << (spoilt ? ", spoilt" : "")
                             << (lasting ? ", lasting, " : ", ") << threads << " threads, failure " << nth);
                const AllocationWatch watch;
                host.Create();
                EXPECT_EQ(later ? host.RunFrame() : "", "");
                allocations.Arm(nth, lasting);
                const std::string_view message = host.Run(call, spoilt);
                struck = allocations.Disarm();
                strikes += struck ? 1 : 0;
                EXPECT_EQ(message == kNoMemory, struck) << message;
                EXPECT_EQ(message.empty(), !struck && !spoilt) << message;
                EXPECT_EQ(host.RunFrame(), "");
                host.Destroy();
                EXPECT_EQ(watch.Blocks(), 0);
            }
        }
        EXPECT_GE(strikes, threads == 1 ? 8U : 60U);
    }
}

// With `faults`, allocations fail here and there on all threads meanwhile.
void WorkSideBySide(bool faults) {
    std::array<std::unique_ptr<Host>, 6> hosts;
    std::array<std::thread, 6> threads;
    std::atomic<uint32_t> wrong = 0, running = 6;
    for (uint32_t i = 0; i < 6; ++i) {
        hosts[i] = std::make_unique<Host>(7 + i, plenar::Uint8, i % 2 == 0, 1 + i % 4);
    }
    const AllocationWatch watch;
    for (uint32_t i = 0; i < 6; ++i) {
        threads[i] = std::thread([&, &host = *hosts[i]] {
            const auto isRight = [&](std::string_view message, bool refused) {
                return (faults && message == kNoMemory) || message.empty() != refused;
            };
            for (uint32_t round = 0; round < 300; ++round) {
                try {
                    host.Create();
                    for (uint32_t frame = 0; frame < round % 5; ++frame) {
                        wrong += isRight(host.RunFrame(), false) && isRight(host.Run(Call::Decode, true), true) ? 0 : 1;
                    }
                } catch (const std::bad_alloc&) {
                    wrong += faults ? 0 : 1;
                }
                host.Destroy();
            }
            --running;
        });
    }
    for (uint64_t nth = 1; faults && running != 0; ++nth) {
        allocations.Arm(nth % 23, nth % 3 == 0);
        std::this_thread::yield();
    }
    allocations.Disarm();
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(watch.Blocks(), 0);
    EXPECT_EQ(wrong, 0U);
}

TEST(ManyObjects, WorkSideBySide) {
    WorkSideBySide(false);
    WorkSideBySide(true);
}

// One object has nothing to do, one is at work on a thread that nobody waits for, and one goes when main is over.
void EndProcess(void (*end)(int)) {
    static Host* const kIdle = new Host(plenar::RGBA, plenar::Uint8, 1, 3);
    static Host* const kBusy = new Host(plenar::RGBA, plenar::Uint8, 1, 3);
    static Host last(plenar::RGBA, plenar::Uint8, 1, 3);
    static std::atomic<uint32_t> frames = 0;
    for (Host* host : {kIdle, kBusy, &last}) {
        host->Create();
    }
    std::thread([] {
        for (; kBusy->RunFrame().empty(); ++frames) {
        }
        std::abort();
    }).detach();
    while (frames < 100) {
        std::this_thread::yield();
    }
    end(EXIT_SUCCESS);
}

TEST(ManyObjectsDeathTest, MayLiveWhenTheProcessEnds) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(EndProcess(std::exit), ::testing::ExitedWithCode(EXIT_SUCCESS), "");
    EXPECT_EXIT(EndProcess(std::quick_exit), ::testing::ExitedWithCode(EXIT_SUCCESS), "");
}

// After its first frame an object allocates nothing for frames of that size without workers, and with them no more than
// the lists of its batches: four planes each way, a list of rows and a list of bands for each.
TEST(SteadyState, AllocatesAtMostTheListsOfItsBatches) {
    for (const auto& [order, type] : AllPairs()) {
        for (const uint32_t variant : {0U, 1U, 2U, 3U}) {
            const uint32_t threads = 1 + variant / 2;
            Host host(order, type, variant % 2 != 0, threads);
            host.Create();
            for (const bool counted : {false, true}) {
                allocations.Arm(0);
                if (host.RunFrame().empty() && counted) {
                    EXPECT_LE(allocations.Calls(), threads == 1 ? 0U : 16U)
                        << PairName(order, type) << ", " << threads << " threads";
                }
            }
        }
    }
}

}  // namespace
}  // namespace plenar_test
