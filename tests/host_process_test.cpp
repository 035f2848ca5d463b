// What objects do to the process that they live in: its signals, its forks, its memory.
#include <pthread.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): the signals of POSIX
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "testing/allocations.h"
#include "testing/message_of.h"
#include "worker_counts.h"

namespace plenar_test {
namespace {

// Stacks hold the thread-local objects of the program, which may be larger than all that a worker needs itself.
thread_local std::array<char, size_t{300} << 10> largeObject;

constexpr uint64_t Mask(std::initializer_list<int> signals) {
    uint64_t mask = 0;
    for (const int signal : signals) {
        mask |= uint64_t{1} << (signal - 1);
    }
    return mask;
}

// The numbers that stand behind a word in files like /proc/self/status.
uint64_t StatusOf(const std::filesystem::path& task, const std::string& word, int base) {
    std::ifstream status(task / "status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(word + ":", 0) == 0) {
            return std::stoull(line.substr(word.size() + 1), nullptr, base);
        }
    }
    throw std::runtime_error("no " + word);
}

uint64_t BlockedHere() {
    return StatusOf("/proc/thread-self", "SigBlk", 16);
}

TEST(Workers, HaveTheirNameAndTakeNoSignalsOfTheHost) {
    const uint64_t before = BlockedHere();
    const TestEncoder encoder(4);
    EXPECT_EQ(BlockedHere(), before);

    constexpr uint64_t kNeverBlocked = Mask({SIGKILL, SIGSTOP, 32, 33});  // 32 and 33 are the C library's own
    constexpr uint64_t kOwn = Mask({SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS, SIGPROF});
    uint32_t workers = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string name;
        std::getline(std::ifstream(task.path() / "comm"), name);
        if (name == "plenar-worker") {
            ++workers;
            // The C library blocks all until the thread runs.
            uint64_t blocked = ~uint64_t{0};
            for (int tries = 0; tries < 1000 && blocked == ~uint64_t{0}; ++tries) {
                blocked = StatusOf(task, "SigBlk", 16) | kNeverBlocked;
                std::this_thread::sleep_for(std::chrono::milliseconds(blocked == ~uint64_t{0} ? 1 : 0));
            }
            EXPECT_EQ(blocked, ~kOwn);
        }
    }
    EXPECT_EQ(workers, 4U);

    // Last, as the entries of the threads that are joined again may outlive them by a moment.
    threadStarts.Arm(3);
    EXPECT_NE(MessageOf([] { const TestDecoder decoder(4); }), "");
    threadStarts.Disarm();
    EXPECT_EQ(BlockedHere(), before);
}

// The mask that workers start with is the one of before the host blocked what it waits for.
void WaitForSignal() {
    const TestEncoder encoder(4);
    sigset_t awaited;
    sigemptyset(&awaited);
    sigaddset(&awaited, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &awaited, nullptr);
    for (int round = 0; round < 100; ++round) {
        int taken = 0;
        kill(getpid(), SIGTERM);
        if (sigwait(&awaited, &taken) != 0 || taken != SIGTERM) {
            std::_Exit(1);
        }
    }
    std::_Exit(0);
}

TEST(WorkersDeathTest, LeaveTheHostTheSignalsThatItWaitsFor) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(WaitForSignal(), ::testing::ExitedWithCode(0), "");
}

TEST(Workers, TakeLittleAddressSpace) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers take what they like";
#endif
    const uint64_t before = StatusOf("/proc/self", "VmSize", 10);
    const TestEncoder encoder(64);
    largeObject[0] = 1;
    EXPECT_LT(StatusOf("/proc/self", "VmSize", 10) - before, 64U << 10) << "KiB";
}

// Forks find objects idle and while another thread encodes; children use them or not, and destroy them.
class Forks : public ::testing::TestWithParam<uint32_t> {
protected:
    // Allocates nothing: sanitizers' allocators may not survive a fork at any moment.
    bool EncodesRight() {
        return Plenar_EncodeFrame(encoder_->get(), &params_, &compressed_, picture_.data(),
                                  static_cast<uint32_t>(picture_.size()), room_.data(),
                                  static_cast<uint32_t>(room_.size()), nullptr) == PLENAR_RESULT_OK &&
               std::equal(payload_.begin(), payload_.end(), room_.begin());
    }

    // What became of a child: 0, or as waitpid tells it.
    int Fork(bool encodes) {
        const pid_t child = fork();
        if (child == 0) {
            alarm(60);
            Bytes(room_.size()).swap(room_);
            // The first allocation is the state that takes the place of the one with workers.
            allocations.Arm(encodes && GetParam() > 1 ? 1 : 0);
            const bool lacksMemory = encodes && !EncodesRight();
            const bool right = lacksMemory == allocations.Disarm() && (!encodes || (EncodesRight() && EncodesRight()));
            encoder_.reset();
            _exit(right ? 0 : 1);
        }
        int status = -1;
        waitpid(child, &status, 0);
        return status;
    }

    // With alpha coded, so that the object has a buffer of its own and a frame takes two batches.
    UncompressedParams params_ = MakeParams(plenar::RGBA, plenar::Uint8, 320, 200);
    CompressedParams compressed_ = MakeCompressed(1);
    Bytes picture_ = Noise(PictureSize(params_), 7);
    Bytes payload_ = Encode(WithWorkers<TestEncoder>(0), params_, picture_, compressed_).bytes;
    Bytes room_ = Bytes(Plenar_GetCompressedBufSize(&params_, &compressed_));
    std::unique_ptr<EncoderHandle> encoder_ = std::make_unique<EncoderHandle>(GetParam());
};

TEST_P(Forks, OfIdleObjects) {
    for (int round = 0; round < 4; ++round) {
        EXPECT_EQ(Fork(round % 2 != 0), 0) << "round " << round;
        EXPECT_TRUE(EncodesRight());
    }
}

TEST_P(Forks, WhileAnotherThreadEncodes) {
    std::atomic<bool> isOver = false;
    std::atomic<uint32_t> frames = 0;
    std::thread busy([&] {
        for (; !isOver; ++frames) {
            ASSERT_TRUE(EncodesRight());
        }
    });
    for (int round = 0; round < 50; ++round) {
        for (const uint32_t seen = frames; frames == seen;) {
            std::this_thread::yield();
        }
        EXPECT_EQ(Fork(round % 2 != 0), 0) << "round " << round;
    }
    isOver = true;
    busy.join();
}

INSTANTIATE_TEST_SUITE_P(With, Forks, ::testing::Values(1, 2, 4, 16),
                         [](const auto& test) { return std::to_string(test.param) + "Workers"; });

}  // namespace
}  // namespace plenar_test
