#include "formats.h"

#include <algorithm>
#include <stdexcept>

namespace plenar_tool {

namespace {

template <class Table>
const auto& FindValue(const Table& table, uint32_t value) {
    const auto found =
        std::find_if(table.begin(), table.end(), [&](const auto& entry) { return entry.value == value; });
    if (found == table.end()) {
        throw std::out_of_range("unknown order or type " + std::to_string(value));
    }
    return *found;
}

}  // namespace

const OrderInfo& FindOrder(uint32_t value) {
    return FindValue(kOrders, value);
}

const TypeInfo& FindType(uint32_t value) {
    return FindValue(kTypes, value);
}

std::string_view FileChannels(std::string_view channels) {
    const bool hasAlpha = channels.find('A') != std::string_view::npos;
    if (channels.find('R') == std::string_view::npos) {
        return hasAlpha ? "A" : "";
    }
    return hasAlpha ? "RGBA" : "RGB";
}

std::string DescribeFormat(const UncompressedParams& params) {
    std::string text(FindOrder(params.colorComponentOrder).name);
    text += ", ";
    text += FindType(params.componentType).name;
    return text + ", " + std::to_string(params.width) + "x" + std::to_string(params.height);
}

}  // namespace plenar_tool
