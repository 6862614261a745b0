// SPDX-License-Identifier: MIT
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

    std::string rows;
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

// FilterHysteresis sends in each of its steps, so that it counts them.
TEST_F(OwnTimesTest, WhatIsNotBehindThemStepsOnceARound) {
    EXPECT_EQ(
        run("format: 1\nblocks:\n"
            "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, frame: 8, pins: {x: "
            "[x]}}}\n"
            "  - {id: single, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: [x]}}}\n"
            "  - {id: rows, type: Unframe, properties: {Rate: 4}}\n"
            "  - {id: level, type: FilterHysteresis}\n"
            "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
            "  - {id: steps, type: RecordingSink, properties: {file: steps.csv}}\n"
            "connections: [{from: in, to: rows}, {from: rows, to: out.x}, {from: single, to: level.input},\n"
            "  {from: level, to: steps.x}]\n"),
        "");
    const std::string steps = folder.read("steps.csv");
    EXPECT_EQ(std::count(steps.begin(), steps.end(), '\n'), 1 + 50 + 400) << "rows of frames and of singles";
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
