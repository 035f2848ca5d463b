// A host in C++17: asks a payload what it holds before it decodes it, and checks that the package and the library name
// the same version.
#include <plenar_sdk.h>

#include <cstdio>
#include <string>
#include <vector>

#define CHECK(condition)                                                           \
    do {                                                                           \
        if (!(condition)) {                                                        \
            std::fprintf(stderr, "line %d: not true: %s\n", __LINE__, #condition); \
            return 1;                                                              \
        }                                                                          \
    } while (false)

int main() {
    std::uint32_t version[4] = {};
    Plenar_GetVersion(&version[0], &version[1], &version[2], &version[3], nullptr);
    std::string text;
    for (const std::uint32_t number : version) {
        text += (text.empty() ? "" : ".") + std::to_string(number);
    }
    CHECK(text == PACKAGE_VERSION);

    UncompressedParams picture{};
    picture.size = sizeof picture;
    picture.colorComponentOrder = plenar::BGRA;
    picture.componentType = plenar::Uint16;
    picture.width = 19;
    picture.height = 5;
    CompressedParams options{};
    options.size = sizeof options;

    std::vector<unsigned char> source(Plenar_GetUncompressedBufSize(&picture));
    for (std::size_t i = 0; i < source.size(); ++i) {
        source[i] = static_cast<unsigned char>(i * 7);
    }
    std::vector<unsigned char> payload(Plenar_GetCompressedBufSize(&picture, &options));
    std::vector<unsigned char> decoded(source.size());
    CHECK(source.size() == 19 * 5 * 8 && payload.size() > source.size());

    Encoder* encoder = nullptr;
    Decoder* decoder = nullptr;
    CHECK(Plenar_CreateEncoder(nullptr, &encoder) == plenar::ResultOk);
    CHECK(Plenar_CreateDecoder(nullptr, &decoder) == plenar::ResultOk);
    const auto size = [](const std::vector<unsigned char>& bytes) { return static_cast<std::uint32_t>(bytes.size()); };
    std::uint32_t written = 0;
    CHECK(Plenar_EncodeFrame(encoder, &picture, &options, source.data(), size(source), payload.data(), size(payload),
                             &written) == plenar::ResultOk);
    CHECK(written == payload.size());

    UncompressedParams found{};
    found.size = sizeof found;
    CHECK(Plenar_ReadMetadata(decoder, payload.data(), written, &found) == plenar::ResultOk);
    CHECK(found.width == picture.width && found.height == picture.height);
    CHECK(found.colorComponentOrder == plenar::ARGB && found.componentType == plenar::Uint16);

    CHECK(Plenar_DecodeFrame(decoder, &picture, payload.data(), written, decoded.data(), size(decoded), nullptr) ==
          plenar::ResultOk);
    CHECK(decoded == source);

    Plenar_DestroyDecoder(decoder);
    Plenar_DestroyEncoder(encoder);
    return 0;
}
