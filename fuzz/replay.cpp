// The main of a fuzz target without a fuzzer: runs it over each file of the folders given.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz.h"

namespace {

std::vector<std::filesystem::path> filesIn(const char* folder) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        files.push_back(entry.path());
    }
    std::ranges::sort(files);
    return files;
}

}  // namespace

int main(int argc, char** argv) {
    size_t runs = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& path : filesIn(argv[i])) {
            std::ifstream file(path, std::ios::binary);
            const std::string input{std::istreambuf_iterator<char>(file), {}};
            std::fprintf(stderr, "%s\n", path.c_str());
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
            ++runs;
        }
    }
    std::fprintf(stderr, "%zu inputs\n", runs);
    return runs > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
