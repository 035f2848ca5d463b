// What a user may call an order and a type: their own names, and those of common video formats.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace plenar_tool {

// A name of both an order and a type. Samples are meant as they lie in memory, words with their low byte first.
struct VideoFormat {
    std::string_view name;
    std::string_view order;
    std::string_view type;
};

inline constexpr auto kVideoFormats = std::to_array<VideoFormat>({
    {"UYVY", "CbYCrY", "Uint8"},
    {"uyvy422", "CbYCrY", "Uint8"},
    {"2vuy", "CbYCrY", "Uint8"},
    {"HDYC", "CbYCrY", "Uint8"},
    {"YUY2", "YCbYCr", "Uint8"},
    {"YUYV", "YCbYCr", "Uint8"},
    {"yuyv422", "YCbYCr", "Uint8"},
    {"v210", "CbYCrY", "Packed10"},
    {"v216", "CbYCrY", "Uint16"},
    {"Y210", "YCbYCr", "Uint10"},
    {"Y212", "YCbYCr", "Uint12"},
    {"Y216", "YCbYCr", "Uint16"},
    {"I420", "YCbCr420Planar", "Uint8"},
    {"IYUV", "YCbCr420Planar", "Uint8"},
    {"YU12", "YCbCr420Planar", "Uint8"},
    {"yuv420p", "YCbCr420Planar", "Uint8"},
    {"yuv420p16", "YCbCr420Planar", "Uint16"},
    {"yuva420p", "YCbCrA420Planar", "Uint8"},
    {"RGB24", "RGB", "Uint8"},
    {"BGR24", "BGR", "Uint8"},
    {"RGB48", "RGB", "Uint16"},
    {"BGR48", "BGR", "Uint16"},
    {"RGBA64", "RGBA", "Uint16"},
    {"BGRA64", "BGRA", "Uint16"},
    {"ARGB64", "ARGB", "Uint16"},
    {"ABGR64", "ABGR", "Uint16"},
});

// 0 where a name leaves it open.
struct NamedFormat {
    uint32_t order = 0;
    uint32_t type = 0;
};

// Upper and lower case are the same. Both throw UsageError, with the names that would do, for other names.
NamedFormat FindOrderName(const std::string& name);
uint32_t FindTypeName(const std::string& name);

std::vector<std::string> OrderNames();
std::vector<std::string> TypeNames();
std::vector<std::string> VideoFormatNames();

}  // namespace plenar_tool
