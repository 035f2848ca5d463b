// The names of orders and types, and what a picture file needs to know of an order.
#pragma once

#include <plenar_sdk.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace plenar_tool {

struct OrderInfo {
    uint32_t value;
    std::string_view name;
    std::string_view channels;  // the samples of a pixel, for orders that a picture file can hold; else empty
    bool hasAlpha;
};

struct TypeInfo {
    uint32_t value;
    std::string_view name;
    size_t sampleBytes;
    uint32_t depth;
};

inline constexpr std::array<OrderInfo, 16> kOrders{{
    {plenar::YCbYCr, "YCbYCr", "", false},
    {plenar::CbYCrY, "CbYCrY", "", false},
    {plenar::ARGB, "ARGB", "ARGB", true},
    {plenar::BGRA, "BGRA", "BGRA", true},
    {plenar::RGB, "RGB", "RGB", false},
    {plenar::BGR, "BGR", "BGR", false},
    {plenar::RGBA, "RGBA", "RGBA", true},
    {plenar::ABGR, "ABGR", "ABGR", true},
    {plenar::CbYCr, "CbYCr", "", false},
    {plenar::YCbCr420Planar, "YCbCr420Planar", "", false},
    {plenar::CbYACrYA, "CbYACrYA", "", true},
    {plenar::YCbCrA, "YCbCrA", "", true},
    {plenar::YCbCrA420Planar, "YCbCrA420Planar", "", true},
    {plenar::AlphaOnly, "AlphaOnly", "A", true},
    {plenar::YCbYCrPlusAlpha, "YCbYCrPlusAlpha", "", true},
    {plenar::CbYCrYPlusAlpha, "CbYCrYPlusAlpha", "", true},
}};

inline constexpr std::array<TypeInfo, 8> kTypes{{
    {plenar::Uint8, "Uint8", 1, 8},
    {plenar::Uint10, "Uint10", 2, 10},
    {plenar::Uint12, "Uint12", 2, 12},
    {plenar::Uint16, "Uint16", 2, 16},
    {plenar::Fixed2p14, "Fixed2p14", 2, 16},
    {plenar::Half16, "Half16", 2, 16},
    {plenar::Float32, "Float32", 4, 32},
    {plenar::Packed10, "Packed10", 2, 10},
}};

// Values that aren't in the tables throw std::out_of_range.
const OrderInfo& FindOrder(uint32_t value);
const TypeInfo& FindType(uint32_t value);

// The order that a picture file is written in: "RGB", "RGBA" or "A" for the channels of an order, in any arrangement.
std::string_view FileChannels(std::string_view channels);

// "RGBA, Uint8, 640x480"
std::string DescribeFormat(const UncompressedParams& params);

}  // namespace plenar_tool
