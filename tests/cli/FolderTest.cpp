// SPDX-License-Identifier: MIT
// `run --folder`: what one call of a batch does.
#include "tests/cli/GainFixture.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace {

using Support::Ended;

class FolderOption : public Support::GainFixture {
protected:
    nlohmann::json status() const { return nlohmann::json::parse(folder.read("r/status.json")); }
};

TEST_F(FolderOption, PutsAllResultsThereWithAStatus) {
    const Ended ended = call({"run", "g.yaml", "--input", "in=in.csv", "--set", "gain.Gain=2", "--folder",
                              "r", "--picture", "p.svg", "--note", "age=34"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_EQ(folder.read("r/out.csv"), "t,x[0]\n0,2\n0.5,4\n1,6\n");
    EXPECT_TRUE(folder.has("r/p.svg"));
    EXPECT_FALSE(folder.has("out.csv"));
    const nlohmann::json told = status();
    EXPECT_EQ(told["state"], "done");
    EXPECT_EQ(told["recording"], "in.csv");
    EXPECT_EQ(told["command"],
              "quillmere run g.yaml --input in=in.csv --set gain.Gain=2 --picture p.svg --folder "
              "r --note age=34");
    EXPECT_EQ(told["rows"], 3);
    EXPECT_EQ(told["rate"], 2.0);
    EXPECT_EQ(told["notes"]["age"], "34");
    EXPECT_GT(told["peakMemory"], 1 << 20);
    EXPECT_EQ(told["graphHash"].get<std::string>().size(), 64u);
    EXPECT_EQ(told["versions"].size(), 3u) << "of the command and two plug-ins";
    EXPECT_EQ(told["inputs"][0]["bytes"], folder.read("in.csv").size());
    EXPECT_EQ(told["results"].size(), 2u);
    EXPECT_EQ(told["outcome"]["sinks"][0]["rows"], 3);
}

TEST_F(FolderOption, AFailureIsToldThereWithItsPlace) {
    folder.write("in.csv", "t,x\n0,1\n0.5,two\n");
    EXPECT_EQ(call({"run", "g.yaml", "--folder", "r"}).exitCode, 1);
    EXPECT_EQ(status()["state"], "failed");
    EXPECT_EQ(status()["complaints"][0]["line"], 3);
    EXPECT_EQ(status()["failure"],
              "block 'in' (RecordingSource) at 0 s: in.csv:3: column 'x': found \"two\"; expected a number");
    EXPECT_TRUE(folder.has("r/out.csv.partial"));
}

TEST_F(FolderOption, SoIsARefusal) {
    EXPECT_EQ(call({"run", "g.yaml", "--folder", "r", "--set", "gian.Gain=1"}).exitCode, 2);
    EXPECT_EQ(status()["state"], "failed");
    EXPECT_EQ(status()["complaints"][0]["nearest"], "gain");
    EXPECT_TRUE(status()["outcome"].is_null());
    EXPECT_FALSE(folder.has("r/out.csv"));
}

TEST_F(FolderOption, ARefusalLeavesEarlierResultsAsTheyAre) {
    ASSERT_EQ(call({"run", "g.yaml", "--folder", "r"}).exitCode, 0);
    const std::string result = folder.read("r/out.csv");
    const std::string before = folder.read("r/status.json");
    EXPECT_EQ(call({"run", "g.yaml", "--folder", "r", "--set", "gain.Gian=1"}).exitCode, 2);
    EXPECT_EQ(call({"run", "g.yaml", "--folder", "r", "--input", "in=inn.csv"}).exitCode, 2);
    EXPECT_EQ(folder.read("r/out.csv"), result);
    EXPECT_EQ(folder.read("r/status.json"), before);
}

TEST_F(FolderOption, WhatComesThroughAPipeIsReadEachTime) {
    const std::string line = "cat in.csv | " QUILLMERE " run g.yaml --input in=- --folder r --resume --quiet";
    ASSERT_EQ(Support::runProgram({"/bin/sh", "-c", line}, folder.path("")).exitCode, 0);
    folder.write("in.csv", "t,x\n0,7\n0.5,8\n");
    EXPECT_EQ(Support::runProgram({"/bin/sh", "-c", line}, folder.path("")).exitCode, 0);
    EXPECT_EQ(folder.read("r/out.csv"), "t,x[0]\n0,7\n0.5,8\n");
}

TEST_F(FolderOption, WhatTheRunReadsStays) {
    ASSERT_EQ(call({"run", "g.yaml", "--folder", "r"}).exitCode, 0);
    const std::string result = folder.read("r/out.csv");
    std::string graph(Support::kGainGraph);
    graph.replace(graph.find("out.csv"), 7, "next.csv");
    graph.replace(graph.find("[x]"), 3, "['x[0]']");
    folder.write("next.yaml", graph);
    const Ended ended = call({"run", "next.yaml", "--folder", "r", "--input", "in=r/out.csv"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_EQ(folder.read("r/out.csv"), result);
    EXPECT_TRUE(folder.has("r/next.csv"));
    EXPECT_EQ(status()["recording"], "r/out.csv");
}

TEST_F(FolderOption, ResumesWhereSomethingHasChanged) {
    const auto again = [&](std::vector<std::string> more) {
        more.insert(more.begin(), {"run", "g.yaml", "--folder", "r", "--resume"});
        return call(more).out.find("is done") != std::string::npos ? "kept" : "ran";
    };
    EXPECT_STREQ(again({}), "ran");
    EXPECT_STREQ(again({}), "kept");
    EXPECT_STREQ(again({"--set", "gain.Gain=2"}), "ran");
    EXPECT_STREQ(again({"--keep-changed"}), "kept") << "unless it is told not to";
    EXPECT_STREQ(again({}), "ran");
    folder.write("in.csv", "t,x\n0,1\n0.5,2\n1,4\n");
    EXPECT_STREQ(again({}), "ran");
    EXPECT_EQ(folder.read("r/out.csv"), "t,x[0]\n0,1\n0.5,2\n1,4\n");
    folder.write("g.yaml", std::string(Support::kGainGraph) + "# a word\n");
    EXPECT_STREQ(again({}), "ran");
    std::filesystem::remove(folder.path("r/out.csv"));
    EXPECT_STREQ(again({}), "ran");
    EXPECT_STREQ(again({}), "kept");
}

TEST_F(FolderOption, TwoSinksOfOneNameGetTheirOwn) {
    std::string graph = std::string(Support::kGainGraph) + "  - {from: gain, to: more.x}\n";
    graph.insert(graph.find("connections:"),
                 "  - {id: more, type: RecordingSink, properties: {file: below/out.csv}}\n");
    folder.write("g.yaml", graph);
    EXPECT_EQ(call({"run", "g.yaml", "--folder", "r"}).exitCode, 0);
    EXPECT_EQ(folder.read("r/more.csv"), folder.read("r/out.csv"));
}

TEST_F(FolderOption, WhatDoesntGoTogetherIsRefused) {
    EXPECT_EQ(call({"run", "g.yaml", "--folder", "r", "--output", "out=x.csv"}).err,
              "quillmere: found --output beside --folder; expected one of them\n");
    EXPECT_EQ(call({"run", "g.yaml", "--folder", "r", "--live"}).exitCode, 2);
    EXPECT_EQ(call({"run", "g.yaml", "--note", "a=b"}).exitCode, 2);
    EXPECT_EQ(call({"run", "g.yaml", "--folder", "in.csv"}).err, "in.csv: cannot be made: Not a directory\n");
}

TEST_F(FolderOption, WaitsForAnotherRunThatEnds) {
    std::filesystem::create_directory(folder.path("r"));
    const int held = ::open(folder.path("r").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(::flock(held, LOCK_EX | LOCK_NB), 0);
    Support::Program program({QUILLMERE, "run", "g.yaml", "--folder", "r"}, folder.path(""));
    ::usleep(200'000);
    EXPECT_FALSE(folder.has("r/out.csv"));
    ::close(held);
    EXPECT_EQ(program.wait().exitCode, 0);
    EXPECT_TRUE(folder.has("r/out.csv"));
}

} // namespace
