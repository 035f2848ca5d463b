// A host in C++17: checks that the package and the library name the same version.
#include <plenar_sdk.h>

#include <cstdio>
#include <string>

int main() {
    std::uint32_t version[4] = {};
    Plenar_GetVersion(&version[0], &version[1], &version[2], &version[3], nullptr);
    std::string text = std::to_string(version[0]);
    for (int k = 1; k < 4; ++k) {
        text += "." + std::to_string(version[k]);
    }
    std::printf("version %s\n", text.c_str());
    return text == PACKAGE_VERSION ? plenar::ResultOk : plenar::ResultFailed;
}
