#include "input_files.h"

#include <glob.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <utility>

#include "frame_pattern.h"

namespace plenar_tool {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kPayloadExtension = ".plenar";

constexpr std::string_view kPictureExtensions[] = {
    ".avif", ".bmp", ".cin", ".dds",  ".dpx",  ".exr", ".gif", ".hdr", ".heic", ".heif", ".ico",  ".iff",
    ".j2c",  ".j2k", ".jp2", ".jpe",  ".jpeg", ".jpg", ".pbm", ".pfm", ".pgm",  ".pic",  ".png",  ".pnm",
    ".ppm",  ".psd", ".rgb", ".rgba", ".rla",  ".sgi", ".sun", ".tga", ".tif",  ".tiff", ".webp", ".zfile",
};

bool IsMeant(const fs::path& file, FolderFiles folderFiles) {
    std::string extension = file.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    switch (folderFiles) {
        case FolderFiles::Pictures:
            return std::find(std::begin(kPictureExtensions), std::end(kPictureExtensions), extension) !=
                   std::end(kPictureExtensions);
        case FolderFiles::Payloads:
            return extension == kPayloadExtension;
        case FolderFiles::All:
            return true;
    }
    return true;
}

// Regular files that aren't hidden, by name.
std::vector<std::string> FilesOf(const fs::path& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        std::error_code ignored;
        const std::string name = entry->path().filename().string();
        if (name.front() != '.' && entry->is_regular_file(ignored)) {
            names.push_back(name);
        }
    }
    if (error) {
        throw UsageError(folder.string() + ": the folder can't be read: " + error.message());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<InputFile> FolderInputs(const fs::path& folder, FolderFiles folderFiles) {
    std::vector<InputFile> files;
    for (const std::string& name : FilesOf(folder)) {
        if (IsMeant(name, folderFiles)) {
            files.push_back({(folder / name).string(), {}});
        }
    }
    if (files.empty()) {
        throw UsageError(folder.string() + ": no file of this folder is " +
                         (folderFiles == FolderFiles::Payloads ? "named *.plenar" : "known as a picture by its name"));
    }
    return files;
}

std::vector<InputFile> FramesThatExist(const std::string& argument, const FramePattern& pattern) {
    const fs::path folder = fs::path(argument).parent_path();
    std::vector<InputFile> files;
    for (const std::string& name : FilesOf(folder.empty() ? "." : folder)) {
        const std::string path = (folder / name).string();
        if (const auto frame = pattern.Frame(path)) {
            files.push_back({path, frame});
        }
    }
    if (files.empty()) {
        throw UsageError(argument + ": no frame of this name exists");
    }
    std::sort(files.begin(), files.end(), [](const auto& a, const auto& b) { return a.frame < b.frame; });
    return files;
}

std::vector<InputFile> PatternInputs(const std::string& argument, const FramePattern& pattern,
                                     const std::vector<uint32_t>& frames) {
    if (frames.empty()) {
        return FramesThatExist(argument, pattern);
    }
    std::vector<InputFile> files;
    std::transform(frames.begin(), frames.end(), std::back_inserter(files), [&](uint32_t frame) {
        return InputFile{pattern.Name(frame), frame};
    });
    return files;
}

std::vector<InputFile> GlobInputs(const std::string& argument) {
    glob_t found{};
    const int outcome = glob(argument.c_str(), 0, nullptr, &found);
    std::vector<InputFile> files;
    for (size_t i = 0; outcome == 0 && i < found.gl_pathc; ++i) {
        std::error_code ignored;
        if (!fs::is_directory(found.gl_pathv[i], ignored)) {
            files.push_back({found.gl_pathv[i], {}});
        }
    }
    globfree(&found);
    if (files.empty()) {
        throw UsageError(argument + ": no file matches");
    }
    return files;
}

}  // namespace

std::vector<InputFile> ExpandInput(const std::string& argument, const std::vector<uint32_t>& frames,
                                   FolderFiles folderFiles) {
    std::error_code ignored;
    if (fs::is_directory(argument, ignored)) {
        return FolderInputs(argument, folderFiles);
    }
    if (fs::exists(argument, ignored)) {
        return {{argument, {}}};
    }
    if (const auto pattern = FramePattern::Parse(argument)) {
        return PatternInputs(argument, *pattern, frames);
    }
    if (argument.find_first_of("*?[") != std::string::npos) {
        return GlobInputs(argument);
    }
    return {{argument, {}}};
}

}  // namespace plenar_tool
