#include "frame_source.h"

#include <cstring>
#include <fstream>
#include <stdexcept>
#include <utility>

#include "codec_session.h"
#include "formats.h"
#include "picture_file.h"
#include "pixel_limit.h"
#include "stream_io.h"

namespace plenar_tool {

namespace {

constexpr uint32_t kWordBits = 16;
constexpr size_t kPackOffset = 4;
constexpr std::string_view kPack = "pack";

Frame DecodeFrame(std::span<const uint8_t> payload, uint64_t maxPixels, SampleUse use) {
    DecoderSession session(0);
    Frame frame{session.ReadMetadata(payload), Buffer(0), {}};
    CheckPixelLimit(frame.format, maxPixels);
    if (use == SampleUse::AsInPictures && frame.format.componentType == plenar::Fixed2p14) {
        frame.format.componentType = plenar::Float32;
    }
    frame.samples = session.Decode(frame.format, payload);
    return frame;
}

// Through a payload and back: this drops what payloads don't keep, and ends in the order that they are reported in.
Frame AsKept(const UncompressedParams& params, std::span<const uint8_t> samples) {
    const Buffer payload = EncoderSession(0).Encode(params, MakePayloadParams(), samples);
    return DecodeFrame(payload.Bytes(), UINT64_MAX, SampleUse::AsTheyAre);
}

uint32_t OrderOfChannels(std::string_view channels) {
    return channels == "A" ? plenar::AlphaOnly : channels == "RGBA" ? plenar::RGBA : plenar::RGB;
}

// Whether 16-bit words hold samples of fewer bits, with the low bits as FillLowBits makes them.
bool HoldsFilledBits(const Picture& picture, uint32_t depth) {
    const std::span<const uint8_t> bytes = picture.samples.Bytes();
    for (size_t i = 0; i + 1 < bytes.size(); i += sizeof(uint16_t)) {
        uint16_t word = 0;
        std::memcpy(&word, bytes.data() + i, sizeof(word));
        const uint32_t low = word & ((1U << (kWordBits - depth)) - 1);
        if (low != uint32_t{word} >> depth) {
            return false;
        }
    }
    return true;
}

Frame PictureFrame(Picture picture, const UncompressedParams& format) {
    const OrderInfo& order = FindOrder(format.colorComponentOrder);
    if (order.channels.empty()) {
        throw std::runtime_error("can't be compared with Y'CbCr samples without colour arithmetic: give --raw samples");
    }
    const TypeInfo& type = FindType(format.componentType);
    const bool isShortWord = type.value == plenar::Uint10 || type.value == plenar::Uint12;
    if (isShortWord && picture.type == plenar::Uint16 && HoldsFilledBits(picture, type.depth)) {
        picture.type = type.value;
    }
    RelabelType(picture, type.value);
    const bool dropsAlpha = !order.hasAlpha && picture.channels.find('A') != std::string::npos;
    picture = ArrangeChannels(std::move(picture), order.channels);
    UncompressedParams params = format;
    params.width = picture.width;
    params.height = picture.height;
    Frame frame = AsKept(params, picture.samples.Bytes());
    frame.remark = dropsAlpha ? "; its alpha is not compared, as the other has none" : "";
    return frame;
}

}  // namespace

bool IsPayload(const std::string& file) {
    if (IsStream(file)) {
        return true;
    }
    char head[kPackOffset + kPack.size()] = {};
    std::ifstream(file, std::ios::binary).read(head, sizeof(head));
    return std::string_view(head + kPackOffset, kPack.size()) == kPack;
}

Frame LoadPayload(const std::string& file, uint64_t maxPixels, SampleUse use) {
    return DecodeFrame(ReadFile(file).Bytes(), maxPixels, use);
}

Frame LoadPictureLike(const std::string& file, const UncompressedParams& format) {
    return PictureFrame(ReadPicture(file), format);
}

Frame LoadRawLike(const std::string& file, const PictureOptions& options, const UncompressedParams& format) {
    UncompressedParams params = format;
    params.colorComponentOrder = options.order != 0 ? options.order : uint32_t{format.colorComponentOrder};
    params.componentType = options.type != 0 ? options.type : uint32_t{format.componentType};
    params.rowBytes = options.rowBytes;
    params.rowBytes2 = options.rowBytes2;
    return AsKept(params, ReadFile(file).Bytes());
}

Frame LoadPicture(const std::string& file) {
    Picture picture = ReadPicture(file);
    UncompressedParams format = MakePictureParams();
    format.colorComponentOrder = OrderOfChannels(FileChannels(picture.channels));
    format.componentType = picture.type;
    return PictureFrame(std::move(picture), format);
}

}  // namespace plenar_tool
