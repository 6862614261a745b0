// SPDX-License-Identifier: MIT
#include "tests/rooms/SourceTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

// "found ...; expected ...; did you mean ...?" is put together by `Complaint` and nobody else: so every
// refusal has the same form, fits into a line, and can be taken apart by who catches it.

namespace {
struct Exception {
    const char* file;
    const char* line; ///< What stands in the only line that may.
    const char* why;
};

const Exception kExceptions[] = {
    {"host/text/Complaint.cpp", "\"; expected \" +", "here it is put together"},
    {"host/text/Complaint.cpp", "text += \"; did you mean \"", "here it is put together"},
    {"cli/main.cpp", "no std::exception; expected plug-ins not to", "must not fail, so it is one piece"},
};

bool isException(const std::string& path, const std::string& line) {
    return std::any_of(std::begin(kExceptions), std::end(kExceptions), [&](const Exception& exception) {
        return path == exception.file && line.find(exception.line) != std::string::npos;
    });
}

/// The lines that put the sentence together by hand.
std::vector<std::string> sentencesIn(const std::string& path, const std::string& text) {
    std::vector<std::string> found;
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        const std::string code = line.substr(0, line.find("//"));
        const bool isOne = code.find("; expected") != std::string::npos ||
                           code.find("; did you mean") != std::string::npos ||
                           code.find("\"expected ") != std::string::npos ||
                           code.find("\"did you mean ") != std::string::npos;
        if (isOne && !isException(path, code)) found.push_back(path + ":" + std::to_string(number));
    }
    return found;
}
} // namespace

TEST(SentenceTest, OnePutTogetherByHandIsFound) {
    using Lines = std::vector<std::string>;
    EXPECT_EQ(sentencesIn("cli/A.cpp", "throw X(\"found a\"\n        \"; expected b\");\n"),
              Lines{"cli/A.cpp:2"});
    EXPECT_EQ(sentencesIn("host/A.cpp", "text += \"; did you mean \" + name;\n"), Lines{"host/A.cpp:1"});
    EXPECT_EQ(sentencesIn("host/A.cpp", "text += \"; \" \"expected a\";\n"), Lines{"host/A.cpp:1"});
    EXPECT_EQ(sentencesIn("host/A.cpp", "/// `found a; expected b`\nf(expected); // \"; expected c\"\n"),
              Lines{});
    EXPECT_EQ(sentencesIn("cli/main.cpp", "\"no std::exception; expected plug-ins not to\""), Lines{});
    EXPECT_EQ(sentencesIn("cli/Other.cpp", "\"no std::exception; expected plug-ins not to\""),
              Lines{"cli/Other.cpp:1"});
}

TEST(SentenceTest, OnlyComplaintsPutItTogether) {
    for (const std::string& path : sourceFiles())
        if (path.starts_with("host/") || path.starts_with("cli/"))
            for (const std::string& place : sentencesIn(path, textOf(path)))
                ADD_FAILURE() << place
                              << " puts \"found ...; expected ...\" together by hand; let a Complaint do so";
}

TEST(SentenceTest, EveryExceptionIsNeeded) {
    for (const Exception& exception : kExceptions)
        EXPECT_NE(textOf(exception.file).find(exception.line), std::string::npos)
            << exception.file << ": " << exception.why;
}
