// plenar-pictures: the picture libraries' own process. plenar starts it, asks it over its standard input, and ends it.
#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string>

#include "message_channel.h"
#include "picture_file.h"
#include "picture_message.h"
#include "picture_reader.h"
#include "picture_writer.h"

namespace {

using namespace plenar_tool;
using Json = nlohmann::json;

Message Answer(const Message& request) {
    const std::string task = request.text.at("task");
    if (task == "recognise") {
        return {Json{{"isPicture", RecognisePictureFile(request.text.at("file"))}}};
    }
    const AlphaChange alphaChange = request.text.at("alphaChange");
    if (task == "read") {
        FileDescriptor samples;
        const Picture picture = ReadPictureFile(request.text.at("file"), alphaChange, samples);
        return {PictureDescription(picture), std::move(samples)};
    }
    Picture picture = DescribedPicture(request.text);
    picture.samples = Buffer(request.memory);
    FileDescriptor file;
    const auto losses = WritePictureFile(request.text.at("extension"), picture, alphaChange, file);
    return {Json{{"losses", losses}}, std::move(file)};
}

}  // namespace

int main() {
    // In the middle of its work this process would notice the end of the other one only afterwards.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    try {
        const MessageChannel channel{FileDescriptor(STDIN_FILENO)};
        while (const std::optional<Message> request = channel.Receive()) {
            try {
                channel.Send(Answer(*request));
            } catch (const std::exception& error) {
                channel.Send({Json{{"error", error.what()}}});
            }
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "plenar-pictures: %s\n", error.what());
        return EXIT_FAILURE;
    }
    // Libraries' own clean-up would take its time.
    std::_Exit(EXIT_SUCCESS);
}
