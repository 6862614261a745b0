// SPDX-License-Identifier: MIT
#include "host/run/OfflineRunner.h"

#include "tests/host/GraphFixture.h"

#include <gtest/gtest.h>

#include <cmath>
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
    folder.write("out.csv", "what a user had");
    EXPECT_EQ(
        run(graph(source("in", "in.csv", "x: x") + "  - {id: hot, type: OddFailing, properties: {good: 2}}\n",
                  "  - {from: in, to: hot}\n  - {from: hot, to: out.x}\n")),
        "block 'hot' (OddFailing) at 1 s: Runtime exception: overheated");
    EXPECT_EQ(folder.read("out.csv"), "what a user had");
    EXPECT_EQ(folder.read("out.csv.partial"), "t,x[0]\n0,1\n0.5,2\n");
}

TEST_F(OfflineRunnerTest, AStopEndsTheRunMidway) {
    stop = true;
    EXPECT_EQ(run(graph(source("in", "in.csv", "x: x"), "  - {from: in, to: out.x}\n")),
              "at 0 s: interrupted");
    EXPECT_EQ(folder.read("out.csv.partial"), "t\n");
    EXPECT_FALSE(folder.has("out.csv"));
}

TEST_F(OfflineRunnerTest, ProgressIsToldAtTheEnd) {
    const std::string text = graph(source("in", "in.csv", "x: x"), "  - {from: in, to: out.x}\n");
    Complaints complaints;
    const GraphDescription description = GraphDescription::read(folder.write("g.yaml", text), {}, complaints);
    Graph built(description, catalogue, complaints);
    built.openSources(complaints);
    complaints.raise();
    built.openSinks();
    OfflineRunner runner(built);
    std::vector<RunProgress> told;
    runner.setProgressHandler([&](const RunProgress& progress) { told.push_back(progress); });
    runner.run(stop);
    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(told[0].rows, 3u);
    EXPECT_EQ(told[0].bytes, told[0].bytesRead);
    EXPECT_EQ(told[0].streamTime, 1.0);
    EXPECT_EQ(built.getSinks().at(0)->getRows(), 3u);
}

} // namespace
