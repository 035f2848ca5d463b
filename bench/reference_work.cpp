#include "reference_work.h"

#include <immintrin.h>

#include <cstring>

namespace plenar_bench {

namespace {

constexpr size_t lineBytes = 64;
constexpr size_t sums = 4;

__attribute__((target("avx2"))) void StreamLinesAvx2(uint8_t* dst, const uint8_t* src, size_t lines) {
    for (size_t i = 0; i < lines; ++i) {
        const auto* from = reinterpret_cast<const __m256i*>(src + i * lineBytes);
        auto* to = reinterpret_cast<__m256i*>(dst + i * lineBytes);
        const __m256i first = _mm256_loadu_si256(from);
        const __m256i second = _mm256_loadu_si256(from + 1);
        _mm256_stream_si256(to, first);
        _mm256_stream_si256(to + 1, second);
    }
    _mm_sfence();
}

void StreamLines(uint8_t* dst, const uint8_t* src, size_t lines) {
    for (size_t i = 0; i < lines * (lineBytes / sizeof(__m128i)); ++i) {
        _mm_stream_si128(reinterpret_cast<__m128i*>(dst) + i,
                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(src) + i));
    }
    _mm_sfence();
}

// Several sums, as one would wait for itself.
__attribute__((target("avx2"))) uint64_t SumBlocksAvx2(const uint8_t* src, size_t blocks) {
    __m256i sum[sums] = {};
    for (size_t block = 0; block < blocks; ++block) {
        for (size_t i = 0; i < sums; ++i) {
            const auto* from = reinterpret_cast<const __m256i*>(src) + block * sums + i;
            sum[i] = _mm256_add_epi64(sum[i], _mm256_loadu_si256(from));
        }
    }
    const __m256i total = _mm256_add_epi64(_mm256_add_epi64(sum[0], sum[1]), _mm256_add_epi64(sum[2], sum[3]));
    uint64_t lanes[4];
    std::memcpy(lanes, &total, sizeof lanes);
    return lanes[0] + lanes[1] + lanes[2] + lanes[3];
}

uint64_t SumBlocks(const uint8_t* src, size_t blocks) {
    uint64_t sum[sums * 4] = {};
    for (size_t block = 0; block < blocks; ++block) {
        uint64_t words[sums * 4];
        std::memcpy(words, src + block * sizeof words, sizeof words);
        for (size_t i = 0; i < sums * 4; ++i) {
            sum[i] += words[i];
        }
    }
    uint64_t total = 0;
    for (const uint64_t one : sum) {
        total += one;
    }
    return total;
}

bool HasAvx2() {
    static const bool has = __builtin_cpu_supports("avx2") != 0;
    return has;
}

}  // namespace

void StreamingCopy(uint8_t* dst, const uint8_t* src, size_t size) {
    const size_t lines = size / lineBytes;
    (HasAvx2() ? StreamLinesAvx2 : StreamLines)(dst, src, lines);
    std::memcpy(dst + lines * lineBytes, src + lines * lineBytes, size % lineBytes);
}

uint64_t ReadPass(const uint8_t* src, size_t size) {
    constexpr size_t blockBytes = sums * sizeof(__m256i);
    const size_t blocks = size / blockBytes;
    uint64_t total = (HasAvx2() ? SumBlocksAvx2 : SumBlocks)(src, blocks);
    for (size_t i = blocks * blockBytes; i < size; ++i) {
        total += src[i];
    }
    return total;
}

void RunChainedAdditions() {
    constexpr uint32_t unrolled = 16;
    uint64_t chain = 0;
    for (uint32_t i = 0; i < chainedAdditions / unrolled; ++i) {
        asm volatile(".rept 16\n\tadd %1, %0\n\t.endr" : "+r"(chain) : "r"(uint64_t{3}));
    }
}

RunningPair::RunningPair() : helper([this] { Work(); }) {}

RunningPair::~RunningPair() {
    stop = true;
    helper.join();
}

void RunningPair::Run(const std::function<void(int)>& share) {
    current = &share;
    const uint32_t turn = started.load(std::memory_order_relaxed) + 1;
    started.store(turn, std::memory_order_release);
    share(0);
    while (finished.load(std::memory_order_acquire) != turn) {
        _mm_pause();
    }
}

void RunningPair::Work() {
    uint32_t turn = 0;
    while (!stop.load(std::memory_order_relaxed)) {
        if (started.load(std::memory_order_acquire) == turn) {
            _mm_pause();
            continue;
        }
        ++turn;
        (*current)(1);
        finished.store(turn, std::memory_order_release);
    }
}

SleepingPair::SleepingPair() {
    for (int i = 0; i < 2; ++i) {
        workers.emplace_back([this, i] { Work(i); });
    }
}

SleepingPair::~SleepingPair() {
    {
        const std::lock_guard lock(mutex);
        stop = true;
    }
    wakeup.notify_all();
    for (std::thread& worker : workers) {
        worker.join();
    }
}

void SleepingPair::Run(const std::function<void(int)>& share) {
    std::unique_lock lock(mutex);
    current = &share;
    busy = 2;
    ++batch;
    wakeup.notify_all();
    done.wait(lock, [this] { return busy == 0; });
}

void SleepingPair::Work(int index) {
    std::unique_lock lock(mutex);
    for (uint64_t next = 1;; ++next) {
        wakeup.wait(lock, [&] { return stop || batch == next; });
        if (stop) {
            return;
        }
        lock.unlock();
        (*current)(index);
        lock.lock();
        if (--busy == 0) {
            done.notify_one();
        }
    }
}

}  // namespace plenar_bench
