#include "payload_view.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace plenar_tool {

namespace {

constexpr size_t kMaxBoxes = 256;
constexpr size_t kMaxPlanes = 16;
constexpr uint32_t kBoxHeaderBytes = 8;
constexpr uint32_t kMinSinfBytes = 20;
constexpr uint32_t kMaxFrameLayout = 1;

std::string Printable(std::string_view code) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    for (const char c : code) {
        if (c >= ' ' && c <= '~') {
            text += c;
        } else {
            const auto byte = static_cast<uint8_t>(c);
            text += {'\\', 'x', kDigits[byte / 16], kDigits[byte % 16]};
        }
    }
    return text;
}

// Walks a payload as a decoder does: boxes follow one another by their stated sizes, and a 'sinf' box must be followed
// by the 'sdat' box of its plane. It stops at the first box that can't be followed further.
class Walk {
public:
    explicit Walk(std::span<const uint8_t> bytes) : payload_(bytes), limit_(bytes.size()) {}

    PayloadView Run() {
        Box pack{};
        if (!OpenBox(0, "pack", pack)) {
            return std::move(view_);
        }
        if (pack.size > limit_) {
            Note("states " + std::to_string(pack.size) + " bytes where the file has " + std::to_string(limit_));
        } else if (pack.size < limit_) {
            Note(std::to_string(limit_ - pack.size) + " bytes of the file lie behind the 'pack' box");
            limit_ = pack.size;
        }
        position_ = kBoxHeaderBytes;
        while (position_ + kBoxHeaderBytes <= limit_ && TakeBox()) {
        }
        if (view_.planes.empty() && view_.remarks.empty()) {
            Note("the 'pack' box holds no plane");
        }
        return std::move(view_);
    }

private:
    struct Box {
        uint32_t size;
        std::string_view kind;
    };

    uint32_t Number(uint64_t offset) const {
        return payload_[offset] | uint32_t{payload_[offset + 1]} << 8 | uint32_t{payload_[offset + 2]} << 16 |
               uint32_t{payload_[offset + 3]} << 24;
    }

    std::string_view Code(uint64_t offset) const {
        return {reinterpret_cast<const char*>(payload_.data()) + offset, 4};
    }

    void Note(std::string text) { view_.remarks.push_back({position_, std::move(text)}); }

    // Adds the box at `position` to the view. False, with a remark, when it can't be read, isn't of the kind expected
    // (any, if that is empty), or is one too many.
    bool OpenBox(uint32_t level, std::string_view expected, Box& box) {
        if (position_ + kBoxHeaderBytes > limit_) {
            Note("the payload ends where the header of a box should stand");
            return false;
        }
        if (view_.boxes.size() == kMaxBoxes) {
            Note("more boxes follow; they are not shown");
            return false;
        }
        box = {Number(position_), Code(position_ + 4)};
        view_.boxes.push_back({level, position_, box.size, Printable(box.kind)});
        if (!expected.empty() && box.kind != expected) {
            Note("a '" + std::string(expected) + "' box should stand here");
            return false;
        }
        return true;
    }

    bool TakeBox() {
        Box box{};
        const uint64_t start = position_;
        if (Code(position_ + 4) == "sinf") {
            return TakePlane(1);
        }
        if (!OpenBox(1, "", box)) {
            return false;
        }
        if (box.kind == "icmp") {
            position_ += kBoxHeaderBytes;
            if (!TakePlane(2)) {
                return false;
            }
            if (position_ < start + box.size) {
                Note(std::to_string(start + box.size - position_) +
                     " bytes behind the plane in its 'icmp' box are skipped");
                position_ = start + box.size;
            }
            return true;
        }
        Note("this box is unknown and is skipped");
        position_ += std::max(box.size, kBoxHeaderBytes);
        return true;
    }

    // A 'sinf' box with the 'sdat' box behind it.
    bool TakePlane(uint32_t level) {
        PlaneView plane{};
        if (!TakeSinf(level, plane)) {
            return false;
        }
        Box sdat{};
        if (!OpenBox(level, "sdat", sdat)) {
            return false;
        }
        if (sdat.size < kBoxHeaderBytes) {
            Note("a 'sdat' box can't have " + std::to_string(sdat.size) + " bytes");
            return false;
        }
        plane.offset = position_ + kBoxHeaderBytes;
        plane.bytes = sdat.size - kBoxHeaderBytes;
        const uint64_t present = std::min<uint64_t>(plane.bytes, limit_ - plane.offset);
        if (present < plane.bytes) {
            Note("the plane states " + std::to_string(plane.bytes) + " bytes of data; " + std::to_string(present) +
                 " are there");
        }
        position_ = plane.offset + plane.bytes;
        if (plane.info.coded) {
            plane.bandTable = ReadBandTable(payload_.subspan(plane.offset, present), plane.height);
            if (!plane.bandTable.problem.empty()) {
                view_.remarks.push_back({plane.offset, plane.bandTable.problem});
            }
        }
        view_.planes.push_back(std::move(plane));
        if (view_.planes.size() == kMaxPlanes) {
            Note("no frame has that many planes; what follows is not shown");
            return false;
        }
        return true;
    }

    bool TakeSinf(uint32_t level, PlaneView& plane) {
        Box sinf{};
        if (!OpenBox(level, "sinf", sinf)) {
            return false;
        }
        const uint32_t needed = std::clamp(sinf.size, kMinSinfBytes, kMinSinfBytes + 1);
        if (sinf.size < kMinSinfBytes || position_ + needed > limit_) {
            Note("this 'sinf' box is cut short");
            return false;
        }
        const std::string_view code = Code(position_ + 16);
        plane.code = Printable(code);
        plane.info = DescribePlaneCode(code);
        plane.width = Number(position_ + 8);
        plane.height = Number(position_ + 12);
        plane.frameLayout = sinf.size > kMinSinfBytes ? payload_[position_ + kMinSinfBytes] : 0U;
        if (plane.info.depth == 0) {
            Note("plane code \"" + plane.code + "\" is unknown");
        }
        if (plane.frameLayout > kMaxFrameLayout) {
            Note("frame layout " + std::to_string(plane.frameLayout) + " is unknown");
        }
        position_ += sinf.size;
        return true;
    }

    std::span<const uint8_t> payload_;
    uint64_t limit_;
    uint64_t position_ = 0;
    PayloadView view_;
};

}  // namespace

PayloadView ViewPayload(std::span<const uint8_t> payload) {
    return Walk(payload).Run();
}

}  // namespace plenar_tool
