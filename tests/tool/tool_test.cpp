// The plenar program, run as its users run it.
#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "payload_view.h"
#include "table.h"
#include "testing/payload_builder.h"
#include "testing/plane_bits.h"
#include "tool_run.h"

namespace {

namespace fs = std::filesystem;
using OIIO::TypeDesc;
using namespace plenar_test;
using namespace std::string_literals;

struct PictureKind {
    TypeDesc samples;
    int bits;
    int channels;
};

class Tool : public ToolRun {
protected:
    static constexpr int kWidth = 26;
    static constexpr int kHeight = 10;

    int RunPlenar(const std::string& arguments) {
        const bool writes = arguments.starts_with("encode ") || arguments.starts_with("decode ");
        return Run("$PLENAR " + arguments + (writes ? " --overwrite" : ""));
    }

    nlohmann::json Info(const std::string& file) {
        RunPlenar("info --json " + file);
        return nlohmann::json::parse(out_);
    }

    static void SavePicture(const std::string& file, const PictureKind& kind, uint32_t seed = 1) {
        OIIO::ImageSpec spec(kWidth, kHeight, kind.channels, kind.samples);
        spec.attribute("oiio:BitsPerSample", kind.bits);
        spec.attribute("oiio:UnassociatedAlpha", 1);
        std::string samples = Noise(spec.image_bytes(), seed);
        for (size_t i = 3; kind.samples == TypeDesc::FLOAT && i < samples.size(); i += 4) {
            samples[i] = 0x3F;  // numbers that files don't normalise
        }
        for (size_t i = 1; kind.samples == TypeDesc::HALF && i < samples.size(); i += 2) {
            samples[i] = static_cast<char>(samples[i] & 0x3B);
        }
        const auto output = OIIO::ImageOutput::create(file);
        ASSERT_TRUE(output && output->open(file, spec) && output->write_image(kind.samples, samples.data())) << file;
    }

    static std::string PictureSamples(const std::string& file, const PictureKind& kind) {
        OIIO::ImageSpec config;
        config.attribute("oiio:UnassociatedAlpha", 1);
        const auto input = OIIO::ImageInput::open(file, &config);
        if (!input || input->spec().format != kind.samples) {
            ADD_FAILURE() << file << " can't be read, or holds other samples";
            return {};
        }
        EXPECT_EQ(input->spec().get_int_attribute("oiio:BitsPerSample", kind.bits), kind.bits);
        std::string samples(input->spec().image_bytes(), '\0');
        EXPECT_TRUE(input->read_image(0, 0, 0, -1, kind.samples, samples.data()));
        return samples;
    }
};

constexpr PictureKind kRgba8{TypeDesc::UINT8, 8, 4};

TEST_F(Tool, PicturesComeBackBitForBit) {
    for (const TableRow& row : ReadTable("pictures.tsv")) {
        SCOPED_TRACE(row.Text("type") + ", " + row.Text("channels") + " channels");
        const PictureKind kind = {TypeDesc(row.Text("samples")), static_cast<int>(row.Number("bits")),
                                  static_cast<int>(row.Number("channels"))};
        const std::string& file = row.Text("file");
        SavePicture(file, kind);
        ASSERT_EQ(RunPlenar("encode " + file + " p.plenar " + row.Text("options")), 0) << err_;
        const auto format = Info("p.plenar").at("format");
        EXPECT_EQ(format.at("order"), row.Text("order"));
        EXPECT_EQ(format.at("type"), row.Text("type"));
        ASSERT_EQ(RunPlenar("decode p.plenar back-" + file), 0) << err_;
        EXPECT_EQ(PictureSamples("back-" + file, kind), PictureSamples(file, kind));
    }
}

TEST_F(Tool, OrdersOfPicturesNameTheirSamples) {
    SavePicture("p.png", kRgba8);
    Save("p.rgba", PictureSamples("p.png", kRgba8));
    ASSERT_EQ(RunPlenar("encode p.rgba raw.plenar --raw --size 26x10 --order RGBA --type Uint8"), 0) << err_;
    for (const std::string order : {"ARGB", "BGRA", "rgba", "ABGR"}) {
        ASSERT_EQ(RunPlenar("encode p.png p.plenar --order " + order), 0) << err_;
        EXPECT_EQ(Text("p.plenar"), Text("raw.plenar")) << order;
        ASSERT_EQ(RunPlenar("decode p.plenar back.png --order " + order), 0) << err_;
        EXPECT_EQ(PictureSamples("back.png", kRgba8), PictureSamples("p.png", kRgba8)) << order;
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
        std::string picture = Noise(kind.bytes);
        for (size_t i = 0; i < picture.size(); ++i) {
            picture[i] = static_cast<char>(picture[i] & kind.mask(i));
        }
        Save("p.raw", picture);
        ASSERT_EQ(RunPlenar("encode p.raw p.plenar --raw --size 26x10 " + kind.layout), 0) << err_;
        ASSERT_EQ(RunPlenar("decode p.plenar back.raw --raw " + kind.layout), 0) << err_;
        EXPECT_EQ(Text("back.raw"), picture);
    }
}

TEST_F(Tool, ManyFilesGoOnWhenOneFails) {
    for (uint32_t i = 0; i < 5; ++i) {
        SavePicture("p" + std::to_string(i) + ".png", kRgba8, i);
    }
    EXPECT_EQ(RunPlenar("encode missing.png p?.png --out-dir made/payloads --jobs 3"), 1);
    EXPECT_NE(err_.find("plenar: missing.png: "), std::string::npos) << err_;
    ASSERT_EQ(RunPlenar("decode made/payloads/*.plenar --out-dir back --ext tif"), 0) << err_;
    for (uint32_t i = 0; i < 5; ++i) {
        const std::string name = "p" + std::to_string(i);
        EXPECT_EQ(PictureSamples("back/" + name + ".tif", kRgba8), PictureSamples(name + ".png", kRgba8));
    }
    EXPECT_EQ(std::distance(fs::directory_iterator("back"), {}), 5);
}

TEST_F(Tool, FailuresNameTheFileAndLeaveTheOutputAlone) {
    SavePicture("rgb.png", {TypeDesc::UINT8, 8, 3});
    SavePicture("rgba.png", kRgba8);
    SavePicture("half.exr", {TypeDesc::HALF, 16, 3});
    SavePicture("words.dpx", {TypeDesc::UINT16, 12, 3});
    fs::create_directories("folder/rgb.plenar");
    Save("p.raw", Noise(520));
    ASSERT_EQ(RunPlenar("encode p.raw yuv.plenar --raw --size 26x10 --order CbYCrY --type Uint8"), 0) << err_;
    ASSERT_EQ(RunPlenar("encode half.exr half.plenar"), 0) << err_;
    ASSERT_EQ(RunPlenar("encode rgba.png rgba.plenar"), 0) << err_;
    std::string cut = Text("yuv.plenar");
    cut.pop_back();
    Save("cut.plenar", cut);

    const auto filesBefore = std::distance(fs::directory_iterator("."), {});
    for (const std::string existing : {"out.png", "out.jpg", "out.raw"}) {
        Save(existing, Noise(3));
    }
    for (const TableRow& row : ReadTable("tool_refusals.tsv")) {
        SCOPED_TRACE(row.Text("arguments"));
        EXPECT_EQ(RunPlenar(row.Text("arguments")), 1);
        EXPECT_NE(err_.find(row.Text("message")), std::string::npos) << err_;
        EXPECT_EQ(std::count(err_.begin(), err_.end(), '\n'), 1) << err_;
        EXPECT_EQ(Text("out.png").size() + Text("out.jpg").size() + Text("out.raw").size(), 9);
    }
    EXPECT_EQ(std::distance(fs::directory_iterator("."), {}), filesBefore + 3);

    for (const std::string arguments : {"", "encode a b c", "encode a b --raw", "encode a b --order XYZ",
                                        "encode x/a.png y/a.tif --out-dir out", "encode a b --alpha-bands 3"}) {
        EXPECT_EQ(RunPlenar(arguments), 2) << arguments;
        EXPECT_FALSE(err_.empty());
    }
}

TEST_F(Tool, LostAlphaIsTold) {
    SavePicture("p.exr", {TypeDesc::HALF, 16, 4});
    EXPECT_EQ(RunPlenar("encode p.exr p.plenar"), 0);
    EXPECT_NE(err_.find("plenar: p.exr: warning: its alpha is not kept"), std::string::npos) << err_;
    EXPECT_EQ(RunPlenar("encode p.exr p.plenar --order RGB"), 0);
    EXPECT_EQ(err_, "");
}

TEST_F(Tool, InfoShowsPlanesAndBands) {
    SavePicture("p.png", kRgba8);
    ASSERT_EQ(RunPlenar("encode p.png p.plenar --alpha-rle --alpha-bands 4 --frame-layout 1"), 0) << err_;
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

    ASSERT_EQ(RunPlenar("info p.plenar"), 0);
    const auto last = alpha.at("bands").at(3).at("bytes").get<uint64_t>();
    EXPECT_NE(out_.find("    2 rows from row 8: " + std::to_string(last) + " bytes at " + std::to_string(end - last)),
              std::string::npos)
        << out_;

    std::string odd = Text("p.plenar");
    odd[32] = '\xFF';  // the first letter of the first plane's code
    Save("odd.plenar", odd);
    EXPECT_EQ(Info("odd.plenar").at("refused"), "Invalid combination of planes");
    EXPECT_EQ(RunPlenar("info odd.plenar"), 1);
    EXPECT_NE(out_.find("at 16: plane code \"\\xffg08\" is unknown"), std::string::npos) << out_;
    EXPECT_EQ(err_, "plenar: odd.plenar: Invalid combination of planes\n");
}

TEST_F(Tool, FormatsListsEveryPair) {
    ASSERT_EQ(RunPlenar("formats"), 0) << err_;
    EXPECT_EQ(std::count(out_.begin(), out_.end(), '\n'), 108);  // a head, 106 pairs, their number
    EXPECT_NE(out_.find("YCbCrA420Planar  Uint8      \" y08\", \"cb08\", \"cr08\", \" a08\"\n"), std::string::npos);
    EXPECT_NE(out_.find("CbYCrY           Packed10   \"y210\"\n"), std::string::npos);
}

TEST_F(Tool, ViewGoesOnBehindWhatItSkips) {
    const Plane planes[] = {{" y2f", 1, 1, 0, Bytes(8)}, {" rgh", 1, 1, 0, Bytes(6)}, {"rg12", 1, 1, 0, Bytes(5)}};
    const auto view = plenar_tool::ViewPayload(
        Pack({Box("junk", Bytes(5)), Icmp(planes[0], Bytes(3)), Box("junk", {}, 0), Icmp(planes[1]), Icmp(planes[2])}));
    std::vector<std::pair<uint64_t, uint32_t>> found;
    for (const auto& plane : view.planes) {
        found.emplace_back(plane.offset, plane.info.depth);
    }
    EXPECT_EQ(found, (std::vector<std::pair<uint64_t, uint32_t>>{{58, 32}, {114, 16}, {157, 12}}));
    EXPECT_EQ(view.remarks.size(), 3U);
}

TEST_F(Tool, ViewTakesTheLongestBandTable) {
    const std::vector<uint32_t> entries(255, 1);
    const auto table = plenar_tool::ReadBandTable(PlaneOf(entries, entries, {Bytes(255)}), 255);
    EXPECT_EQ(table.problem, "");
    EXPECT_EQ(table.tableBytes, 1659U);
}

// Exactly sized buffers, so that a sanitizer sees any read outside.
TEST_F(Tool, ViewOfDamagedPayloadsStaysInside) {
    SavePicture("p.png", kRgba8);
    ASSERT_EQ(RunPlenar("encode p.png p.plenar --alpha-rle"), 0) << err_;
    const std::string text = Text("p.plenar");
    const Bytes payload(text.begin(), text.end());
    constexpr size_t kAlphaBox = 45 + 780;
    for (size_t size = 0; size < payload.size(); ++size) {
        const Bytes cut(payload.begin(), payload.begin() + static_cast<long>(size));
        EXPECT_FALSE(plenar_tool::ViewPayload(cut).remarks.empty()) << size;
    }
    for (uint32_t i = 1; i <= 20000; ++i) {
        Bytes damaged = payload;
        const Bytes random = plenar_test::Noise(12, i);
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
