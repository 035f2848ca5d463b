#include <cstdio>
#include <string>
#include <vector>

#include "codec_session.h"
#include "commands.h"
#include "formats.h"
#include "payload_view.h"

namespace plenar_tool {

namespace {

// Asks the library by encoding a frame of 2x2 pixels. Empty when the pair isn't supported.
std::string PlanesOf(EncoderSession& session, uint32_t order, uint32_t type) {
    UncompressedParams params = MakePictureParams();
    params.colorComponentOrder = order;
    params.componentType = type;
    params.width = 2;
    params.height = 2;
    const CompressedParams compressedParams = MakePayloadParams();
    if (Plenar_GetCompressedBufSize(&params, &compressedParams) == 0) {
        return "";
    }
    const Buffer picture(Plenar_GetUncompressedBufSize(&params));
    std::string planes;
    for (const PlaneView& plane :
         ViewPayload(session.Encode(params, compressedParams, picture.Bytes()).Bytes()).planes) {
        planes += (planes.empty() ? "\"" : ", \"") + plane.code + "\"";
    }
    return planes;
}

}  // namespace

int RunFormats() {
    EncoderSession session(1);
    size_t count = 0;
    std::printf("%-16s %-10s %s\n", "order", "type", "planes of the payload");
    for (const OrderInfo& order : kOrders) {
        for (const TypeInfo& type : kTypes) {
            const std::string planes = PlanesOf(session, order.value, type.value);
            if (!planes.empty()) {
                std::printf("%-16s %-10s %s\n", order.name.data(), type.name.data(), planes.c_str());
                ++count;
            }
        }
    }
    std::printf("%zu pairs\n", count);
    return 0;
}

}  // namespace plenar_tool
