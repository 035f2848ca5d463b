// The boxes of a payload: kinds and sizes shared by its writer, its reader and the planner. All numbers in a payload
// are little-endian, at any address.
#pragma once

#include <cstdint>

#include "format/plane_type.h"

namespace plenar {

namespace box {
inline constexpr uint32_t pack = FourCC("pack");  // the whole payload
inline constexpr uint32_t icmp = FourCC("icmp");  // one plane of several: a sinf box, then an sdat box
inline constexpr uint32_t sinf = FourCC("sinf");  // the description of a plane
inline constexpr uint32_t sdat = FourCC("sdat");  // the data of a plane
}  // namespace box

inline constexpr uint32_t kBoxHeaderSize = 8;
inline constexpr uint32_t kSinfBoxSize = 21;
inline constexpr uint32_t kSinfBoxSizeWithoutLayout = 20;  // the least that a reader accepts

// The bytes between the end of one plane's data and the start of the next plane's.
constexpr uint32_t PlaneOverhead(bool multi) {
    return (multi ? kBoxHeaderSize : 0) + kSinfBoxSize + kBoxHeaderSize;
}

// The bytes ahead of the first plane's data.
constexpr uint32_t HeadOverhead(bool multi) {
    return kBoxHeaderSize + PlaneOverhead(multi);
}

struct BoxHeader {
    uint32_t size;  // of the whole box, this header included
    uint32_t kind;
};

}  // namespace plenar
