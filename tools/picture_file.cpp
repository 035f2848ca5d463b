#include "picture_file.h"

#include <cstring>
#include <stdexcept>
#include <utility>

#include "phase_timer.h"
#include "picture_message.h"
#include "picture_process.h"
#include "stream_io.h"

namespace plenar_tool {

namespace {

using Json = nlohmann::json;

// The libraries take half a second to load, so a thread keeps its process.
Message Ask(const Message& request) {
    thread_local PictureProcess process;
    return process.Call(request);
}

void RefuseStream(const std::filesystem::path& path) {
    if (IsStream(path)) {
        throw std::runtime_error("a picture file can't pass through a pipe: give a file's name, or --raw for samples");
    }
}

}  // namespace

Picture ReadPicture(const std::filesystem::path& path, AlphaChange alphaChange) {
    const PhaseTimer timer(Phase::Read);
    RefuseStream(path);
    const Message answer = Ask({Json{{"task", "read"}, {"file", path.string()}, {"alphaChange", alphaChange}}});
    Picture picture = DescribedPicture(answer.text);
    picture.samples = Buffer(answer.memory);
    return picture;
}

bool IsPicture(const std::filesystem::path& path) {
    return Ask({Json{{"task", "recognise"}, {"file", path.string()}}}).text.at("isPicture");
}

PictureFile MakePictureFile(const std::filesystem::path& target, const Picture& picture, AlphaChange alphaChange) {
    const PhaseTimer timer(Phase::Write);
    RefuseStream(target);
    Message request{PictureDescription(picture), MakeSharedMemory(picture.samples.Size())};
    const Buffer samples(request.memory);
    std::memcpy(samples.Data(), picture.samples.Data(), samples.Size());
    request.text["task"] = "write";
    request.text["extension"] = target.extension().string();
    request.text["alphaChange"] = alphaChange;
    const Message answer = Ask(request);
    return {Buffer(answer.memory), answer.text.at("losses")};
}

}  // namespace plenar_tool
