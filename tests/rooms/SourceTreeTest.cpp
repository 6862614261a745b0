// SPDX-License-Identifier: MIT
#include "tests/rooms/SourceTree.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

namespace {
/// Whether the CMake list of a folder on the way up to the root names a file, by the path from there.
bool isBuilt(const std::string& path) {
    const std::filesystem::path file(path);
    for (std::filesystem::path folder = file.parent_path();; folder = folder.parent_path()) {
        const std::string list = (folder / "CMakeLists.txt").generic_string();
        const std::string name = file.lexically_relative(folder.empty() ? "." : folder).generic_string();
        const std::regex word("(^|[\\s(])" + std::regex_replace(name, std::regex("[.+]"), "\\$&") +
                              "($|[\\s)])");
        if (fileExists(list) && std::regex_search(textOf(list), word)) return true;
        if (folder.empty()) return false;
    }
}
} // namespace

TEST(SourceTreeTest, TheTreeIsThere) {
    EXPECT_TRUE(fileExists("framework/core/Filter.h"));
    EXPECT_FALSE(fileExists("framework/core/Nothing.h"));
    EXPECT_TRUE(textOf("framework/core/Filter.h").starts_with("// SPDX-License-Identifier: MIT\n"));
}

/// A test that no list names never runs, and nobody notices.
TEST(SourceTreeTest, EverySourceIsInAList) {
    EXPECT_TRUE(isBuilt("framework/core/Filter.cpp"));
    EXPECT_FALSE(isBuilt("framework/core/Nothing.cpp"));
    EXPECT_FALSE(isBuilt("framework/core/ilter.cpp")) << "part of a name isn't the name";
    for (const std::string& path : sourceFiles())
        EXPECT_TRUE(!path.ends_with(".cpp") || isBuilt(path)) << path << " is in no CMakeLists.txt";
}

TEST(SourceTreeTest, EveryFileStartsWithItsLicence) {
    for (const std::string& path : sourceFiles())
        EXPECT_TRUE(textOf(path).starts_with("// SPDX-License-Identifier: MIT\n")) << path;
}

TEST(SourceTreeTest, EveryHeaderIsReadOnce) {
    for (const std::string& path : sourceFiles())
        EXPECT_TRUE(!path.ends_with(".h") || textOf(path).find("\n#pragma once\n") != std::string::npos)
            << path;
}
