// SPDX-License-Identifier: MIT
#include "host/batch/BatchSummary.h"
#include "host/batch/BatchTally.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Values = std::vector<double>;

double measure(const std::string& name, const Values& values) {
    return findStatistic(name)->measure(values);
}

TEST(ColumnStatistic, IsWhatItsNameSays) {
    const Values values{1, 2, 4, 9};
    EXPECT_EQ(measure("mean", values), 4.0);
    EXPECT_EQ(measure("median", values), 3.0);
    EXPECT_EQ(measure("min", values), 1.0);
    EXPECT_EQ(measure("max", values), 9.0);
    EXPECT_EQ(measure("count", values), 4.0);
    EXPECT_EQ(measure("std", values), std::sqrt(38.0 / 3.0));
    // As numpy.percentile([1, 2, 4, 9], ...) gives.
    EXPECT_EQ(measure("p0", values), 1.0);
    EXPECT_DOUBLE_EQ(measure("p95", values), 8.25);
    EXPECT_EQ(measure("p100", values), 9.0);
    EXPECT_EQ(measure("p12.5", values), 1.375);
    EXPECT_TRUE(std::isnan(measure("std", {1})));
    for (const char* const name : {"", "p", "p101", "p-1", "q95", "pnan", "means"})
        EXPECT_FALSE(findStatistic(name)) << name;
}

class BatchSummary : public testing::Test {
protected:
    void add(const std::string& name, const std::string& sink, const std::string& result, RunStatus status) {
        std::filesystem::create_directories(folder.path("out/" + name));
        folder.write("out/" + name + "/r.csv", result);
        RunStatus::Result& written = status.results.emplace_back();
        written.sink = sink;
        written.path = "r.csv";
        writeStatus(folder.path("out/" + name), status);
    }
    static RunStatus done() {
        RunStatus status;
        status.state = RunStatus::kDone;
        status.rows = 3;
        return status;
    }
    std::string table(const std::vector<ColumnStatistic>& statistics) {
        doubts = {};
        return summaryTable(findResultFolders(folder.path("out")), folder.path("out"), statistics, doubts);
    }

    Support::TemporaryFolder folder;
    Complaints doubts;
};

TEST_F(BatchSummary, ARecordingWithTwoRowsIsToldAndSoIsAStatusThatCantBeRead) {
    RunStatus status = done();
    status.recording = "study/p1/a.csv";
    add("a", "out", "t,x\n", status);
    add("b", "out", "t,x\n", done());
    table({});
    EXPECT_TRUE(doubts.getSortedWarnings().empty());
    status.recording = "./study/p1/a.csv";
    add("p1/a", "out", "t,x\n", status);
    folder.write("out/b/status.json", "{}\n");
    EXPECT_NE(table({}).find("\nb,,unreadable,status.json can't be read,"), std::string::npos);
    ASSERT_EQ(doubts.getSortedWarnings().size(), 1u);
    EXPECT_TRUE(
        doubts.getSortedWarnings()[0].text.starts_with("'./study/p1/a.csv' has two rows, of the folders '"));
}

TEST_F(BatchSummary, HasARowForEachAndColumnsAsTheyCome) {
    RunStatus failed;
    failed.state = RunStatus::kFailed;
    failed.failure = "a, \"b\"\nand c";
    failed.recording = "p2.csv";
    failed.notes = {{"age", "34"}, {"state", "tired"}};
    add("p2", "out", "t,x\n", failed);
    add("p1", "out", "t,x,\"m[0,1]\"\n0,1,\n1,nan,5\n2,3,6\n", done());
    EXPECT_EQ(
        table({*findStatistic("mean"), *findStatistic("count")}),
        "folder,recording,state,failure,seconds,rows,rate,repairs,lost,warnings,peak_memory_mb,host,began,"
        "age,table.state,out.x.mean,out.x.count,\"out.m[0,1].mean\",\"out.m[0,1].count\"\n"
        "p1,,done,,0,3,,0,0,0,,,,,,2,2,5.5,2\n"
        "p2,p2.csv,failed,\"a, \"\"b\"\" and c\",0,0,,0,0,0,,,,34,tired,,,,\n");
}

TEST_F(BatchSummary, AFailureIsToldWhereTheStatusIsOlder) {
    RunStatus earlier = done();
    earlier.began = "2026-05-01T12:00:00.000Z";
    add("p1", "out", "t,x\n0,7\n", earlier);
    BatchPlan::Entry entry;
    entry.recording = "p1.csv";
    entry.folder = folder.path("out/p1");
    entry.words = {"run", "g.yaml", "--note", "age=34", "--note", "group=a=b", "--folder", entry.folder};
    const auto tableWith = [&](const std::string& began) {
        return summaryTable({entry.folder}, folder.path("out"), {*findStatistic("mean")}, doubts,
                            {{entry.folder, failedStatus(entry, began, "the graph has changed")}});
    };
    const std::string now = tableWith("2026-05-01T12:00:00.001Z");
    EXPECT_NE(now.find("\np1,p1.csv,failed,the graph has changed,"), std::string::npos) << now;
    EXPECT_TRUE(now.ends_with(",2026-05-01T12:00:00.001Z,34,a=b\n")) << now;
    EXPECT_NE(tableWith("2026-05-01T12:00:00.000Z").find("\np1,,done,"), std::string::npos);
}

TEST(FailureIn, IsTheLineBehindWarnings) {
    EXPECT_EQ(failureIn("g.yaml:3: warning: a\nb: found c\nd"), "b: found c");
    EXPECT_EQ(failureIn("b: found c"), "b: found c");
    EXPECT_EQ(failureIn("x: warning: a"), "x: warning: a");
    EXPECT_EQ(failureIn(""), "");
}

TEST_F(BatchSummary, TheLastRowOfASinkCalledSummaryCounts) {
    add("p1", "summary", "t,mean,peak\n0,1,2\n1,3,4e-3\n", done());
    add("p2", "summary", "t,mean,peak\n", done());
    EXPECT_EQ(
        table({}),
        "folder,recording,state,failure,seconds,rows,rate,repairs,lost,warnings,peak_memory_mb,host,began,"
        "summary.mean,summary.peak\n"
        "p1,,done,,0,3,,0,0,0,,,,3,0.004\n"
        "p2,,done,,0,3,,0,0,0,,,,,\n");
}

} // namespace
