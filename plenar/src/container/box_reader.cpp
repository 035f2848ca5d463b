#include "container/box_reader.h"

#include <algorithm>
#include <string>

#include "plenar/exceptions.h"

namespace plenar {

namespace {

constexpr uint64_t kindOffset = 4;
constexpr uint64_t sinfWidthOffset = 8;
constexpr uint64_t sinfHeightOffset = 12;
constexpr uint64_t sinfTypeOffset = 16;
constexpr uint64_t sinfLayoutOffset = 20;
constexpr uint8_t maxFrameLayout = 1;

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
    Refuse("can't read box header(", boxHeaderSize, " bytes) at offset ", position);
}

void CheckFrameLayout(uint8_t value) {
    if (value > maxFrameLayout) {
        Refuse("Undefined value of frame layout: ", value);
    }
}

}  // namespace

MetadataParser::MetadataParser(const uint8_t* buffer, uint64_t size) : buffer(buffer), limit(size) {
    if (buffer == nullptr) {
        Refuse("buffer is null");
    }
    if (size < boxHeaderSize) {
        Refuse("buffer size should be at least ", boxHeaderSize);
    }
}

BoxHeader MetadataParser::ReadBoxHeader() const {
    if (position + boxHeaderSize > limit) {
        RefuseHeaderAt(position);
    }
    return {LoadAt<uint32_t>(buffer + position), LoadAt<uint32_t>(buffer + position + kindOffset)};
}

void MetadataParser::ReadPackBox() {
    const BoxHeader header = ReadBoxHeader();
    if (header.kind != box::pack) {
        Refuse("'pack' box expected at offset ", position + kindOffset);
    }
    if (header.size > limit) {
        Refuse("pack box size(", header.size, ") is greater than buffer size(", limit, ")");
    }
    position += boxHeaderSize;
    limit = header.size;
}

MetadataParser::PlaneInfo MetadataParser::ReadSinfBox() {
    const BoxHeader header = ReadBoxHeader();
    if (header.kind != box::sinf) {
        Refuse("'sinf' box expected at offset ", position + kindOffset);
    }
    if (header.size < sinfBoxSizeWithoutLayout) {
        Refuse("sinf box size expected to be at least ", sinfBoxSizeWithoutLayout, " bytes at offset ", position);
    }
    if (position + std::min(header.size, sinfBoxSize) > limit) {
        // The fields would lie outside the payload. The box behind this one can't be there either: say so.
        RefuseHeaderAt(position + header.size);
    }
    PlaneInfo info;
    info.width = LoadAt<uint32_t>(buffer + position + sinfWidthOffset);
    info.height = LoadAt<uint32_t>(buffer + position + sinfHeightOffset);
    info.type = NormalizePlaneType(LoadAt<uint32_t>(buffer + position + sinfTypeOffset));
    if (header.size >= sinfBoxSize) {
        info.frame_layout = buffer[position + sinfLayoutOffset];
        CheckFrameLayout(info.frame_layout);
    }
    position += header.size;
    return info;
}

void MetadataParser::CheckSdatBox(const BoxHeader& header, const PlaneInfo& info) const {
    if (header.kind != box::sdat) {
        Refuse("'sdat' box expected at offset ", position + kindOffset);
    }
    // A coded plane has a byte at least; what else it needs is known only to its decoder.
    const uint64_t data = IsCodedAlpha(info.type) ? 1 : info.height * PlaneRowBytes(info.type, info.width);
    const uint64_t needed = data + boxHeaderSize;
    if (header.size < needed) {
        Refuse("'sdat' box size expected to be at least ", needed, " at offset ", position);
    }
    if (position + needed > limit) {
        Refuse("can't read ", needed, " bytes at offset ", position + boxHeaderSize);
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
    record.offset = static_cast<uint32_t>(position + boxHeaderSize);
    record.size = header.size - boxHeaderSize;
    // A full list is already too long for any frame. The walk goes on only for the sake of what it may refuse.
    if (!planes.Full()) {
        planes.push_back(record);
    }
    position += boxHeaderSize + uint64_t{record.size};
}

void MetadataParser::ReadBarePlane() {
    if (!planes.empty()) {
        Refuse("only single 'sinf' box allowed outside of 'icmp' box");
    }
    ReadPlane();
}

void MetadataParser::ReadPlaneInIcmp(uint32_t boxSize) {
    position += boxHeaderSize;
    const uint64_t start = position;
    ReadPlane();
    // Sizes below 8 wrap, and so end the walk.
    const uint32_t rest = boxSize - boxHeaderSize;
    position = std::max(position, start + rest);
}

void MetadataParser::ReadTopLevelBox() {
    const BoxHeader header = ReadBoxHeader();
    switch (header.kind) {
        case box::sinf:
            return ReadBarePlane();
        case box::icmp:
            return ReadPlaneInIcmp(header.size);
        default:
            position += std::max(header.size, boxHeaderSize);
    }
}

FramePlan MetadataParser::ParseMetadata() {
    ReadPackBox();
    while (position + boxHeaderSize <= limit) {
        ReadTopLevelBox();
    }
    if (planes.empty()) {
        Refuse("at least one 'sinf' and one 'sdat' box expected");
    }
    CheckPlaneCombination(planes);
    AssignPlaneOffsets(planes);
    FramePlan plan;
    plan.planes = planes;
    plan.total_size = planes.back().offset + planes.back().size;
    return plan;
}

}  // namespace plenar
