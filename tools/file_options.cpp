#include "file_options.h"

#include <CLI/CLI.hpp>
#include <stdexcept>

#include "report.h"

namespace plenar_tool {

void AddFileOptions(CLI::App& command, FileOptions& options) {
    command.add_flag("--overwrite", options.overwrite,
                     "Replace files that exist; of a symbolic link the link, not what it leads to. Inputs and, by an "
                     "encode, pictures are never replaced");
    command.add_flag("--sync", options.sync, "See that the disk has a file before it appears under its name");
    command.add_flag("--strict", options.strict, "Fail where something of the input is lost, in place of a warning");
    command.add_flag(
        "--sidecar", options.sidecar,
        "Keep what a payload doesn't hold (timecode, transfer, orientation, the meaning of alpha and more) "
        "in PAYLOAD.json: an encode writes it, a decode puts back what the picture format holds. An encode without it "
        "leaves a payload alone that has one");
    const auto setAlphaChange = [&options](AlphaChange change) {
        return [&options, change](int64_t) { options.alphaChange = change; };
    };
    CLI::Option* const multiply =
        command.add_flag_function("--premultiply", setAlphaChange(AlphaChange::Multiply),
                                  "Multiply colours by alpha, unless they are said to be multiplied already");
    command
        .add_flag_function("--unpremultiply", setAlphaChange(AlphaChange::Divide),
                           "Divide colours by alpha, unless they are said not to be multiplied by it")
        ->excludes(multiply);
    command
        .add_flag("--low-bits", options.lowBits,
                  "Raw samples of 10 and 12 bits stand in the low bits of their words, not in the high ones")
        ->needs("--raw");
}

void AddDecodeFileOptions(CLI::App& command, FileOptions& options) {
    command.add_flag("--associated", options.associated,
                     "The payload's colours are multiplied by alpha (default: what the sidecar says, or else not)");
    command.add_option("--max-pixels", options.maxPixels, "Refuse larger pictures (default: 67108864, as 8192x8192)")
        ->type_name("UINT");
}

FileIdentities InputsOf(const std::vector<Task>& tasks) {
    FileIdentities inputs;
    for (const Task& task : tasks) {
        inputs.Add(task.input);
    }
    return inputs;
}

WriteOptions WriteOptionsOf(const FileOptions& options, const FileIdentities& inputs) {
    return {options.overwrite, options.sync, &inputs};
}

std::string JoinLosses(const std::vector<std::string>& losses) {
    std::string text;
    for (const std::string& loss : losses) {
        text += (text.empty() ? "" : "; ") + loss;
    }
    return text;
}

void ReportLosses(const std::string& file, const std::vector<std::string>& losses, const FileOptions& options) {
    if (losses.empty()) {
        return;
    }
    const std::string text = JoinLosses(losses);
    if (options.strict) {
        throw std::runtime_error("--strict: " + text);
    }
    ReportWarning(file, text);
}

}  // namespace plenar_tool
