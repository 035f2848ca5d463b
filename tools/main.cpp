// plenar: pictures to frame payloads and back.
#include <plenar_sdk.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iterator>
#include <string>
#include <vector>

#include "commands.h"
#include "nearest_name.h"
#include "output_check.h"
#include "picture_options.h"

namespace {

using namespace plenar_tool;

constexpr int kUsageStatus = 2;
constexpr uint32_t kMaxJobs = 1024;
constexpr uint32_t kMaxThreads = 1024;

constexpr const char* kDescription =
    "plenar turns pictures into PlenarSDK frame payloads and back.\n"
    "A payload holds one picture: uncompressed planes of samples with a small description around them; an alpha\n"
    "plane may be coded without loss. Samples are not changed on the way in or out unless a warning says so.";

constexpr const char* kExamples =
    "Examples:\n"
    "  plenar encode title.png title.plenar --alpha-rle     a picture, its alpha plane coded\n"
    "  plenar decode title.plenar back.png                  the same picture again\n"
    "  plenar verify title.plenar title.png                 whether every sample is the same\n"
    "  plenar info title.plenar                             what is in a payload\n"
    "  plenar encode shot.####.dpx payloads/                a sequence, several frames at a time\n"
    "  plenar encode shot.%04d.dpx p.%04d.plenar --frames 1-240x2 --resume\n"
    "  plenar encode f.uyvy f.plenar --raw --size 1920x1080 --order UYVY\n"
    "  plenar encode f.v210 f.plenar --raw --size 1280x720 --order v210 --row-bytes 3456\n"
    "  plenar encode f.i420 f.plenar --raw --size 1920x1080 --order YCbCr420Planar --type Uint8\n"
    "  plenar decode f.plenar - --raw --order YUY2 | player bare samples into a pipe\n"
    "'plenar COMMAND --help' tells more.\n"
    "Exit status: 0 done, 1 a file failed or differs (one line on stderr for each), 2 wrong options, 128 and the\n"
    "number of the signal where INT, TERM or HUP stopped it.";

constexpr const char* kBatchDetails =
    "Each of several inputs may be a file, a glob in quotes, a folder (its pictures or its *.plenar files), or a\n"
    "pattern with a place for the frame's number: shot.%04d.exr, or shot.####.exr, one # for each digit. A pattern\n"
    "stands for the frames of --frames, or else for those that exist. Outputs go to a folder, or to a pattern that\n"
    "takes the same numbers.\n"
    "- is standard input or standard output, for payloads and with --raw; fifos and devices will do too.";

constexpr const char* kEncodeDetails =
    "Without --raw, INPUT is a picture file (PNG, TIFF, OpenEXR, DPX and others). Its channels give the order: RGB,\n"
    "RGBA, or AlphaOnly for a picture of one channel, grey included. Its samples give the type: Uint8, Uint10,\n"
    "Uint12, Uint16, Half16 or Float32. Of a file with several pictures the first is taken, and of a picture with a\n"
    "data window that window. --order and --type may ask for others that take the samples as they are: other\n"
    "arrangements of RGB, one without the alpha, or words of more bits for 10 and 12 bits.\n"
    "Payloads keep alpha of types Uint8 and Uint16 only. What a payload doesn't hold is told in one line a file, is "
    "an\n"
    "error with --strict, and is kept beside the payload with --sidecar.";

constexpr const char* kDecodeDetails =
    "Without --raw, OUTPUT is a picture file, and its extension gives the file format. Y'CbCr payloads need --raw,\n"
    "which writes the bare samples. Order and type are those that 'plenar info' shows, unless others are given that\n"
    "hold the same planes: RGB of an ARGB payload, AlphaOnly, Packed10 for Uint10, Float32 for Fixed2p14.\n"
    "Samples of 10 and 12 bits go into 16-bit words whose low bits repeat the high ones, with --raw into words whose\n"
    "low bits are zero. What the file format doesn't hold is told in one line a file, and is an error with --strict.";

void ParseSize(const std::string& text, uint32_t& width, uint32_t& height) {
    const char* const end = text.data() + text.size();
    const auto first = std::from_chars(text.data(), end, width);
    if (first.ec == std::errc() && first.ptr != end && *first.ptr == 'x') {
        const auto second = std::from_chars(first.ptr + 1, end, height);
        if (second.ec == std::errc() && second.ptr == end) {
            return;
        }
    }
    throw CLI::ValidationError("--size", "WIDTHxHEIGHT expected, as in 1920x1080, not " + text);
}

void AddBatchOptions(CLI::App& command, BatchOptions& batch) {
    command.add_option("FILES", batch.files, "INPUT OUTPUT, or any number of inputs with a folder or --out-dir")
        ->required();
    command.add_option("--out-dir", batch.outDir, "Write one output for each input into this folder");
    command.add_option("--frames", batch.frames, "The numbers that patterns stand for: 1-240, 1-240x2, 1-10,20")
        ->type_name("LIST");
    command
        .add_option("--jobs", batch.jobs,
                    "Frames worked on at a time, and so held in memory (default: one for each processor)")
        ->check(CLI::Range(1U, kMaxJobs))
        ->type_name("UINT");
    command
        .add_option("--threads", batch.threads,
                    "Threads on one file, 0 for one on each processor (default: 0 for one file, else 1)")
        ->check(CLI::Range(int64_t{0}, int64_t{kMaxThreads}))
        ->type_name("UINT");
    command.add_flag(
        "--resume", batch.resume,
        "Keep outputs that are complete and newer than their inputs, which an earlier run left; others that\n"
        "are there are replaced only with --overwrite");
    command.add_flag("--quiet", batch.quiet, "Say only what went wrong");
    command.add_flag("--timing", batch.timing, "Say where the time went");
    command.add_option("--report", batch.report, "Write what became of each frame into this file, as JSON")
        ->type_name("FILE");
}

CLI::App* AddEncode(CLI::App& app, EncodeOptions& options) {
    CLI::App* const command = app.add_subcommand("encode", "Encode pictures into payloads.");
    command->footer(std::string(kEncodeDetails) + "\n" + kBatchDetails);
    AddBatchOptions(*command, options.batch);
    AddPictureOptions(*command, options.picture);
    AddFileOptions(*command, options.file);
    command
        ->add_option_function<std::string>(
            "--size", [&options](const std::string& text) { ParseSize(text, options.width, options.height); },
            "Pixels of a raw picture")
        ->needs("--raw")
        ->type_name("WIDTHxHEIGHT");
    command->get_option("--raw")->needs("--size")->needs("--order");
    command->add_flag("--alpha-rle", options.alphaRle, "Code the alpha plane, without loss");
    command->add_option("--alpha-bands", options.alphaBands, "Most bands of a coded alpha plane (default: 16)")
        ->needs("--alpha-rle")
        ->check(CLI::Range(0, UINT8_MAX));
    command->add_option("--frame-layout", options.frameLayout, "Stored with the frame for its users: 0 or 1")
        ->check(CLI::Range(0, 1));
    return command;
}

CLI::App* AddDecode(CLI::App& app, DecodeOptions& options) {
    CLI::App* const command = app.add_subcommand("decode", "Decode payloads into pictures.");
    command->footer(std::string(kDecodeDetails) + "\n" + kBatchDetails);
    AddBatchOptions(*command, options.batch);
    AddPictureOptions(*command, options.picture);
    AddFileOptions(*command, options.file);
    AddDecodeFileOptions(*command, options.file);
    command->add_option("--ext", options.extension, "Extension of the outputs in --out-dir (default: png, or raw)");
    return command;
}

std::string Version() {
    uint32_t major = 0;
    uint32_t minor = 0;
    uint32_t patch = 0;
    uint32_t build = 0;
    char stage = ' ';
    Plenar_GetVersion(&major, &minor, &patch, &build, &stage);
    return "plenar, PlenarSDK " + std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(patch) +
           "." + std::to_string(build) + stage;
}

CLI::Option* AddMaxPixels(CLI::App& command, uint64_t& maxPixels) {
    return command
        .add_option("--max-pixels", maxPixels,
                    "The most pixels that a payload may claim (default: " + std::to_string(kDefaultMaxPixels) + ")")
        ->type_name("UINT");
}

CLI::App* AddInfo(CLI::App& app, InfoOptions& options) {
    CLI::App* const command =
        app.add_subcommand("info", "Show the boxes, planes and format of payloads, or why they are refused.");
    command->add_option("PAYLOADS", options.files, "The files of the payloads, or - for standard input")->required();
    command->add_flag("--json", options.json,
                      "As JSON, for programs: an object, or an array of them for several files");
    CLI::Option* const hash = command->add_flag("--hash", options.hash,
                                                "Add the SHA-256 of the samples, as 'plenar decode --raw' writes them");
    AddMaxPixels(*command, options.maxPixels)->needs(hash);
    command->footer("Exit status 1 means that a payload is refused; what could be read is shown all the same.");
    return command;
}

CLI::App* AddVerify(CLI::App& app, CompareOptions& options) {
    CLI::App* const command = app.add_subcommand("verify", "Tell whether a payload holds every sample of a picture.");
    command->add_option("PAYLOAD", options.first, "The payload")->required();
    command->add_option("PICTURE", options.second, "The picture that it was made of")->required();
    AddPictureOptions(*command, options.picture);
    AddMaxPixels(*command, options.maxPixels);
    command->footer(
        "What a payload doesn't keep is not compared: alpha where the payload has none.\n"
        "Exit status 0 means that all samples agree.");
    return command;
}

CLI::App* AddCompare(CLI::App& app, CompareOptions& options) {
    CLI::App* const command = app.add_subcommand(
        "compare", "Tell how many samples of two payloads or pictures differ, which is the first, and by how much.");
    command->add_option("A", options.first, "A payload or a picture file")->required();
    command->add_option("B", options.second, "Another one")->required();
    AddMaxPixels(*command, options.maxPixels);
    command->footer("Exit status 0 means that all samples agree.");
    return command;
}

// CLI11 would only say that a command is missing.
void CheckCommandName(const CLI::App& app, int argc, char** argv) {
    std::vector<std::string> names;
    const auto commands = app.get_subcommands([](const CLI::App*) { return true; });
    std::transform(commands.begin(), commands.end(), std::back_inserter(names),
                   [](const CLI::App* command) { return command->get_name(); });
    if (argc < 2) {
        throw UsageError("a command is missing: " + JoinNames(names, "or") + "; 'plenar --help' tells more");
    }
    if (argv[1][0] == '-' || std::find(names.begin(), names.end(), argv[1]) != names.end()) {
        return;
    }
    throw UsageError(std::string(argv[1]) + ": no command has this name" + SuggestName(argv[1], names) +
                     "; the commands are " + JoinNames(names));
}

int Run(int argc, char** argv) {
    EncodeOptions encodeOptions;
    DecodeOptions decodeOptions;
    InfoOptions infoOptions;
    CompareOptions compareOptions;
    bool formatsJson = false;

    CLI::App app(kDescription, "plenar");
    app.footer(kExamples);
    app.set_version_flag("--version", Version);
    app.require_subcommand(1);
    const CLI::App* const encode = AddEncode(app, encodeOptions);
    const CLI::App* const decode = AddDecode(app, decodeOptions);
    const CLI::App* const info = AddInfo(app, infoOptions);
    const CLI::App* const verify = AddVerify(app, compareOptions);
    const CLI::App* const compare = AddCompare(app, compareOptions);
    app.add_subcommand("formats", "List the supported pairs of order and type, with the planes that each gives.")
        ->footer("")
        ->add_flag("--json", formatsJson, "As JSON, with the names of video formats");
    CheckCommandName(app, argc, argv);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kUsageStatus;
    }
    if (encode->parsed()) {
        if (encodeOptions.picture.raw && encodeOptions.picture.type == 0) {
            throw UsageError("--raw requires --type, or a video format for --order, as UYVY or v210");
        }
        encodeOptions.batch.folderFiles = encodeOptions.picture.raw ? FolderFiles::All : FolderFiles::Pictures;
        return RunEncode(encodeOptions);
    }
    if (decode->parsed()) {
        decodeOptions.batch.folderFiles = FolderFiles::Payloads;
        return RunDecode(decodeOptions);
    }
    if (info->parsed()) {
        return RunInfo(infoOptions);
    }
    if (verify->parsed()) {
        return RunVerify(compareOptions);
    }
    return compare->parsed() ? RunCompare(compareOptions) : RunFormats(formatsJson);
}

}  // namespace

int main(int argc, char** argv) {
    // Writes to a closed pipe and beyond a limit of the file size come back as errors.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        const int status = Run(argc, argv);
        FlushOutput();
        return status;
    } catch (const UsageError& error) {
        std::fprintf(stderr, "plenar: %s\n", error.what());
        return kUsageStatus;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "plenar: %s\n", error.what());
        return 1;
    }
}
