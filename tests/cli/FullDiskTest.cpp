// SPDX-License-Identifier: MIT
#include "tests/cli/GainFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using Support::Ended;
using Strings = std::vector<std::string>;

constexpr const char* kResult = "t,x[0]\n0,1\n0.5,2\n1,3\n";

class FullDisk : public Support::GainFixture {
protected:
    /// With the redirections of a shell, such as `2>&-`.
    Ended callInShell(const std::string& arguments) const {
        return Support::runProgram({"/bin/sh", "-c", "exec " QUILLMERE " " + arguments}, folder.path(""));
    }
};

TEST_F(FullDisk, WhatCannotBePrintedIsAFailure) {
    const Strings calls[] = {{"--help"},
                             {"--version"},
                             {"run", "--help"},
                             {"blocks"},
                             {"blocks", "--json"},
                             {"blocks", "FilterGain"},
                             {"check", "g.yaml"},
                             {"run", "g.yaml"},
                             {"response", "FilterGain"},
                             {"inspect", "in.csv", "--set", "time=t"},
                             {"inspect", "in.csv", "--json", "--set", "time=t"}};
    for (const Strings& arguments : calls) {
        const Ended ended = call(arguments, "/dev/full");
        EXPECT_EQ(ended.exitCode, 1) << testing::PrintToString(arguments);
        EXPECT_EQ(ended.err, "quillmere: standard output: cannot be written: No space left on device\n")
            << testing::PrintToString(arguments);
    }
    EXPECT_EQ(folder.read("out.csv"), kResult) << "the run's result is whole all the same";
    EXPECT_EQ(call({"run", "--quiet", "g.yaml"}, "/dev/full").exitCode, 0) << "nothing is printed";
    EXPECT_EQ(call({"frobnicate"}, "/dev/full").exitCode, 2);
}

/// More than fits into a pipe, so that it can't be written before the reader has gone.
TEST_F(FullDisk, AReaderThatGoesAwayWantsNoMore) {
    EXPECT_EQ(callInShell("blocks --json 2> told | head -n 1; cat told >&2").err, "");
}

TEST_F(FullDisk, AClosedOutputIsAFailureToo) {
    EXPECT_EQ(callInShell("blocks >&-").exitCode, 1);
    const Ended ended = callInShell("blocks --names >&-");
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_EQ(ended.err, "quillmere: standard output: cannot be written: Bad file descriptor\n");
    EXPECT_EQ(callInShell("run --quiet g.yaml >&-").exitCode, 0);
    EXPECT_EQ(callInShell("run --quiet g.yaml --output out=- >&-").exitCode, 1);
}

TEST_F(FullDisk, NoMessageGetsIntoAResult) {
    folder.write("in.csv", "t,x\n0,1\n0.5,two\n");
    EXPECT_EQ(callInShell("run g.yaml <&- >&- 2>&-").exitCode, 1);
    EXPECT_EQ(folder.read("out.csv.partial"), "t,x[0]\n0,1\n");
    EXPECT_EQ(callInShell("run g.yaml 2>&-").exitCode, 1);
    EXPECT_EQ(folder.read("out.csv.partial"), "t,x[0]\n0,1\n");
}

TEST_F(FullDisk, AFileSizeLimitEndsARunWithASentence) {
    std::string text = "t,x\n";
    for (int i = 0; i < 20000; ++i)
        text += std::to_string(i) + ",0.123456\n";
    folder.write("in.csv", text);
    const Ended ended = callInShell("run --quiet g.yaml"); // to see it fit
    ASSERT_EQ(ended.exitCode, 0) << ended.err;
    const auto blocks = std::filesystem::file_size(folder.path("out.csv")) / 512 / 2;
    const std::string limited = "ulimit -f " + std::to_string(blocks) + "; exec " QUILLMERE " run g.yaml";
    const Ended cut = Support::runProgram({"/bin/sh", "-c", limited}, folder.path(""));
    EXPECT_EQ(cut.exitCode, 1);
    EXPECT_NE(cut.err.find("out.csv.partial: cannot be written: File too large\n"), std::string::npos)
        << cut.err;
    const std::string partial = folder.read("out.csv.partial");
    EXPECT_TRUE(partial.ends_with(",0.123456\n")) << "whole rows";
    const auto rows = std::count(partial.begin(), partial.end(), '\n') - 1;
    EXPECT_GT(rows, 5000);
    EXPECT_LT(rows, 15000);
    EXPECT_NE(cut.err.find("  incomplete: " + std::to_string(rows) + " rows in out.csv.partial\n"),
              std::string::npos)
        << cut.err;
    EXPECT_TRUE(folder.read("out.csv").ends_with("19999,0.123456\n")) << "the earlier one stays";
}

TEST_F(FullDisk, APictureThatHasNoRoomIsAFailureAndLeavesNothing) {
    const Ended device = call({"response", "FilterGain", "--picture", "/dev/full"});
    EXPECT_EQ(device.exitCode, 1);
    EXPECT_EQ(device.err, "quillmere: /dev/full: cannot be written: No space left on device\n");
    EXPECT_TRUE(device.out.starts_with("relative_frequency,")) << "what was measured is printed";
    folder.write("old.svg", folder.read("in.csv"));
    const Ended limited = Support::runProgram(
        {"/bin/sh", "-c",
         "ulimit -f 1; exec " QUILLMERE " response FilterGain --overwrite --picture old.svg > /dev/null"},
        folder.path(""));
    EXPECT_EQ(limited.exitCode, 1);
    EXPECT_EQ(limited.err, "quillmere: old.svg.partial: cannot be written: File too large\n");
    EXPECT_FALSE(folder.has("old.svg.partial"));
    EXPECT_EQ(folder.read("old.svg"), folder.read("in.csv")) << "what stood there stays";
}

TEST_F(FullDisk, WhereOneResultHasNoRoomAllStayPartial) {
    folder.write("g.yaml", std::string(Support::kGainGraph) + "  - {from: gain, to: more.x}\n");
    std::string graph = folder.read("g.yaml");
    graph.insert(graph.find("connections:"),
                 "  - {id: more, type: RecordingSink, properties: {file: /dev/full}}\n");
    folder.write("g.yaml", graph);
    const Ended ended = call({"run", "g.yaml"});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_EQ(ended.err, "quillmere: /dev/full: cannot be written: No space left on device\n"
                         "  incomplete: 3 rows in out.csv.partial\n"
                         "  incomplete: 0 rows in /dev/full\n");
    EXPECT_EQ(folder.read("out.csv.partial"), kResult);
    EXPECT_FALSE(folder.has("out.csv"));
}

TEST_F(FullDisk, AResultThatHasItsNameIsToldAsComplete) {
    std::string graph = std::string(Support::kGainGraph) + "  - {from: gain, to: more.x}\n";
    graph.insert(graph.find("connections:"),
                 "  - {id: more, type: RecordingSink, properties: {file: more.csv}}\n");
    folder.write("g.yaml", graph);
    folder.write("more.csv", "what a user had");
    const Ended refused = call({"run", "g.yaml"});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_EQ(refused.err,
              "g.yaml:7:56: found the file 'more.csv', which no run has written; expected another "
              "name, or 'overwrite: true' or --overwrite to replace it\n");
    EXPECT_EQ(call({"check", "g.yaml"}).err, refused.err);
    EXPECT_EQ(folder.read("more.csv"), "what a user had");
    EXPECT_EQ(call({"check", "--overwrite", "g.yaml"}).exitCode, 0);
    EXPECT_EQ(call({"run", "--overwrite", "g.yaml"}).exitCode, 0);
    EXPECT_EQ(folder.read("more.csv"), kResult);
}

} // namespace
