// Builds payloads by hand, box by box, right ones and wrong ones.
#pragma once

#include <optional>

#include "testing/bytes.h"

namespace plenar_test {

inline Bytes LittleEndian(uint32_t value) {
    return {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value >> 16),
            static_cast<uint8_t>(value >> 24)};
}

inline Bytes Letters(const std::string& code) {
    return {code.begin(), code.end()};
}

// A box with its true size, or with the one that is stated for it.
inline Bytes Box(const std::string& kind, const Bytes& content, std::optional<uint32_t> size = {}) {
    return Join({LittleEndian(size.value_or(static_cast<uint32_t>(content.size()) + 8)), Letters(kind), content});
}

// Changes what the box at that place states as its size.
inline void StateSize(Bytes& bytes, size_t place, size_t size) {
    const Bytes stated = LittleEndian(static_cast<uint32_t>(size));
    std::copy(stated.begin(), stated.end(), bytes.begin() + static_cast<ptrdiff_t>(place));
}

struct Plane {
    std::string code;
    uint32_t width = 0;
    uint32_t height = 0;
    uint8_t layout = 0;
    Bytes data = {};
};

// The description of a plane; 20 bytes leave the layout out, more than 21 add bytes that mean nothing.
inline Bytes Sinf(const Plane& plane, uint32_t size = 21) {
    Bytes content = Join({LittleEndian(plane.width), LittleEndian(plane.height), Letters(plane.code), {plane.layout}});
    content.resize(size - 8, 0xEE);
    return Box("sinf", content);
}

inline Bytes Sdat(const Plane& plane) {
    return Box("sdat", plane.data);
}

inline Bytes Icmp(const Plane& plane, const Bytes& tail = {}) {
    return Box("icmp", Join({Sinf(plane), Sdat(plane), tail}));
}

inline Bytes Pack(std::initializer_list<Bytes> boxes) {
    return Box("pack", Join(boxes));
}

// The payload as an encoder lays it out.
inline Bytes PayloadOf(const std::vector<Plane>& planes) {
    if (planes.size() == 1) {
        return Pack({Sinf(planes[0]), Sdat(planes[0])});
    }
    Bytes boxes;
    for (const Plane& plane : planes) {
        boxes = Join({boxes, Icmp(plane)});
    }
    return Box("pack", boxes);
}

// Where the data of a plane begins in that payload.
inline size_t DataOffset(const std::vector<Plane>& planes, size_t index) {
    size_t offset = planes.size() == 1 ? 37 : 45;
    for (size_t k = 0; k < index; ++k) {
        offset += planes[k].data.size() + 37;
    }
    return offset;
}

}  // namespace plenar_test
