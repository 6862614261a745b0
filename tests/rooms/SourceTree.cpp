// SPDX-License-Identifier: MIT
#include "tests/rooms/SourceTree.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace {
const fs::path kRoot = SOURCE_FOLDER;
const char* const kFolders[] = {"framework", "design", "spectral", "estimation", "blocks",     "plugin",
                                "host",      "cli",    "fuzz",     "tests",      "benchmarks", "examples"};
} // namespace

std::vector<std::string> sourceFiles() {
    std::vector<std::string> files;
    for (const char* const folder : kFolders)
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kRoot / folder))
            if (entry.path().extension() == ".h" || entry.path().extension() == ".cpp")
                files.push_back(entry.path().lexically_relative(kRoot).generic_string());
    std::sort(files.begin(), files.end());
    return files;
}

bool fileExists(const std::string& path) {
    return fs::exists(kRoot / path);
}

std::string textOf(const std::string& path) {
    std::ifstream file(kRoot / path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
