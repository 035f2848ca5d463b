#include "testing/names.h"

#include <plenar_sdk.h>

#include <sstream>

namespace plenar_test {
namespace {

std::string WordAt(uint32_t place, const std::string& words) {
    std::istringstream rest(words);
    std::string word;
    for (uint32_t i = 0; i <= place && rest; ++i) {
        word = "Unknown";
        rest >> word;
    }
    return word;
}

}  // namespace

std::string OrderName(uint32_t order) {
    return WordAt(order,
                  "NoOrder YCbYCr CbYCrY ARGB BGRA RGB BGR RGBA ABGR CbYCr YCbCr420Planar CbYACrYA YCbCrA "
                  "YCbCrA420Planar AlphaOnly YCbYCrPlusAlpha CbYCrYPlusAlpha");
}

std::string TypeName(uint32_t type) {
    return type == PLENAR_TYPE_FIXED2P14 ? "Fixed2p14"
                                         : WordAt(type, "NoType Uint8 Uint16 Uint10 Uint12 Packed10 Half16 Float32");
}

std::string PairName(const std::pair<uint32_t, uint32_t>& orderAndType) {
    return OrderName(orderAndType.first) + "_" + TypeName(orderAndType.second);
}

}  // namespace plenar_test
