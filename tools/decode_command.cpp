#include <memory>
#include <utility>

#include "codec_session.h"
#include "commands.h"
#include "formats.h"
#include "picture_file.h"
#include "pixel_limit.h"
#include "sidecar.h"

namespace plenar_tool {

namespace {

void DecodeRaw(DecoderSession& session, const DecodeOptions& options, UncompressedParams params, const Buffer& payload,
               const std::string& output, const WriteOptions& writeOptions) {
    params.rowBytes = options.picture.rowBytes;
    params.rowBytes2 = options.picture.rowBytes2;
    Buffer samples = session.Decode(params, payload.Bytes());
    if (options.file.lowBits) {
        ShiftSamples(samples, params.componentType, WordEnd::Low);
    }
    WriteFile(output, samples.Bytes(), writeOptions);
}

PictureNotes NotesOf(const std::string& payloadFile, const FileOptions& options) {
    PictureNotes notes = options.sidecar ? ReadSidecar(payloadFile) : PictureNotes{};
    if (options.associated) {
        notes.alpha = AlphaMeaning::Associated;
    }
    return notes;
}

void DecodePicture(DecoderSession& session, const DecodeOptions& options, const UncompressedParams& params,
                   const Buffer& payload, const Task& task, const WriteOptions& writeOptions) {
    const std::string_view channels = FindOrder(params.colorComponentOrder).channels;
    if (channels.empty()) {
        throw std::runtime_error("holds Y'CbCr samples (" + DescribeFormat(params) +
                                 "), which can't go into a picture file without colour arithmetic: use --raw");
    }
    Picture picture{params.width,         params.height, std::string(channels),
                    params.componentType, Buffer(0),     NotesOf(task.input, options.file)};
    picture.samples = session.Decode(params, payload.Bytes());
    picture = ArrangeChannels(std::move(picture), FileChannels(channels));
    FillLowBits(picture);
    const PictureFile file = MakePictureFile(task.output, picture, options.file.alphaChange);
    if (!file.losses.empty()) {
        ReportLosses(task.input, {"not kept in " + task.output + ": " + JoinLosses(file.losses)}, options.file);
    }
    WriteFile(task.output, file.bytes.Bytes(), writeOptions);
}

void DecodeFile(DecoderSession& session, const DecodeOptions& options, const FileIdentities& inputs, const Task& task) {
    const WriteOptions writeOptions = WriteOptionsOf(options.file, inputs);
    CheckTarget(task.output, writeOptions);
    const Buffer payload = ReadFile(task.input);
    UncompressedParams params = session.ReadMetadata(payload.Bytes());
    CheckPixelLimit(params, options.file.maxPixels);
    if (options.picture.order != 0) {
        params.colorComponentOrder = options.picture.order;
    }
    if (options.picture.type != 0) {
        params.componentType = options.picture.type;
    } else if (!options.picture.raw && params.componentType == plenar::Fixed2p14) {
        params.componentType = plenar::Float32;  // no picture file holds the fixed-point numbers as they are
    }
    if (options.picture.raw) {
        DecodeRaw(session, options, params, payload, task.output, writeOptions);
    } else {
        DecodePicture(session, options, params, payload, task, writeOptions);
    }
}

}  // namespace

int RunDecode(const DecodeOptions& options) {
    const std::string extension = !options.extension.empty() ? options.extension : options.picture.raw ? "raw" : "png";
    const std::vector<Task> tasks = PlanTasks(options.batch, extension);
    const FileIdentities inputs = InputsOf(tasks);
    return RunTasks(tasks, options.batch, [&](uint32_t numThreads) -> Worker {
        const auto session = std::make_shared<DecoderSession>(numThreads);
        return [session, &options, &inputs](const Task& task) { DecodeFile(*session, options, inputs, task); };
    });
}

}  // namespace plenar_tool
