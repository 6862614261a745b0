// SPDX-License-Identifier: MIT
#include "tests/rooms/IncludeRules.h"

#include "tests/rooms/SourceTree.h"

#include <gtest/gtest.h>

namespace {
std::string checked(const std::string& path, const std::string& text, bool hasOwnHeader = false) {
    std::string found;
    for (const Finding& finding : checkIncludes(path, text, hasOwnHeader))
        found += finding.place + ": " + finding.complaint + "\n";
    return found;
}
} // namespace

TEST(IncludeRulesTest, ArrowsRunOneWay) {
    struct Row {
        const char* file;
        const char* included;
        bool isAllowed;
    };
    const Row rows[] = {
        {.file = "framework/util/A.h", .included = "framework/util/B.h", .isAllowed = true},
        {.file = "framework/util/A.h", .included = "framework/core/B.h", .isAllowed = false},
        {.file = "framework/core/A.h", .included = "framework/util/B.h", .isAllowed = true},
        {.file = "framework/core/A.h", .included = "framework/transport/B.h", .isAllowed = false},
        {.file = "framework/core/A.cpp", .included = "framework/Quillmere.h", .isAllowed = false},
        {.file = "framework/transport/A.h", .included = "framework/core/B.h", .isAllowed = true},
        {.file = "framework/transport/A.h", .included = "framework/properties/B.h", .isAllowed = false},
        {.file = "framework/properties/A.h", .included = "framework/transport/MatrixXd.h", .isAllowed = true},
        {.file = "framework/properties/A.h",
         .included = "framework/transport/InputPin.h",
         .isAllowed = false},
        {.file = "framework/Quillmere.h", .included = "framework/transport/InputPin.h", .isAllowed = true},
        {.file = "framework/Quillmere.h", .included = "blocks/B.h", .isAllowed = false},
        {.file = "design/A.h", .included = "framework/transport/MatrixXd.h", .isAllowed = true},
        {.file = "design/A.h", .included = "framework/transport/TimeStampedData.h", .isAllowed = false},
        {.file = "design/A.cpp", .included = "spectral/B.h", .isAllowed = false},
        {.file = "spectral/A.cpp", .included = "framework/transport/MatrixXd.h", .isAllowed = false},
        {.file = "design/A.cpp", .included = "processor/B.h", .isAllowed = true},
        {.file = "spectral/A.cpp", .included = "processor/B.h", .isAllowed = true},
        {.file = "blocks/A.cpp", .included = "processor/B.h", .isAllowed = false},
        {.file = "estimation/A.cpp", .included = "design/B.h", .isAllowed = true},
        {.file = "estimation/A.cpp", .included = "framework/core/B.h", .isAllowed = false},
        {.file = "blocks/A.cpp", .included = "spectral/B.h", .isAllowed = true},
        {.file = "blocks/A.cpp", .included = "framework/Quillmere.h", .isAllowed = true},
        {.file = "blocks/A.cpp", .included = "plugin/B.h", .isAllowed = false},
        {.file = "plugin/A.cpp", .included = "blocks/B.h", .isAllowed = true},
        {.file = "plugin/A.cpp", .included = "design/B.h", .isAllowed = false},
        {.file = "host/run/A.cpp", .included = "host/graph/B.h", .isAllowed = true},
        {.file = "host/graph/A.cpp", .included = "host/run/B.h", .isAllowed = false},
        {.file = "host/text/A.cpp", .included = "host/graph/B.h", .isAllowed = false},
        {.file = "host/description/A.cpp", .included = "host/plugins/B.h", .isAllowed = false},
        {.file = "host/graph/A.cpp", .included = "host/recording/B.h", .isAllowed = false},
        {.file = "host/recording/A.cpp", .included = "host/ends/B.h", .isAllowed = true},
        {.file = "host/live/A.cpp", .included = "host/control/B.h", .isAllowed = false},
        {.file = "host/run/A.cpp", .included = "framework/core/B.h", .isAllowed = true},
        {.file = "host/run/A.cpp", .included = "blocks/B.h", .isAllowed = false},
        {.file = "host/elsewhere/A.cpp", .included = "host/run/B.h", .isAllowed = false},
        {.file = "host/QuillmereHost.h", .included = "host/run/B.h", .isAllowed = true},
        {.file = "host/run/A.cpp", .included = "plugin/B.h", .isAllowed = false},
        {.file = "cli/A.cpp", .included = "host/run/B.h", .isAllowed = true},
        {.file = "cli/A.cpp", .included = "blocks/B.h", .isAllowed = false},
        {.file = "blocks/A.cpp", .included = "tests/support/B.h", .isAllowed = false},
        {.file = "blocks/A.cpp", .included = "B.h", .isAllowed = false},
        {.file = "blocks/A.cpp", .included = "../design/B.h", .isAllowed = false},
        {.file = "tests/blocks/A.cpp", .included = "blocks/B.h", .isAllowed = true},
        {.file = "fuzz/A.cpp", .included = "host/run/B.h", .isAllowed = true},
        {.file = "host/run/A.cpp", .included = "fuzz/B.h", .isAllowed = false},
        {.file = "benchmarks/A.cpp", .included = "host/run/B.h", .isAllowed = true},
        {.file = "examples/own-block/A.cpp", .included = "B.h", .isAllowed = true},
    };
    for (const Row& row : rows) {
        const std::string text = std::string("#include \"") + row.included + "\"\n";
        EXPECT_EQ(checked(row.file, text).empty(), row.isAllowed) << row.file << " includes " << row.included;
    }
}

TEST(IncludeRulesTest, AFindingTellsFileAndLine) {
    EXPECT_EQ(checked("spectral/A.cpp", "// SPDX\n\n#include <vector>\n  # include \"design/B.h\"\n"),
              "spectral/A.cpp:4: spectral/ may not include \"design/B.h\"\n");
    EXPECT_EQ(checked("spectral/A.cpp", "#include \"B.h\"\n"),
              "spectral/A.cpp:1: \"B.h\" is not written from the root\n");
    EXPECT_EQ(checked("spectral/A.cpp", "// #include \"design/B.h\"\n#include <design/B.h>\n"), "");
}

TEST(IncludeRulesTest, ASourceIncludesItsOwnHeaderFirst) {
    EXPECT_EQ(checked("host/run/A.cpp", "#include \"host/run/A.h\"\n#include <vector>\n", true), "");
    EXPECT_EQ(checked("host/run/A.cpp", "#include <vector>\n#include \"host/run/A.h\"\n", true),
              "host/run/A.cpp:1: the first include is not the source's own header\n");
    EXPECT_EQ(checked("host/run/A.cpp", "#include <vector>\n", false), "");
    EXPECT_EQ(checked("examples/own/A.cpp", "#include \"A.h\"\n", true), "");
    EXPECT_EQ(checked("examples/own/BA.cpp", "#include \"A.h\"\n", true),
              "examples/own/BA.cpp:1: the first include is not the source's own header\n");
}

TEST(IncludeRulesTest, TheTreeKeepsToTheRules) {
    int sources = 0;
    for (const std::string& path : sourceFiles()) {
        ++sources;
        const bool hasOwnHeader =
            path.ends_with(".cpp") && fileExists(path.substr(0, path.size() - 4) + ".h");
        for (const Finding& finding : checkIncludes(path, textOf(path), hasOwnHeader))
            ADD_FAILURE() << finding.place << ": " << finding.complaint;
    }
    EXPECT_GT(sources, 100) << "the walk has missed the tree";
}
