// The plenar program, run as its users run it.
#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "payload_view.h"

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;
using OIIO::TypeDesc;
using namespace std::string_literals;

Bytes Noise(size_t count, uint32_t seed = 1) {
    std::minstd_rand random(seed);
    Bytes bytes(count);
    for (uint8_t& byte : bytes) {
        byte = static_cast<uint8_t>(random() >> 8);
    }
    return bytes;
}

struct PictureKind {
    const char* file;
    TypeDesc::BASETYPE base;
    int bits;
    int channels;
    const char* options;
    const char* order;  // what ReadMetadata is to report
    const char* type;
};

class Tool : public testing::Test {
protected:
    static constexpr int kWidth = 26;
    static constexpr int kHeight = 10;

    Tool() : directory_(fs::temp_directory_path() / ("plenar_tool_test_" + std::to_string(getpid()))) {
        fs::create_directories(directory_);
        previous_ = fs::current_path();
        fs::current_path(directory_);
    }
    ~Tool() override {
        fs::current_path(previous_);
        fs::remove_all(directory_);
    }

    // The exit status; what the program printed is in `out` and `err`.
    int Run(std::string arguments) {
        if (arguments.rfind("encode ", 0) == 0 || arguments.rfind("decode ", 0) == 0) {
            arguments += " --overwrite";
        }
        // NOLINTNEXTLINE(cert-env33-c): a shell is what the program is run from, and it sends the output to files
        const int status = std::system((PLENAR_TOOL " " + arguments + " >out.txt 2>err.txt").c_str());
        for (const auto& [file, text] : {std::pair("out.txt", &out_), std::pair("err.txt", &err_)}) {
            const Bytes bytes = Load(file);
            text->assign(bytes.begin(), bytes.end());
            fs::remove(file);
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    nlohmann::json Info(const std::string& file) {
        Run("info --json " + file);
        return nlohmann::json::parse(out_);
    }

    static Bytes Load(const std::string& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    static void Save(const std::string& file, const Bytes& bytes) {
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    static void SavePicture(const std::string& file, const PictureKind& kind, uint32_t seed = 1) {
        OIIO::ImageSpec spec(kWidth, kHeight, kind.channels, kind.base);
        spec.attribute("oiio:BitsPerSample", kind.bits);
        spec.attribute("oiio:UnassociatedAlpha", 1);
        Bytes samples = Noise(spec.image_bytes(), seed);
        for (size_t i = 3; kind.base == TypeDesc::FLOAT && i < samples.size(); i += 4) {
            samples[i] = 0x3F;  // numbers that files don't normalise
        }
        for (size_t i = 1; kind.base == TypeDesc::HALF && i < samples.size(); i += 2) {
            samples[i] &= 0x3B;
        }
        const auto output = OIIO::ImageOutput::create(file);
        ASSERT_TRUE(output && output->open(file, spec) && output->write_image(kind.base, samples.data())) << file;
    }

    static Bytes PictureSamples(const std::string& file, const PictureKind& kind) {
        OIIO::ImageSpec config;
        config.attribute("oiio:UnassociatedAlpha", 1);
        const auto input = OIIO::ImageInput::open(file, &config);
        if (!input || input->spec().format != kind.base) {
            ADD_FAILURE() << file << " can't be read, or holds other samples";
            return {};
        }
        EXPECT_EQ(input->spec().get_int_attribute("oiio:BitsPerSample", kind.bits), kind.bits);
        Bytes samples(input->spec().image_bytes());
        EXPECT_TRUE(input->read_image(0, 0, 0, -1, kind.base, samples.data()));
        return samples;
    }

    std::string out_;
    std::string err_;

private:
    fs::path directory_;
    fs::path previous_;
};

constexpr PictureKind rgb8{"p.png", TypeDesc::UINT8, 8, 3, "", "RGB", "Uint8"};
constexpr PictureKind rgba8{"p.png", TypeDesc::UINT8, 8, 4, "", "ARGB", "Uint8"};
constexpr PictureKind kHalfRgb{"p.exr", TypeDesc::HALF, 16, 3, "", "RGB", "Half16"};
constexpr const char* kRawUyvy = "--raw --size 26x10 --order CbYCrY --type Uint8 ";

TEST_F(Tool, PicturesComeBackBitForBit) {
    const PictureKind kinds[] = {
        rgba8,
        {"p.png", TypeDesc::UINT8, 8, 4, "--alpha-rle --threads 3", "ARGB", "Uint8"},
        {"p.png", TypeDesc::UINT16, 16, 4, "--alpha-rle --alpha-bands 3", "ARGB", "Uint16"},
        {"p.png", TypeDesc::UINT16, 16, 3, "--order BGR", "RGB", "Uint16"},
        {"p.tif", TypeDesc::UINT16, 16, 1, "", "AlphaOnly", "Uint16"},
        {"p.dpx", TypeDesc::UINT16, 10, 3, "", "RGB", "Uint10"},
        {"p.dpx", TypeDesc::UINT16, 12, 3, "", "RGB", "Uint12"},
        {"p.tif", TypeDesc::FLOAT, 32, 3, "--frame-layout 1", "RGB", "Float32"},
        kHalfRgb,
    };
    for (const PictureKind& kind : kinds) {
        SCOPED_TRACE(kind.type + " "s + std::to_string(kind.channels) + " " + kind.options);
        const std::string file = kind.file;
        SavePicture(file, kind);
        ASSERT_EQ(Run("encode " + file + " p.plenar " + kind.options), 0) << err_;
        const auto format = Info("p.plenar").at("format");
        EXPECT_EQ(format.at("order"), kind.order);
        EXPECT_EQ(format.at("type"), kind.type);
        ASSERT_EQ(Run("decode p.plenar back-" + file), 0) << err_;
        EXPECT_EQ(PictureSamples("back-" + file, kind), PictureSamples(file, kind));
    }
}

TEST_F(Tool, OrdersOfPicturesNameTheirSamples) {
    SavePicture("p.png", rgba8);
    Save("p.rgba", PictureSamples("p.png", rgba8));
    ASSERT_EQ(Run("encode p.rgba raw.plenar --raw --size 26x10 --order RGBA --type Uint8"), 0) << err_;
    for (const std::string order : {"ARGB", "BGRA", "rgba", "ABGR"}) {
        ASSERT_EQ(Run("encode p.png p.plenar --order " + order), 0) << err_;
        EXPECT_EQ(Load("p.plenar"), Load("raw.plenar")) << order;
        ASSERT_EQ(Run("decode p.plenar back.png --order " + order), 0) << err_;
        EXPECT_EQ(PictureSamples("back.png", rgba8), PictureSamples("p.png", rgba8)) << order;
    }
}

TEST_F(Tool, RawBuffersComeBack) {
    const struct {
        std::string layout;
        size_t bytes;
        int (*mask)(size_t);  // what a decode writes as zero
    } kinds[] = {
        // 26 pixels take five groups of 16 bytes; unused bits, and the words of the last group behind two pixels
        {"--order CbYCrY --type Packed10", 800,
         [](size_t i) {
             return i % 80 >= 70 ? 0 : i % 80 == 69 ? 0x03 : i % 4 == 3 ? 0x3F : 0xFF;
         }},
        {"--order YCbYCr --type Half16", 1040, [](size_t) { return 0xFF; }},
        {"--order YCbCr420Planar --type Uint8", 390, [](size_t) { return 0xFF; }},
        {"--order YCbCrA420Planar --type Uint16", 1300, [](size_t) { return 0xFF; }},
        {"--order CbYCrYPlusAlpha --type Uint8 --row-bytes 60 --row-bytes2 30", 900,
         [](size_t i) { return (i < 600 ? i % 60 < 52 : (i - 600) % 30 < 26) ? 0xFF : 0; }},
    };
    for (const auto& kind : kinds) {
        SCOPED_TRACE(kind.layout);
        Bytes picture = Noise(kind.bytes);
        for (size_t i = 0; i < picture.size(); ++i) {
            picture[i] &= static_cast<uint8_t>(kind.mask(i));
        }
        Save("p.raw", picture);
        ASSERT_EQ(Run("encode p.raw p.plenar --raw --size 26x10 " + kind.layout), 0) << err_;
        ASSERT_EQ(Run("decode p.plenar back.raw --raw " + kind.layout), 0) << err_;
        EXPECT_EQ(Load("back.raw"), picture);
    }
}

TEST_F(Tool, ManyFilesGoOnWhenOneFails) {
    for (uint32_t i = 0; i < 5; ++i) {
        SavePicture("p" + std::to_string(i) + ".png", rgba8, i);
    }
    EXPECT_EQ(Run("encode missing.png p?.png --out-dir made/payloads --jobs 3"), 1);
    EXPECT_NE(err_.find("plenar: missing.png: "), std::string::npos) << err_;
    EXPECT_NE(err_.find("[6/6] "), std::string::npos) << err_;
    ASSERT_EQ(Run("decode made/payloads/*.plenar --out-dir back --ext tif"), 0) << err_;
    for (uint32_t i = 0; i < 5; ++i) {
        const std::string name = "p" + std::to_string(i);
        EXPECT_EQ(PictureSamples("back/" + name + ".tif", rgba8), PictureSamples(name + ".png", rgba8));
    }
    EXPECT_EQ(std::distance(fs::directory_iterator("back"), {}), 5);
}

TEST_F(Tool, FailuresNameTheFileAndLeaveTheOutputAlone) {
    SavePicture("rgb.png", rgb8);
    SavePicture("rgba.png", rgba8);
    SavePicture("half.exr", kHalfRgb);
    Save("p.raw", Noise(520));
    ASSERT_EQ(Run("encode p.raw yuv.plenar "s + kRawUyvy), 0) << err_;
    ASSERT_EQ(Run("encode half.exr half.plenar"), 0) << err_;
    ASSERT_EQ(Run("encode rgba.png rgba.plenar"), 0) << err_;
    Bytes cut = Load("yuv.plenar");
    cut.pop_back();
    Save("cut.plenar", cut);

    const struct {
        std::string arguments;
        std::string message;
    } cases[] = {
        {"encode nothing.png out.png", "plenar: nothing.png: "},
        {"info nothing.plenar", "plenar: nothing.plenar: can't be read: No such file"},
        {"encode rgb.png out.png --order RGBA", "plenar: rgb.png: has no alpha channel"},
        {"encode rgb.png out.png --order CbYCrY", "plenar: rgb.png: an RGB picture can't become CbYCrY"},
        {"encode rgb.png out.png --type Uint16", "plenar: rgb.png: its samples are Uint8"},
        {"encode rgb.png no/such/out.png", "plenar: rgb.png: can't write no/such/out.png: No such file"},
        {"encode p.raw out.png --raw --size 28x10 --order CbYCrY --type Uint8",
         "plenar: p.raw: CbYCrY, Uint8, 28x10: src size is too small"},
        {"decode yuv.plenar out.png", "plenar: yuv.plenar: holds Y'CbCr samples"},
        {"decode half.plenar out.png", "plenar: half.plenar: png files don't hold Half16 samples"},
        {"decode rgba.plenar out.jpg", "plenar: rgba.plenar: jpeg files hold no alpha"},
        {"decode rgba.plenar out.raw --raw --type Uint16", "bit depth in src metadata is different"},
        {"decode cut.plenar out.png", "plenar: cut.plenar: pack box size(557) is greater than buffer size(556)"},
    };
    const auto filesBefore = std::distance(fs::directory_iterator("."), {});
    for (const std::string existing : {"out.png", "out.jpg", "out.raw"}) {
        Save(existing, Noise(3));
    }
    for (const auto& [arguments, message] : cases) {
        EXPECT_EQ(Run(arguments), 1) << arguments;
        EXPECT_NE(err_.find(message), std::string::npos) << err_;
        EXPECT_EQ(std::count(err_.begin(), err_.end(), '\n'), 1) << err_;
        EXPECT_EQ(Load("out.png").size() + Load("out.jpg").size() + Load("out.raw").size(), 9) << arguments;
    }
    EXPECT_EQ(std::distance(fs::directory_iterator("."), {}), filesBefore + 3);

    for (const std::string arguments : {"", "encode a b c", "encode a b --raw", "encode a b --order XYZ",
                                        "encode x/a.png y/a.tif --out-dir out", "encode a b --alpha-bands 3"}) {
        EXPECT_EQ(Run(arguments), 2) << arguments;
        EXPECT_FALSE(err_.empty());
    }
}

TEST_F(Tool, LostAlphaIsTold) {
    SavePicture("p.exr", {"", TypeDesc::HALF, 16, 4, "", "", ""});
    EXPECT_EQ(Run("encode p.exr p.plenar"), 0);
    EXPECT_NE(err_.find("plenar: p.exr: warning: its alpha is not kept"), std::string::npos) << err_;
    EXPECT_EQ(Run("encode p.exr p.plenar --order RGB"), 0);
    EXPECT_EQ(err_, "");
}

TEST_F(Tool, InfoShowsPlanesAndBands) {
    SavePicture("p.png", rgba8);
    ASSERT_EQ(Run("encode p.png p.plenar --alpha-rle --alpha-bands 4 --frame-layout 1"), 0) << err_;
    const auto info = Info("p.plenar");
    EXPECT_EQ(info.at("boxes").size(), 7U);
    EXPECT_TRUE(info.at("remarks").empty()) << info.at("remarks");
    EXPECT_EQ(info.at("format").at("frameLayout"), 1);
    EXPECT_EQ(info.at("planes").at(0).at("code"), "rg08");
    EXPECT_EQ(info.at("planes").at(0).at("bytes"), 26 * 10 * 3);
    const auto& alpha = info.at("planes").at(1);
    EXPECT_EQ(alpha.at("code"), "rl08");
    EXPECT_EQ(alpha.at("role"), "alpha");
    EXPECT_EQ(alpha.at("depth"), 8);
    uint64_t end = alpha.at("offset").get<uint64_t>() + alpha.at("bandTableBytes").get<uint64_t>();
    std::vector<int> rows;
    for (const auto& band : alpha.at("bands")) {
        rows.push_back(band.at("rows"));
        end += band.at("bytes").get<uint64_t>();
    }
    EXPECT_EQ(rows, (std::vector<int>{3, 3, 2, 2}));
    EXPECT_EQ(end, fs::file_size("p.plenar"));

    Bytes odd = Load("p.plenar");
    odd[32] = 0xFF;  // the first letter of the first plane's code
    Save("odd.plenar", odd);
    EXPECT_EQ(Info("odd.plenar").at("refused"), "Invalid combination of planes");
    EXPECT_EQ(Run("info odd.plenar"), 1);
    EXPECT_NE(out_.find("at 16: plane code \"\\xffg08\" is unknown"), std::string::npos) << out_;
    EXPECT_EQ(err_, "plenar: odd.plenar: Invalid combination of planes\n");
}

TEST_F(Tool, FormatsListsEveryPair) {
    ASSERT_EQ(Run("formats"), 0) << err_;
    EXPECT_EQ(std::count(out_.begin(), out_.end(), '\n'), 108);  // a head, 106 pairs, their number
    EXPECT_NE(out_.find("YCbCrA420Planar  Uint8      \" y08\", \"cb08\", \"cr08\", \" a08\"\n"), std::string::npos);
    EXPECT_NE(out_.find("CbYCrY           Packed10   \"y210\"\n"), std::string::npos);
}

// Exactly sized buffers, so that a sanitizer sees any read outside.
TEST_F(Tool, ViewOfDamagedPayloadsStaysInside) {
    SavePicture("p.png", rgba8);
    ASSERT_EQ(Run("encode p.png p.plenar --alpha-rle"), 0) << err_;
    const Bytes payload = Load("p.plenar");
    constexpr size_t kAlphaBox = 45 + 780;
    for (size_t size = 0; size < payload.size(); ++size) {
        const Bytes cut(payload.begin(), payload.begin() + static_cast<long>(size));
        EXPECT_FALSE(plenar_tool::ViewPayload(cut).remarks.empty()) << size;
    }
    for (uint32_t i = 1; i <= 20000; ++i) {
        Bytes damaged = payload;
        const Bytes random = Noise(12, i);
        for (size_t change = 0; change < random.size(); change += 4) {
            const size_t place = (random[change] % 2 ? 0 : kAlphaBox) + random[change + 1] % 120;
            damaged.at(place) = random[change + 2] % 2 ? random[change + 3] : 0xFF;
        }
        EXPECT_LE(plenar_tool::ViewPayload(damaged).boxes.size(), 256U);
    }
    Bytes boxes(1 << 20);  // a great many boxes of size 0
    boxes[2] = 0x10;
    std::copy_n("pack", 4, boxes.begin() + 4);
    EXPECT_EQ(plenar_tool::ViewPayload(boxes).boxes.size(), 256U);
}

}  // namespace
