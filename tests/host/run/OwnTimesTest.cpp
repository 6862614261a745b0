// SPDX-License-Identifier: MIT
#include "host/text/ShortestText.h"
#include "tests/host/kit/LiveFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

// Blocks that send by times of their own, and several samples in one step.

namespace {

using namespace Quillmere::Host;

class OwnTimesTest : public Support::LiveFixture {
protected:
    OwnTimesTest() {
        rows = "t,x\n";
        for (int i = 0; i < 400; ++i)
            rows += shortTime(i) + "," + std::to_string(i * i % 101) + "\n";
        folder.write("in.csv", rows);
    }
    static std::string shortTime(int quarters) {
        const char* const parts[] = {"", ".25", ".5", ".75"};
        return std::to_string(quarters / 4) + parts[quarters % 4];
    }
    /// Frames of 8 rows, taken apart in `first` and written from `second`.
    static std::string framesThrough(const std::string& first, const std::string& second) {
        const auto in = [](const std::string& layout) { return layout.empty() ? "" : ", layout: " + layout; };
        return "format: 1\n" +
               std::string(first.empty() ? "" : "layouts: [{id: " + first + "}, {id: " + second + "}]\n") +
               "blocks:\n"
               "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, frame: 8, pins: {x: "
               "[x]}}" +
               in(first) + "}\n  - {id: rows, type: Unframe, properties: {Rate: 4}" + in(first) +
               "}\n  - {id: gain, type: FilterGain" + in(second) +
               "}\n  - {id: out, type: RecordingSink, properties: {file: out.csv, columns: {x: [x]}}" +
               in(second) +
               "}\nconnections:\n  - {from: in, to: rows}\n  - {from: rows, to: gain}\n  - {from: gain, to: "
               "out.x}\n";
    }

    /// FilterHysteresis sends in each of its steps, so that it counts them.
    static std::string singlesBesideFrames() {
        return std::string("format: 1\nblocks:\n") + kFrames +
               "  - {id: single, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: "
               "[x]}}}\n"
               "  - {id: rows, type: Unframe, properties: {Rate: 4}}\n"
               "  - {id: level, type: FilterHysteresis}\n"
               "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
               "  - {id: steps, type: RecordingSink, properties: {file: steps.csv}}\n"
               "connections: [{from: in, to: rows}, {from: rows, to: out.x}, {from: single, to: "
               "level.input},\n"
               "  {from: level, to: steps.x}]\n";
    }

    std::string rows;
    static constexpr const char* kFrames =
        "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, "
        "frame: 8, pins: {x: [x]}}}\n";
};

TEST_F(OwnTimesTest, EveryRowOfAFrameComesThrough) {
    EXPECT_EQ(run(framesThrough("", "")), "");
    EXPECT_EQ(folder.read("out.csv"), rows);
    EXPECT_EQ(warningsOfRun(), "");
}

TEST_F(OwnTimesTest, LiveToo) {
    EXPECT_EQ(runLive(framesThrough("", "")), "");
    EXPECT_EQ(folder.read("out.csv"), rows) << "within a layout";
    EXPECT_EQ(runLive(framesThrough("a", "b")), "");
    EXPECT_EQ(folder.read("out.csv"), rows) << "across two";
}

TEST_F(OwnTimesTest, WhatIsNotBehindThemStepsOnceARound) {
    EXPECT_EQ(run(singlesBesideFrames()), "");
    const std::string steps = folder.read("steps.csv");
    EXPECT_EQ(std::count(steps.begin(), steps.end(), '\n'), 1 + 50 + 400) << "rows of frames and of singles";
}

TEST_F(OwnTimesTest, NothingBesideGoesRoundMoreOftenLive) {
    ASSERT_EQ(run(singlesBesideFrames()), "");
    const std::string offline = folder.read("steps.csv");
    ASSERT_EQ(runLive(singlesBesideFrames()), "");
    EXPECT_EQ(folder.read("steps.csv"), offline);
}

TEST_F(OwnTimesTest, ALoopTakesAllWhoeverStandsFirst) {
    const std::string text =
        std::string("format: 1\nblocks:\n") + kFrames +
        "  - {id: rows, type: Unframe, properties: {Rate: 4}}\n"
        "  - {id: back, type: FilterGain}\n"
        "  - {id: sum, type: OddSum}\n"
        "  - {id: out, type: RecordingSink, properties: {file: out.csv, columns: {x: [x]}}}\n"
        "connections: [{from: in, to: rows}, {from: rows, to: sum.in}, {from: sum, to: back},\n"
        "  {from: back, to: sum.back}, {from: back, to: out.x}]\n";
    std::string wanted = "t,x\n";
    double sum = 0.0;
    for (int i = 0; i < 400; ++i) {
        sum = i * i % 101 + 0.5 * sum;
        wanted += shortTime(i) + "," + shortestText(sum) + "\n";
    }
    EXPECT_EQ(run(text), "");
    EXPECT_EQ(folder.read("out.csv"), wanted);
    EXPECT_EQ(warningsOfRun(), "");
    EXPECT_EQ(runLive(text), "");
    EXPECT_EQ(folder.read("out.csv"), wanted) << "live";
}

TEST_F(OwnTimesTest, SinksBehindThemGatherByTimeOverWhateverInput) {
    const std::string text =
        std::string("format: 1\nblocks:\n") + kFrames +
        "  - {id: one, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: [x]}}}\n"
        "  - {id: two, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: [x]}}}\n"
        "  - {id: rows, type: Unframe, properties: {Rate: 4}}\n"
        "  - {id: gain, type: FilterGain}\n"
        "  - {id: smooth, type: FilterButterworth}\n"
        "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
        "connections: [{from: in, to: rows}, {from: rows, to: gain}, {from: gain, to: smooth.reset},\n"
        "  {from: one, to: smooth.in}, {from: smooth.out, to: out.x}, {from: two, to: out.y}]\n";
    ASSERT_EQ(run(text), "");
    const std::string offline = folder.read("out.csv");
    EXPECT_EQ(std::count(offline.begin(), offline.end(), '\n'), 1 + 400);
    ASSERT_EQ(runLive(text), "");
    EXPECT_EQ(folder.read("out.csv"), offline);
}

TEST_F(OwnTimesTest, OneThatAnotherLayoutFeedsTakesNoMoreBeforeItsSamplesAreThrough) {
    std::string text = framesThrough("a", "b");
    const auto change = [&](const std::string& from, const std::string& to) {
        ASSERT_NE(text.find(from), std::string::npos) << from;
        text.replace(text.find(from), from.size(), to);
    };
    change("{Rate: 4}, layout: a", "{Rate: 4}, layout: b");
    change("to: rows}", "to: rows, buffer: 50}");
    change("to: gain}", "to: gain, buffer: 8}");
    prepare(text);
    {
        const Support::Hold hold(*liveRun, "gain.Gain", "2");
        liveRun->start();
        EXPECT_TRUE(Support::waitUntil([&] { return liveRun->getProgress().rounds == 50; }));
    }
    ASSERT_EQ(end(), "");
    EXPECT_EQ(linkStatistics("gain.input").lost, 0U) << "as many as it holds, frame by frame";
    EXPECT_EQ(linkStatistics("gain.input").taken, 400U);
}

TEST_F(OwnTimesTest, OfWhatAPausedBlockLeavesTheNewestStays) {
    const std::string text =
        "format: 1\nblocks:\n"
        "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: [x]}}}\n"
        "  - {id: both, type: Join}\n  - {id: fft, type: FilterFFT}\n"
        "connections: [{from: in, to: both.in1}, {from: both, to: fft}]\n";
    const auto check = [](const RunOutcome& ended) {
        ASSERT_EQ(ended.links.size(), 2U);
        EXPECT_EQ(ended.links[1].from, "both.out");
        EXPECT_EQ(ended.links[1].lost, 399U);
        ASSERT_EQ(ended.warnings.size(), 1U);
        EXPECT_NE(ended.warnings[0].text.find("none of the 400 samples that 'both.out'"), std::string::npos);
    };
    EXPECT_EQ(run(text), "");
    check(outcome);
    EXPECT_EQ(runLive(text), "");
    check(liveRun->getOutcome());
}

// FilterSphericalFiltering takes an acceleration where a rotation has come.
TEST_F(OwnTimesTest, WhatABlockTakesWithOthersOnlyIsAsNewAsThey) {
    std::string many = "t,x,y,z\n";
    for (int i = 0; i < 400; ++i)
        many += shortTime(i) + ",1,2,3\n";
    folder.write("many.csv", many);
    folder.write("few.csv", "t,x,y,z\n0,1,2,3\n50,1,2,3\n90,1,2,3\n");
    const auto source = [](const std::string& id, const std::string& more) {
        return "  - {id: " + id + ", type: RecordingSource, properties: {file: " + id + ".csv, time: t, " +
               more + "pins: {x: [x, y, z]}}}\n";
    };
    EXPECT_EQ(
        run("format: 1\nblocks:\n" + source("many", "frame: 8, ") + source("few", "") +
            "  - {id: rows, type: Unframe, properties: {Rate: 4}}\n"
            "  - {id: way, type: FilterSphericalFiltering}\n"
            "connections: [{from: many, to: rows}, {from: rows, to: way.3a}, {from: few, to: way.3g}]\n"),
        "");
    for (const RunOutcome::Link& link : outcome.links) {
        if (link.to != "way.3a") continue;
        EXPECT_EQ(link.taken, 2U) << "one for each rotation behind the first frame";
        EXPECT_EQ(link.lost, 397U);
    }
    EXPECT_NE(warningsOfRun().find("397 of the 400 samples that 'rows.out' sent to 'way.3a' were lost"),
              std::string::npos);
}

TEST_F(OwnTimesTest, AtTheEndComesWhatWasHeldBackForMore) {
    const std::string text =
        "format: 1\nlayouts: [{id: a}, {id: b}]\nblocks:\n"
        "  - {id: both, type: Join}\n"
        "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: [x]}}}\n"
        "  - {id: even, type: Resample, properties: {Rate: 2}}\n"
        "  - {id: level, type: FilterGain, properties: {Gain: 0}}\n"
        "  - {id: not, type: Logic, properties: {Operation: Not}}\n"
        "  - {id: bouts, type: Durations}\n"
        "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
        "  - {id: told, type: RecordingSink, properties: {file: told.csv, columns: {x: [a, b, c]}}}\n"
        "connections: [{from: in, to: both.in1}, {from: in, to: even}, {from: even, to: both.in2},\n"
        "  {from: both, to: out.x}, {from: in, to: level}, {from: level, to: not.a}, {from: not, to: "
        "bouts},\n"
        "  {from: bouts, to: told.x}]\n";
    EXPECT_EQ(run(text), "");
    const std::string table = folder.read("out.csv");
    EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), 1 + 400) << "a row for each of in1";
    EXPECT_EQ(folder.read("told.csv"), "t,a,b,c\n99.75,0,99.75,99.75\n");
    EXPECT_EQ(runLive(text), "");
    EXPECT_EQ(folder.read("out.csv"), table);
    EXPECT_EQ(folder.read("told.csv"), "t,a,b,c\n99.75,0,99.75,99.75\n");
    std::string apart = text;
    apart.replace(apart.find("{id: both,"), 10, "{id: both, layout: b,");
    apart.replace(apart.find("{id: out,"), 9, "{id: out, layout: b,");
    EXPECT_EQ(runLive(apart), "");
    const std::string rowsApart = folder.read("out.csv");
    EXPECT_EQ(std::count(rowsApart.begin(), rowsApart.end(), '\n'), 1 + 400) << "across layouts";
}

TEST_F(OwnTimesTest, TwoLongFramesAreOneStepOfUnframe) {
    std::string lines = "x\n";
    for (int i = 0; i < 1200000; ++i)
        lines += "1\n";
    folder.write("long.csv", lines);
    EXPECT_EQ(
        run("format: 1\nblocks:\n"
            "  - {id: in, type: RecordingSource, properties: {file: long.csv, rate: 100, frame: 600000, "
            "pins: {x: [x]}}}\n"
            "  - {id: rows, type: Unframe}\n  - {id: gain, type: FilterGain}\n"
            "connections: [{from: in, to: rows}, {from: rows, to: gain}]\n"),
        "");
    ASSERT_EQ(outcome.links.size(), 2U);
    EXPECT_EQ(outcome.links[1].taken, 1200000U);
    EXPECT_EQ(outcome.links[1].lost, 0U);
}

TEST_F(OwnTimesTest, ARateThatABlockMakesIsFollowed) {
    EXPECT_EQ(
        run("format: 1\nblocks:\n"
            "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: [x]}}}\n"
            "  - {id: even, type: Resample, properties: {Rate: 20}}\n"
            "  - {id: mean, type: MovingStatistics, properties: {Samples: 1 s}}\n"
            "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
            "connections: [{from: in, to: even}, {from: even, to: mean}, {from: mean.out, to: out.x}]\n"),
        "");
    ASSERT_EQ(outcome.conversions.size(), 1U);
    EXPECT_EQ(outcome.conversions[0].number, 20.0);
    const std::string table = folder.read("out.csv");
    EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), 1 + 399 * 5 + 1);
    EXPECT_NE(table.find("\n0.15,"), std::string::npos);
}

} // namespace
