// Runs a fuzz target over the files of some directories, and over damaged copies of each: the same ones every time. For
// compilers without libFuzzer, and for the tests.
//
//   fuzz_replay_NAME [--copies=N] DIRECTORY|FILE...
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

using Bytes = std::vector<uint8_t>;

// Some bytes are others then, and now and then the end is missing.
Bytes DamagedCopy(Bytes input, uint32_t seed) {
    std::mt19937 random(seed);
    for (uint32_t hits = 1 + random() % 4; hits > 0 && !input.empty(); --hits) {
        input[random() % input.size()] = static_cast<uint8_t>(random());
    }
    input.resize(random() % 8 == 0 ? random() % (input.size() + 1) : input.size());
    return input;
}

}  // namespace

int main(int argc, char** argv) {
    uint32_t copies = 0;
    std::vector<std::filesystem::path> paths;
    for (const std::string& argument : std::vector<std::string>(argv + 1, argv + argc)) {
        if (argument.starts_with("--copies=")) {
            copies = static_cast<uint32_t>(std::strtoul(argument.c_str() + 9, nullptr, 10));
        } else if (std::filesystem::is_directory(argument)) {
            std::copy(std::filesystem::directory_iterator(argument), {}, std::back_inserter(paths));
        } else {
            paths.emplace_back(argument);
        }
    }
    std::sort(paths.begin(), paths.end());
    for (const std::filesystem::path& path : paths) {
        std::printf("%s\n", path.c_str());
        std::fflush(stdout);
        std::ifstream file(path, std::ios::binary);
        const Bytes input{std::istreambuf_iterator<char>(file), {}};
        for (uint32_t copy = 0; copy <= copies; ++copy) {
            const Bytes exact(copy == 0 ? input : DamagedCopy(input, copy - 1));  // no room behind the last byte
            LLVMFuzzerTestOneInput(exact.data(), exact.size());
        }
    }
    std::printf("%zu inputs, %u damaged copies of each\n", paths.size(), copies);
    return paths.empty() ? EXIT_FAILURE : EXIT_SUCCESS;
}
