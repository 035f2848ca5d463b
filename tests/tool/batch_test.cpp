// Many frames at a time: names, resumption, signals, pipes; and the commands that look at frames.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>

#include "tool_run.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using namespace std::chrono_literals;

constexpr size_t kFrameBytes = 26 * 10 * 2;
constexpr const char* kRaw = " --raw --size 26x10 --order UYVY";

class Batch : public ToolRun {
protected:
    static std::string FrameName(uint32_t frame) {
        const std::string number = std::to_string(frame);
        return "in/s." + std::string(4 - number.size(), '0') + number + ".yuv";
    }

    static void SaveFrames(uint32_t count) {
        fs::create_directory("in");
        for (uint32_t frame = 1; frame <= count; ++frame) {
            Save(FrameName(frame), Noise(kFrameBytes, frame));
        }
    }

    template <class Condition>
    static bool Await(Condition condition) {
        for (int i = 0; i < 1000 && !condition(); ++i) {
            std::this_thread::sleep_for(10ms);
        }
        return condition();
    }

    static int Kept(const std::string& report) { return nlohmann::json::parse(Text(report)).at("counts").at("kept"); }

    int RunPlenar(const std::string& arguments) { return Run("$PLENAR " + arguments); }
};

TEST_F(Batch, NamesStandForFiles) {
    SaveFrames(4);
    Save("in/.hidden", "x");
    Save("in/a##b.yuv", Noise(kFrameBytes));
    const struct {
        std::string arguments;
        std::string outputs;
    } cases[] = {
        {"'in/s.####.yuv' out/", "s.0001.plenar s.0002.plenar s.0003.plenar s.0004.plenar"},
        {"in/s.%04d.yuv out/p-%d.plenar --frames 4,1-3x2", "p-1.plenar p-3.plenar p-4.plenar"},
        {"in/s.#.yuv in/s.####.yuv out --frames 2 --quiet", "s.0002.plenar"},
        {"'in/s.000[12].yuv' --out-dir out", "s.0001.plenar s.0002.plenar"},
        {"in out/", "a##b.plenar s.0001.plenar s.0002.plenar s.0003.plenar s.0004.plenar"},
        {"in/a##b.yuv out/", "a##b.plenar"},
    };
    for (const auto& [arguments, outputs] : cases) {
        fs::remove_all("out");
        fs::create_directory("out");
        RunPlenar("encode " + arguments + kRaw);
        EXPECT_EQ(Names("out"), outputs) << arguments << "\n" << err_;
    }
    ASSERT_EQ(RunPlenar("encode in/s.####.yuv p.####.plenar --jobs 3 --timing"s + kRaw), 0);
    EXPECT_EQ(err_.rfind("[1/4] in/s.0001.yuv -> p.0001.plenar\n[2/4] ", 0), 0U) << err_;
    EXPECT_NE(err_.find("plenar: time of 3 jobs: reading "), std::string::npos) << err_;
    ASSERT_EQ(Run("script -qec \"$PLENAR encode in/s.####.yuv t.####.plenar" + std::string(kRaw) + "\" /dev/null"), 0);
    EXPECT_NE(out_.find("\r\x1b[K[4/4] "), std::string::npos) << out_;
    EXPECT_NE(out_.find(" frames/s, 0:00 left\r\x1b[Kplenar: 4 frames of 4 done in "), std::string::npos) << out_;
}

TEST_F(Batch, WrongOptionsSayWhatWouldDo) {
    SaveFrames(2);
    const struct {
        std::string arguments;
        std::string message;
    } cases[] = {
        {"", "a command is missing: encode, decode, "},
        {"encod a b", "encod: no command has this name (did you mean encode?); the commands are encode, "},
        {"encode a b --raw --size 2x2 --order UYVX",
         "--order UYVX: no order has this name (did you mean UYVY?); give "},
        {"encode a b --raw --size 2x2 --order p010le", "--order p010le: this format keeps Cb and Cr together"},
        {"encode a b --raw --size 2x2 --order v210 --type Uint8", "--order v210 means CbYCrY with Packed10"},
        {"encode a b --raw --size 2x2 --order RGB", "--raw requires --type"},
        {"encode a b --raw --size 26x10x --order UYVY", "--size: WIDTHxHEIGHT expected"},
        {"encode a b --alpha-rle --alpha-bands 256", "--alpha-bands: Value 256 not in range"},
        {"encode a b --type float", "--type float: no type has this name (did you mean Float32?); give Uint8, "},
        {"encode a b --threads 1000000", "--threads: Value 1000000 not in range"},
        {"encode in out.plenar"s + kRaw, "both in/s.0001.yuv and in/s.0002.yuv would be written to out.plenar"},
        {"encode in/s.0001.yuv s.####.plenar"s + kRaw, "but in/s.0001.yuv has no number"},
        {"encode 'no.####.yuv' out/", "no.####.yuv: no frame of this name exists"},
        {"encode 'no*' out/", "no*: no file matches"},
        {"encode in out/ --frames 1-2"s + kRaw, "--frames 1-2 needs an input with a place"},
        {"encode in/s.#.yuv out/ --frames 2-1", "--frames: numbers and ranges expected, as in 1-240"},
        {"decode in out/", "in: no file of this folder is named *.plenar"},
        {"encode in out/ --report in/s.0001.yuv"s + kRaw, "in/s.0001.yuv: this file exists and is not a report"},
    };
    for (const auto& [arguments, message] : cases) {
        EXPECT_EQ(RunPlenar(arguments), 2) << arguments;
        EXPECT_NE(err_.find(message), std::string::npos) << err_;
    }
    EXPECT_EQ(RunPlenar("encode in --out-dir /proc/zz"s + kRaw), 1);
    EXPECT_NE(err_.find("can't make the folder /proc/zz: No such file"), std::string::npos) << err_;
    EXPECT_EQ(RunPlenar("encode in/s.0001.yuv a --raw --size 28x10 --order UYVY"), 1);
    EXPECT_NE(err_.find("src size is too small (520 bytes are given, 560 needed)"), std::string::npos) << err_;
}

TEST_F(Batch, KilledAndResumedGivesTheSameBytes) {
    SaveFrames(500);
    ASSERT_EQ(RunPlenar("encode in one/"s + kRaw), 0) << err_;
    fs::rename(FrameName(250), "aside");
    mkfifo(FrameName(250).c_str(), 0600);  // here the batch waits
    const pid_t process = Start("exec $PLENAR encode 'in/*' two/ --jobs 1"s + kRaw);
    ASSERT_TRUE(Await([] { return fs::exists("two/s.0249.plenar"); }));
    kill(process, SIGKILL);
    EXPECT_EQ(Finish(process), 128 + SIGKILL);
    fs::rename("aside", FrameName(250));
    EXPECT_EQ(RunPlenar("encode in/s.0001.yuv one/ --resume --report /dev/full"s + kRaw), 1);
    EXPECT_NE(err_.find("plenar: /dev/full: can't write the report: No space left"), std::string::npos) << err_;
    ASSERT_EQ(RunPlenar("encode in two/ --resume --report report.json"s + kRaw), 0) << err_;
    EXPECT_EQ(Kept("report.json"), 249);
    EXPECT_EQ(Run("diff -r one two"), 0) << out_;

    // What is cut, or older than its input, doesn't stay.
    fs::resize_file("one/s.0001.plenar", 100);
    Save(FrameName(2), Noise(kFrameBytes, 1000));
    RunPlenar("encode in one/ --resume --report report.json"s + kRaw);
    EXPECT_EQ(Kept("report.json"), 498);
}

TEST_F(Batch, SignalsEndABatchInOrder) {
    SaveFrames(3);
    mkfifo("in/s.0002.fifo", 0600);
    const struct {
        int number;
        std::string name;
    } signals[] = {{SIGINT, "INT"}, {SIGTERM, "TERM"}, {SIGHUP, "HUP"}};
    for (const auto& [number, name] : signals) {
        fs::remove_all("out");
        const pid_t process = Start(
            "exec $PLENAR encode missing in/s.0001.yuv in/s.0002.fifo in/s.0003.yuv --out-dir out --jobs 1"
            " --report report.json"s +
            kRaw);
        // The frame from the fifo waits for somebody who writes to it.
        ASSERT_TRUE(Await([] { return fs::exists("out/s.0001.plenar"); }));
        std::this_thread::sleep_for(50ms);
        kill(process, number);
        EXPECT_EQ(Finish(process), 128 + number);
        EXPECT_EQ(Names("out"), "s.0001.plenar");
        EXPECT_NE(err_.find("plenar: stopped by the signal " + name +
                            ": 2 frames not done\n"
                            "plenar: 1 frame of 4 done in "),
                  std::string::npos)
            << err_;
        EXPECT_NE(err_.find(", 1 failed: missing\n"), std::string::npos) << err_;

        const auto report = nlohmann::json::parse(Text("report.json"));
        EXPECT_EQ(report.at("signal"), name);
        std::string states;
        for (const auto& frame : report.at("frames")) {
            states += frame.at("status").get<std::string>() + ", ";
        }
        EXPECT_EQ(states, "failed, done, not done, not done, ");
        EXPECT_EQ(report.at("frames").at(0).at("error"), "can't be read: No such file or directory");
        EXPECT_EQ(report.at("frames").at(1).at("output"), "out/s.0001.plenar");
    }
}

TEST_F(Batch, PayloadsAndSamplesGoThroughPipes) {
    const std::string samples = Noise(kFrameBytes);
    Save("s", samples);
    for (const std::string& command : {
             "cat s | $PLENAR encode - -"s + kRaw + " | $PLENAR decode - - --raw >back",
             "$PLENAR encode s p"s + kRaw + " && $PLENAR decode p /dev/stdout --raw >back && ls -A | grep -c '^p'",
             "mkfifo f; $PLENAR encode /dev/stdin f"s + kRaw +
                 " <s & cat f 2>/dev/null || sleep 1; "
                 "$PLENAR decode <(cat p) back --raw",
         }) {
        fs::remove("back");
        EXPECT_EQ(Run("set -o pipefail; " + command), 0) << err_;
        EXPECT_EQ(Text("back"), samples) << command;
    }
    for (const std::string arguments :
         {"--version", "--help", "formats", "info p", "decode p - --raw", "decode p /dev/full --raw"}) {
        EXPECT_EQ(Run("$PLENAR " + arguments + " >/dev/full"), 1) << arguments;
        EXPECT_NE(err_.find("can't write "), std::string::npos) << err_;
    }
    EXPECT_EQ(RunPlenar("encode - p2"), 1);
    EXPECT_NE(err_.find("a picture file can't pass through a pipe"), std::string::npos) << err_;
}

TEST_F(Batch, FramesAreCompared) {
    std::string samples = Noise(kFrameBytes);
    Save("s", samples);
    samples[2 * 52 + 7] = static_cast<char>(samples[2 * 52 + 7] ^ 1);  // Y of the fourth pixel
    samples[5 * 52] = static_cast<char>(samples[5 * 52] ^ 0x80);
    Save("t", samples);
    ASSERT_EQ(Run("$PLENAR encode s s.plenar"s + kRaw + " && $PLENAR encode t t.plenar" + kRaw +
                  " && $PLENAR encode s rgb.plenar --raw --size 26x6 --order RGB24"),
              0)
        << err_;
    const struct {
        std::string arguments;
        int status;
        std::string text;
    } cases[] = {
        {"verify s.plenar s --raw", 0, "s.plenar and s: all 520 samples agree (CbYCrY, Uint8, 26x10)\n"},
        {"compare s.plenar t.plenar", 1, ": 2 of 520 samples differ; first Y of pixel 3 in row 2, "},
        {"verify s.plenar t --raw --order UYVY", 1, "; greatest difference 128, Cb of pixel 0 in row 5\n"},
        {"verify s.plenar t --raw --order YUY2", 1, "of 520 samples differ; first "},
        {"compare s.plenar rgb.plenar", 1, "can't be compared: CbYCrY, Uint8, 26x10 and RGB, Uint8, 26x6"},
        {"compare s.plenar s.plenar --max-pixels 259", 1, "26x10, 260 pixels; at most 259 are taken"},
        {"info --hash s.plenar", 0, "SHA-256 of the samples: " + "HASH"s},
        {"info s.plenar missing", 1, "plenar: missing: can't be read: No such file or directory"},
    };
    ASSERT_EQ(Run("sha256sum <s | cut -c-64"), 0);
    const std::string hash = out_;
    for (const auto& [arguments, status, text] : cases) {
        EXPECT_EQ(RunPlenar(arguments), status) << arguments;
        const std::string wanted = text.ends_with("HASH") ? text.substr(0, text.size() - 4) + hash : text;
        EXPECT_NE((out_ + err_).find(wanted), std::string::npos) << out_ << err_;
    }
    ASSERT_EQ(RunPlenar("info --json s.plenar t.plenar"), 0);
    EXPECT_EQ(nlohmann::json::parse(out_).size(), 2U);
    ASSERT_EQ(RunPlenar("formats --json"), 0);
    EXPECT_EQ(nlohmann::json::parse(out_).at("pairs").size(), 106U);
}

}  // namespace
