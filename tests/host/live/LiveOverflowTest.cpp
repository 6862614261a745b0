// SPDX-License-Identifier: MIT
// What becomes of samples for which a link between layouts has no room: waited for, or lost and told.
#include "tests/host/kit/LiveFixture.h"

#include "host/graph/BurstWarnings.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <string>
#include <thread>

namespace {

using namespace Quillmere::Host;
using Support::Fifo;
using Support::Hold;
using Support::sinkLine;
using Support::sourceLine;
using Support::waitUntil;

constexpr int kRows = 2000;
/// Long enough for a layout that doesn't wait to go on; that it hasn't is only looked for, never needed for a
/// pass.
constexpr std::chrono::milliseconds kMoment{50};

std::string block(const std::string& id, const std::string& type, const std::string& layout) {
    return "  - {id: " + id + ", type: " + type + ", layout: " + layout + "}\n";
}
std::string graph(const std::string& blocks, const std::string& connections) {
    return "format: 1\nlayouts: [{id: one}, {id: two}, {id: three}]\nblocks:\n" + blocks + "connections:\n" +
           connections;
}
const std::string kLong = sourceLine("in", "long.csv", "p: [x, y], x: x", "one");

/// A layout that another one feeds over a control input, and that looks at it only when its own rows come
/// through a pipe.
std::string heldBack(const std::string& overflow) {
    return graph(kLong + sourceLine("own", "pipe", "x: x", "two") + block("g", "FilterGain", "one") +
                     block("smooth", "FilterButterworth", "two") + sinkLine("out", "out.csv", "two"),
                 "  - {from: in.x, to: g}\n  - {from: g, to: smooth.reset" + overflow +
                     "}\n  - {from: own, to: smooth.in}\n  - {from: smooth.out, to: out.x}\n");
}

class LiveOverflowTest : public Support::LiveFixture {
protected:
    LiveOverflowTest() {
        std::string text = "t,x,y\n";
        for (int i = 0; i < kRows; ++i)
            text += std::to_string(i) + "," + std::to_string(std::sin(0.1 * i)) + "," +
                    std::to_string(i % 11) + "\n";
        folder.write("long.csv", text);
    }

    /// Samples that a link has been sent once nothing moves any more; at least `least` are waited for.
    std::uint64_t receivedAtRest(const std::string& to, std::uint64_t least) {
        EXPECT_TRUE(waitUntil([&] { return linkStatistics(to).received >= least; })) << to;
        std::this_thread::sleep_for(kMoment);
        return linkStatistics(to).received;
    }
    std::string warningsOf(const std::string& text) {
        Complaints complaints;
        const GraphDescription read = GraphDescription::fromFile(folder.write("g.yaml", text), complaints);
        Graph checked(read, catalogue, complaints);
        checked.openSources(complaints);
        complaints.raise();
        warnOfBursts(checked, complaints);
        std::string lines;
        for (const Warning& warning : complaints.getSortedWarnings())
            lines += withoutFolder(warning.getText()) + "\n";
        return lines;
    }
};

TEST_F(LiveOverflowTest, RecordingsAsFastAsTheyCanBeReadLoseNothingAndGiveTheOfflineResults) {
    const std::string text =
        graph(kLong + block("g", "FilterGain", "one") + block("smooth", "FilterButterworth", "two") +
                  block("inner", "FilterGain", "two") + block("band", "FilterBessel", "three") +
                  sinkLine("a", "a.csv", "three") + sinkLine("b", "b.csv", "two"),
              "  - {from: in.p, to: g}\n  - {from: g, to: smooth.in}\n  - {from: smooth.out, to: inner}\n"
              "  - {from: inner, to: band.in, buffer: 7}\n  - {from: band.out, to: a.p}\n"
              "  - {from: smooth.out, to: b.p}\n");
    ASSERT_EQ(run(text), "");
    const std::string wantedA = folder.read("a.csv");
    const std::string wantedB = folder.read("b.csv");
    for (int repeat = 0; repeat < 5; ++repeat) {
        ASSERT_EQ(runLive(text), "");
        for (const LiveStatistics::Link& link : liveRun->getStatistics().links)
            EXPECT_EQ(link.lost, 0u) << link.to;
        EXPECT_TRUE(folder.read("a.csv") == wantedA);
        EXPECT_TRUE(folder.read("b.csv") == wantedB);
        EXPECT_TRUE(liveRun->getOutcome().warnings.empty());
    }
}

TEST_F(LiveOverflowTest, WhoWantsSpeedLosesAndIsTold) {
    const std::string text =
        graph(kLong + block("far", "FilterGain", "two") + sinkLine("out", "out.csv", "two"),
              "  - {from: in.x, to: far, overflow: drop}\n  - {from: far, to: out.x}\n");
    prepare(text);
    {
        const Hold hold(*liveRun, "far.Gain", "2");
        liveRun->start();
        EXPECT_TRUE(waitUntil([&] { return liveRun->getProgress().rounds == kRows; })) << "nobody waits";
    }
    ASSERT_EQ(end(), "");
    EXPECT_GE(linkStatistics("far.input").lost, static_cast<std::uint64_t>(kRows - 2));
    const std::vector<Warning>& warnings = liveRun->getOutcome().warnings;
    ASSERT_FALSE(warnings.empty());
    EXPECT_NE(warnings.front().text.find("lost"), std::string::npos);
}

TEST_F(LiveOverflowTest, ASenderBeginsNoRoundWithoutRoom) {
    Fifo pipe(folder.path("pipe"));
    pipe.write("t,x\n");
    prepare(graph(sourceLine("in", "pipe", "x: x", "one") + block("far", "FilterGain", "two") +
                      sinkLine("out", "out.csv", "two"),
                  "  - {from: in, to: far, buffer: 3, overflow: wait}\n  - {from: far, to: out.x}\n"));
    {
        const Hold hold(*liveRun, "far.Gain", "2");
        liveRun->start();
        for (int i = 0; i < 10; ++i)
            pipe.write(std::to_string(i) + ",1\n");
        EXPECT_TRUE(waitUntil([&] { return liveRun->getProgress().rounds >= 3; }));
        std::this_thread::sleep_for(kMoment);
        EXPECT_EQ(liveRun->getProgress().rounds, 3u) << "as many as the buffer holds";
    }
    pipe.close();
    ASSERT_EQ(end(), "");
    EXPECT_EQ(liveRun->getProgress().rounds, 10u);
    EXPECT_EQ(linkStatistics("far.input").lost, 0u);
    EXPECT_EQ(linkStatistics("far.input").taken, 10u);
}

TEST_F(LiveOverflowTest, AControlInputIsWaitedForUntilItsBlockIsStepped) {
    Fifo pipe(folder.path("pipe"));
    pipe.write("t,x\n");
    start(heldBack(", overflow: wait"));
    const std::uint64_t before = receivedAtRest("smooth.reset", 1);
    EXPECT_LE(before, 2u) << "one may have been there already when its layout began";
    pipe.write("0,1\n");
    EXPECT_EQ(receivedAtRest("smooth.reset", before + 1), before + 1) << "the step has taken one";
    pipe.write("1,1\n");
    EXPECT_EQ(receivedAtRest("smooth.reset", before + 2), before + 2);
    pipe.close();
    ASSERT_EQ(end(), "");
    EXPECT_EQ(liveRun->getProgress().rows, kRows + 2u)
        << "nobody steps the block any more, so nobody is waited for";
    const LiveStatistics::Link link = linkStatistics("smooth.reset");
    EXPECT_EQ(link.received, static_cast<std::uint64_t>(kRows));
    EXPECT_EQ(link.received, link.taken + link.waiting + link.lost);
    EXPECT_GT(link.lost, 0u) << "and what is lost is counted";
}

TEST_F(LiveOverflowTest, ALayoutThatWaitsEndsAtOnceWhenTheRunDoes) {
    Fifo pipe(folder.path("pipe"));
    for (const bool isInterrupted : {true, false}) {
        pipe.write("t,x\n");
        start(heldBack(", overflow: wait"));
        EXPECT_LE(receivedAtRest("smooth.reset", 1), 2u);
        if (isInterrupted)
            liveRun->interrupt("enough");
        else
            liveRun->stop();
        EXPECT_EQ(end(), isInterrupted ? "enough" : "");
    }
}

TEST_F(LiveOverflowTest, ALayoutThatWaitsGoesOnWhenItsLinkGoesOrStopsWaiting) {
    const struct {
        const char* name;
        void (*change)(LiveRun&);
    } rows[] = {{"detached", [](LiveRun& run) { run.getStructure().detach("smooth.reset"); }},
                {"moved together", [](LiveRun& run) { run.getStructure().move("smooth", "one"); }},
                {"made a loop", [](LiveRun& run) {
                     run.getStructure().attach({.from = "smooth.out", .to = "back.input"});
                 }}};
    for (const auto& row : rows) {
        Fifo pipe(folder.path("pipe"));
        pipe.write("t,x\n");
        prepare(heldBack(", overflow: wait"));
        liveRun->getStructure().add("back", "FilterGain", "one");
        liveRun->start();
        EXPECT_LE(receivedAtRest("smooth.reset", 1), 2u);
        row.change(*liveRun);
        EXPECT_TRUE(waitUntil([&] { return liveRun->getProgress().rows == kRows; })) << row.name;
        pipe.close();
        EXPECT_EQ(end(), "") << row.name;
    }
}

TEST_F(LiveOverflowTest, OfThoseThatWaitInARowTheLastGoesOnFirst) {
    // The third layout has taken its own three rows, and doesn't look at the other input any more.
    ASSERT_EQ(
        runLive(graph(kLong + sourceLine("own", "in.csv", "x: x", "three") + block("g", "FilterGain", "two") +
                          block("smooth", "FilterButterworth", "three") + sinkLine("out", "out.csv", "three"),
                      "  - {from: in.x, to: g}\n  - {from: g, to: smooth.reset}\n"
                      "  - {from: own, to: smooth.in}\n  - {from: smooth.out, to: out.x}\n")),
        "");
    EXPECT_EQ(linkStatistics("g.input").lost, 0u);
    EXPECT_EQ(linkStatistics("g.input").taken, static_cast<std::uint64_t>(kRows));
    EXPECT_GE(linkStatistics("smooth.reset").lost, kRows - 10u);
}

TEST_F(LiveOverflowTest, ARoundThatSendsSeveralNeedsRoomForAll) {
    const auto text = [](const std::string& buffer) {
        return graph(kLong + block("thrice", "OddThrice", "one") + block("far", "FilterGain", "two") +
                         sinkLine("out", "out.csv", "two"),
                     "  - {from: in.x, to: thrice}\n  - {from: thrice, to: far, buffer: " + buffer +
                         "}\n  - {from: far, to: out.x}\n");
    };
    for (const char* const buffer : {"3", "4", "8"}) {
        ASSERT_EQ(runLive(text(buffer)), "");
        EXPECT_EQ(linkStatistics("far.input").lost, 0u) << buffer;
        EXPECT_EQ(linkStatistics("far.input").taken, 3u * kRows) << buffer;
    }
    ASSERT_EQ(runLive(text("2")), "") << "and one that can't have it goes on with what there is";
    EXPECT_EQ(linkStatistics("far.input").received, 3u * kRows);
    EXPECT_LE(linkStatistics("far.input").lost, 1u * kRows);
}

TEST_F(LiveOverflowTest, LayoutsThatFeedEachOtherNeverWait) {
    const auto text = [](const std::string& overflow) {
        return graph(kLong + block("far", "FilterGain", "two") + block("sum", "OddSum", "one") +
                         sinkLine("out", "out.csv", "two"),
                     "  - {from: in.x, to: sum.in}\n  - {from: sum, to: far" + overflow +
                         "}\n  - {from: far, to: sum.back}\n  - {from: far, to: out.x}\n");
    };
    EXPECT_EQ(runLive(text("")), "");
    EXPECT_EQ(complaintsOf(text(", overflow: wait")),
              "g.yaml:10:36: found 'overflow: wait' from the layout 'one' to 'two', which feeds it in turn; "
              "expected 'overflow: drop', or layouts that don't feed each other in a loop\n");
    EXPECT_EQ(complaintsOf(text(", overflow: drop")), "");
    EXPECT_EQ(complaintsOf(text(", overflow: wiat")),
              "g.yaml:10:36: found 'wiat'; expected drop or wait; did you mean wait?\n");
    prepare(text(""));
    liveRun->getStructure().detach("far.input");
    liveRun->getStructure().detach("sum.back");
    liveRun->getStructure().attach({.from = "sum.out", .to = "far.input", .overflow = Overflow::Wait});
    try {
        liveRun->getStructure().attach({.from = "far.output", .to = "sum.back", .overflow = Overflow::Wait});
        ADD_FAILURE() << "no refusal";
    } catch (const ControlException& exception) {
        EXPECT_STREQ(exception.what(),
                     "found 'overflow: wait' from 'far.output' to 'sum.back', whose layouts feed "
                     "each other in a loop; expected 'overflow: drop'");
    }
}

TEST_F(LiveOverflowTest, LinksThatLoseInBurstsAreWarnedOf) {
    Fifo pipe(folder.path("pipe"));
    const auto text = [&](const std::string& file, const std::string& first, const std::string& second) {
        if (file == "pipe") pipe.write("t,x\n"); // each opening reads it
        return graph(sourceLine("in", file, "x: x", "one") + block("near", "FilterGain", "one") +
                         block("far", "FilterButterworth", "two") + sinkLine("out", "out.csv", "two"),
                     "  - {from: in, to: near}\n  - {from: near, to: far.in" + first +
                         "}\n  - {from: near, to: far.reset" + second +
                         "}\n  - {from: far.out, to: out.x}\n");
    };
    EXPECT_EQ(warningsOf(text("pipe", "", "")), "g.yaml:10:5: warning: the layout 'two' keeps one sample of "
                                                "'near', and the rows of 'in' come through a "
                                                "pipe, several at a time: what it is late for is lost. Give "
                                                "the connection 'buffer: N', with N as many "
                                                "as it may be late, or 'overflow: wait'\n");
    for (const char* const said : {", buffer: 1", ", buffer: 20", ", overflow: wait", ", overflow: drop"})
        EXPECT_EQ(warningsOf(text("pipe", said, "")), "") << said;
    EXPECT_EQ(warningsOf(text("in.csv", "", "")), "");
    EXPECT_EQ(
        warningsOf(graph(kLong + sinkLine("out", "out.csv", "one"),
                         "  - {from: in.x, to: out.x, overflow: wait}\n")),
        "g.yaml:7:39: warning: 'overflow' says nothing within the layout 'one', since no thread waits for "
        "another there\n");
}

} // namespace
