// Buffers of no more bytes than are asked for. All lie in pages that serve one buffer after another, as fresh memory
// takes longer to get than to use; the address sanitizer is told which bytes of them are nobody's.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "testing/bytes.h"

namespace plenar_test {

// Where a buffer lies, modulo 3: at the alignment of a heap block, which is the one that the address sanitizer watches
// to the byte at both ends; or before or behind an inaccessible page, where the processor watches one end.
inline constexpr uint32_t kApart = 0;
inline constexpr uint32_t kBeforeGuard = 1;
inline constexpr uint32_t kBehindGuard = 2;

class ExactBuffer {
public:
    // `shift` moves the content away from the inaccessible page, to any alignment.
    ExactBuffer(const Bytes& content, uint32_t place = kBeforeGuard, size_t shift = 0);
    ~ExactBuffer();
    ExactBuffer(const ExactBuffer&) = delete;
    ExactBuffer& operator=(const ExactBuffer&) = delete;

    uint8_t* data() const { return first_; }
    uint32_t size() const { return static_cast<uint32_t>(size_); }
    Bytes Content() const { return {first_, first_ + size_}; }

    // Whether the bytes around the content are as they were. From then on the address sanitizer lets them be touched.
    bool IsIntact() const;

private:
    size_t size_;
    uint8_t* first_;
    uint8_t* marks_;     // the first of those bytes
    uint8_t* marksEnd_;  // behind the last
    uint8_t* pages_ = nullptr;
    std::unique_ptr<uint8_t[]> block_;  // for what is too large for the pages
};

// Tells what is going on when the process steps on an inaccessible page, as no check lives to say it. The text is made
// only then: most texts are never read.
class FaultNote {
public:
    explicit FaultNote(const std::function<std::string()>& text);
    ~FaultNote();
    FaultNote(const FaultNote&) = delete;
    FaultNote& operator=(const FaultNote&) = delete;
};

}  // namespace plenar_test
