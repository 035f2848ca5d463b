#include "container/box_reader.h"

#include <algorithm>
#include <string>

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
    return {LoadAt<uint32_t>(buffer_ + position_), LoadAt<uint32_t>(buffer_ + position_ + kIndOffset)};
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

MetadataParser::PlaneInfo MetadataParser::ReadSinfBox() {
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
    PlaneInfo info;
    info.width = LoadAt<uint32_t>(buffer_ + position_ + kSinfWidthOffset);
    info.height = LoadAt<uint32_t>(buffer_ + position_ + kSinfHeightOffset);
    info.type = NormalizePlaneType(LoadAt<uint32_t>(buffer_ + position_ + kSinfTypeOffset));
    if (header.size >= kSinfBoxSize) {
        info.frame_layout = buffer_[position_ + kSinfLayoutOffset];
        CheckFrameLayout(info.frame_layout);
    }
    position_ += header.size;
    return info;
}

void MetadataParser::CheckSdatBox(const BoxHeader& header, const PlaneInfo& info) const {
    if (header.kind != box::sdat) {
        Refuse("'sdat' box expected at offset ", position_ + kIndOffset);
    }
    // A coded plane has a byte at least; what else it needs is known only to its decoder.
    const uint64_t data = IsCodedAlpha(info.type) ? 1 : info.height * PlaneRowBytes(info.type, info.width);
    const uint64_t needed = data + kBoxHeaderSize;
    if (header.size < needed) {
        Refuse("'sdat' box size expected to be at least ", needed, " at offset ", position_);
    }
    if (position_ + needed > limit_) {
        Refuse("can't read ", needed, " bytes at offset ", position_ + kBoxHeaderSize);
    }
}

void MetadataParser::ReadPlane() {
    const PlaneInfo info = ReadSinfBox();
    const BoxHeader header = ReadBoxHeader();
    CheckSdatBox(header, info);
    PlaneRecord record;
    record.type = info.type;
    record.width = info.width;
    record.height = info.height;
    record.frame_layout = info.frame_layout;
    record.offset = static_cast<uint32_t>(position_ + kBoxHeaderSize);
    record.size = header.size - kBoxHeaderSize;
    // A full list is already too long for any frame. The walk goes on only for the sake of what it may refuse.
    if (!planes_.Full()) {
        planes_.push_back(record);
    }
    position_ += kBoxHeaderSize + uint64_t{record.size};
}

void MetadataParser::ReadBarePlane() {
    if (!planes_.empty()) {
        Refuse("only single 'sinf' box allowed outside of 'icmp' box");
    }
    ReadPlane();
}

void MetadataParser::ReadPlaneInIcmp(uint32_t boxSize) {
    position_ += kBoxHeaderSize;
    const uint64_t start = position_;
    ReadPlane();
    // Sizes below 8 wrap, and so end the walk.
    const uint32_t rest = boxSize - kBoxHeaderSize;
    position_ = std::max(position_, start + rest);
}

void MetadataParser::ReadTopLevelBox() {
    const BoxHeader header = ReadBoxHeader();
    switch (header.kind) {
        case box::sinf:
            return ReadBarePlane();
        case box::icmp:
            return ReadPlaneInIcmp(header.size);
        default:
            position_ += std::max(header.size, kBoxHeaderSize);
    }
}

FramePlan MetadataParser::ParseMetadata() {
    ReadPackBox();
    while (position_ + kBoxHeaderSize <= limit_) {
        ReadTopLevelBox();
    }
    if (planes_.empty()) {
        Refuse("at least one 'sinf' and one 'sdat' box expected");
    }
    CheckPlaneCombination(planes_);
    AssignPlaneOffsets(planes_);
    FramePlan plan;
    plan.planes = planes_;
    plan.total_size = planes_.back().offset + planes_.back().size;
    return plan;
}

}  // namespace plenar
