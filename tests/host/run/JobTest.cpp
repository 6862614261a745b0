// SPDX-License-Identifier: MIT
#include "host/run/Job.h"

#include "host/ends/RecordingException.h"
#include "host/live/LiveRun.h"
#include "host/recording/ResultFile.h"
#include "tests/host/kit/Fifo.h"
#include "tests/host/kit/GraphFixture.h"

#include <sys/stat.h>

#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>

namespace {

using namespace Quillmere::Host;

const std::string kRecorded =
    "format: 1\nblocks:\n"
    "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
    "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
    "connections: [{from: in, to: out.x}]\n";
const std::string kGenerated = "format: 1\nblocks:\n  - {id: gen, type: OddGenerator}\n"
                               "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
                               "connections: [{from: gen, to: out.x}]\n";

class JobTest : public Support::GraphFixture {
protected:
    std::string complaintsOf(Job& job, RunMode mode = RunMode::Offline) const {
        std::string lines;
        for (const Complaint& complaint : job.check(mode).getSorted())
            lines += withoutFolder(complaint.getText()) + "\n";
        return lines;
    }
    std::string refusalOf(Job job) const {
        try {
            job.run();
        } catch (const HostException& exception) {
            return withoutFolder(exception.what());
        }
        return "none";
    }
};

TEST_F(JobTest, WhoForgetsToCheckIsRefusedAllTheSame) {
    const std::string text =
        "format: 1\nblocks:\n  - {id: g, type: FilterGian}\nconnections: [{from: g, to: h}]\n";
    Job checked = jobOf(text);
    EXPECT_EQ(refusalOf(jobOf(text)) + "\n", complaintsOf(checked));
}

TEST_F(JobTest, AGraphWithoutASourceNeedsALimitOfflineOnly) {
    Job job = jobOf(kGenerated);
    EXPECT_EQ(complaintsOf(job),
              "g.yaml:1:1: found a graph without a source; expected limit.seconds or limit.rounds "
              "to end its run\n");
    EXPECT_EQ(complaintsOf(job, RunMode::Live), "");
    EXPECT_EQ(complaintsOf(job, RunMode::Unsaid), "");
    Job limited = jobOf(kGenerated, {}, {.rounds = 2, .seconds = {}});
    EXPECT_EQ(complaintsOf(limited), "");
}

TEST_F(JobTest, LimitsThatEndNothingAreComplainedOf) {
    Job recorded = jobOf(kRecorded, {}, {.rounds = {}, .seconds = 3.0});
    EXPECT_EQ(complaintsOf(recorded),
              "g.yaml:1:1: found limit.seconds and a graph with a source; expected neither, "
              "since the run ends with the recording\n");
    Job none = jobOf(kGenerated, {}, {.rounds = 0, .seconds = {}});
    EXPECT_EQ(complaintsOf(none),
              "g.yaml:1:1: found limit.rounds of 0 rounds; expected a whole number above 0\n");
    Job backward = jobOf(kGenerated, {}, {.rounds = {}, .seconds = -1.0});
    EXPECT_EQ(complaintsOf(backward),
              "g.yaml:1:1: found limit.seconds that is no time; expected finite seconds above 0\n");
}

TEST_F(JobTest, ACheckTouchesNothingThatIsWritten) {
    Job job = jobOf(kRecorded);
    EXPECT_EQ(complaintsOf(job, RunMode::Unsaid), "");
    EXPECT_FALSE(folder.has("out.csv"));
    EXPECT_FALSE(folder.has("out.csv.partial"));
    EXPECT_EQ(complaintsOf(job), "");
    EXPECT_TRUE(job.run().getIsWhole());
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,1\n0.5,2\n1,3\n");
}

TEST_F(JobTest, ItsOutcomeIsData) {
    const RunOutcome done = jobOf(kRecorded).run();
    EXPECT_EQ(done.failure, "");
    EXPECT_EQ(done.progress.rounds, 3u);
    EXPECT_EQ(done.progress.streamTime, 1.0);
    EXPECT_GT(done.seconds, 0.0);
    ASSERT_EQ(done.recordings.size(), 1u);
    EXPECT_EQ(done.recordings[0].rows, 3u);
    ASSERT_EQ(done.results.size(), 1u);
    EXPECT_EQ(done.results[0].rows, 3u);
    EXPECT_EQ(withoutFolder(done.results[0].path), "out.csv");
    EXPECT_FALSE(done.failedBlock.has_value());
}

TEST_F(JobTest, AFailureNamesItsBlock) {
    const RunOutcome failed =
        jobOf("format: 1\nblocks:\n"
              "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
              "  - {id: hot, type: OddFailing, properties: {good: 2}}\n"
              "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
              "connections: [{from: in, to: hot}, {from: hot, to: out.x}]\n")
            .run();
    EXPECT_FALSE(failed.getIsWhole());
    ASSERT_TRUE(failed.failedBlock.has_value());
    EXPECT_EQ(failed.failedBlock->block, "hot");
    EXPECT_EQ(failed.failedBlock->type, "OddFailing");
    EXPECT_EQ(failed.failedBlock->time, 1.0);
    ASSERT_EQ(failed.results.size(), 1u);
    EXPECT_FALSE(failed.results[0].isComplete);
}

TEST_F(JobTest, WhatIsDoubtfulBeforeTheRunIsInItsOutcomeAndRefusedWhenStrict) {
    const std::string text =
        "format: 1\nblocks:\n"
        "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
        "  - {id: g, type: FilterGain}\nconnections: [{from: in, to: g}]\n";
    const RunOutcome done = jobOf(text).run();
    ASSERT_EQ(done.doubts.size(), 1u);
    EXPECT_TRUE(done.doubts[0].text.starts_with("the graph has no sink")) << done.doubts[0].text;
    isStrict = true;
    EXPECT_NE(refusalOf(jobOf(text)).find("the graph has no sink"), std::string::npos);
}

TEST_F(JobTest, AResultThatCantBeBegunIsAnOutcome) {
    const ResultFile others(folder.path("out.csv"));
    const RunOutcome refused = jobOf(kRecorded).run();
    EXPECT_EQ(withoutFolder(refused.failure), "out.csv.partial: another run is writing this result");
    EXPECT_FALSE(refused.getIsWhole());
    EXPECT_FALSE(refused.hasBegun);
    EXPECT_FALSE(refused.isInterrupted);
    ASSERT_TRUE(refused.failedBlock.has_value());
    EXPECT_EQ(refused.failedBlock->block, "out");
    EXPECT_TRUE(refused.results.empty());
    LiveRun live(jobOf(kRecorded));
    live.start();
    EXPECT_EQ(live.getState(), LiveRun::State::Failed);
    EXPECT_FALSE(live.getOutcome().hasBegun);
    EXPECT_THROW(live.wait(), RunException);
}

TEST_F(JobTest, WhoWaitsForAReaderAndIsStoppedWasInterrupted) {
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    stop.request_stop();
    const RunOutcome ended =
        jobOf(kRecorded, {.outputs = {{"out", folder.path("pipe"), "--output"}}}).run(stop.get_token());
    EXPECT_EQ(ended.failure, "interrupted");
    EXPECT_FALSE(ended.hasBegun);
    EXPECT_TRUE(ended.isInterrupted);
    EXPECT_FALSE(ended.failedBlock.has_value());
}

TEST_F(JobTest, AFailureHasItsParts) {
    folder.write("in.csv", "t,x\n0,1\n1,three\n");
    const RunOutcome failed = jobOf(kRecorded).run();
    ASSERT_EQ(failed.complaints.size(), 1u);
    EXPECT_EQ(withoutFolder(failed.complaints[0].where.file), "in.csv");
    EXPECT_EQ(failed.complaints[0].where.line, 3);
    EXPECT_EQ(failed.complaints[0].part, "column 'x'");
    EXPECT_NE(failed.complaints[0].found.find("three"), std::string::npos) << failed.complaints[0].found;
    EXPECT_NE(failed.complaints[0].expected, "");
    ASSERT_TRUE(failed.failedBlock.has_value());
    EXPECT_EQ(failed.failedBlock->block, "in");
}

TEST_F(JobTest, ItRunsOnce) {
    Job job = jobOf(kRecorded);
    EXPECT_TRUE(job.run().getIsWhole());
    EXPECT_EQ(refusalOf(std::move(job)), "found a job that has run; expected a new one for each run");
}

TEST_F(JobTest, ItOwnsWhatItNeedsAndCanBeMoved) {
    std::optional<Job> first;
    {
        const HostCatalogue lent = catalogue;
        first.emplace(Job::fromFile(folder.write("g.yaml", kRecorded), lent));
    }
    Job second = std::move(*first);
    first.reset();
    EXPECT_TRUE(second.run().getIsWhole());
}

TEST_F(JobTest, OneDescriptionIsRunWithManyChanges) {
    folder.write("g.yaml", kRecorded);
    folder.write("other.csv", "t,x\n7,8\n");
    Complaints complaints;
    const GraphDescription description = GraphDescription::fromFile(folder.path("g.yaml"), complaints);
    EXPECT_TRUE(Job(description, catalogue).run().getIsWhole());
    const GraphChanges other{.inputs = {{"in", folder.path("other.csv"), "--input"}}};
    EXPECT_TRUE(Job(description, catalogue, {.changes = other}).run().getIsWhole());
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n7,8\n");
}

TEST_F(JobTest, WhatComesThroughAPipeIsLeftByACheckThatDoesNotSayForWhat) {
    Support::Fifo pipe(folder.path("pipe"));
    Job job = jobOf(kRecorded, {.inputs = {{"in", folder.path("pipe"), "--input"}}});
    EXPECT_EQ(complaintsOf(job, RunMode::Unsaid), "") << "and waits for nobody";
    pipe.write("t,x\n4,5\n");
    pipe.close();
}

TEST_F(JobTest, AStopEndsTheWaitForAPipeThatNobodyWrites) {
    std::stop_source source;
    source.request_stop();
    std::filesystem::remove(folder.path("in.csv"));
    ASSERT_EQ(::mkfifo(folder.path("in.csv").c_str(), 0600), 0);
    JobOptions options;
    options.stop = source.get_token();
    const std::string file = folder.write("g.yaml", kRecorded);
    EXPECT_THROW(Job::fromFile(file, catalogue, options).check(), InterruptedException);
    EXPECT_THROW(Job::fromFile(file, catalogue, options).require(RunMode::Live), InterruptedException);
    const RunOutcome refused = Job::fromFile(file, catalogue, options).run();
    EXPECT_TRUE(refused.isInterrupted);
    EXPECT_FALSE(refused.hasBegun);
    EXPECT_EQ(refused.failure, "interrupted");
    EXPECT_TRUE(refused.complaints.empty());
}

TEST_F(JobTest, ALiveRunRefusesAJobThatCantBeRun) {
    EXPECT_THROW(LiveRun(jobOf("format: 1\nblocks:\n  - {id: g, type: FilterGian}\n")), GraphException);
}

} // namespace
