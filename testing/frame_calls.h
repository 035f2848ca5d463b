// Calls on encoders and decoders, in buffers of exact size, that check what every call has to keep to.
#pragma once

#include "testing/codecs.h"
#include "testing/exact_buffer.h"
#include "testing/require.h"
#include "testing/sample_model.h"

namespace plenar_test {

// What a call made: on success the payload, cut to what was written, or the whole target of a decode.
struct Frame {
    std::string message;
    Bytes bytes = {};
};

// Where source and target lie: numbers give all pairs of places, and shifts of the target.
inline constexpr uint32_t kGuardedPlaces = kBeforeGuard + 3 * kBeforeGuard;

template <class Codec, class Call>
Frame CallOn(Codec& codec, const Bytes& source, const Bytes& before, uint32_t places, const Call& call) {
    const ExactBuffer src(source, places);
    const ExactBuffer dst(before, places / 3, places / 9 % 7);
    uint32_t written = 0xFEDCBA98;
    Frame frame{codec.Outcome(call(src.data(), src.size(), dst.data(), dst.size(), &written))};
    Require(src.Content() == source && src.IsIntact(), "a source stays as it is");
    Require(dst.IsIntact(), "nothing is written beyond a target");
    Require(!frame.message.starts_with("code "), "a failure has one message, told on its own thread");
    if (frame.message.empty()) {
        Require(written <= dst.size(), "a result fits its buffer");
        frame.bytes.assign(dst.data(), dst.data() + written);
    } else {
        Require(written == 0xFEDCBA98, "bytes written are told on success only");
    }
    return frame;
}

// Over `before`, of the size of the room for the payload.
inline Frame Encode(TestEncoder& encoder, const UncompressedParams& params, const Bytes& picture,
                    const CompressedParams& options, const Bytes& before, uint32_t places) {
    return CallOn(encoder, picture, before, places,
                  [&](auto* src, auto srcSize, auto* dst, auto dstSize, auto* written) {
                      return Plenar_EncodeFrame(encoder.get(), &params, &options, src, srcSize, dst, dstSize, written);
                  });
}

// With as much room as the library asks for.
inline Frame Encode(TestEncoder& encoder, const UncompressedParams& params, const Bytes& picture,
                    const CompressedParams& options = MakeCompressed(), uint32_t places = kGuardedPlaces) {
    const uint32_t room = Plenar_GetCompressedBufSize(&params, &options);
    return Encode(encoder, params, picture, options, Noise(room, places), places);
}

inline Frame Decode(TestDecoder& decoder, const UncompressedParams& params, const Bytes& payload, const Bytes& before,
                    uint32_t places = kGuardedPlaces) {
    return CallOn(
        decoder, payload, before, places, [&](auto* src, auto srcSize, auto* dst, auto dstSize, auto* written) {
            const uint32_t code = Plenar_DecodeFrame(decoder.get(), &params, src, srcSize, dst, dstSize, written);
            Require(code != 0 || *written == Plenar_GetUncompressedBufSize(&params), "a decode writes a whole picture");
            *written = code == 0 ? dstSize : *written;
            return code;
        });
}

// The message.
inline std::string ReadMetadata(TestDecoder& decoder, const Bytes& payload, UncompressedParams& params,
                                uint32_t place = kBeforeGuard) {
    const ExactBuffer src(payload, place);
    return decoder.Outcome(Plenar_ReadMetadata(decoder.get(), src.data(), src.size(), &params));
}

}  // namespace plenar_test
