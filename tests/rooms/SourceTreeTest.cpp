// SPDX-License-Identifier: MIT
#include "tests/rooms/SourceTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <regex>
#include <sstream>
#include <string>

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

/// Letters, not bytes.
std::size_t columnsOf(const std::string& line) {
    const auto isFirstByte = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; };
    return static_cast<std::size_t>(std::count_if(line.begin(), line.end(), isFirstByte));
}

/// Of the lines in which there is a comment.
void expectNarrow(const std::string& path, const std::regex& comment) {
    constexpr std::size_t kColumns = 110;
    std::istringstream lines(textOf(path));
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number)
        EXPECT_TRUE(columnsOf(line) <= kColumns || !std::regex_search(line, comment))
            << path << ":" << number;
}
} // namespace

TEST(SourceTreeTest, TheTreeIsThere) {
    const std::vector<std::string> files = buildFiles();
    for (const char* const file : {"CMakeLists.txt", "cmake/Install.cmake", "tests/rooms/CMakeLists.txt"})
        EXPECT_EQ(std::count(files.begin(), files.end(), file), 1) << file;
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

/// Code is kept to its columns by the formatter, which leaves comments alone; of CMake's, names of files and
/// options may be longer.
TEST(SourceTreeTest, CommentsKeepToTheColumnsOfCode) {
    for (const std::string& path : sourceFiles())
        expectNarrow(path, std::regex("//"));
    for (const std::string& path : buildFiles())
        expectNarrow(path, std::regex("^ *#|#[^\"]*$"));
}

TEST(SourceTreeTest, EveryHeaderIsReadOnce) {
    for (const std::string& path : sourceFiles())
        EXPECT_TRUE(!path.ends_with(".h") || textOf(path).find("\n#pragma once\n") != std::string::npos)
            << path;
}

/// Names that begin with an underscore, or have two of them together, belong to the compiler and its library.
/// The ones that they have given us are listed. A look for these words is a hundred times as fast as the
/// compiler's own.
// Two of one name in one library are one to the linker, which takes what was made of either.
TEST(SourceTreeTest, NoTwoHeadersOfTheHostDefineATypeOfOneName) {
    const std::regex definition("\n(?:struct|class|enum class) (?:QUILLMERE_API )?(\\w+)[^;{\n]*\\{");
    std::map<std::string, std::string> files;
    for (const std::string& path : sourceFiles()) {
        if (!path.starts_with("host/") || !path.ends_with(".h")) continue;
        const std::string text = textOf(path);
        for (std::sregex_iterator found(text.begin(), text.end(), definition), end; found != end; ++found) {
            const auto first = files.emplace((*found)[1], path).first;
            EXPECT_EQ(first->second, path) << "both define " << first->first;
        }
    }
    EXPECT_GT(files.size(), 200U);
}

TEST(SourceTreeTest, ReservedNamesAreNotTaken) {
    const std::regex literalOrComment(R"re("(\\.|[^"\\])*"|'(\\.|[^'\\])'|//.*)re");
    const std::regex reserved(R"re(\b(_\w+|\w*__\w*)\b)re");
    const std::regex given(
        R"re(__(restrict|attribute__|has_feature|x86_64__|SSE2__|AVX__|VA_ARGS__)|)re"
        R"re(__(SANITIZE|builtin|libc|sanitizer|asan|tsan)_\w+|_SC_PAGESIZE|_exit|_mm(256)?_\w+|_Py_IsFinalizing|_native)re");
    for (const std::string& path : sourceFiles()) {
        std::istringstream lines(textOf(path));
        std::string line;
        for (int number = 1; std::getline(lines, line); ++number) {
            if (line.find('_') == std::string::npos) continue;
            const std::string code = std::regex_replace(line, literalOrComment, "");
            for (std::sregex_iterator word(code.begin(), code.end(), reserved), end; word != end; ++word)
                EXPECT_TRUE(std::regex_match(word->str(), given))
                    << path << ":" << number << ": " << word->str();
        }
    }
}
