// SPDX-License-Identifier: MIT
#include "host/batch/BatchPlan.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;

class BatchPlanTest : public testing::Test {
protected:
    BatchPlan make(const std::vector<std::string>& files, const std::vector<std::string>& words = {},
                   const StudyTable* table = nullptr) {
        const PlanWishes wishes{
            .graph = "g.yaml", .source = "in", .out = "results/", .words = words, .table = table};
        return makePlan({.files = files, .root = "study"}, wishes, doubts, complaints);
    }
    std::string complaint() const {
        return complaints.isEmpty() ? "" : complaints.getSorted().front().getText();
    }

    Support::TemporaryFolder folder;
    PlanDoubts doubts;
    Complaints complaints;
};

TEST_F(BatchPlanTest, ALineForEachRecordingAndFoldersAsTheyLie) {
    const BatchPlan plan = make({"study/a.csv.gz", "study/p 1/b.mat"}, {"--set", "gain.Gain=2"});
    EXPECT_EQ(plan.toText(), "quillmere run g.yaml --input in=study/a.csv.gz --set gain.Gain=2 --folder "
                             "results/a\nquillmere run g.yaml --input 'in=study/p 1/b.mat' --set gain.Gain=2 "
                             "--folder 'results/p 1/b'\n");
    EXPECT_EQ(complaint(), "");
}

TEST_F(BatchPlanTest, WordsNameTheirRecording) {
    const BatchPlan plan = make({"study/p1/b.csv.gz"}, {"--input", "marks={folder}/{stem}_marks.csv", "--set",
                                                        "a.b={path} {name} {id} {else}"});
    EXPECT_EQ(plan.entries[0].words[5], "marks=study/p1/b_marks.csv");
    EXPECT_EQ(plan.entries[0].words[7], "a.b=study/p1/b.csv.gz b.csv.gz p1/b {else}");
}

TEST_F(BatchPlanTest, TheTableSetsAndNotes) {
    const StudyTable table(folder.write("t.csv", "id,age,set:gain.Gain\np1,34,2\np2,,\np4,1,1\n"),
                           complaints);
    const BatchPlan plan = make({"study/p1/a.csv", "study/p2/a.csv", "study/p3/a.csv"}, {}, &table);
    EXPECT_EQ(plan.toText(),
              "quillmere run g.yaml --input in=study/p1/a.csv --note age=34 --set gain.Gain=2 --note "
              "set:gain.Gain=2 --folder results/p1/a\n"
              "quillmere run g.yaml --input in=study/p2/a.csv --note age= --note set:gain.Gain= --folder "
              "results/p2/a\n"
              "quillmere run g.yaml --input in=study/p3/a.csv --folder results/p3/a\n");
    EXPECT_EQ(doubts.withoutRow, std::vector<std::string>{"study/p3/a.csv"});
    EXPECT_EQ(doubts.unused, std::vector<std::string>{"p4"});
}

TEST_F(BatchPlanTest, ATableThatSetsNothingAtAllIsRefused) {
    const StudyTable table(folder.write("t.csv", "id,set:gain.Gain\nq1,2\n"), complaints);
    make({"study/p1/a.csv"}, {}, &table);
    EXPECT_NE(complaint().find("found no row of a recording, among 1 row; expected one at least"),
              std::string::npos)
        << complaint();
}

TEST_F(BatchPlanTest, TwoForOneFolderAreRefused) {
    make({"study/a.csv", "study/a.mat"});
    EXPECT_EQ(complaint(), "results/a: found two recordings for it, 'study/a.csv' and 'study/a.mat'; "
                           "expected a name of its own for each, without its ending");
}

TEST_F(BatchPlanTest, ANameInTwoLinesIsRefused) {
    make({"study/a\nb.csv"});
    EXPECT_NE(complaint().find("a name in one line"), std::string::npos) << complaint();
    complaints = {};
    make({"study/a\xff.csv"});
    EXPECT_NE(complaint().find("in UTF-8"), std::string::npos) << "a status can't have it";
}

TEST_F(BatchPlanTest, TwoLinesForOneFolderAreRefused) {
    const std::string line = "quillmere run g.yaml --input in=a.csv --folder r/a";
    const std::string path = folder.write("plan.txt", line + "\r\n" + line + "\n");
    const BatchPlan plan = BatchPlan::fromFile(path, 1, 9, complaints);
    EXPECT_EQ(complaint(), path + ":2:1: found a second line for the folder 'r/a'; expected one");
    EXPECT_EQ(plan.entries.at(0).folder, "r/a") << "without the end of a line";
}

TEST_F(BatchPlanTest, ReadsBackWhatIsWrittenAndOfItWhatIsAskedFor) {
    const BatchPlan plan = make({"study/it's.csv", "study/b.csv", "study/c.csv"});
    const std::string path = folder.write("plan.txt", plan.toText());
    const BatchPlan all = BatchPlan::fromFile(path, 1, 100, complaints);
    EXPECT_EQ(all.toText(), plan.toText());
    EXPECT_EQ(all.entries[0].recording, "study/it's.csv");
    EXPECT_EQ(all.entries[0].folder, "results/it's");
    const BatchPlan second = BatchPlan::fromFile(path, 2, 2, complaints);
    ASSERT_EQ(second.entries.size(), 1u);
    EXPECT_EQ(second.entries[0].recording, "study/b.csv");
    EXPECT_EQ(complaint(), "");
    BatchPlan::fromFile(path, 4, 9, complaints);
    EXPECT_EQ(complaint(), path + ": found no lines there; expected one for each recording");
}

TEST_F(BatchPlanTest, OtherLinesAreComplainedOf) {
    for (const std::string line : {"rm -r /", "quillmere run g.yaml", "quillmere run 'g.yaml --folder x",
                                   "quillmere check g.yaml --folder x"}) {
        complaints = {};
        const std::string path = folder.write("plan.txt", line + "\n");
        BatchPlan::fromFile(path, 1, 9, complaints);
        EXPECT_EQ(complaint(),
                  path + ":1:1: found '" + line + "'; expected quillmere run GRAPH ... --folder FOLDER");
    }
}

} // namespace
