#include "task_plan.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <optional>

#include "frame_pattern.h"
#include "input_files.h"
#include "stream_io.h"

namespace plenar_tool {

namespace fs = std::filesystem;

namespace {

// Where the outputs of a batch go: into a folder, or to one name or pattern of names.
struct Target {
    std::string folder;
    std::string name;
    std::optional<FramePattern> pattern;
};

// Takes the name of the target from the arguments, unless an option gives it.
Target TakeTarget(const BatchOptions& options, std::vector<std::string>& arguments) {
    const std::string folder = OutputFolder(options);
    if (!options.outDir.empty()) {
        return {folder, {}, {}};
    }
    const std::string last = arguments.back();
    if (arguments.size() < 2 || (arguments.size() > 2 && folder.empty())) {
        throw UsageError("give one input and one output, or any number of inputs and a folder or --out-dir: " + last +
                         " is not a folder");
    }
    arguments.pop_back();
    return {folder, last, FramePattern::Parse(last)};
}

std::string OutputName(const Target& target, const InputFile& input, const std::string& extension) {
    if (!target.folder.empty()) {
        if (input.name == kStandardStream) {
            throw UsageError("standard input has no name for its output in a folder: give an output name");
        }
        return (fs::path(target.folder) / fs::path(input.name).filename().replace_extension(extension)).string();
    }
    if (!target.pattern) {
        return target.name;
    }
    if (!input.frame) {
        throw UsageError(target.name + " has a place for a frame's number, but " + input.name +
                         " has no number: give a pattern for both");
    }
    return target.pattern->Name(*input.frame);
}

void CheckOutputsDiffer(const std::vector<Task>& tasks) {
    std::map<fs::path, std::string> inputs;
    for (const Task& task : tasks) {
        const auto [other, isNew] = inputs.emplace(fs::path(task.output).lexically_normal(), task.input);
        if (!isNew) {
            throw UsageError("both " + other->second + " and " + task.input + " would be written to " + task.output);
        }
    }
}

}  // namespace

std::string OutputFolder(const BatchOptions& options) {
    std::error_code ignored;
    const std::string& last = options.files.back();
    const bool lastIsFolder = options.files.size() > 1 && (last.ends_with('/') || fs::is_directory(last, ignored));
    return !options.outDir.empty() ? options.outDir : lastIsFolder ? last : "";
}

std::vector<Task> PlanTasks(const BatchOptions& options, const std::string& extension) {
    const auto frames = options.frames.empty() ? std::vector<uint32_t>() : ParseFrames(options.frames);
    std::vector<std::string> arguments = options.files;
    const Target target = TakeTarget(options, arguments);
    std::vector<Task> tasks;
    bool numbered = false;
    for (const std::string& argument : arguments) {
        for (const InputFile& input : ExpandInput(argument, frames, options.folderFiles)) {
            numbered = numbered || input.frame.has_value();
            tasks.push_back({input.name, OutputName(target, input, extension)});
        }
    }
    if (!frames.empty() && !numbered) {
        throw UsageError("--frames " + options.frames + " needs an input with a place for the number: shot.####.exr");
    }
    CheckOutputsDiffer(tasks);
    return tasks;
}

}  // namespace plenar_tool
