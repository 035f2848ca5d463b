// Buffers of no more bytes than are asked for: heap blocks, for the address sanitizer to watch, and memory that borders
// on an inaccessible page, where the processor itself does.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <memory>

#include "fuzz_input.h"

namespace plenar_fuzz {

class ExactBuffer {
public:
    // The place, modulo 3: a heap block, the end of guarded pages, or their beginning.
    ExactBuffer(const Bytes& content, uint32_t place) : bytes_(content.size()) {
        if (place % 3 == 0 || bytes_ > kPagesSize) {
            block_.reset(new uint8_t[bytes_]);
            first_ = block_.get();
        } else {
            first_ = GuardedPages(depth++) + (place % 3 == 1 ? kPagesSize - bytes_ : 0);
        }
        std::copy(content.begin(), content.end(), first_);
    }
    ~ExactBuffer() { depth -= block_ == nullptr ? 1U : 0U; }
    ExactBuffer(const ExactBuffer&) = delete;
    ExactBuffer& operator=(const ExactBuffer&) = delete;

    uint8_t* data() const { return first_; }
    size_t size() const { return bytes_; }
    Bytes Content() const { return {first_, first_ + bytes_}; }

private:
    static constexpr size_t kPagesSize = size_t{1} << 20;

    // Kept for the next buffers, which come and go in turn: to map pages takes far longer than to use them.
    static uint8_t* GuardedPages(size_t index) {
        static std::vector<uint8_t*> all;
        if (index == all.size()) {
            const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
            void* base = mmap(nullptr, kPagesSize + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
            all.push_back(static_cast<uint8_t*>(base) + page);
            Require(mprotect(all.back(), kPagesSize, PROT_READ | PROT_WRITE) == 0, "there are pages");
        }
        return all[index];
    }

    static inline size_t depth = 0;

    size_t bytes_;
    uint8_t* first_;
    std::unique_ptr<uint8_t[]> block_;
};

}  // namespace plenar_fuzz
