// What becomes of files: full disks, files that are there already, formats that hold less than the picture, cut
// sources.
#include <OpenImageIO/imageio.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mount.h>

#include <csignal>
#include <string>
#include <thread>

#include "tool_run.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using OIIO::TypeDesc;

struct FileFormat {
    std::string extension;
    TypeDesc::BASETYPE base;
    int bits;
    int channels;
    bool isExact = true;
    int straight = 1;
};

const FileFormat kFormats[] = {
    {"png", TypeDesc::UINT8, 8, 4},
    {"png", TypeDesc::UINT16, 16, 1},
    {"tif", TypeDesc::UINT16, 16, 4, true, 0},
    {"tif", TypeDesc::UINT8, 8, 4},
    {"tif", TypeDesc::FLOAT, 32, 3},
    {"exr", TypeDesc::HALF, 16, 3},
    {"dpx", TypeDesc::UINT16, 10, 3},
    {"dpx", TypeDesc::UINT8, 8, 4},
    {"sgi", TypeDesc::UINT16, 16, 3},
    {"tga", TypeDesc::UINT8, 8, 4},
    {"bmp", TypeDesc::UINT8, 8, 3},
    {"jp2", TypeDesc::UINT8, 8, 3},
    {"iff", TypeDesc::UINT8, 8, 3},
    {"fits", TypeDesc::FLOAT, 32, 3},
    {"pnm", TypeDesc::UINT8, 8, 3},
    {"ico", TypeDesc::UINT8, 8, 4},
    {"rla", TypeDesc::UINT8, 8, 3},
    {"jpg", TypeDesc::UINT8, 8, 3, false},
    {"gif", TypeDesc::UINT8, 8, 3, false},
    {"heic", TypeDesc::UINT8, 8, 3, false},
    {"hdr", TypeDesc::FLOAT, 32, 3, false},
    {"webp", TypeDesc::UINT8, 8, 3, false},
};

class Files : public ToolRun {
protected:
    static constexpr int kWidth = 120;  // OpenImageIO damages longer rows of noise in RLA files
    static constexpr int kHeight = 200;

    static OIIO::ImageSpec Spec(const FileFormat& format) {
        OIIO::ImageSpec spec(kWidth, kHeight, format.channels, format.base);
        spec.attribute("oiio:BitsPerSample", format.bits);
        spec.attribute("oiio:UnassociatedAlpha", format.straight);
        return spec;
    }

    static std::string Samples(const FileFormat& format, size_t bytes) {
        std::string samples = Noise(bytes);
        const size_t step = format.base == TypeDesc::FLOAT ? 4 : 2;
        for (size_t i = step - 1; step * 8 == static_cast<size_t>(format.bits) && i < samples.size(); i += step) {
            samples[i] = 0x3A;  // numbers that no format normalises
        }
        return samples;
    }

    static void SavePicture(const std::string& file, const FileFormat& format, const OIIO::ImageSpec& spec) {
        const auto output = OIIO::ImageOutput::create(file);
        const std::string samples = Samples(format, spec.image_bytes());
        ASSERT_TRUE(output && output->open(file, spec) && output->write_image(format.base, samples.data())) << file;
    }

    // p.plenar, and the picture that it was made of.
    std::string MakePayload(const FileFormat& format) {
        const std::string source = "source." + (format.isExact ? format.extension : format.bits == 8 ? "png" : "exr");
        SavePicture(source, format, Spec(format));
        EXPECT_EQ(Run("$PLENAR encode " + source + " p.plenar --overwrite --sidecar"), 0) << err_;
        return source;
    }

    // Without the picture libraries, which take their time.
    void EncodeSamples(const std::string& payload, const FileFormat& format, int width, int height) {
        const std::string name = format.base == TypeDesc::FLOAT  ? "Float32"
                                 : format.base == TypeDesc::HALF ? "Half16"
                                                                 : "Uint" + std::to_string(format.bits);
        const size_t samples = static_cast<size_t>(width) * static_cast<size_t>(height) * 4;
        Save("samples", Samples(format, samples * TypeDesc(format.base).size()));
        EXPECT_EQ(Run("$PLENAR encode samples " + payload + " --raw --overwrite --order RGB --type " + name +
                      " --size " + std::to_string(width) + "x" + std::to_string(height)),
                  0)
            << err_;
    }
};

TEST_F(Files, PicturesOfAllFormatsComeBackOrSayWhatChanged) {
    for (const FileFormat& format : kFormats) {
        SCOPED_TRACE(format.extension);
        const std::string source = MakePayload(format);
        const std::string back = "back." + format.extension;
        EXPECT_EQ(Run("$PLENAR decode p.plenar --sidecar " + back), 0) << err_;
        if (format.isExact) {
            EXPECT_EQ(err_, "");
            EXPECT_EQ(Run("idiff " + source + " " + back), 0) << out_;
        } else {
            EXPECT_NE(err_.find("plenar: p.plenar: warning: not kept in " + back), std::string::npos) << err_;
            EXPECT_EQ(Run("$PLENAR decode p.plenar strict." + format.extension + " --strict"), 1);
            EXPECT_FALSE(fs::exists("strict." + format.extension));
        }
        fs::remove(back);
    }
}

TEST_F(Files, DisksAndFoldersThatTakeNoFileFailOneFileAlone) {
    for (const std::string folder : {"full", "closed"}) {
        fs::create_directory(folder);
    }
    if (mount("none", "full", "tmpfs", 0, "size=16k") != 0) {
        GTEST_SKIP() << "a small disk can be mounted by root only";
    }
    fs::permissions("closed", fs::perms::owner_read | fs::perms::owner_exec);
    for (const FileFormat& format : kFormats) {
        SCOPED_TRACE(format.extension);
        EncodeSamples("p.plenar", format, kWidth, kHeight);
        EncodeSamples("s.plenar", format, 32, 32);
        const std::string large = "full/p." + format.extension;
        const std::string suffix = " --ext " + format.extension;
        EXPECT_EQ(Run("$PLENAR decode p.plenar s.plenar --jobs 1 --out-dir full" + suffix), 1);
        EXPECT_NE(err_.find("plenar: p.plenar: can't write " + large + ": No space left"), std::string::npos) << err_;
        EXPECT_EQ(err_.find(".plenar-partial"), std::string::npos) << err_;
        EXPECT_EQ(Names("full"), "s." + format.extension) << err_;
        fs::remove("full/s." + format.extension);
        // The folder's owner is bound by its permissions, unless a capability lifts them.
        EXPECT_EQ(Run("setpriv --bounding-set -dac_override $PLENAR decode p.plenar closed/p." + format.extension), 1);
        EXPECT_NE(err_.find("can't write closed/p." + format.extension + ": Permission denied"), std::string::npos)
            << err_;
    }
    umount("full");
    fs::permissions("closed", fs::perms::owner_all);
}

TEST_F(Files, NothingIsReplacedUnasked) {
    const FileFormat& format = kFormats[0];
    SavePicture("a.png", format, Spec(format));
    fs::copy("a.png", "b.png");
    fs::create_hard_link("a.png", "other.png");
    ASSERT_EQ(Run("$PLENAR encode a.png a.plenar && cp a.plenar c.plenar"), 0) << err_;
    fs::create_symlink("c.plenar", "link.plenar");
    const struct {
        std::string arguments;
        std::string message;
    } cases[] = {
        {"encode a.png b.png", "b.png is a picture, and an encode replaces none: for several pictures give --out-dir"},
        {"encode *.png", "plenar: "},
        {"encode a.png a.png --overwrite", "a.png is a picture"},
        {"encode a.png a.plenar", "can't write a.plenar: it exists; --overwrite replaces it"},
        {"encode a.png link.plenar", "can't write link.plenar: it exists"},
        {"decode a.plenar b.png", "can't write b.png: it exists"},
        {"decode a.plenar --raw link.plenar", "can't write link.plenar: it exists"},
        {"decode c.plenar link.plenar --raw --overwrite", "it is an input of this run"},
        {"encode a.png other.png --raw --size 2x2 --order RGB --type Uint8 --overwrite", "it is an input of this run"},
        {"decode a.plenar " + std::string(256, 'n'), "can't write " + std::string(256, 'n') + ": File name too long"},
        {"encode a.png " + std::string(248, 'n') + ".plenar --sidecar", ".json: File name too long"},
        {"decode a.plenar o.png --max-pixels 23999", "24000 pixels; at most 23999"},
    };
    const std::string picture = Text("a.png");
    const std::string payload = Text("a.plenar");
    for (const auto& [arguments, message] : cases) {
        EXPECT_NE(Run("$PLENAR " + arguments), 0) << arguments;
        EXPECT_NE(err_.find(message), std::string::npos) << arguments << "\n" << err_;
        EXPECT_TRUE(Text("a.png") == picture && Text("b.png") == picture) << arguments;
        EXPECT_TRUE(Text("a.plenar") == payload && Text("c.plenar") == payload) << arguments;
    }
    EXPECT_EQ(Names("."), "a.plenar a.png b.png c.plenar link.plenar other.png");
    EXPECT_EQ(Run("$PLENAR decode a.plenar link.plenar --raw --overwrite --sync"), 0) << err_;
    EXPECT_FALSE(fs::is_symlink("link.plenar"));
    EXPECT_EQ(Text("c.plenar"), payload);
    EXPECT_EQ(Run("$PLENAR encode a.png " + std::string(248, 'n') + ".plenar"), 0) << err_;
}

TEST_F(Files, AbandonedFilesGoAndThoseInWorkStay) {
    SavePicture("a.png", kFormats[0], Spec(kFormats[0]));
    const std::string abandoned = "out/.plenar-partial-0123456789ab";
    const std::string inWork = "out/.plenar-partial-ba9876543210";
    fs::create_directory("out");
    Save(abandoned, "x");
    Save(inWork, "x");
    Save("out/.plenar-partial-mine", "x");
    const int descriptor = open(inWork.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(descriptor, LOCK_EX), 0);
    EXPECT_EQ(Run("$PLENAR encode a.png out/a.plenar"), 0) << err_;
    EXPECT_EQ(Names("out"), ".plenar-partial-ba9876543210 .plenar-partial-mine a.plenar");
    close(descriptor);
}

TEST_F(Files, CutSourcesAreRefused) {
    for (const FileFormat& format : kFormats) {
        const std::string file = "cut." + format.extension;
        SavePicture(file, format, Spec(format));
        const bool isHeic = format.extension == "heic";  // the rest of this one holds nothing
        fs::resize_file(file, fs::file_size(file) * (isHeic ? 1 : 19) / 20);
        EXPECT_EQ(Run("$PLENAR encode " + file + " p.plenar"), 1) << file;
        EXPECT_FALSE(fs::exists("p.plenar")) << file;
    }
}

TEST_F(Files, SidecarsKeepWhatPayloadsDrop) {
    const FileFormat format{"dpx", TypeDesc::UINT16, 10, 3};
    OIIO::ImageSpec spec = Spec(format);
    const unsigned timecode[] = {0x01020304, 0};
    spec.attribute("smpte:TimeCode", OIIO::TypeTimeCode, timecode);
    spec.attribute("dpx:FrameRate", 24.0F);
    spec.attribute("PixelAspectRatio", 2.0F);
    SavePicture("a.dpx", format, spec);
    ASSERT_EQ(Run("$PLENAR encode a.dpx a.plenar"), 0);
    EXPECT_NE(err_.find("frame rate 24; pixel aspect ratio 2; timecode 01:02:03:04"), std::string::npos) << err_;
    EXPECT_EQ(Run("$PLENAR encode a.dpx b.plenar --strict"), 1);
    EXPECT_EQ(Run("$PLENAR encode a.dpx b.plenar --strict --sidecar"), 0) << err_;
    EXPECT_EQ(Text("a.plenar"), Text("b.plenar"));
    EXPECT_EQ(Run("$PLENAR encode a.dpx b.plenar --overwrite"), 1);
    EXPECT_NE(err_.find("b.plenar.json tells of an earlier payload"), std::string::npos) << err_;
    EXPECT_EQ(Run("$PLENAR encode a.dpx - --sidecar > /dev/null"), 1);
    EXPECT_FALSE(fs::exists("-.json"));
    fs::remove("b.plenar");  // as after a kill between the two
    EXPECT_EQ(Run("$PLENAR encode a.dpx b.plenar --sidecar"), 1);
    EXPECT_EQ(Run("$PLENAR encode a.dpx b.plenar --sidecar --resume"), 0) << err_;
    ASSERT_EQ(Run("$PLENAR decode b.plenar b.dpx --strict --sidecar"), 0) << err_;
    const auto back = OIIO::ImageInput::open("b.dpx");
    ASSERT_TRUE(back);
    for (const char* const name : {"smpte:TimeCode", "dpx:FrameRate", "PixelAspectRatio"}) {
        EXPECT_EQ(back->spec().find_attribute(name)->get_string(), spec.find_attribute(name)->get_string()) << name;
    }
    EXPECT_EQ(Run("$PLENAR decode b.plenar b.png --sidecar"), 0);
    EXPECT_NE(err_.find("warning: not kept in b.png: frame rate 24; timecode 01:02:03:04"), std::string::npos) << err_;
}

TEST_F(Files, AlphaIsConvertedOnlyWhenAsked) {
    FileFormat format{"tif", TypeDesc::UINT8, 8, 4, true, 0};
    SavePicture("a.tif", format, Spec(format));
    ASSERT_EQ(Run("$PLENAR encode a.tif a.plenar"), 0);
    EXPECT_NE(err_.find("multiplied by alpha"), std::string::npos) << err_;
    EXPECT_EQ(Run("$PLENAR decode a.plenar a.png --associated"), 1);
    EXPECT_NE(err_.find("--unpremultiply divides them"), std::string::npos) << err_;
    EXPECT_EQ(Run("$PLENAR decode a.plenar b.tif --associated && idiff a.tif b.tif"), 0) << err_;
    EXPECT_EQ(Run("$PLENAR decode a.plenar a.png --associated --unpremultiply --strict"), 0) << err_;
    EXPECT_EQ(Run("$PLENAR encode a.tif c.plenar --unpremultiply --strict && $PLENAR decode c.plenar c.png"), 0);
    EXPECT_EQ(Run("idiff a.png c.png"), 0) << out_;
}

// A library's exit is played by a program in the place of the one that runs the libraries.
TEST_F(Files, LibrariesThatEndTheirProcessEndNoBatch) {
    SavePicture("a.png", kFormats[0], Spec(kFormats[0]));
    fs::copy("a.png", "b.png");
    Save("plenar-pictures", "#!/bin/sh\nhead -c 1 >/dev/null; echo write error >&2; exit 3\n");
    EXPECT_EQ(Run("cp $PLENAR plenar; chmod +x plenar-pictures; ./plenar encode a.png b.png --out-dir out"), 1);
    for (const std::string file : {"a.png", "b.png"}) {
        EXPECT_NE(err_.find("plenar: " + file + ": the picture library ended its process (exit status 3): write error"),
                  std::string::npos)
            << err_;
    }
}

TEST_F(Files, SignalsLeaveNoPartialFile) {
    const FileFormat& format = kFormats[0];
    MakePayload(format);
    for (int i = 0; i < 300; ++i) {
        fs::create_hard_link("p.plenar", "f" + std::to_string(i) + ".plenar");
    }
    ASSERT_EQ(Run("mkfifo last"), 0);  // nobody writes to it, so that no batch ends by itself
    for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP}) {
        for (const std::string extension : {"png", "tif", "jp2"}) {
            const std::string folder = extension + std::to_string(signalNumber);
            const pid_t process =
                Start("exec $PLENAR decode f*.plenar last --out-dir " + folder + " --ext " + extension);
            while (!fs::exists(folder) || fs::is_empty(folder)) {
                std::this_thread::yield();
            }
            kill(process, signalNumber);
            EXPECT_EQ(Finish(process), 128 + signalNumber);
            EXPECT_EQ(Names(folder).find(".plenar-partial"), std::string::npos) << Names(folder);
        }
    }
}

}  // namespace
