#include "measurement.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <new>
#include <random>
#include <utility>

namespace plenar_bench {

namespace {

constexpr size_t kPageBytes = 4096;
constexpr int kWarmUps = 2;

// A failure is kept and reported at the end.
bool WarmUp(const Work& work) {
    bool good = true;
    for (int i = 0; i < kWarmUps; ++i) {
        good = work.run() && good;
    }
    return good;
}

void Report(benchmark::State& state, const Work& work, bool good) {
    if (!good) {
        return state.SkipWithError("the work failed");
    }
    state.SetBytesProcessed(static_cast<int64_t>(work.bytes) * state.iterations());
    for (const auto& [name, count] : work.counts) {
        state.counters[name] = count;
    }
}

class PageMemory {
public:
    uint8_t* AtLeast(size_t size) {
        if (size > capacity_) {
            const size_t whole = (size + kPageBytes - 1) / kPageBytes * kPageBytes;
            memory_.reset(static_cast<uint8_t*>(std::aligned_alloc(kPageBytes, whole)));
            if (!memory_) {
                throw std::bad_alloc();
            }
            capacity_ = whole;
            FillWithNoise();
        }
        return memory_.get();
    }

private:
    struct Free {
        void operator()(void* bytes) const { std::free(bytes); }
    };

    void FillWithNoise() {
        std::minstd_rand random;  // NOLINT(cert-msc51-cpp, cert-msc32-c): the same in each run
        for (size_t i = 0; i < capacity_; ++i) {
            memory_.get()[i] = static_cast<uint8_t>(random() >> 8);
        }
    }

    std::unique_ptr<uint8_t, Free> memory_;
    size_t capacity_ = 0;
};

}  // namespace

void Measure(const std::string& name, std::function<Work()> prepare, Clock clock) {
    auto* registered =
        benchmark::RegisterBenchmark(name.c_str(), [prepare = std::move(prepare)](benchmark::State& state) {
            const Work work = prepare();
            bool good = WarmUp(work);
            for ([[maybe_unused]] auto _ : state) {
                good = work.run() && good;
                benchmark::ClobberMemory();
            }
            Report(state, work, good);
        });
    if (clock == Clock::Wall) {
        registered->UseRealTime();
    }
}

void MeasureAfter(const std::string& name, std::function<Work()> prepare, std::function<void()> between) {
    benchmark::RegisterBenchmark(name.c_str(), [prepare = std::move(prepare),
                                                between = std::move(between)](benchmark::State& state) {
        using SteadyClock = std::chrono::steady_clock;
        const Work work = prepare();
        bool good = WarmUp(work);
        for ([[maybe_unused]] auto _ : state) {
            between();
            const SteadyClock::time_point start = SteadyClock::now();
            good = work.run() && good;
            benchmark::ClobberMemory();
            state.SetIterationTime(std::chrono::duration<double>(SteadyClock::now() - start).count());
        }
        Report(state, work, good);
    })->UseManualTime();
}

uint8_t* PictureMemory(size_t size) {
    static PageMemory memory;
    return memory.AtLeast(size);
}

uint8_t* PayloadMemory(size_t size) {
    static PageMemory memory;
    return memory.AtLeast(size + PayloadShift()) + PayloadShift();
}

size_t PayloadShift() {
    static const char* const kText = std::getenv("PLENAR_BENCH_PAYLOAD_SHIFT");
    static const size_t kShift = kText != nullptr ? std::strtoul(kText, nullptr, 10) : 0;
    return kShift;
}

}  // namespace plenar_bench
