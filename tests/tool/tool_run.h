// Runs the plenar program in a folder of its own.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

class ToolRun : public testing::Test {
protected:
    ToolRun() : previous_(std::filesystem::current_path()) {
        std::string name = (std::filesystem::temp_directory_path() / "plenar_tool_XXXXXX").string();
        folder_ = mkdtemp(name.data());
        std::filesystem::current_path(folder_);
    }
    ~ToolRun() override {
        std::filesystem::current_path(previous_);
        std::filesystem::remove_all(folder_);
    }

    // The exit status of a shell's command, in which $PLENAR stands for the program. What it printed is in out_ and
    // err_.
    int Run(const std::string& command) { return Finish(Start(command)); }

    static pid_t Start(const std::string& command) {
        const std::string script = "exec >.out 2>.err; PLENAR='" PLENAR_TOOL "'; " + command;
        const pid_t process = fork();
        if (process == 0) {
            // Some of them are ignored by what runs in the background.
            for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
                std::signal(number, SIG_DFL);
            }
            execl("/bin/bash", "bash", "-c", script.c_str(), nullptr);
            _exit(127);
        }
        return process;
    }

    // 128 and the signal's number for a process that died of a signal, as shells tell it.
    int Finish(pid_t process) {
        int status = 0;
        waitpid(process, &status, 0);
        out_ = Text(".out");
        err_ = Text(".err");
        std::filesystem::remove(".out");
        std::filesystem::remove(".err");
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    static std::string Text(const std::string& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    static void Save(const std::string& file, const std::string& bytes) {
        std::ofstream(file, std::ios::binary) << bytes;
    }

    static std::string Noise(size_t count, uint32_t seed = 1) {
        std::minstd_rand random(seed);
        std::string bytes(count, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(random() >> 8);
        }
        return bytes;
    }

    // The names in a folder, hidden ones too, in order: "a b c".
    static std::string Names(const std::string& folder) {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        std::string text;
        for (const std::string& name : names) {
            text += (text.empty() ? "" : " ") + name;
        }
        return text;
    }

    std::string out_;
    std::string err_;

private:
    std::filesystem::path previous_;
    std::filesystem::path folder_;
};
