// SPDX-License-Identifier: MIT
#include "host/batch/ShellWords.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Words = std::vector<std::string>;

TEST(ShellWords, PlainWordsStayAndOthersAreQuoted) {
    EXPECT_EQ(shellLine({"quillmere", "run", "a/b-1.csv", "x=2"}), "quillmere run a/b-1.csv x=2");
    EXPECT_EQ(shellLine({"", "two words", "it's", "a*", "$HOME", "~", "#no"}),
              "'' 'two words' 'it'\\''s' 'a*' '$HOME' '~' '#no'");
}

TEST(ShellWords, ALineIsTakenApartAsAShellDoes) {
    EXPECT_EQ(splitShellLine("  a\t'b c'd \"e \\\" \\x f\" g\\ h '' "),
              (Words{"a", "b cd", "e \" \\x f", "g h", ""}));
    EXPECT_EQ(splitShellLine(""), Words{});
    for (const char* const open : {"'a", "\"a", "a 'b", "a\\"})
        EXPECT_FALSE(splitShellLine(open)) << open;
}

TEST(ShellWords, WhatIsWrittenReadsBackHereAndInAShell) {
    const Words words{"a b", "it's \"so\"", "\\", "$(date)", "`x`", "ä;|&", "-", "a=b", "{x}", "!"};
    EXPECT_EQ(splitShellLine(shellLine(words)), words);
    const std::string command = "printf '%s\\n' " + shellLine(words);
    FILE* const shell = ::popen(command.c_str(), "r");
    ASSERT_NE(shell, nullptr);
    std::string printed;
    std::array<char, 256> piece{};
    while (std::fgets(piece.data(), piece.size(), shell) != nullptr)
        printed += piece.data();
    ::pclose(shell);
    std::string expected;
    for (const std::string& word : words)
        expected += word + "\n";
    EXPECT_EQ(printed, expected);
}

} // namespace
