#include "frame_pattern.h"

#include <algorithm>
#include <charconv>
#include <regex>

#include "task_plan.h"

namespace plenar_tool {

namespace {

constexpr size_t kMaxFrames = 10'000'000;

// The digits at the head of `text`, which loses them.
std::optional<uint32_t> TakeNumber(std::string_view& text) {
    uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) {
        return {};
    }
    text.remove_prefix(static_cast<size_t>(end - text.data()));
    return number;
}

bool Take(std::string_view& text, char expected) {
    if (text.empty() || text.front() != expected) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

// FIRST, FIRST-LAST or FIRST-LASTxSTEP.
bool AddRange(std::string_view text, std::vector<uint32_t>& frames) {
    const auto first = TakeNumber(text);
    const auto last = Take(text, '-') ? TakeNumber(text) : first;
    const auto step = Take(text, 'x') ? TakeNumber(text) : uint32_t{1};
    if (!first || !last || !step || !text.empty() || *last < *first || *step == 0) {
        return false;
    }
    for (uint64_t frame = *first; frame <= *last && frames.size() <= kMaxFrames; frame += *step) {
        frames.push_back(static_cast<uint32_t>(frame));
    }
    return true;
}

}  // namespace

std::optional<FramePattern> FramePattern::Parse(const std::string& name) {
    static const std::regex kPlace("%(0([1-9]))?d|#+");
    const auto first = std::sregex_iterator(name.begin(), name.end(), kPlace);
    if (first == std::sregex_iterator()) {
        return {};
    }
    if (std::next(first) != std::sregex_iterator()) {
        throw UsageError(name + " has more than one place for a frame's number");
    }
    const std::smatch& match = *first;
    FramePattern pattern;
    pattern.head_ = match.prefix();
    pattern.tail_ = match.suffix();
    pattern.digits_ = name[pattern.head_.size()] == '#' ? static_cast<size_t>(match.length())
                      : match[2].matched                ? static_cast<size_t>(match.str(2)[0] - '0')
                                                        : 1;
    return pattern;
}

std::string FramePattern::Name(uint32_t frame) const {
    const std::string number = std::to_string(frame);
    return head_ + std::string(digits_ - std::min(digits_, number.size()), '0') + number + tail_;
}

std::optional<uint32_t> FramePattern::Frame(std::string_view name) const {
    if (name.size() < head_.size() + tail_.size() || !name.starts_with(head_) || !name.ends_with(tail_)) {
        return {};
    }
    std::string_view digits = name.substr(head_.size(), name.size() - head_.size() - tail_.size());
    const auto frame = TakeNumber(digits);
    return frame && Name(*frame) == name ? frame : std::nullopt;
}

std::vector<uint32_t> ParseFrames(const std::string& text) {
    std::vector<uint32_t> frames;
    for (size_t start = 0; start <= text.size();) {
        const size_t end = std::min(text.find(',', start), text.size());
        if (!AddRange(std::string_view(text).substr(start, end - start), frames)) {
            throw UsageError("--frames: numbers and ranges expected, as in 1-240, 1-240x2 or 1-10,20, not " + text);
        }
        start = end + 1;
    }
    if (frames.size() > kMaxFrames) {
        throw UsageError("--frames: " + text + " lists more than " + std::to_string(kMaxFrames) + " frames");
    }
    return frames;
}

}  // namespace plenar_tool
