#include <cinttypes>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>

#include "codec_session.h"
#include "commands.h"
#include "formats.h"
#include "mapped_file.h"
#include "payload_view.h"
#include "report.h"
#include "sample_hash.h"

namespace plenar_tool {

namespace {

using Json = nlohmann::ordered_json;

struct Info {
    std::string file;
    size_t bytes = 0;
    PayloadView view;
    std::optional<UncompressedParams> format;
    std::string refusal;  // the library's message, when there is no format
    std::string hash;     // of the samples, where asked for
};

std::string HashPayload(DecoderSession& session, const UncompressedParams& format, std::span<const uint8_t> payload,
                        uint64_t maxPixels) {
    CheckPixelLimit(format, maxPixels);
    return HashSamples(session.Decode(format, payload).Bytes());
}

Info ReadInfo(const std::string& file, const InfoOptions& options) {
    const MappedFile payload(file);
    Info info{file, payload.Bytes().size(), ViewPayload(payload.Bytes()), {}, {}, {}};
    DecoderSession session(options.hash ? 0 : 1);
    try {
        info.format = session.ReadMetadata(payload.Bytes());
    } catch (const CodecError& error) {
        info.refusal = error.what();
        return info;
    }
    if (options.hash) {
        info.hash = HashPayload(session, *info.format, payload.Bytes(), options.maxPixels);
    }
    return info;
}

Json PlaneJson(const PlaneView& plane) {
    Json json = {{"code", plane.code},
                 {"role", plane.info.role},
                 {"depth", plane.info.depth},
                 {"sampling", plane.info.sampling},
                 {"width", plane.width},
                 {"height", plane.height},
                 {"frameLayout", plane.frameLayout},
                 {"offset", plane.offset},
                 {"bytes", plane.bytes}};
    if (plane.info.coded) {
        json["bandTableBytes"] = plane.bandTable.tableBytes;
        json["bands"] = Json::array();
        for (const Band& band : plane.bandTable.bands) {
            json["bands"].push_back({{"rows", band.rows}, {"bytes", band.bytes}});
        }
    }
    return json;
}

Json InfoJson(const Info& info) {
    Json json = {{"file", info.file}, {"bytes", info.bytes}, {"boxes", Json::array()}, {"planes", Json::array()}};
    for (const BoxView& box : info.view.boxes) {
        json["boxes"].push_back({{"level", box.level}, {"offset", box.offset}, {"size", box.size}, {"kind", box.kind}});
    }
    for (const PlaneView& plane : info.view.planes) {
        json["planes"].push_back(PlaneJson(plane));
    }
    json["remarks"] = Json::array();
    for (const Remark& remark : info.view.remarks) {
        json["remarks"].push_back({{"offset", remark.offset}, {"text", remark.text}});
    }
    if (info.format) {
        const UncompressedParams& format = *info.format;
        json["format"] = {{"order", FindOrder(format.colorComponentOrder).name},
                          {"type", FindType(format.componentType).name},
                          {"width", uint32_t{format.width}},
                          {"height", uint32_t{format.height}},
                          {"frameLayout", uint32_t{format.frameLayout}}};
        if (!info.hash.empty()) {
            json["samples"] = {{"sha256", info.hash}};
        }
    } else {
        json["refused"] = info.refusal;
    }
    return json;
}

void PrintPlane(const PlaneView& plane) {
    std::printf("  \"%s\"  %-7.*s  %2" PRIu32 " bits  %" PRIu32 "x%" PRIu32 "  %" PRIu32 " bytes at %" PRIu64
                "  frame layout %" PRIu32 "  (%.*s)\n",
                plane.code.c_str(), static_cast<int>(plane.info.role.size()), plane.info.role.data(), plane.info.depth,
                plane.width, plane.height, plane.bytes, plane.offset, plane.frameLayout,
                static_cast<int>(plane.info.sampling.size()), plane.info.sampling.data());
    if (!plane.info.coded) {
        return;
    }
    std::printf("    band table of %" PRIu32 " bytes, %zu band(s)\n", plane.bandTable.tableBytes,
                plane.bandTable.bands.size());
    uint64_t row = 0;
    uint64_t offset = plane.offset + plane.bandTable.tableBytes;
    for (const Band& band : plane.bandTable.bands) {
        std::printf("    %" PRIu32 " rows from row %" PRIu64 ": %" PRIu32 " bytes at %" PRIu64 "\n", band.rows, row,
                    band.bytes, offset);
        row += band.rows;
        offset += band.bytes;
    }
}

void PrintInfo(const Info& info) {
    std::printf("%s: %zu bytes\n\nBoxes\n  %10s %10s  kind\n", info.file.c_str(), info.bytes, "offset", "size");
    for (const BoxView& box : info.view.boxes) {
        std::printf("  %10" PRIu64 " %10" PRIu32 "  %*s%s\n", box.offset, box.size, static_cast<int>(2 * box.level), "",
                    box.kind.c_str());
    }
    std::printf("\nPlanes\n");
    for (const PlaneView& plane : info.view.planes) {
        PrintPlane(plane);
    }
    if (!info.view.remarks.empty()) {
        std::printf("\nRemarks\n");
    }
    for (const Remark& remark : info.view.remarks) {
        std::printf("  at %" PRIu64 ": %s\n", remark.offset, remark.text.c_str());
    }
    if (info.format) {
        std::printf("\nDecodes as %s, frame layout %" PRIu32 "\n", DescribeFormat(*info.format).c_str(),
                    uint32_t{info.format->frameLayout});
        if (!info.hash.empty()) {
            std::printf("SHA-256 of the samples: %s\n", info.hash.c_str());
        }
    } else {
        std::printf("\nRefused: %s\n", info.refusal.c_str());
    }
}

}  // namespace

int RunInfo(const InfoOptions& options) {
    int status = 0;
    Json list = Json::array();
    for (const std::string& file : options.files) {
        try {
            const Info info = ReadInfo(file, options);
            if (options.json) {
                list.push_back(InfoJson(info));
            } else {
                std::printf("%s", &file == &options.files.front() ? "" : "\n");
                PrintInfo(info);
            }
            if (!info.format) {
                throw std::runtime_error(info.refusal);
            }
        } catch (const std::exception& error) {
            ReportProblem(file, error.what());
            status = 1;
        }
    }
    if (options.json && !list.empty()) {
        // File names need not be UTF-8.
        const Json& json = options.files.size() == 1 ? list.front() : list;
        std::printf("%s\n", json.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
    }
    return status;
}

}  // namespace plenar_tool
