#include <algorithm>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "codec_session.h"
#include "commands.h"
#include "formats.h"
#include "frame_source.h"
#include "payload_view.h"
#include "phase_timer.h"
#include "picture_file.h"
#include "sidecar.h"
#include "stream_io.h"

namespace plenar_tool {

namespace {

struct Source {
    UncompressedParams params;
    Buffer samples;
    PictureNotes notes{};
};

// The second of two pictures on a command line would be taken for the output.
void CheckEncodeTarget(const std::string& file, const WriteOptions& options, bool raw) {
    std::error_code ignored;
    if (!raw && std::filesystem::is_regular_file(file, ignored) && !IsPayload(file) && IsPicture(file)) {
        throw std::runtime_error(file + " is a picture, and an encode replaces none: for several pictures give " +
                                 "--out-dir, for one another output");
    }
    CheckTarget(file, options);
}

// An interrupted run may have left a sidecar without its payload.
WriteOptions SidecarWriteOptions(const EncodeOptions& options, WriteOptions writeOptions) {
    writeOptions.overwrite = writeOptions.overwrite || options.batch.resume;
    return writeOptions;
}

// A sidecar that stays beside a new payload would be taken for its own.
void CheckSidecar(const std::string& payloadFile, const EncodeOptions& options, const WriteOptions& writeOptions) {
    if (IsStream(payloadFile)) {
        if (options.file.sidecar) {
            throw std::runtime_error("a payload that goes into a stream can have no --sidecar");
        }
        return;
    }
    const std::filesystem::path sidecar = SidecarPath(payloadFile);
    std::error_code ignored;  // a name that is too long for a sidecar has none
    if (options.file.sidecar) {
        CheckTarget(sidecar, SidecarWriteOptions(options, writeOptions));
    } else if (std::filesystem::exists(std::filesystem::symlink_status(sidecar, ignored))) {
        throw std::runtime_error("can't write " + payloadFile + ": " + sidecar.string() +
                                 " tells of an earlier payload; --sidecar --overwrite replaces it");
    }
}

uint32_t NaturalOrder(const std::string& channels) {
    const std::string_view natural = FileChannels(channels);
    const bool isMatte = natural == "A" && channels.size() == 1;
    if (natural.empty() || (natural == "A" && !isMatte)) {
        throw std::runtime_error("has " + std::to_string(channels.size()) +
                                 " channels, neither RGB nor a single one: for its alpha alone give --order AlphaOnly");
    }
    return isMatte ? plenar::AlphaOnly : natural == "RGB" ? plenar::RGB : plenar::RGBA;
}

Source LoadPicture(const std::string& file, const EncodeOptions& options) {
    Picture picture = ReadPicture(file, options.file.alphaChange);
    const OrderInfo& order = FindOrder(options.picture.order ? options.picture.order : NaturalOrder(picture.channels));
    if (order.channels.empty()) {
        throw std::runtime_error("an RGB picture can't become " + std::string(order.name) +
                                 " without colour arithmetic; for samples that are Y'CbCr already, use --raw");
    }
    if (std::count(picture.channels.begin(), picture.channels.end(), '?') != 0) {
        picture.notes.losses.push_back("of its " + std::to_string(picture.channels.size()) + " channels only " +
                                       std::string(order.channels) + " are kept");
    }
    if (options.picture.type != 0) {
        RelabelType(picture, options.picture.type);
    }
    picture = ArrangeChannels(std::move(picture), order.channels);

    Source source{MakePictureParams(), std::move(picture.samples), std::move(picture.notes)};
    source.params.colorComponentOrder = order.value;
    source.params.componentType = picture.type;
    source.params.width = picture.width;
    source.params.height = picture.height;
    return source;
}

Source LoadRaw(const std::string& file, const EncodeOptions& options) {
    Source source{MakePictureParams(), ReadFile(file)};
    source.params.colorComponentOrder = options.picture.order;
    source.params.componentType = options.picture.type;
    source.params.width = options.width;
    source.params.height = options.height;
    source.params.rowBytes = options.picture.rowBytes;
    source.params.rowBytes2 = options.picture.rowBytes2;
    if (options.file.lowBits) {
        ShiftSamples(source.samples, source.params.componentType, WordEnd::Top);
    }
    const uint32_t needed = Plenar_GetUncompressedBufSize(&source.params);
    if (source.samples.Size() > needed) {
        source.notes.losses.push_back("has " + std::to_string(source.samples.Size()) +
                                      " bytes, of which a picture of " + DescribeFormat(source.params) +
                                      " takes the first " + std::to_string(needed));
    }
    return source;
}

bool HasAlphaPlane(const Buffer& payload) {
    const PayloadView view = ViewPayload(payload.Bytes());
    return std::any_of(view.planes.begin(), view.planes.end(),
                       [](const PlaneView& plane) { return plane.info.role == "alpha"; });
}

// What is neither in the payload nor in a sidecar.
std::vector<std::string> Losses(const Source& source, const Buffer& payload, bool sidecar) {
    std::vector<std::string> losses;
    const bool wantsAlpha = FindOrder(source.params.colorComponentOrder).hasAlpha;
    const bool hasAlpha = HasAlphaPlane(payload);
    if (wantsAlpha && !hasAlpha) {
        losses.push_back("its alpha is not kept: payloads hold alpha of types Uint8 and Uint16 only, not of " +
                         std::string(FindType(source.params.componentType).name));
    }
    losses.insert(losses.end(), source.notes.losses.begin(), source.notes.losses.end());
    std::vector<std::string> stated = source.notes.stated;
    if (hasAlpha && source.notes.alpha == AlphaMeaning::Associated) {
        stated.emplace_back("that colours are multiplied by alpha");
    }
    if (!stated.empty() && !sidecar) {
        losses.push_back("a payload doesn't hold " + JoinLosses(stated) + " (see --sidecar)");
    }
    return losses;
}

// Neither file comes alone where one of them can't be written. The payload comes last: where it is, a resumed run has
// nothing left to do.
void WriteWithSidecar(const std::string& payloadFile, const Buffer& payload, const PictureNotes& notes,
                      const EncodeOptions& options, const WriteOptions& writeOptions) {
    const PhaseTimer timer(Phase::Write);
    const std::string text = SidecarText(notes);
    PendingFile pendingPayload(payloadFile, writeOptions);
    PendingFile pendingSidecar(SidecarPath(payloadFile), SidecarWriteOptions(options, writeOptions));
    pendingPayload.Write(payload.Bytes());
    pendingSidecar.Write({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
    pendingSidecar.Commit();
    pendingPayload.Commit();
}

void EncodeFile(EncoderSession& session, const EncodeOptions& options, const FileIdentities& inputs, const Task& task) {
    const WriteOptions writeOptions = WriteOptionsOf(options.file, inputs);
    CheckEncodeTarget(task.output, writeOptions, options.picture.raw);
    CheckSidecar(task.output, options, writeOptions);
    Source source = options.picture.raw ? LoadRaw(task.input, options) : LoadPicture(task.input, options);
    source.params.frameLayout = options.frameLayout;
    CompressedParams compressedParams = MakePayloadParams();
    compressedParams.alphaRle = options.alphaRle ? 1 : 0;
    compressedParams.alphaBandLimit = static_cast<uint8_t>(options.alphaBands);

    const Buffer payload = session.Encode(source.params, compressedParams, source.samples.Bytes());
    ReportLosses(task.input, Losses(source, payload, options.file.sidecar), options.file);
    if (options.file.sidecar) {
        WriteWithSidecar(task.output, payload, source.notes, options, writeOptions);
    } else {
        WriteFile(task.output, payload.Bytes(), writeOptions);
    }
}

}  // namespace

int RunEncode(const EncodeOptions& options) {
    const std::vector<Task> tasks = PlanTasks(options.batch, ".plenar");
    const FileIdentities inputs = InputsOf(tasks);
    return RunTasks(tasks, options.batch, [&](uint32_t numThreads) -> Worker {
        const auto session = std::make_shared<EncoderSession>(numThreads);
        return [session, &options, &inputs](const Task& task) { EncodeFile(*session, options, inputs, task); };
    });
}

}  // namespace plenar_tool
