// A payload's boxes and planes, read for display. Safe for any bytes, and bounded in size and time whatever they hold.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "band_table.h"
#include "plane_code.h"

namespace plenar_tool {

// Codes of boxes and planes are given in printable characters: other bytes stand as \xNN.
struct BoxView {
    uint32_t level;  // 0 for the outermost
    uint64_t offset;
    uint32_t size;  // as stated, these 8 bytes of header included
    std::string kind;
};

struct PlaneView {
    std::string code;
    PlaneCodeInfo info;
    uint32_t width;
    uint32_t height;
    uint32_t frameLayout;
    uint64_t offset;  // of the plane's first data byte
    uint32_t bytes;   // of data, as stated
    BandTable bandTable;
};

struct Remark {
    uint64_t offset;
    std::string text;
};

struct PayloadView {
    std::vector<BoxView> boxes;
    std::vector<PlaneView> planes;
    std::vector<Remark> remarks;  // what is odd or wrong, and where
};

PayloadView ViewPayload(std::span<const uint8_t> payload);

}  // namespace plenar_tool
