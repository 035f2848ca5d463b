#include "payload_view.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace plenar_tool {

namespace {

constexpr size_t maxBoxes = 256;
constexpr size_t maxPlanes = 16;
constexpr uint32_t boxHeaderBytes = 8;
constexpr uint32_t minSinfBytes = 20;
constexpr uint32_t maxFrameLayout = 1;

std::string Printable(std::string_view code) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const char c : code) {
        if (c >= ' ' && c <= '~') {
            text += c;
        } else {
            const auto byte = static_cast<uint8_t>(c);
            text += {'\\', 'x', digits[byte / 16], digits[byte % 16]};
        }
    }
    return text;
}

// Walks a payload as a decoder does: boxes follow one another by their stated sizes, and a 'sinf' box must be followed
// by the 'sdat' box of its plane. It stops at the first box that can't be followed further.
class Walk {
public:
    explicit Walk(std::span<const uint8_t> bytes) : payload(bytes), limit(bytes.size()) {}

    PayloadView Run() {
        Box pack{};
        if (!OpenBox(0, "pack", pack)) {
            return std::move(view);
        }
        if (pack.size > limit) {
            Note("states " + std::to_string(pack.size) + " bytes where the file has " + std::to_string(limit));
        } else if (pack.size < limit) {
            Note(std::to_string(limit - pack.size) + " bytes of the file lie behind the 'pack' box");
            limit = pack.size;
        }
        position = boxHeaderBytes;
        while (position + boxHeaderBytes <= limit && TakeBox()) {
        }
        if (view.planes.empty() && view.remarks.empty()) {
            Note("the 'pack' box holds no plane");
        }
        return std::move(view);
    }

private:
    struct Box {
        uint32_t size;
        std::string_view kind;
    };

    uint32_t Number(uint64_t offset) const {
        return payload[offset] | uint32_t{payload[offset + 1]} << 8 | uint32_t{payload[offset + 2]} << 16 |
               uint32_t{payload[offset + 3]} << 24;
    }

    std::string_view Code(uint64_t offset) const { return {reinterpret_cast<const char*>(payload.data()) + offset, 4}; }

    void Note(std::string text) { view.remarks.push_back({position, std::move(text)}); }

    // Adds the box at `position` to the view. False, with a remark, when it can't be read, isn't of the kind expected
    // (any, if that is empty), or is one too many.
    bool OpenBox(uint32_t level, std::string_view expected, Box& box) {
        if (position + boxHeaderBytes > limit) {
            Note("the payload ends where the header of a box should stand");
            return false;
        }
        if (view.boxes.size() == maxBoxes) {
            Note("more boxes follow; they are not shown");
            return false;
        }
        box = {Number(position), Code(position + 4)};
        view.boxes.push_back({level, position, box.size, Printable(box.kind)});
        if (!expected.empty() && box.kind != expected) {
            Note("a '" + std::string(expected) + "' box should stand here");
            return false;
        }
        return true;
    }

    bool TakeBox() {
        Box box{};
        const uint64_t start = position;
        if (Code(position + 4) == "sinf") {
            return TakePlane(1);
        }
        if (!OpenBox(1, "", box)) {
            return false;
        }
        if (box.kind == "icmp") {
            position += boxHeaderBytes;
            if (!TakePlane(2)) {
                return false;
            }
            if (position < start + box.size) {
                Note(std::to_string(start + box.size - position) +
                     " bytes behind the plane in its 'icmp' box are skipped");
                position = start + box.size;
            }
            return true;
        }
        Note("this box is unknown and is skipped");
        position += std::max(box.size, boxHeaderBytes);
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
        if (sdat.size < boxHeaderBytes) {
            Note("a 'sdat' box can't have " + std::to_string(sdat.size) + " bytes");
            return false;
        }
        plane.offset = position + boxHeaderBytes;
        plane.bytes = sdat.size - boxHeaderBytes;
        const uint64_t present = std::min<uint64_t>(plane.bytes, limit - plane.offset);
        if (present < plane.bytes) {
            Note("the plane states " + std::to_string(plane.bytes) + " bytes of data; " + std::to_string(present) +
                 " are there");
        }
        position = plane.offset + plane.bytes;
        if (plane.info.coded) {
            plane.bandTable = ReadBandTable(payload.subspan(plane.offset, present), plane.height);
            if (!plane.bandTable.problem.empty()) {
                view.remarks.push_back({plane.offset, plane.bandTable.problem});
            }
        }
        view.planes.push_back(std::move(plane));
        if (view.planes.size() == maxPlanes) {
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
        const uint32_t needed = std::clamp(sinf.size, minSinfBytes, minSinfBytes + 1);
        if (sinf.size < minSinfBytes || position + needed > limit) {
            Note("this 'sinf' box is cut short");
            return false;
        }
        const std::string_view code = Code(position + 16);
        plane.code = Printable(code);
        plane.info = DescribePlaneCode(code);
        plane.width = Number(position + 8);
        plane.height = Number(position + 12);
        plane.frameLayout = sinf.size > minSinfBytes ? payload[position + minSinfBytes] : 0U;
        if (plane.info.depth == 0) {
            Note("plane code \"" + plane.code + "\" is unknown");
        }
        if (plane.frameLayout > maxFrameLayout) {
            Note("frame layout " + std::to_string(plane.frameLayout) + " is unknown");
        }
        position += sinf.size;
        return true;
    }

    std::span<const uint8_t> payload;
    uint64_t limit;
    uint64_t position = 0;
    PayloadView view;
};

}  // namespace

PayloadView ViewPayload(std::span<const uint8_t> payload) {
    return Walk(payload).Run();
}

}  // namespace plenar_tool
