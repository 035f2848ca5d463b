#include "resume.h"

#include <exception>
#include <filesystem>

#include "codec_session.h"
#include "mapped_file.h"
#include "payload_view.h"

namespace plenar_tool {

namespace fs = std::filesystem;

namespace {

bool IsPayloadComplete(const fs::path& file) try {
    const MappedFile payload(file);
    DecoderSession(1).ReadMetadata(payload.Bytes());
    return ViewPayload(payload.Bytes()).remarks.empty();
} catch (const std::exception&) {
    return false;
}

}  // namespace

bool IsOutputComplete(const Task& task) {
    std::error_code error;
    if (!fs::is_regular_file(task.output, error) || !fs::is_regular_file(task.input, error) ||
        fs::file_size(task.output, error) == 0) {
        return false;
    }
    const auto inputTime = fs::last_write_time(task.input, error);
    const auto outputTime = fs::last_write_time(task.output, error);
    return !error && outputTime > inputTime &&
           (fs::path(task.output).extension() != ".plenar" || IsPayloadComplete(task.output));
}

}  // namespace plenar_tool
