#include "plane_code.h"

namespace plenar_tool {

namespace {

constexpr size_t kCodeLength = 4;

struct Family {
    std::string_view codes;  // one after the other
    std::string_view role;
    std::string_view sampling;
    bool coded;
};

constexpr Family kFamilies[] = {
    {"y208y210y212y216y2S1 y2h y2f  h2  f2", "picture", "4:2:2, Cb Y Cr Y", false},
    {"y408y410y412y416y4S1 y4h y4f  h4  f4", "picture", "4:4:4, Cb Y Cr", false},
    {"rg08rg10rg12rg16rgS1 rgh rgfrg hrg f", "picture", "4:4:4, R G B", false},
    {" y08 y10 y12 y16  yh  yf", "luma", "4:2:0, full size", false},
    {"cb08cb10cb12cb16 cbh cbfcb hcb f", "Cb", "4:2:0, half width and height", false},
    {"cr08cr10cr12cr16 crh crfcr hcr f", "Cr", "4:2:0, half width and height", false},
    {" a08 a16", "alpha", "full size", false},
    {"rl08rl16", "alpha", "full size, run-length coded", true},
};

bool Contains(std::string_view codes, std::string_view code) {
    for (size_t i = 0; i < codes.size(); i += kCodeLength) {
        if (codes.substr(i, kCodeLength) == code) {
            return true;
        }
    }
    return false;
}

uint32_t Depth(std::string_view code) {
    if (code.find('f') != std::string_view::npos) {
        return 32;
    }
    if (code.find('h') != std::string_view::npos || code.ends_with("S1")) {
        return 16;
    }
    return code.ends_with("08") ? 8 : code.ends_with("10") ? 10 : code.ends_with("12") ? 12 : 16;
}

}  // namespace

PlaneCodeInfo DescribePlaneCode(std::string_view code) {
    for (const Family& family : kFamilies) {
        if (Contains(family.codes, code)) {
            return {family.role, family.sampling, Depth(code), family.coded};
        }
    }
    return {"unknown", "unknown", 0, false};
}

}  // namespace plenar_tool
