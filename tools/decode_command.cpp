#include <memory>
#include <utility>

#include "codec_session.h"
#include "commands.h"
#include "formats.h"
#include "picture_file.h"

namespace plenar_tool {

namespace {

void DecodeRaw(DecoderSession& session, const PictureOptions& options, UncompressedParams params, const Buffer& payload,
               const std::string& output) {
    params.rowBytes = options.rowBytes;
    params.rowBytes2 = options.rowBytes2;
    WriteFile(output, session.Decode(params, payload.Bytes()).Bytes());
}

void DecodePicture(DecoderSession& session, const UncompressedParams& params, const Buffer& payload,
                   const std::string& output) {
    const std::string_view channels = FindOrder(params.colorComponentOrder).channels;
    if (channels.empty()) {
        throw std::runtime_error("holds Y'CbCr samples (" + DescribeFormat(params) +
                                 "), which can't go into a picture file without colour arithmetic: use --raw");
    }
    Picture picture{params.width, params.height, std::string(channels), params.componentType, Buffer(0)};
    picture.samples = session.Decode(params, payload.Bytes());
    picture = ArrangeChannels(std::move(picture), FileChannels(channels));
    FillLowBits(picture);
    WritePicture(output, picture);
}

void DecodeFile(DecoderSession& session, const PictureOptions& options, const Task& task) {
    const Buffer payload = ReadFile(task.input);
    UncompressedParams params = session.ReadMetadata(payload.Bytes());
    if (options.order != 0) {
        params.colorComponentOrder = options.order;
    }
    if (options.type != 0) {
        params.componentType = options.type;
    } else if (!options.raw && params.componentType == plenar::Fixed2p14) {
        params.componentType = plenar::Float32;  // no picture file holds the fixed-point numbers as they are
    }
    if (options.raw) {
        DecodeRaw(session, options, params, payload, task.output);
    } else {
        DecodePicture(session, params, payload, task.output);
    }
}

}  // namespace

int RunDecode(const DecodeOptions& options) {
    const std::string extension = !options.extension.empty() ? options.extension : options.picture.raw ? "raw" : "png";
    return RunTasks(PlanTasks(options.batch, extension), options.batch, [&](uint32_t numThreads) -> Worker {
        const auto session = std::make_shared<DecoderSession>(numThreads);
        return [session, &options](const Task& task) { DecodeFile(*session, options.picture, task); };
    });
}

}  // namespace plenar_tool
