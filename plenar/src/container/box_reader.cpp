#include "container/box_reader.h"

#include <algorithm>
#include <string>

#include "base/bytes.h"
#include "base/exceptions.h"

namespace plenar {

namespace {

constexpr uint64_t kIndOffset = 4;
constexpr uint64_t kSinfWidthOffset = 8;
constexpr uint64_t kSinfHeightOffset = 12;
constexpr uint64_t kSinfTypeOffset = 16;
constexpr uint64_t kSinfLayoutOffset = 20;
constexpr uint8_t kMaxFrameLayout = 1;

// Composes a message of texts and numbers and throws it.
template <class... Pieces>
[[noreturn]] void Refuse(const Pieces&... pieces) {
    std::string message;
    const auto append = [&](const auto& piece) {
        if constexpr (std::is_integral_v<std::decay_t<decltype(piece)>>) {
            message += std::to_string(piece);
        } else {
            message += piece;
        }
    };
    (append(pieces), ...);
    throw invalid_buffer(message);
}

[[noreturn]] void RefuseHeaderAt(uint64_t position) {
    Refuse("can't read box header(", kBoxHeaderSize, " bytes) at offset ", position);
}

void CheckFrameLayout(uint8_t value) {
    if (value > kMaxFrameLayout) {
        Refuse("Undefined value of frame layout: ", value);
    }
}

}  // namespace

MetadataParser::MetadataParser(const uint8_t* buffer, uint64_t size) : buffer_(buffer), limit_(size) {
    if (buffer == nullptr) {
        Refuse("buffer is null");
    }
    if (size < kBoxHeaderSize) {
        Refuse("buffer size should be at least ", kBoxHeaderSize);
    }
}

BoxHeader MetadataParser::ReadBoxHeader() const {
    if (position_ + kBoxHeaderSize > limit_) {
        RefuseHeaderAt(position_);
    }
    return {LoadAs<uint32_t>(buffer_ + position_), LoadAs<uint32_t>(buffer_ + position_ + kIndOffset)};
}

void MetadataParser::ReadPackBox() {
    const BoxHeader header = ReadBoxHeader();
    if (header.kind != box::pack) {
        Refuse("'pack' box expected at offset ", position_ + kIndOffset);
    }
    if (header.size > limit_) {
        Refuse("pack box size(", header.size, ") is greater than buffer size(", limit_, ")");
    }
    position_ += kBoxHeaderSize;
    limit_ = header.size;
}

PlaneRecord MetadataParser::ReadSinfBox() {
    const BoxHeader header = ReadBoxHeader();
    if (header.kind != box::sinf) {
        Refuse("'sinf' box expected at offset ", position_ + kIndOffset);
    }
    if (header.size < kSinfBoxSizeWithoutLayout) {
        Refuse("sinf box size expected to be at least ", kSinfBoxSizeWithoutLayout, " bytes at offset ", position_);
    }
    if (position_ + std::min(header.size, kSinfBoxSize) > limit_) {
        // The fields would lie outside the payload. The box behind this one can't be there either: say so.
        RefuseHeaderAt(position_ + header.size);
    }
    PlaneRecord plane;
    plane.kind = &NormalizePlaneType(LoadAs<uint32_t>(buffer_ + position_ + kSinfTypeOffset));
    plane.type = plane.kind->type;
    plane.width = LoadAs<uint32_t>(buffer_ + position_ + kSinfWidthOffset);
    plane.height = LoadAs<uint32_t>(buffer_ + position_ + kSinfHeightOffset);
    if (header.size >= kSinfBoxSize) {
        plane.frame_layout = buffer_[position_ + kSinfLayoutOffset];
        CheckFrameLayout(plane.frame_layout);
    }
    position_ += header.size;
    return plane;
}

void MetadataParser::CheckSdatBox(const BoxHeader& header, const PlaneRecord& plane) const {
    if (header.kind != box::sdat) {
        Refuse("'sdat' box expected at offset ", position_ + kIndOffset);
    }
    // A coded plane has a byte at least; what else it needs is known only to its decoder.
    const uint64_t data = plane.kind->isCoded ? 1 : PlainPlaneSize(plane);
    const uint64_t needed = data + kBoxHeaderSize;
    if (header.size < needed) {
        Refuse("'sdat' box size expected to be at least ", needed, " at offset ", position_);
    }
    if (position_ + needed > limit_) {
        Refuse("can't read ", needed, " bytes at offset ", position_ + kBoxHeaderSize);
    }
}

void MetadataParser::ReadPlane(PlaneRecordList& planes) {
    PlaneRecord plane = ReadSinfBox();
    const BoxHeader header = ReadBoxHeader();
    CheckSdatBox(header, plane);
    plane.offset = static_cast<uint32_t>(position_ + kBoxHeaderSize);
    plane.size = header.size - kBoxHeaderSize;
    // A full list is already too long for any frame. The walk goes on only for the sake of what it may refuse.
    if (!planes.Full()) {
        planes.push_back(plane);
    }
    position_ += kBoxHeaderSize + uint64_t{plane.size};
}

void MetadataParser::ReadBarePlane(PlaneRecordList& planes) {
    if (!planes.empty()) {
        Refuse("only single 'sinf' box allowed outside of 'icmp' box");
    }
    ReadPlane(planes);
}

void MetadataParser::ReadPlaneInIcmp(PlaneRecordList& planes, uint32_t boxSize) {
    position_ += kBoxHeaderSize;
    const uint64_t start = position_;
    ReadPlane(planes);
    // Sizes below 8 wrap, and so end the walk.
    const uint32_t rest = boxSize - kBoxHeaderSize;
    position_ = std::max(position_, start + rest);
}

void MetadataParser::ReadTopLevelBox(PlaneRecordList& planes) {
    const BoxHeader header = ReadBoxHeader();
    switch (header.kind) {
        case box::sinf:
            return ReadBarePlane(planes);
        case box::icmp:
            return ReadPlaneInIcmp(planes, header.size);
        default:
            position_ += std::max(header.size, kBoxHeaderSize);
    }
}

FramePlan MetadataParser::ParseMetadata() {
    FramePlan plan;
    ReadPackBox();
    while (position_ + kBoxHeaderSize <= limit_) {
        ReadTopLevelBox(plan.planes);
    }
    if (plan.planes.empty()) {
        Refuse("at least one 'sinf' and one 'sdat' box expected");
    }
    CheckPlaneCombination(plan.planes);
    AssignPlaneOffsets(plan);
    return plan;
}

}  // namespace plenar
