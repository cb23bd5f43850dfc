// The main program of fuzz targets that no fuzzer drives: runs every file of the given folders once.

#include "Tests/Fuzz/Fuzz.h"

#include "Platform/Foundation/Data.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <vector>

int main(int argc, char** argv) {
    std::vector<std::string> paths;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i]))
            paths.push_back(entry.path().string());
    }
    std::sort(paths.begin(), paths.end());
    for (const std::string& path : paths) {
        std::printf("%s\n", path.c_str());
        std::fflush(stdout); // before the one that ends the program
        const auto bytes = Imaging::Platform::dataWithContentsOfFile(path, std::uint64_t{1} << 26);
        if (!bytes.has_value()) return 1;
        LLVMFuzzerTestOneInput(bytes->data(), bytes->size());
    }
    return paths.empty() ? 1 : 0; // an empty corpus tests nothing
}
