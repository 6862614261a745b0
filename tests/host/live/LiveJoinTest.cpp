// SPDX-License-Identifier: MIT
// Recordings that are read in several layouts, as fast as they can be, and joined by time.
#include "tests/host/kit/LiveFixture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Quillmere::Host;
using Support::sinkLine;
using Support::sourceLine;

constexpr int kFoot = 2000;
constexpr int kHand = 1200;

class LiveJoinTest : public Support::LiveFixture {
protected:
    /// The foot at 100 rows a second, the hand at 50, which begins 2 s later and goes on for longer. At some
    /// times of both lie two rows.
    LiveJoinTest() {
        std::string foot = "t,x\n";
        for (int i = 0; i < kFoot; ++i)
            foot += std::to_string(i - (i % 9 == 8 ? 1 : 0)) + "e-2," + std::to_string(i % 101) + "\n";
        folder.write("foot.csv", foot);
        std::string hand = "t,y\n";
        for (int i = 0; i < kHand; ++i)
            hand +=
                std::to_string(2 * i - (i % 50 == 7 ? 2 : 0) + 200) + "e-2," + std::to_string(i % 97) + "\n";
        folder.write("hand.csv", hand);
    }
    /// Where the two are read and joined, and what their links say.
    static std::string graph(const std::string& foot, const std::string& hand, const std::string& join,
                             const std::string& properties = "", const std::string& link = "",
                             const std::string& through = "") {
        const std::string gain = through.empty() ? "hand" : "far";
        return "format: 1\nlayouts: [{id: one}, {id: two}, {id: three}]\nblocks:\n" +
               sourceLine("foot", "foot.csv", "x: x", foot) + sourceLine("hand", "hand.csv", "y: y", hand) +
               (through.empty() ? "" : "  - {id: far, type: FilterGain, layout: " + through + "}\n") +
               "  - {id: both, type: Join, layout: " + join + ", properties: {" + properties + "}}\n" +
               sinkLine("out", "out.csv", join) + "connections:\n  - {from: foot, to: both.in1" + link +
               "}\n  - {from: " + gain + ", to: both.in2" + link + "}\n  - {from: both, to: out.p}\n" +
               (through.empty() ? "" : "  - {from: hand, to: far" + link + "}\n");
    }
    void expectOffline(const std::string& text, const std::string& name) {
        ASSERT_EQ(run(text), "") << name;
        const std::string offline = folder.read("out.csv");
        ASSERT_EQ(runLive(text), "") << name;
        EXPECT_TRUE(folder.read("out.csv") == offline) << name;
        EXPECT_EQ(losses(), "") << name;
    }
    std::string losses() {
        std::string text;
        for (const Warning& warning : liveRun->getOutcome().warnings)
            if (warning.text.find("repeat") == std::string::npos) text += warning.text + "\n";
        return text;
    }
};

TEST_F(LiveJoinTest, TheRowsAreThoseOfTheOfflineRunWhereverItsInputsAreRead) {
    const struct {
        const char* name;
        std::string foot, hand, join, through;
    } rows[] = {{"the others come from elsewhere", "one", "two", "one", ""},
                {"the first comes from elsewhere", "two", "one", "one", ""},
                {"all come from elsewhere", "one", "two", "three", ""},
                {"all come from one other layout", "one", "one", "three", ""},
                {"the others take another way", "one", "two", "one", "three"},
                {"the first is read where the other's way ends", "three", "two", "one", "three"}};
    for (const auto& row : rows)
        for (const char* const mode : {"Waiting: 400", "Waiting: 400, Mode: Exact, Tolerance: 0.001"})
            expectOffline(graph(row.foot, row.hand, row.join, mode, "", row.through),
                          std::string(row.name) + ", " + mode);
    for (const char* const link : {", overflow: wait", ", buffer: 100", ", buffer: 100, overflow: wait"})
        expectOffline(graph("one", "two", "one", "Waiting: 400", link), link);
}

TEST_F(LiveJoinTest, RowsThatDidNotWaitLongEnoughAreCounted) {
    ASSERT_EQ(runLive(graph("one", "two", "one", "Mode: Exact, Waiting: 0")), "");
    const std::string told = losses();
    EXPECT_NE(told.find("'both' (Join): "), std::string::npos) << told;
    EXPECT_NE(
        told.find(" of 2000 samples of 'in1' were given up, since 'in2' was farther behind than 'Waiting' "
                  "lets them wait"),
        std::string::npos)
        << told;
}

TEST_F(LiveJoinTest, WhatIsAsTheRecordingsAreIsNoLossAndStandsInTheSummary) {
    ASSERT_EQ(runLive(graph("one", "two", "one")), "");
    EXPECT_EQ(losses(), "");
    ASSERT_EQ(liveRun->getOutcome().notes.size(), 1u);
    EXPECT_EQ(liveRun->getOutcome().notes[0].block, "both");
    EXPECT_EQ(liveRun->getOutcome().notes[0].text,
              "200 of 2000 samples of 'in1' came before the first sample of 'in2' and made no row");
}

// A control input is looked at in the rounds of its block, which wait for those who send to it.
TEST_F(LiveJoinTest, WhoIsWaitedForByTimeAndWaitsForRoomGoesOn) {
    ASSERT_EQ(runLive("format: 1\nlayouts: [{id: one}, {id: two}]\nblocks:\n" +
                      sourceLine("foot", "foot.csv", "x: x", "one") +
                      sourceLine("hand", "hand.csv", "y: y", "two") +
                      "  - {id: smooth, type: FilterButterworth, layout: two}\n" +
                      sinkLine("out", "out.csv", "two") +
                      "connections:\n  - {from: foot, to: smooth.reset}\n  - {from: hand, to: smooth.in}\n"
                      "  - {from: smooth.out, to: out.p}\n"),
              "");
    EXPECT_EQ(liveRun->getProgress().rows, static_cast<std::uint64_t>(kFoot + kHand));
}

} // namespace
