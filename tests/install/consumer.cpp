// A host in C++17: asks a payload what it holds, and checks that the package and the library name the same version.
#include <plenar_sdk.h>

#include <cstdio>
#include <string>
#include <vector>

int main() {
    std::uint32_t version[4] = {};
    Plenar_GetVersion(&version[0], &version[1], &version[2], &version[3], nullptr);
    std::string text = std::to_string(version[0]);
    for (int k = 1; k < 4; ++k) {
        text += "." + std::to_string(version[k]);
    }
    const UncompressedParams picture{sizeof picture, plenar::BGRA, plenar::Uint16, 19, 5, 0, 0, 0};
    const CompressedParams options{sizeof options, 0, 0};
    const std::vector<unsigned char> source(Plenar_GetUncompressedBufSize(&picture), 'x');
    std::vector<unsigned char> payload(Plenar_GetCompressedBufSize(&picture, &options));
    const auto sourceSize = static_cast<std::uint32_t>(source.size());
    const auto payloadSize = static_cast<std::uint32_t>(payload.size());
    UncompressedParams found{};
    found.size = sizeof found;
    Encoder* encoder = nullptr;
    Decoder* decoder = nullptr;
    const bool good = text == PACKAGE_VERSION && Plenar_CreateEncoder(nullptr, &encoder) == plenar::ResultOk &&
                      Plenar_CreateDecoder(nullptr, &decoder) == plenar::ResultOk &&
                      Plenar_EncodeFrame(encoder, &picture, &options, source.data(), sourceSize, payload.data(),
                                         payloadSize, nullptr) == plenar::ResultOk &&
                      Plenar_ReadMetadata(decoder, payload.data(), payloadSize, &found) == plenar::ResultOk &&
                      found.width == 19 && found.colorComponentOrder == plenar::ARGB;
    Plenar_DestroyDecoder(decoder);
    Plenar_DestroyEncoder(encoder);
    std::printf("version %s: %s\n", text.c_str(), good ? "good" : "failed");
    return good ? 0 : 1;
}
