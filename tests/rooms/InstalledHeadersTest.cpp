// SPDX-License-Identifier: MIT
#include "tests/rooms/SourceTree.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

// What is installed of the host is its umbrella header and what that includes: nothing is missing there, and
// nothing that is inside gets out. Of the framework every header is installed.

namespace {
std::vector<std::string> includesOf(const std::string& path) {
    const std::regex pattern(R"re(^\s*#\s*include\s*"([^"]*)")re");
    std::vector<std::string> included;
    std::istringstream lines(textOf(path));
    std::string line;
    for (std::smatch match; std::getline(lines, line);)
        if (std::regex_search(line, match, pattern)) included.push_back(match[1]);
    return included;
}

/// The headers of the host that `path` includes, itself and what these include among them.
void gather(const std::string& path, std::set<std::string>& reached) {
    if (!path.starts_with("host/") || !reached.insert(path).second) return;
    for (const std::string& included : includesOf(path))
        gather(included, reached);
}

std::set<std::string> installed() {
    std::set<std::string> list;
    std::istringstream lines(textOf("host/InstalledHeaders.txt"));
    for (std::string line; std::getline(lines, line);)
        if (!line.starts_with("#")) list.insert(line);
    return list;
}
} // namespace

TEST(InstalledHeaders, AreTheUmbrellaAndWhatItIncludes) {
    std::set<std::string> reached;
    gather("host/QuillmereHost.h", reached);
    for (const std::string& header : reached)
        EXPECT_TRUE(installed().contains(header)) << header << " is included, and isn't installed";
    for (const std::string& header : installed())
        EXPECT_TRUE(reached.contains(header))
            << header << " is installed, and the umbrella doesn't include it";
    EXPECT_GT(reached.size(), 20u);
}

TEST(InstalledHeaders, IncludeNothingButTheFrameworkBesides) {
    for (const std::string& header : installed())
        for (const std::string& included : includesOf(header))
            EXPECT_TRUE(included.starts_with("host/") || included.starts_with("framework/"))
                << header << " includes " << included;
}
