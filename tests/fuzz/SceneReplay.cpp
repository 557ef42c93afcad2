// Replays scene inputs through the fuzz harness, without libFuzzer: the test suite runs the
// kept findings, the seeds and the shipped scenes this way on every run.
//
// Usage: scene_replay FILE_OR_FOLDER...
// A folder gives its files in name order, leaving out hidden files and notes (*.md). Each
// file's name is printed before it runs, so that a crash points at its input.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "SceneHarness.h"

namespace {

bool IsInput(const std::filesystem::path& path) {
    const std::string name = path.filename().string();
    return !name.empty() && name[0] != '.' && path.extension() != ".md";
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << "Usage: " << argv[0] << " FILE_OR_FOLDER...\n";
        return 2;
    }
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::path argument(argv[i]);
        std::error_code error;
        if (std::filesystem::is_directory(argument, error)) {
            std::vector<std::filesystem::path> found;
            for (const auto& entry : std::filesystem::directory_iterator(argument)) {
                if (entry.is_regular_file() && IsInput(entry.path())) {
                    found.push_back(entry.path());
                }
            }
            std::sort(found.begin(), found.end());
            files.insert(files.end(), found.begin(), found.end());
        } else if (std::filesystem::is_regular_file(argument, error)) {
            files.push_back(argument);
        } else {
            std::cerr << "No such file or folder: " << argument.string() << "\n";
            return 2;
        }
    }

    for (const std::filesystem::path& file : files) {
        std::cout << file.string() << std::endl;
        std::ifstream in(file, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(in),
                                std::istreambuf_iterator<char>()};
        if (in.bad()) {
            std::cerr << "Couldn't read " << file.string() << "\n";
            return 2;
        }
        fuzz::RunSceneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    }
    std::cout << "Replayed " << files.size() << " input(s)" << std::endl;
    return 0;
}
