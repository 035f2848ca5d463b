#include "sample_hash.h"

#include <nettle/sha2.h>

#include <array>

namespace plenar_tool {

std::string HashSamples(std::span<const uint8_t> samples) {
    constexpr const char* kDigits = "0123456789abcdef";
    sha256_ctx context;
    std::array<uint8_t, SHA256_DIGEST_SIZE> digest{};
    sha256_init(&context);
    sha256_update(&context, samples.size(), samples.data());
    sha256_digest(&context, digest.size(), digest.data());
    std::string text;
    for (const uint8_t byte : digest) {
        text += {kDigits[byte / 16], kDigits[byte % 16]};
    }
    return text;
}

}  // namespace plenar_tool
