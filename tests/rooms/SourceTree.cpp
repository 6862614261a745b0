// SPDX-License-Identifier: MIT
#include "tests/rooms/SourceTree.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace {
const fs::path kRoot = SOURCE_FOLDER;
const char* const kFolders[] = {"framework", "design",     "spectral", "estimation", "blocks",
                                "plugin",    "host",       "cli",      "python",     "fuzz",
                                "tests",     "benchmarks", "examples"};

/// The files in a folder, and in those within it, that a predicate takes.
template <class Predicate>
void collect(const char* folder, std::vector<std::string>& files, Predicate takes) {
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kRoot / folder))
        if (takes(entry.path())) files.push_back(entry.path().lexically_relative(kRoot).generic_string());
}
} // namespace

std::vector<std::string> sourceFiles() {
    std::vector<std::string> files;
    for (const char* const folder : kFolders)
        collect(folder, files,
                [](const fs::path& file) { return file.extension() == ".h" || file.extension() == ".cpp"; });
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<std::string> buildFiles() {
    std::vector<std::string> files{"CMakeLists.txt"};
    for (const char* const folder : kFolders)
        collect(folder, files, [](const fs::path& file) { return file.filename() == "CMakeLists.txt"; });
    collect("cmake", files, [](const fs::path&) { return true; });
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
