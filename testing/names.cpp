#include "testing/names.h"

#include <plenar_sdk.h>

#include <iterator>

namespace plenar_test {

const char* OrderName(uint32_t order) {
    static constexpr const char* kNames[] = {"NoOrder",
                                             "YCbYCr",
                                             "CbYCrY",
                                             "ARGB",
                                             "BGRA",
                                             "RGB",
                                             "BGR",
                                             "RGBA",
                                             "ABGR",
                                             "CbYCr",
                                             "YCbCr420Planar",
                                             "CbYACrYA",
                                             "YCbCrA",
                                             "YCbCrA420Planar",
                                             "AlphaOnly",
                                             "YCbYCrPlusAlpha",
                                             "CbYCrYPlusAlpha"};
    return order < std::size(kNames) ? kNames[order] : "UnknownOrder";
}

const char* TypeName(uint32_t type) {
    static constexpr const char* kNames[] = {"NoType", "Uint8",    "Uint16", "Uint10",
                                             "Uint12", "Packed10", "Half16", "Float32"};
    return type < std::size(kNames) ? kNames[type] : type == PLENAR_TYPE_FIXED2P14 ? "Fixed2p14" : "UnknownType";
}

std::string PairName(const std::pair<uint32_t, uint32_t>& orderAndType) {
    return std::string(OrderName(orderAndType.first)) + "_" + TypeName(orderAndType.second);
}

}  // namespace plenar_test
