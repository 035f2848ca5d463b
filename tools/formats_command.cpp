#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "codec_session.h"
#include "commands.h"
#include "format_names.h"
#include "formats.h"
#include "payload_view.h"

namespace plenar_tool {

namespace {

using Json = nlohmann::ordered_json;

struct Pair {
    const OrderInfo& order;
    const TypeInfo& type;
    std::vector<std::string> planes;
};

// Asks the library by encoding a frame of 2x2 pixels. Empty when the pair isn't supported.
std::vector<std::string> PlanesOf(EncoderSession& session, uint32_t order, uint32_t type) {
    UncompressedParams params = MakePictureParams();
    params.colorComponentOrder = order;
    params.componentType = type;
    params.width = 2;
    params.height = 2;
    const CompressedParams compressedParams = MakePayloadParams();
    if (Plenar_GetCompressedBufSize(&params, &compressedParams) == 0) {
        return {};
    }
    const Buffer picture(Plenar_GetUncompressedBufSize(&params));
    std::vector<std::string> planes;
    for (const PlaneView& plane :
         ViewPayload(session.Encode(params, compressedParams, picture.Bytes()).Bytes()).planes) {
        planes.push_back(plane.code);
    }
    return planes;
}

std::vector<Pair> SupportedPairs() {
    EncoderSession session(1);
    std::vector<Pair> pairs;
    for (const OrderInfo& order : kOrders) {
        for (const TypeInfo& type : kTypes) {
            if (auto planes = PlanesOf(session, order.value, type.value); !planes.empty()) {
                pairs.push_back({order, type, std::move(planes)});
            }
        }
    }
    return pairs;
}

void PrintText(const std::vector<Pair>& pairs) {
    std::printf("%-16s %-10s %s\n", "order", "type", "planes of the payload");
    for (const Pair& pair : pairs) {
        std::string planes;
        for (const std::string& plane : pair.planes) {
            planes += (planes.empty() ? "\"" : ", \"") + plane + "\"";
        }
        std::printf("%-16s %-10s %s\n", pair.order.name.data(), pair.type.name.data(), planes.c_str());
    }
    std::printf("%zu pairs\n", pairs.size());
}

void PrintJson(const std::vector<Pair>& pairs) {
    Json json = {{"pairs", Json::array()}, {"videoFormats", Json::array()}};
    for (const Pair& pair : pairs) {
        json["pairs"].push_back({{"order", pair.order.name}, {"type", pair.type.name}, {"planes", pair.planes}});
    }
    for (const VideoFormat& format : kVideoFormats) {
        json["videoFormats"].push_back({{"name", format.name}, {"order", format.order}, {"type", format.type}});
    }
    std::printf("%s\n", json.dump(2).c_str());
}

}  // namespace

int RunFormats(bool json) {
    json ? PrintJson(SupportedPairs()) : PrintText(SupportedPairs());
    return 0;
}

}  // namespace plenar_tool
