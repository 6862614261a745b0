// SPDX-License-Identifier: MIT
#include "host/run/OfflineRunner.h"

#include "tests/host/kit/GraphFixture.h"

#include <Poco/Timestamp.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;

std::string source(const std::string& id, const std::string& file, const std::string& pins) {
    return "  - {id: " + id + ", type: RecordingSource, properties: {file: " + file + ", time: t, pins: {" +
           pins + "}}}\n";
}

constexpr const char* kSink = "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n";

std::string graph(const std::string& blocks, const std::string& connections) {
    return "format: 1\nblocks:\n" + blocks + kSink + "connections:\n" + connections;
}

class OfflineRunnerTest : public Support::GraphFixture {
protected:
    std::string result(const std::string& text) {
        const std::string failure = run(text);
        return failure.empty() ? folder.read("out.csv") : failure;
    }
};

TEST_F(OfflineRunnerTest, SamplesGoThroughTheGraph) {
    EXPECT_EQ(result(graph(source("in", "in.csv", "p: [x, y]") +
                               "  - {id: g, type: FilterGain, properties: {Gain: -2}}\n",
                           "  - {from: in, to: g}\n  - {from: g, to: out.p}\n")),
              "t,p[0],p[1]\n0,-2,-20\n0.5,-4,-40\n1,-6,-60\n");
}

TEST_F(OfflineRunnerTest, OneRunIsLikeTheOther) {
    std::string text = "t,x,y\n";
    for (int i = 0; i < 500; ++i)
        text += std::to_string(i) + "e-2," + std::to_string(std::sin(0.1 * i)) + "," + std::to_string(i % 7) +
                "\n";
    folder.write("in.csv", text);
    const std::string twice = graph(
        source("in", "in.csv", "p: [x, y]") + "  - {id: a, type: FilterGain, properties: {Gain: 0.3}}\n" +
            "  - {id: b, type: FilterInvGain, properties: {invGain: 7}}\n",
        "  - {from: in, to: a}\n  - {from: a, to: b}\n  - {from: b, to: out.p}\n  - {from: a, to: out.q}\n");
    const std::string first = result(twice);
    EXPECT_GT(first.size(), 500u * 10u);
    EXPECT_EQ(result(twice), first);
}

TEST_F(OfflineRunnerTest, AResultFedThroughAGainOfOneComesBack) {
    std::string text = "t,a[0],a[1],b[0]\n";
    for (int i = 0; i < 300; ++i)
        text += std::to_string(i) + "," + (i % 3 == 0 ? "," : std::to_string(0.1 * i) + ",-1e-05") + "," +
                (i % 4 == 1 ? "" : "3.5") + "\n";
    folder.write("in.csv", text);
    const std::string first = graph(source("in", "in.csv", "a: [\"a[0]\", \"a[1]\"], b: [\"b[0]\"]") +
                                        "  - {id: g, type: FilterGain}\n" + "  - {id: h, type: FilterGain}\n",
                                    "  - {from: in.a, to: g}\n  - {from: in.b, to: h}\n  - {from: g, to: "
                                    "out.a}\n  - {from: h, to: out.b}\n");
    const std::string table = result(first);
    EXPECT_GT(table.size(), 3000u);
    folder.write("in.csv", table);
    EXPECT_EQ(result(first), table);
}

/// What reads the time stamps of blocks that stamp the wall clock by their rules.
const std::string kEdges = graph(
    source("in", "in.csv", "x: x") + "  - {id: edge, type: FilterEdge}\n"
                                     "  - {id: rate, type: FilterFrequency, properties: {SampleNbr: 2}}\n",
    "  - {from: in.x, to: edge}\n  - {from: edge, to: rate}\n  - {from: rate, to: out.x}\n");

TEST_F(OfflineRunnerTest, AskedForTheStreamsTimeBlocksStampItInPlaceOfTheWallClock) {
    EXPECT_EQ(result("clock: stream\n" + kEdges), "t,x[0]\n1,2\n");
    EXPECT_EQ(result("clock: wall\n" + kEdges).find("t,x[0]\n1,2\n"), std::string::npos);
    EXPECT_EQ(result(kEdges).find("t,x[0]\n1,2\n"), std::string::npos);
}

TEST_F(OfflineRunnerTest, AClockThatStampsTheWallClockHasNoStreamTimeToGive) {
    const std::string text =
        "clock: stream\n" +
        graph("  - {id: noise, type: FilterGaussianWhiteNoiseGenerator}\n", "  - {from: noise, to: out.x}\n");
    RunLimit limit;
    limit.rounds = 3;
    Job job = jobOf(text, {}, limit);
    EXPECT_THROW(job.run(), GraphException) << "before it runs, where the generator's type is known";
    for (Sink* const sink : job.getGraph().getSinks())
        sink->open();
    const std::string failure = OfflineRunner(job.getGraph(), limit).run({}).failure;
    EXPECT_NE(
        failure.find(
            "found a wall clock's time where the block tells that of the run; expected a generator with a "
            "time of its own in front of it, or 'clock: wall'"),
        std::string::npos)
        << failure;
}

TEST_F(OfflineRunnerTest, ALoopThatFeedsItselfDrainsForOneRoundOnly) {
    EXPECT_EQ(result(graph(source("in", "in.csv", "x: x") + "  - {id: h, type: FilterHysteresis}\n",
                           "  - {from: in.x, to: h.HighThreshold}\n  - {from: h, to: h.input}\n"
                           "  - {from: h, to: out.x}\n")),
              "t,x[0]\n0,0\n0.5,0\n1,0\n1,0\n")
        << "it sends in every step, so rounds would go on for ever";
}

TEST_F(OfflineRunnerTest, ValuesOfATimelineHaveTheTimeOfTheirRound) {
    EXPECT_EQ(result(graph(source("in", "in.csv", "x: x") +
                               "  - {id: rate, type: FilterFrequency, properties: {SampleNbr: 2}}\n",
                           "  - {from: in.x, to: out.x}\n  - {from: rate, to: out.hertz}\n") +
                     "timeline: [{at: 0, send: {rate.in: 1}}, {at: 0.3, send: {rate.in: 1}}, {at: 0.8, send: "
                     "{rate.in: "
                     "1}}]\n"),
              "t,x[0],hertz[0]\n0,1,\n0.5,2,\n1,3,2\n")
        << "by the entries' own times it would be 2.5";
}

TEST_F(OfflineRunnerTest, AResultThatCantBeCompletedKeepsNoOtherFromBeingEnded) {
    Job job = jobOf(graph(source("in", "in.csv", "x: x") +
                              "  - {id: first, type: RecordingSink, properties: {file: first.csv}}\n",
                          "  - {from: in.x, to: first.x}\n  - {from: in.x, to: out.x}\n"));
    const RunOutcome ended =
        job.run({}, [&](const RunProgress&) { std::filesystem::create_directory(folder.path("first.csv")); });
    EXPECT_FALSE(ended.getIsWhole());
    EXPECT_FALSE(folder.has("out.csv"));
    EXPECT_EQ(folder.read("out.csv.partial"), "t,x[0]\n0,1\n0.5,2\n1,3\n");
}

TEST_F(OfflineRunnerTest, SourcesAreMergedByTime) {
    folder.write("slow.csv", "t,s\n-1,100\n0.5,200\n0.75,300\n9,400\n");
    EXPECT_EQ(result(graph(source("in", "in.csv", "x: x") + source("slow", "slow.csv", "s: s"),
                           "  - {from: in, to: out.x}\n  - {from: slow, to: out.s}\n")),
              "t,x[0],s[0]\n-1,,100\n0,1,\n0.5,2,\n0.5,,200\n0.75,,300\n1,3,\n9,,400\n")
        << "of equal times the first in the file goes first, each with a round of its own";
}

TEST_F(OfflineRunnerTest, ALoopCarriesTheLastRoundsSample) {
    EXPECT_EQ(result(graph(source("in", "in.csv", "x: x") + "  - {id: sum, type: OddSum}\n" +
                               "  - {id: g, type: FilterGain}\n",
                           "  - {from: in, to: sum.in}\n  - {from: sum, to: g}\n  - {from: g, to: "
                           "sum.back}\n  - {from: sum, "
                           "to: out.x}\n")),
              "t,x[0]\n0,1\n0.5,2.5\n1,4.25\n")
        << "and ends, although the last sample still goes round";
}

TEST_F(OfflineRunnerTest, WhatIsBufferedLeavesAfterTheSourcesHaveEnded) {
    EXPECT_EQ(result(graph(source("in", "in.csv", "x: x") + "  - {id: three, type: OddThrice}\n" +
                               "  - {id: g, type: FilterGain}\n",
                           "  - {from: in, to: three}\n  - {from: three, to: g, buffer: 9, order: oldest}\n  "
                           "- {from: g, to: "
                           "out.x, buffer: 2}\n")),
              "t,x[0]\n0,1.25\n0.5,1.5\n1,1.75\n1,2.25\n1,2.5\n1,2.75\n1,3.25\n1,3.5\n1,3.75\n");
}

TEST_F(OfflineRunnerTest, TheNewestFirstWhenTheConnectionSaysSo) {
    EXPECT_EQ(
        result(graph(source("in", "in.csv", "x: x") + "  - {id: three, type: OddThrice}\n",
                     "  - {from: in, to: three}\n  - {from: three, to: out.x, buffer: 4, order: newest}\n")),
        "t,x[0]\n0,1.75\n0.5,2.75\n1,3.75\n1,3.5\n1,3.25\n1,2.5\n")
        << "a buffer of four: the oldest were lost";
}

TEST_F(OfflineRunnerTest, BlocksWithoutInputsStepWithTheSourcesAndThenRest) {
    EXPECT_EQ(result(graph(source("in", "in.csv", "x: x") + "  - {id: gen, type: OddGenerator}\n",
                           "  - {from: in, to: out.x}\n  - {from: gen, to: out.n}\n")),
              "t,x[0],n[0]\n0,1,1\n0.5,2,2\n1,3,3\n");
}

TEST_F(OfflineRunnerTest, ABlockThatRaisesEndsTheRunAndKeepsWhatWasWritten) {
    folder.write("out.csv", "t,x[0]\n-1,-2\n");
    EXPECT_EQ(
        run(graph(source("in", "in.csv", "x: x") + "  - {id: hot, type: OddFailing, properties: {good: 2}}\n",
                  "  - {from: in, to: hot}\n  - {from: hot, to: out.x}\n")),
        "block 'hot' (OddFailing of " + std::filesystem::canonical(ODD_PLUGIN).string() +
            ") at 1 s: Runtime exception: overheated");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n-1,-2\n");
    EXPECT_EQ(folder.read("out.csv.partial"), "t,x[0]\n0,1\n0.5,2\n");
}

TEST_F(OfflineRunnerTest, AStopEndsTheRunMidway) {
    stop.request_stop();
    EXPECT_EQ(run(graph(source("in", "in.csv", "x: x"), "  - {from: in, to: out.x}\n")),
              "at 0 s: interrupted");
    EXPECT_EQ(folder.read("out.csv.partial"), "t\n");
    EXPECT_FALSE(folder.has("out.csv"));
}

TEST_F(OfflineRunnerTest, ProgressIsToldAtTheEnd) {
    const std::string text = graph(source("in", "in.csv", "x: x"), "  - {from: in, to: out.x}\n");
    std::vector<RunProgress> told;
    const RunOutcome ended =
        jobOf(text).run({}, [&](const RunProgress& progress) { told.push_back(progress); });
    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(told[0].rows, 3u);
    EXPECT_EQ(told[0].bytes, told[0].bytesRead);
    EXPECT_EQ(told[0].streamTime, 1.0);
    EXPECT_EQ(ended.results.at(0).rows, 3u);
}

/// A graph without a source, driven by generators.
class GeneratedRunTest : public OfflineRunnerTest {
protected:
    std::string resultOf(const RunLimit& limit, const std::string& blocks, const std::string& connections) {
        const std::string failure = run(graph(blocks, connections), {}, limit);
        return failure.empty() ? folder.read("out.csv") : failure;
    }
    /// A ramp from -1 that rises by 0.5 in each round, a round a second.
    static constexpr const char* kRamp =
        "  - {id: ramp, type: FilterFunctionGenerator, properties: {Mode: triangular, "
        "SignalPeriod: 4, SignalAmplitude: 1, SampleRate: 1}}\n";
};

TEST_F(GeneratedRunTest, RunsForItsRounds) {
    const RunLimit limit{.rounds = 5, .seconds = {}};
    const std::string wanted = "t,x[0]\n1,-1\n2,-0.5\n3,0\n4,0.5\n5,-1\n";
    EXPECT_EQ(resultOf(limit, kRamp, "  - {from: ramp, to: out.x}\n"), wanted);
    EXPECT_EQ(resultOf(limit, kRamp, "  - {from: ramp, to: out.x}\n"), wanted) << "and again the same";
}

TEST_F(GeneratedRunTest, RunsForItsDurationOfTheClocksTime) {
    const struct {
        double seconds;
        const char* table;
    } rows[] = {{0.25, "t,x[0]\n1,-1\n"},
                {1.0, "t,x[0]\n1,-1\n"},
                {2.5, "t,x[0]\n1,-1\n2,-0.5\n3,0\n"},
                {3.0, "t,x[0]\n1,-1\n2,-0.5\n3,0\n"}};
    for (const auto& row : rows)
        EXPECT_EQ(resultOf({.rounds = {}, .seconds = row.seconds}, kRamp, "  - {from: ramp, to: out.x}\n"),
                  row.table)
            << row.seconds << " s";
}

TEST_F(GeneratedRunTest, WithoutALimitItIsRefusedAndNothingIsWritten) {
    try {
        run(graph(kRamp, "  - {from: ramp, to: out.x}\n"));
        ADD_FAILURE() << "it has run";
    } catch (const GraphException& exception) {
        EXPECT_EQ(withoutFolder(exception.what()),
                  "g.yaml:1:1: found a graph without a source; expected limit.seconds or limit.rounds to end "
                  "its run");
    }
    EXPECT_FALSE(folder.has("out.csv"));
    EXPECT_FALSE(folder.has("out.csv.partial"));
}

TEST_F(GeneratedRunTest, TheFirstGeneratorIsTheClockWhereverItStands) {
    // The second one stamps 0; a gain before both in the file still gets its sample in the same round.
    EXPECT_EQ(resultOf({.rounds = 2, .seconds = {}},
                       "  - {id: g, type: FilterGain, properties: {Gain: 2}}\n" + std::string(kRamp) +
                           "  - {id: gen, type: OddGenerator}\n",
                       "  - {from: ramp, to: g}\n  - {from: g, to: out.x}\n  - {from: gen, to: out.n}\n"),
              "t,x[0],n[0]\n1,-2,1\n2,-1,2\n");
}

TEST_F(GeneratedRunTest, WhatIsBufferedLeavesAfterTheLimit) {
    EXPECT_EQ(
        resultOf({.rounds = 1, .seconds = {}}, std::string(kRamp) + "  - {id: three, type: OddThrice}\n",
                 "  - {from: ramp, to: three}\n  - {from: three, to: out.x, buffer: 9, order: oldest}\n"),
        "t,x[0]\n1,-0.75\n1,-0.5\n1,-0.25\n");
}

TEST_F(GeneratedRunTest, AClockOnTheWallRunsFromTheStart) {
    const double before = static_cast<double>(Poco::Timestamp().utcTime()) * 1e-7;
    EXPECT_EQ(run(graph("  - {id: noise, type: FilterGaussianWhiteNoiseGenerator}\n",
                        "  - {from: noise, to: out.x}\n"),
                  {}, {.rounds = {}, .seconds = 0.02}),
              "");
    const std::string table = folder.read("out.csv");
    const std::size_t firstRow = table.find('\n') + 1;
    const std::size_t lastRow = table.rfind('\n', table.size() - 2) + 1;
    EXPECT_GE(std::stod(table.substr(firstRow)), before);
    EXPECT_GE(std::stod(table.substr(lastRow)), before + 0.02);
    EXPECT_LT(firstRow, lastRow) << "more than one row";
}

TEST_F(GeneratedRunTest, AClockThatStandsStillEndsNoDuration) {
    EXPECT_EQ(run(graph("  - {id: gen, type: OddGenerator}\n  - {id: g, type: FilterGain}\n",
                        "  - {from: gen, to: g}\n  - {from: g, to: out.x, buffer: 1}\n"),
                  {}, {.rounds = {}, .seconds = 1.0}),
              "at 0 s: the time of 'gen' stands still, so no duration ends the run");
}

TEST_F(GeneratedRunTest, AStopEndsItMidway) {
    stop.request_stop();
    EXPECT_EQ(run(graph(kRamp, "  - {from: ramp, to: out.x}\n"), {}, {.rounds = 5, .seconds = {}}),
              "at 0 s: interrupted");
    EXPECT_FALSE(folder.has("out.csv"));
}

TEST_F(OfflineRunnerTest, AResultThatCannotGetItsNameLeavesThoseBehindItPartialAndWhole) {
    const auto sink = [](const std::string& id) {
        return "  - {id: " + id + ", type: RecordingSink, properties: {file: " + id + ".csv}}\n";
    };
    const std::string text = "format: 1\nblocks:\n" + source("in", "in.csv", "x: x") + sink("one") +
                             sink("two") + sink("three") +
                             "connections:\n  - {from: in, to: one.x}\n  - {from: in, to: two.x}\n"
                             "  - {from: in, to: three.x}\n";
    const RunOutcome ended = jobOf(text).run(
        {}, [&](const RunProgress&) { std::filesystem::create_directory(folder.path("two.csv")); });
    EXPECT_FALSE(ended.getIsWhole());
    const std::string rows = "t,x[0]\n0,1\n0.5,2\n1,3\n";
    EXPECT_EQ(folder.read("one.csv"), rows);
    EXPECT_EQ(folder.read("two.csv.partial"), rows);
    EXPECT_EQ(folder.read("three.csv.partial"), rows);
    EXPECT_FALSE(folder.has("three.csv"));
    ASSERT_EQ(ended.results.size(), 3u);
    EXPECT_TRUE(ended.results[0].isComplete);
    EXPECT_FALSE(ended.results[1].isComplete);
    EXPECT_FALSE(ended.results[2].isComplete);
}

} // namespace
