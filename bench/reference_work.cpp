#include "reference_work.h"

#include <immintrin.h>

#include <cstring>

namespace plenar_bench {

namespace {

constexpr size_t kLineBytes = 64;
constexpr size_t kSums = 4;

__attribute__((target("avx2"))) void StreamLinesAvx2(uint8_t* dst, const uint8_t* src, size_t lines) {
    for (size_t i = 0; i < lines; ++i) {
        const auto* from = reinterpret_cast<const __m256i*>(src + i * kLineBytes);
        auto* to = reinterpret_cast<__m256i*>(dst + i * kLineBytes);
        const __m256i first = _mm256_loadu_si256(from);
        const __m256i second = _mm256_loadu_si256(from + 1);
        _mm256_stream_si256(to, first);
        _mm256_stream_si256(to + 1, second);
    }
    _mm_sfence();
}

void StreamLines(uint8_t* dst, const uint8_t* src, size_t lines) {
    for (size_t i = 0; i < lines * (kLineBytes / sizeof(__m128i)); ++i) {
        _mm_stream_si128(reinterpret_cast<__m128i*>(dst) + i,
                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(src) + i));
    }
    _mm_sfence();
}

// Several sums, as one would wait for itself.
__attribute__((target("avx2"))) uint64_t SumBlocksAvx2(const uint8_t* src, size_t blocks) {
    __m256i sum[kSums] = {};
    for (size_t block = 0; block < blocks; ++block) {
        for (size_t i = 0; i < kSums; ++i) {
            const auto* from = reinterpret_cast<const __m256i*>(src) + block * kSums + i;
            sum[i] = _mm256_add_epi64(sum[i], _mm256_loadu_si256(from));
        }
    }
    const __m256i total = _mm256_add_epi64(_mm256_add_epi64(sum[0], sum[1]), _mm256_add_epi64(sum[2], sum[3]));
    uint64_t lanes[4];
    std::memcpy(lanes, &total, sizeof lanes);
    return lanes[0] + lanes[1] + lanes[2] + lanes[3];
}

uint64_t SumBlocks(const uint8_t* src, size_t blocks) {
    uint64_t sum[kSums * 4] = {};
    for (size_t block = 0; block < blocks; ++block) {
        uint64_t words[kSums * 4];
        std::memcpy(words, src + block * sizeof words, sizeof words);
        for (size_t i = 0; i < kSums * 4; ++i) {
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
    static const bool kHas = __builtin_cpu_supports("avx2") != 0;
    return kHas;
}

}  // namespace

void StreamingCopy(uint8_t* dst, const uint8_t* src, size_t size) {
    const size_t lines = size / kLineBytes;
    (HasAvx2() ? StreamLinesAvx2 : StreamLines)(dst, src, lines);
    std::memcpy(dst + lines * kLineBytes, src + lines * kLineBytes, size % kLineBytes);
}

uint64_t ReadPass(const uint8_t* src, size_t size) {
    constexpr size_t kBlockBytes = kSums * sizeof(__m256i);
    const size_t blocks = size / kBlockBytes;
    uint64_t total = (HasAvx2() ? SumBlocksAvx2 : SumBlocks)(src, blocks);
    for (size_t i = blocks * kBlockBytes; i < size; ++i) {
        total += src[i];
    }
    return total;
}

void RunChainedAdditions() {
    constexpr uint32_t kUnrolled = 16;
    uint64_t chain = 0;
    for (uint32_t i = 0; i < kChainedAdditions / kUnrolled; ++i) {
        asm volatile(".rept 16\n\tadd %1, %0\n\t.endr" : "+r"(chain) : "r"(uint64_t{3}));
    }
}

RunningPair::RunningPair() : helper_([this] { Work(); }) {}

RunningPair::~RunningPair() {
    stop_ = true;
    helper_.join();
}

void RunningPair::Run(const std::function<void(int)>& share) {
    current_ = &share;
    const uint32_t turn = started_.load(std::memory_order_relaxed) + 1;
    started_.store(turn, std::memory_order_release);
    share(0);
    while (finished_.load(std::memory_order_acquire) != turn) {
        _mm_pause();
    }
}

void RunningPair::Work() {
    uint32_t turn = 0;
    while (!stop_.load(std::memory_order_relaxed)) {
        if (started_.load(std::memory_order_acquire) == turn) {
            _mm_pause();
            continue;
        }
        ++turn;
        (*current_)(1);
        finished_.store(turn, std::memory_order_release);
    }
}

SleepingPair::SleepingPair() {
    for (int i = 0; i < 2; ++i) {
        workers_.emplace_back([this, i] { Work(i); });
    }
}

SleepingPair::~SleepingPair() {
    {
        const std::lock_guard lock(mutex_);
        stop_ = true;
    }
    wakeup_.notify_all();
    for (std::thread& worker : workers_) {
        worker.join();
    }
}

void SleepingPair::Run(const std::function<void(int)>& share) {
    std::unique_lock lock(mutex_);
    current_ = &share;
    busy_ = 2;
    ++batch_;
    wakeup_.notify_all();
    done_.wait(lock, [this] { return busy_ == 0; });
}

void SleepingPair::Work(int index) {
    std::unique_lock lock(mutex_);
    for (uint64_t next = 1;; ++next) {
        wakeup_.wait(lock, [&] { return stop_ || batch_ == next; });
        if (stop_) {
            return;
        }
        lock.unlock();
        (*current_)(index);
        lock.lock();
        if (--busy_ == 0) {
            done_.notify_one();
        }
    }
}

}  // namespace plenar_bench
