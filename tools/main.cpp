// plenar: pictures to frame payloads and back.
#include <plenar_sdk.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <exception>
#include <map>
#include <string>

#include "commands.h"
#include "formats.h"

namespace {

using namespace plenar_tool;

constexpr int kUsageStatus = 2;

constexpr const char* kDescription =
    "plenar turns pictures into PlenarSDK frame payloads and back.\n"
    "A payload holds one picture: uncompressed planes of samples with a small description around them; an alpha\n"
    "plane may be coded without loss. Samples are never changed on the way in or out.";

constexpr const char* kExamples =
    "Examples:\n"
    "  plenar encode title.png title.plenar --alpha-rle     a picture, its alpha plane coded\n"
    "  plenar decode title.plenar back.png                  the same picture again\n"
    "  plenar info title.plenar                             what is in a payload\n"
    "  plenar encode shot.*.dpx --out-dir payloads          many pictures, several at a time\n"
    "  plenar encode f.uyvy f.plenar --raw --size 1920x1080 --order CbYCrY --type Uint8\n"
    "  plenar encode f.v210 f.plenar --raw --size 1280x720 --order CbYCrY --type Packed10 --row-bytes 3456\n"
    "  plenar encode f.i420 f.plenar --raw --size 1920x1080 --order YCbCr420Planar --type Uint8\n"
    "  plenar decode f.plenar f.yuy2 --raw --order YCbYCr\n"
    "Names of video formats: UYVY is CbYCrY, YUY2 is YCbYCr, v210 is CbYCrY with Packed10, I420 is YCbCr420Planar.\n"
    "'plenar COMMAND --help' tells more.\n"
    "Exit status: 0 done, 1 a file failed (one line on stderr for each), 2 wrong options.";

constexpr const char* kEncodeDetails =
    "Without --raw, INPUT is a picture file (PNG, TIFF, OpenEXR, DPX and others). Its channels give the order: RGB,\n"
    "RGBA, or AlphaOnly for a picture of one channel, grey included. Its samples give the type: Uint8, Uint10,\n"
    "Uint12, Uint16, Half16 or Float32. Of a file with several pictures the first is taken, and of a picture with a\n"
    "data window that window. --order and --type may ask for others that take the samples as they are: other\n"
    "arrangements of RGB, one without the alpha, or words of more bits for 10 and 12 bits.\n"
    "Payloads keep alpha of types Uint8 and Uint16 only; where it is lost, a warning says so.";

constexpr const char* kDecodeDetails =
    "Without --raw, OUTPUT is a picture file, and its extension gives the file format. Y'CbCr payloads need --raw,\n"
    "which writes the bare samples. Order and type are those that 'plenar info' shows, unless others are given that\n"
    "hold the same planes: RGB of an ARGB payload, AlphaOnly, Packed10 for Uint10, Float32 for Fixed2p14.\n"
    "Samples of 10 and 12 bits go into 16-bit words whose low bits repeat the high ones, with --raw into words whose\n"
    "low bits are zero.";

template <class Table>
std::map<std::string, uint32_t> NameMap(const Table& table) {
    std::map<std::string, uint32_t> names;
    for (const auto& entry : table) {
        names.emplace(entry.name, entry.value);
    }
    return names;
}

template <class Table>
std::string NameList(const Table& table) {
    std::string names;
    for (const auto& entry : table) {
        names += (names.empty() ? ": " : ", ") + std::string(entry.name);
    }
    return names;
}

template <class Table>
void AddNamed(CLI::App& command, const std::string& option, uint32_t& value, const Table& table,
              const std::string& text) {
    command.add_option(option, value, text + NameList(table))
        ->transform(CLI::CheckedTransformer(NameMap(table), CLI::ignore_case).description(""))
        ->type_name("NAME");
}

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
    command.add_option("FILES", batch.files, "INPUT OUTPUT, or any number of inputs with --out-dir")->required();
    command.add_option("--out-dir", batch.outDir, "Write one output for each input into this directory");
    command.add_option("--jobs", batch.jobs, "Files worked on at a time (default: one for each processor)");
    command
        .add_option("--threads", batch.threads,
                    "Threads on one file, 0 for one on each processor (default: 0 for one file, else 1)")
        ->check(CLI::Range(int64_t{0}, int64_t{UINT32_MAX}))
        ->type_name("UINT");
}

void AddPictureOptions(CLI::App& command, PictureOptions& picture) {
    AddNamed(command, "--order", picture.order, kOrders, "How the samples of the picture are arranged");
    AddNamed(command, "--type", picture.type, kTypes, "The type of a sample");
    command.add_flag("--raw", picture.raw, "The picture is a headerless buffer of samples");
    command
        .add_option("--row-bytes", picture.rowBytes, "Bytes from one row to the next (default: rows without padding)")
        ->needs("--raw");
    command.add_option("--row-bytes2", picture.rowBytes2, "The same for separate planes of chroma or of alpha")
        ->needs("--raw");
}

CLI::App* AddEncode(CLI::App& app, EncodeOptions& options) {
    CLI::App* const command = app.add_subcommand("encode", "Encode pictures into payloads.");
    command->footer(kEncodeDetails);
    AddBatchOptions(*command, options.batch);
    AddPictureOptions(*command, options.picture);
    AddFileOptions(*command, options.file);
    command
        ->add_option_function<std::string>(
            "--size", [&options](const std::string& text) { ParseSize(text, options.width, options.height); },
            "Pixels of a raw picture")
        ->needs("--raw")
        ->type_name("WIDTHxHEIGHT");
    command->get_option("--raw")->needs("--size")->needs("--order")->needs("--type");
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
    command->footer(kDecodeDetails);
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

int Run(int argc, char** argv) {
    EncodeOptions encodeOptions;
    DecodeOptions decodeOptions;
    std::string infoFile;
    bool infoJson = false;

    CLI::App app(kDescription, "plenar");
    app.footer(kExamples);
    app.set_version_flag("--version", Version);
    app.require_subcommand(1);
    const CLI::App* const encode = AddEncode(app, encodeOptions);
    const CLI::App* const decode = AddDecode(app, decodeOptions);
    CLI::App* const info =
        app.add_subcommand("info", "Show a payload's boxes, planes and format, or why it is refused.");
    info->add_option("PAYLOAD", infoFile, "The payload's file")->required();
    info->add_flag("--json", infoJson, "As JSON, for programs");
    info->footer("Exit status 1 means that the payload is refused; what could be read is shown all the same.");
    app.add_subcommand("formats", "List the supported pairs of order and type, with the planes that each gives.")
        ->footer("");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kUsageStatus;
    }
    if (encode->parsed()) {
        return RunEncode(encodeOptions);
    }
    if (decode->parsed()) {
        return RunDecode(decodeOptions);
    }
    return info->parsed() ? RunInfo(infoFile, infoJson) : RunFormats();
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGXFSZ, SIG_IGN);  // a file that grows too large is an error of its write
    try {
        return Run(argc, argv);
    } catch (const UsageError& error) {
        std::fprintf(stderr, "plenar: %s\n", error.what());
        return kUsageStatus;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "plenar: %s\n", error.what());
        return 1;
    }
}
