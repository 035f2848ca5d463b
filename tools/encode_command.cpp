#include <algorithm>
#include <memory>
#include <utility>

#include "codec_session.h"
#include "commands.h"
#include "formats.h"
#include "payload_view.h"
#include "picture_file.h"
#include "report.h"

namespace plenar_tool {

namespace {

struct Source {
    UncompressedParams params;
    Buffer samples;
};

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
    Picture picture = ReadPicture(file);
    const OrderInfo& order = FindOrder(options.picture.order ? options.picture.order : NaturalOrder(picture.channels));
    if (order.channels.empty()) {
        throw std::runtime_error("an RGB picture can't become " + std::string(order.name) +
                                 " without colour arithmetic; for samples that are Y'CbCr already, use --raw");
    }
    if (std::count(picture.channels.begin(), picture.channels.end(), '?') != 0) {
        ReportWarning(file, "of its " + std::to_string(picture.channels.size()) + " channels only " +
                                std::string(order.channels) + " are kept");
    }
    if (options.picture.type != 0) {
        RelabelType(picture, options.picture.type);
    }
    picture = ArrangeChannels(std::move(picture), order.channels);

    Source source{MakePictureParams(), std::move(picture.samples)};
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
    const uint32_t needed = Plenar_GetUncompressedBufSize(&source.params);
    if (source.samples.Size() > needed) {
        ReportWarning(file, "has " + std::to_string(source.samples.Size()) + " bytes, of which a picture of " +
                                DescribeFormat(source.params) + " takes the first " + std::to_string(needed));
    }
    return source;
}

bool HasAlphaPlane(const Buffer& payload) {
    const PayloadView view = ViewPayload(payload.Bytes());
    return std::any_of(view.planes.begin(), view.planes.end(),
                       [](const PlaneView& plane) { return plane.info.role == "alpha"; });
}

void EncodeFile(EncoderSession& session, const EncodeOptions& options, const Task& task) {
    Source source = options.picture.raw ? LoadRaw(task.input, options) : LoadPicture(task.input, options);
    source.params.frameLayout = options.frameLayout;
    CompressedParams compressedParams = MakePayloadParams();
    compressedParams.alphaRle = options.alphaRle ? 1 : 0;
    compressedParams.alphaBandLimit = static_cast<uint8_t>(options.alphaBands);

    const Buffer payload = session.Encode(source.params, compressedParams, source.samples.Bytes());
    WriteFile(task.output, payload.Bytes());
    if (FindOrder(source.params.colorComponentOrder).hasAlpha && !HasAlphaPlane(payload)) {
        ReportWarning(task.input, "its alpha is not kept: payloads hold alpha of types Uint8 and Uint16 only, not of " +
                                      std::string(FindType(source.params.componentType).name));
    }
}

}  // namespace

int RunEncode(const EncodeOptions& options) {
    return RunTasks(PlanTasks(options.batch, ".plenar"), options.batch, [&](uint32_t numThreads) -> Worker {
        const auto session = std::make_shared<EncoderSession>(numThreads);
        return [session, &options](const Task& task) { EncodeFile(*session, options, task); };
    });
}

}  // namespace plenar_tool
