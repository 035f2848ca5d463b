#include "testing/exact_buffer.h"

#include <sanitizer/asan_interface.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <new>

namespace plenar_test {
namespace {

constexpr size_t kPagesSize = size_t{1} << 20;
constexpr size_t kMarks = 64;  // on either side, where there is room
constexpr uint8_t kMark = 0xA5;

// Kept for later buffers: to map pages takes far longer than to use them.
std::vector<uint8_t*> idlePages;

uint8_t* TakePages() {
    if (!idlePages.empty()) {
        uint8_t* pages = idlePages.back();
        idlePages.pop_back();
        return pages;
    }
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    void* base = mmap(nullptr, kPagesSize + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    uint8_t* pages = static_cast<uint8_t*>(base) + page;
    if (base == MAP_FAILED || mprotect(pages, kPagesSize, PROT_READ | PROT_WRITE) != 0) {
        throw std::bad_alloc();
    }
    return pages;
}

std::atomic<const std::function<std::string()>*> faultNote = nullptr;
struct sigaction formerAction;

// In the middle of a kernel, and so with no lock of the C library held.
void PrintNote(int) {
    if (const auto* text = faultNote.load()) {
        const std::string note = (*text)();
        [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, note.data(), note.size());
    }
    sigaction(SIGSEGV, &formerAction, nullptr);  // and the instruction is tried again
}

void PrintNotesAtFaults() {
    struct sigaction action = {};
    action.sa_handler = PrintNote;
    sigaction(SIGSEGV, &action, &formerAction);
}

bool AreMarks(const uint8_t* first, const uint8_t* end) {
    uint8_t others = 0;  // no early end: the loop is done in vectors
    for (; first != end; ++first) {
        others |= *first ^ kMark;
    }
    return others == 0;
}

}  // namespace

ExactBuffer::ExactBuffer(const Bytes& content, uint32_t place, size_t shift) : size_(content.size()) {
    shift += place % 3 == kApart ? kMarks + alignof(std::max_align_t) : 0;
    if (size_ + shift + kMarks > kPagesSize) {
        block_.reset(new uint8_t[size_]);
        first_ = marks_ = block_.get();
        marksEnd_ = first_ + size_;
    } else {
        pages_ = TakePages();
        const bool endsAtGuard = place % 3 == kBeforeGuard;
        first_ = endsAtGuard ? pages_ + kPagesSize - shift - size_ : pages_ + shift;
        marks_ = first_ - std::min(kMarks, static_cast<size_t>(first_ - pages_));
        marksEnd_ = endsAtGuard ? pages_ + kPagesSize : first_ + size_ + kMarks;
    }
    std::fill(marks_, first_, kMark);
    std::copy(content.begin(), content.end(), first_);
    std::fill(first_ + size_, marksEnd_, kMark);
    if (pages_ != nullptr) {
        ASAN_POISON_MEMORY_REGION(marks_, static_cast<size_t>(first_ - marks_));
        ASAN_POISON_MEMORY_REGION(first_ + size_, static_cast<size_t>(marksEnd_ - first_) - size_);
    }
}

ExactBuffer::~ExactBuffer() {
    if (pages_ != nullptr) {
        ASAN_UNPOISON_MEMORY_REGION(marks_, static_cast<size_t>(marksEnd_ - marks_));
        idlePages.push_back(pages_);
    }
}

bool ExactBuffer::IsIntact() const {
    ASAN_UNPOISON_MEMORY_REGION(marks_, static_cast<size_t>(marksEnd_ - marks_));
    return AreMarks(marks_, first_) && AreMarks(first_ + size_, marksEnd_);
}

FaultNote::FaultNote(const std::function<std::string()>& text) {
    [[maybe_unused]] static const bool kOnce = (PrintNotesAtFaults(), true);
    faultNote = &text;
}

FaultNote::~FaultNote() {
    faultNote = nullptr;
}

}  // namespace plenar_test
