// Names of the frames of a sequence: "shot.%04d.exr", "shot.####.exr", and lists of frame numbers: "1-240x2".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace plenar_tool {

// A file name with one place for the frame's number.
class FramePattern {
public:
    // Nothing for a name without such a place. Throws UsageError for one with several.
    static std::optional<FramePattern> Parse(const std::string& name);

    // "shot.0007.exr" for 7; numbers of more digits take what they need.
    std::string Name(uint32_t frame) const;

    // The frame whose name this is, if it is one.
    std::optional<uint32_t> Frame(std::string_view name) const;

private:
    std::string head_;
    std::string tail_;
    size_t digits_ = 0;
};

// "1-240x2", "1-10,20,30-40": the numbers in the order given. Throws UsageError.
std::vector<uint32_t> ParseFrames(const std::string& text);

}  // namespace plenar_tool
