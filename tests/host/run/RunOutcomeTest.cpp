// SPDX-License-Identifier: MIT
#include "host/run/RunOutcome.h"

#include "host/run/RunEnd.h"
#include "host/run/SourceWarnings.h"
#include "tests/host/kit/GraphFixture.h"

#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;

constexpr const char* kSource =
    "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: "
    "x}}}\n";
constexpr const char* kSink = "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n";

/// A graph with a source 'in', a sink 'out' and `blocks` between them; the first connection stands in line
/// `kFirstLine` when there is one block.
std::string graph(const std::string& blocks, const std::string& connections) {
    return "format: 1\nname: test\nblocks:\n" + std::string(kSource) + kSink + blocks + "connections:\n" +
           connections;
}

class RunOutcomeTest : public Support::GraphFixture {};

const std::string kLossy = graph("  - {id: thrice, type: OddThrice}\n",
                                 "  - {from: in, to: thrice}\n  - {from: thrice, to: out.p}\n");

TEST_F(RunOutcomeTest, ARunTellsWhatItReadAndWrote) {
    EXPECT_EQ(run(graph("", "  - {from: in, to: out.p}\n")), "");
    EXPECT_TRUE(outcome.getIsWhole());
    EXPECT_EQ(outcome.graph, "test");
    EXPECT_EQ(outcome.progress.rounds, 3u);
    ASSERT_EQ(outcome.recordings.size(), 1u);
    EXPECT_EQ(outcome.recordings[0].id, "in");
    EXPECT_EQ(outcome.recordings[0].rows, 3u);
    ASSERT_EQ(outcome.results.size(), 1u);
    EXPECT_EQ(outcome.results[0].id, "out");
    EXPECT_EQ(outcome.results[0].rows, 3u);
    ASSERT_EQ(outcome.links.size(), 1u);
    EXPECT_EQ(outcome.links[0].from, "in.x");
    EXPECT_EQ(outcome.links[0].to, "out.p");
    EXPECT_EQ(outcome.links[0].received, 3u);
    EXPECT_EQ(outcome.links[0].taken, 3u);
    EXPECT_EQ(outcome.links[0].lost, 0u);
    EXPECT_EQ(warningsOfRun(), "");
}

// FilterSphericalFiltering takes an acceleration where a rotation has come.
TEST_F(RunOutcomeTest, WhatStillWaitsAtTheEndIsTold) {
    folder.write("in.csv", "t,x,y,z\n0,1,2,3\n1,1,2,3\n2,1,2,3\n");
    folder.write("one.csv", "t,x,y,z\n0,1,2,3\n");
    const auto source = [](const std::string& id) {
        return "  - {id: " + id + ", type: RecordingSource, properties: {file: " + id +
               ".csv, time: t, pins: {x: [x, y, z]}}}\n";
    };
    EXPECT_EQ(run("format: 1\nblocks:\n" + source("in") + source("one") + kSink +
                  "  - {id: way, type: FilterSphericalFiltering}\nconnections:\n"
                  "  - {from: one, to: way.3g}\n  - {from: in, to: way.3a, buffer: 10}\n"
                  "  - {from: way.Fc, to: out.p}\n"),
              "");
    EXPECT_EQ(
        warningsOfRun(),
        "g.yaml:9:5: warning: 2 of the 3 samples that 'in.x' sent to 'way.3a' still waited at the end\n");
}

TEST_F(RunOutcomeTest, AFailedRunTellsHowFarItCame) {
    folder.write("in.csv", "t,x\n0,1\n0.5,2\n1,three\n");
    const std::string failure = run(graph("", "  - {from: in, to: out.p}\n"));
    EXPECT_NE(failure, "");
    EXPECT_FALSE(outcome.getIsWhole());
    EXPECT_EQ(withoutFolder(outcome.failure), failure);
    EXPECT_EQ(outcome.results[0].rows, 2u);
    EXPECT_EQ(withoutFolder(outcome.results[0].partialPath), "out.csv.partial");
}

TEST_F(RunOutcomeTest, SamplesThatALinkLostAreAWarningAtItsConnection) {
    EXPECT_EQ(run(kLossy), "");
    EXPECT_EQ(outcome.links[0].received, 9u);
    EXPECT_EQ(outcome.links[0].lost, 6u);
    EXPECT_EQ(warningsOfRun(),
              "g.yaml:9:5: warning: 6 of the 9 samples that 'thrice.out' sent to 'out.p' were lost, "
              "since it took them too late\n");
}

TEST_F(RunOutcomeTest, WhatATimelineSendsIsNoLink) {
    EXPECT_EQ(run(graph("  - {id: sum, type: OddSettings}\n", "  - {from: in, to: sum.main in.put}\n"
                                                              "  - {from: sum.a, to: out.p}\n") +
                  "timeline: [{at: 0.1, send: {sum.aux: 1}}, {at: 0.2, send: {sum.aux: 2}}]\n"),
              "");
    EXPECT_EQ(outcome.links.size(), 2u);
    EXPECT_EQ(warningsOfRun(), "") << "of two values before a sample the last counts";
}

TEST_F(RunOutcomeTest, ARecordingHasALengthAndARate) {
    EXPECT_EQ(run(graph("", "  - {from: in, to: out.p}\n")), "");
    const SourceAccount& account = outcome.recordings[0].account;
    EXPECT_EQ(account.getLength(), 1.0);
    EXPECT_EQ(account.getMedianRate(), 2.0);
}

TEST_F(RunOutcomeTest, OddTimeStampsAreWarningsWithTheRecordingsName) {
    folder.write("in.csv", "t,x\n0,1\n1,1\n1,1\n2,1\n1.5,1\n2.5,1\n3.5,1\n4.5,1\n44.5,1\n45.5,1\n45.5,1\n");
    EXPECT_EQ(run(graph("", "  - {from: in, to: out.p}\n")), "");
    EXPECT_EQ(warningsOfRun(),
              "in.csv: warning: 1 time stamp goes back, in line 6 (from 2 s to 1.5 s)\n"
              "in.csv: warning: 2 time stamps repeat the one before, the first in line 4 (from 1 s to "
              "1 s)\n"
              "in.csv: warning: 1 time stamp jumps by more than ten median steps, in line 10 (from 4.5 "
              "s to 44.5 s)\n");
}

TEST(SourceWarnings, SayEverythingThatWasMendedOrLeftOut) {
    SourceAccount account;
    EXPECT_TRUE(warningsOf("r.csv", account).empty());
    account.skippedRows = 2;
    account.mendedRows = 1;
    account.isCutEndDropped = true;
    account.firstFaults = {"line 3: found \"x\"", "line 9: found \"\""};
    account.isChangedMeanwhile = true;
    account.otherClock = SourceAccount::OtherClock{"time", 102.4};
    std::string lines;
    for (const Warning& warning : warningsOf("-", account))
        lines += warning.getText() + "\n";
    EXPECT_EQ(
        lines,
        "standard input: warning: 2 bad rows skipped, 1 bad row taken with nan in place of bad cells, the "
        "last "
        "line, which is cut, left out: line 3: found \"x\"; line 9: found \"\"\n"
        "standard input: warning: the file was written to while it was read\n"
        "standard input: warning: the column 'time' looks like a clock of about 102.4 rows a second, which "
        "isn't the rate that the graph gives\n");
}

TEST_F(RunOutcomeTest, ASinkThatReceivedNothingNamesWhoWasSilent) {
    const std::string twoMore = "  - {id: first, type: FilterGain}\n  - {id: paused, type: FilterFFT}\n"
                                "  - {id: last, type: FilterGain}\n";
    EXPECT_EQ(run(graph(twoMore, "  - {from: in, to: first}\n  - {from: first, to: paused}\n"
                                 "  - {from: paused, to: last}\n  - {from: last, to: out.p}\n")),
              "");
    EXPECT_EQ(warningsOfRun(),
              "g.yaml:5:10: warning: 'out' received nothing: 'paused' (FilterFFT) received 3 samples and "
              "sent none\n"
              "g.yaml:11:5: warning: none of the 3 samples that 'first.output' sent to 'paused.in' was "
              "taken\n");
    EXPECT_EQ(folder.read("out.csv"), "t\n");
}

TEST_F(RunOutcomeTest, ARecordingWithoutRowsAndABlockThatFeedsItselfAreToldToo) {
    folder.write("in.csv", "t,x\n");
    EXPECT_EQ(run(graph("", "  - {from: in, to: out.p}\n")), "");
    EXPECT_EQ(warningsOfRun(),
              "g.yaml:5:10: warning: 'out' received nothing: 'in' (RecordingSource) read 0 rows and sent "
              "none\n");
    EXPECT_EQ(
        run(graph("  - {id: g, type: FilterGain}\n", "  - {from: g, to: g}\n  - {from: g, to: out.p}\n")),
        "");
    EXPECT_EQ(warningsOfRun(),
              "g.yaml:5:10: warning: 'out' received nothing: 'g' waits for what it sends itself\n");
}

TEST_F(RunOutcomeTest, APinThatReceivedNothingIsNoWarningWhereAnotherDid) {
    EXPECT_EQ(
        run(graph("  - {id: rate, type: FilterFrequency}\n",
                  "  - {from: in, to: rate}\n  - {from: in, to: out.p}\n  - {from: rate, to: out.q}\n")),
        "");
    EXPECT_EQ(warningsOfRun(), "");
    EXPECT_EQ(outcome.results[0].silentPins,
              std::vector<std::string>{"q: 'rate' (FilterFrequency) received 3 samples and sent none"});
}

TEST_F(RunOutcomeTest, AValueThatWasReadIsToldWithItsRowAndColumnAndIsNobodysMaking) {
    folder.write("in.csv", "t,x\n0,1\n0.5,nan\n1,3\n");
    EXPECT_EQ(run(graph("  - {id: smooth, type: FilterButterworth}\n",
                        "  - {from: in, to: smooth.in}\n  - {from: smooth, to: out.p}\n")),
              "");
    EXPECT_FALSE(outcome.firstMaker.has_value());
    EXPECT_EQ(outcome.recordings[0].nonFiniteValues, 1u);
    EXPECT_EQ(outcome.results[0].account.nonFiniteValues, 2u);
    EXPECT_EQ(outcome.results[0].account.firstRow, 2u);
    EXPECT_EQ(outcome.results[0].account.firstTime, 0.5);
    EXPECT_EQ(outcome.results[0].account.firstColumn, "p[0]");
    ASSERT_EQ(outcome.warnings.size(), 2u);
    EXPECT_EQ(outcome.warnings[0].text,
              "'in' read 1 value that isn't finite, the first in row 2 (0.5 s), column 'x'");
    EXPECT_EQ(outcome.warnings[1].text,
              "'out' holds 2 values that aren't finite, the first in row 2 (0.5 s), column 'p[0]'");
}

/// A recording with missing values, straight and through a block to a result.
class MissingValues : public RunOutcomeTest {
protected:
    std::string runThrough(const std::string& block, const std::string& more = "") {
        return run(
            "format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, " +
            more + "pins: {x: [x, y]}, missing: [NA, \"\", nan]}}\n  - {id: f, type: " + block + "}\n" +
            kSink + "connections: [{from: in, to: out.p}, {from: in, to: f." +
            (block == "FilterGain" ? "input" : "in") + "}, {from: f, to: out.q}]\n");
    }
};

TEST_F(MissingValues, AreNoSurpriseNorWhatBecomesOfThemOneForOne) {
    folder.write("in.csv", "t,x,y\n0,1,NA\n0.5,,2\n1,3,nan\n1.5,4,5\n");
    isStrict = true;
    for (const char* const frame : {"", "frame: 2, ", "frame: 2, hop: 1, "}) {
        EXPECT_EQ(runThrough("FilterGain", frame), "") << frame;
        EXPECT_EQ(warningsOfRun(), "") << frame;
        EXPECT_FALSE(outcome.firstMaker.has_value()) << frame;
        EXPECT_EQ(outcome.recordings[0].account.missingCells, 3u) << frame;
        EXPECT_EQ(outcome.recordings[0].nonFiniteValues, 0u) << frame;
        EXPECT_GE(outcome.results[0].account.nonFiniteValues, 6u) << frame;
    }
}

TEST_F(MissingValues, HideNeitherOthersNorWhatARecursionKeeps) {
    folder.write("in.csv", "t,x,y\n0,1,NA\n0.5,inf,2\n1,3,4\n");
    EXPECT_EQ(runThrough("FilterGain"), "");
    EXPECT_EQ(
        warningsOfRun(),
        "g.yaml:3:56: warning: 'in' read 1 value that isn't finite, the first in row 2 (0.5 s), column 'x'\n"
        "g.yaml:5:10: warning: 'out' holds 4 values that aren't finite, the first in row 1 (0 s), column "
        "'p[1]'\n");
    folder.write("in.csv", "t,x,y\n0,1,NA\n0.5,2,2\n1,3,4\n");
    EXPECT_EQ(runThrough("FilterButterworth"), "");
    EXPECT_EQ(warningsOfRun(),
              "g.yaml:5:10: warning: 'out' holds 4 values that aren't finite, the first in row 1 "
              "(0 s), column 'p[1]'\n");
}

TEST_F(RunOutcomeTest, TheFirstBlockThatMakesSuchAValueOutOfFiniteOnesIsNamed) {
    folder.write("in.csv", "t,x\n0,1\n0.5,0\n1,1e308\n");
    EXPECT_EQ(
        run(graph(
            "  - {id: plain, type: FilterGain}\n  - {id: large, type: FilterGain, properties: {Gain: 10}}\n"
            "  - {id: behind, type: FilterGain}\n",
            "  - {from: in, to: plain}\n  - {from: plain, to: large}\n  - {from: large, to: behind}\n"
            "  - {from: behind, to: out.p}\n")),
        "");
    ASSERT_TRUE(outcome.firstMaker.has_value());
    EXPECT_EQ(outcome.firstMaker->block, "large");
    EXPECT_EQ(outcome.firstMaker->time, 1.0);
    ASSERT_EQ(outcome.warnings.size(), 2u);
    EXPECT_EQ(outcome.warnings[0].text,
              "'large' (FilterGain) made values that aren't finite, the first at 1 s, and none was seen to "
              "come to it before");
    EXPECT_EQ(outcome.results[0].account.nonFiniteValues, 1u);
    EXPECT_EQ(outcome.results[0].account.firstRow, 3u);
}

TEST_F(RunOutcomeTest, WhatAnotherPinOfItsSenderSentHidesNoMaker) {
    folder.write("two.csv", "t,x,y\n0,nan,1\n0.5,1,1\n1,1,1e308\n");
    EXPECT_EQ(
        run("format: 1\nblocks:\n  - {id: two, type: RecordingSource, properties: {file: two.csv, time: "
            "t, pins: {x: x, y: y}}}\n  - {id: large, type: FilterGain, properties: {Gain: 10}}\n" +
            std::string(kSink) +
            "connections: [{from: two.x, to: out.p}, {from: two.y, to: large}, {from: large, to: "
            "out.q}]\n"),
        "");
    EXPECT_EQ(outcome.recordings[0].nonFiniteValues, 1u);
    ASSERT_TRUE(outcome.firstMaker.has_value());
    EXPECT_EQ(outcome.firstMaker->block, "large");
    EXPECT_EQ(outcome.firstMaker->time, 1.0);
}

TEST_F(RunOutcomeTest, WhatATimelineSentIsNoBlocksMaking) {
    EXPECT_EQ(run(graph("  - {id: sum, type: OddSum}\n",
                        "  - {from: in, to: sum.in}\n  - {from: sum, to: out.p}\n") +
                  "timeline: [{at: 0.5, send: {sum.back: .nan}}]\n"),
              "");
    EXPECT_FALSE(outcome.firstMaker.has_value());
    EXPECT_EQ(warningsOfRun(),
              "g.yaml: warning: the timeline sent values that aren't finite, the first at 0.5 s\n"
              "g.yaml:5:10: warning: 'out' holds 2 values that aren't finite, the first in row 2 (0.5 s), "
              "column 'p[0]'\n");
}

TEST_F(RunOutcomeTest, StrictTakesAWarningForAFailureAndKeepsTheResultsPartial) {
    isStrict = true;
    EXPECT_EQ(run(kLossy), "ended with a warning, taken for an error");
    EXPECT_EQ(outcome.warnings.size(), 1u);
    EXPECT_FALSE(folder.has("out.csv"));
    EXPECT_EQ(folder.read("out.csv.partial"), "t,p[0]\n0,1.75\n0.5,2.75\n1,3.75\n");
    EXPECT_EQ(run(graph("", "  - {from: in, to: out.p}\n")), "") << "nothing to warn of";
    EXPECT_TRUE(folder.has("out.csv"));
}

TEST_F(RunOutcomeTest, StrictTellsOfTheResultThatReceivedNothingOnWhichItFails) {
    isStrict = true;
    EXPECT_EQ(run(graph("  - {id: rate, type: FilterFrequency}\n",
                        "  - {from: in, to: rate}\n  - {from: rate, to: out.p}\n")),
              "ended with a warning, taken for an error");
    EXPECT_EQ(warningsOfRun(),
              "g.yaml:5:10: warning: 'out' received nothing: 'rate' (FilterFrequency) received 3 samples and "
              "sent none\n");
}

TEST(StrictFailure, SaysHowManyWarningsThereAre) {
    EXPECT_TRUE(endingOf(std::vector<Warning>()).getIsWhole());
    EXPECT_EQ(endingOf({Warning{}}).failure, "ended with a warning, taken for an error");
    const RunEnding ending = endingOf({Warning{{"a.yaml", 2, 1}, "odd"}, Warning{}});
    EXPECT_EQ(ending.failure, "ended with 2 warnings, taken for errors");
    ASSERT_EQ(ending.complaints.size(), 2u);
    EXPECT_EQ(ending.complaints[0].where.line, 2);
    EXPECT_EQ(ending.complaints[0].found, "odd");
}

} // namespace
