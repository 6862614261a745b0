// SPDX-License-Identifier: MIT
// Batches whose study, table, graph or call is another one the next time, or in the middle.
#include "tests/cli/BatchFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

namespace {

using Support::Ended;
using Support::Program;

class BatchChange : public Support::BatchFixture {
protected:
    BatchChange() {
        writeRecording("study/p1/a.csv", "0,1\n1,2\n");
        writeRecording("study/p2/b.csv", "0,3\n1,4\n");
    }
    long rowsOfSummary() const {
        const std::string text = folder.read("results/summary.csv");
        return std::count(text.begin(), text.end(), '\n') - 1;
    }
};

TEST_F(BatchChange, ARunThatFailsLeavesNoResultsOfAnother) {
    ASSERT_EQ(batch().exitCode, 0);
    writeRecording("study/p1/a.csv", "0,1\n1,two\n");
    EXPECT_EQ(batch({"--resume"}).exitCode, 1);
    EXPECT_FALSE(folder.has("results/p1/a/out.csv"));
    EXPECT_TRUE(folder.has("results/p2/b/out.csv"));
}

TEST_F(BatchChange, ATableThatHasChangedIsJoinedWithoutARun) {
    folder.write("t.csv", "participant_id,age\np1,33\np2,44\n");
    ASSERT_EQ(batch({"--table", "t.csv"}).exitCode, 0);
    const std::string outcome = status("p1/a", "outcome");
    EXPECT_NE(outcome, "null");
    folder.write("t.csv", "participant_id,age,group\np1,34,x\np2,44,y\n");
    EXPECT_TRUE(batch({"--table", "t.csv", "--resume", "--dry-run"}).out.empty());
    EXPECT_EQ(folder.read("results/p1/a/status.json").find("group"), std::string::npos);
    EXPECT_TRUE(batch({"--table", "t.csv", "--resume"}).out.starts_with("2 recordings: 2 done (2 before)"));
    const std::string summary = folder.read("results/summary.csv");
    EXPECT_NE(summary.find("Z,34,x\n"), std::string::npos) << summary;
    EXPECT_EQ(summary.find(",33"), std::string::npos) << summary;
    EXPECT_EQ(status("p1/a", "outcome"), outcome) << "all else stays";
    EXPECT_TRUE(batch({"--table", "t.csv", "--resume"}).out.starts_with("2 recordings: 2 done (2 before)"));
}

TEST_F(BatchChange, AGraphThatHasChangedMeanwhileIsRefused) {
    writeSlow(20, 200); // so long that it isn't over when the graph is another
    Program program(batchWords({"--jobs", "1"}), folder.path(""));
    for (int i = 0; i < 30000 && !folder.has("results/p1/a/status.json"); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    folder.write("g.yaml", folder.read("g.yaml") + "# another\n");
    const Ended ended = program.wait();
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_NE(ended.err.find("g.yaml: the graph has changed meanwhile; expected one graph for all\n"),
              std::string::npos)
        << ended.err;
    EXPECT_EQ(batch({"--resume"}).exitCode, 0);
}

TEST_F(BatchChange, TheSummaryOfAPartHasTheOthersToo) {
    ASSERT_EQ(batch().exitCode, 0);
    EXPECT_EQ(rowsOfSummary(), 2);
    EXPECT_EQ(call({"batch", "g.yaml", "--in", "study/*/a.csv", "--out", "results", "--plugin", CRASH_PLUGIN})
                  .exitCode,
              0);
    EXPECT_EQ(rowsOfSummary(), 2);
}

TEST_F(BatchChange, NothingIsDoneTwiceForAnotherSpelling) {
    ASSERT_EQ(batch().exitCode, 0);
    const Ended ended = call({"batch", "g.yaml", "--in", folder.path("study/**/*.csv"), "--out", "results",
                              "--plugin", CRASH_PLUGIN, "--resume"});
    EXPECT_TRUE(ended.out.starts_with("2 recordings: 2 done (2 before)")) << ended.out;
    EXPECT_EQ(status("p1/a", "recording"), folder.path("study/p1/a.csv"));
    EXPECT_TRUE(batch({"--resume"}).out.starts_with("2 recordings: 2 done (2 before)"));
}

TEST_F(BatchChange, ResultsStayBelowTheirFolderWhereverRecordingsLie) {
    writeRecording("other/c.csv", "0,5\n");
    EXPECT_EQ(call({"batch", "g.yaml", "--in", folder.path("other/*.csv"), "--in", "study/p1/*.csv", "--out",
                    "results", "--plugin", CRASH_PLUGIN})
                  .exitCode,
              0);
    EXPECT_TRUE(folder.has("results/other/c/out.csv"));
    EXPECT_TRUE(folder.has("results/study/p1/a/out.csv"));
    EXPECT_FALSE(folder.has("other/c"));
}

TEST_F(BatchChange, WhatTheTableSetsIsCheckedBeforeTheStart) {
    folder.write("t.csv", "participant_id,set:gain.Gian\np1,\np2,2\n");
    const Ended name = batch({"--table", "t.csv"});
    EXPECT_EQ(name.exitCode, 2);
    EXPECT_NE(name.err.find("t.csv:3: set:gain.Gian=2: "), std::string::npos) << name.err;
    folder.write("t.csv", "participant_id,set:gain.Gain\np1,1\np2,two\n");
    EXPECT_EQ(batch({"--table", "t.csv"}).exitCode, 2);
    EXPECT_FALSE(folder.has("results"));
}

TEST_F(BatchChange, SoIsTheFolderOfResults) {
    folder.write("results", "");
    EXPECT_NE(batch().err.find("quillmere: --out: found the file '"), std::string::npos);
    EXPECT_EQ(
        call({"batch", "g.yaml", "--in", "study/*/*.csv", "--out", "results/below", "--plugin", CRASH_PLUGIN})
            .exitCode,
        2);
    std::filesystem::remove(folder.path("results"));
    std::filesystem::create_directory(folder.path("results"));
    folder.write("results/summary.csv", "mine\n");
    EXPECT_EQ(batch().exitCode, 2);
    EXPECT_FALSE(folder.has("results/p1"));
}

TEST_F(BatchChange, AFailureWithoutAFolderIsInTheSummaryToo) {
    std::filesystem::create_directory(folder.path("results"));
    folder.write("results/p1", "");
    EXPECT_EQ(batch().exitCode, 1);
    EXPECT_NE(
        folder.read("results/summary.csv").find("\np1/a,study/p1/a.csv,failed,results/p1/a: cannot be "),
        std::string::npos)
        << folder.read("results/summary.csv");
}

TEST_F(BatchChange, SoIsWhatEachRecordingIsAskedFor) {
    EXPECT_EQ(batch({"--picture", "curves.gif"}).exitCode, 2);
    EXPECT_EQ(batch({"--picture", "out.csv"}).exitCode, 2);
    EXPECT_EQ(batch({"--report", "status.json"}).exitCode, 2);
    EXPECT_EQ(batch({"--report", "page.txt"}).exitCode, 2);
    EXPECT_EQ(batch({"--report", "page.html", "--watch", "nope.out"}).exitCode, 2);
    const Ended place = batch({"--input", "in={pth}"});
    EXPECT_EQ(place.exitCode, 2);
    EXPECT_NE(place.err.find("--input: found '{pth}'; expected one of "), std::string::npos) << place.err;
    EXPECT_EQ(batch({"--source", "in", "--input", "in=study/p1/a.csv"}).err,
              "quillmere: --source: found --input for in as well; expected one of them\n");
    EXPECT_FALSE(folder.has("results"));
}

TEST_F(BatchChange, WordsOfACallAreOfOneLine) {
    const Ended ended = batch({"--set", "gain.Gain=\n2"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_NE(ended.err.find(" among the words of a call; expected words of one line\n"), std::string::npos)
        << ended.err;
    EXPECT_FALSE(folder.has("results"));
}

TEST_F(BatchChange, LookingTouchesNothing) {
    EXPECT_EQ(batch({"--dry-run", "--resume"}).exitCode, 0);
    EXPECT_FALSE(folder.has("results"));
}

TEST_F(BatchChange, APlanByItselfTakesNoOtherSettings) {
    ASSERT_EQ(batch({"--plan", "plan.txt"}).exitCode, 0);
    const Ended ended = call({"batch", "--plan", "plan.txt", "--set", "gain.Gain=2"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.err, "quillmere: found --set without GRAPH; expected both, or --plan alone\n");
    EXPECT_EQ(call({"batch", "--plan", "plan.txt", "--table", "t.csv"}).exitCode, 2);
    EXPECT_EQ(call({"batch", "--collect", "g.yaml", "--out", "results"}).exitCode, 2);
    EXPECT_FALSE(folder.has("results"));
}

TEST_F(BatchChange, TooFewFilesMakeFewerWorkers) {
    writeSlow(20, 100);
    // A worker takes two of them, so one of the limits is met with none left over.
    for (const std::string limit : {"24", "25"}) {
        const Ended ended = Support::runProgram(
            {"/bin/sh", "-c",
             "ulimit -n " + limit + "; exec " QUILLMERE " batch g.yaml --in 'study/**/*.csv' --out results" +
                 limit + " --jobs 22 --plugin " CRASH_PLUGIN},
            folder.path(""));
        EXPECT_EQ(ended.exitCode, 0) << limit << ": " << ended.err;
        EXPECT_TRUE(ended.out.starts_with("22 recordings: 22 done, 0 failed")) << limit << ": " << ended.out;
    }
}

TEST_F(BatchChange, AFileWithTheNameOfStandardInputIsAFile) {
    folder.write("-", "t,x\n0,1\n");
    const Ended ended = call({"batch", "g.yaml", "--in", "-", "--out", "results", "--plugin", CRASH_PLUGIN});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_TRUE(folder.has("results/-/out.csv"));
}

} // namespace
