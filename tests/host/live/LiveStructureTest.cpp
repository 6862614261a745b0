// SPDX-License-Identifier: MIT
// Blocks and links that are moved, made and taken down while a graph runs.
#include "host/live/LiveGraph.h"

#include "tests/host/kit/LiveFixture.h"
#include "tests/host/kit/RefusalText.h"
#include "tests/support/Allocations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Support::Fifo;
using Support::sinkLine;
using Support::sourceLine;
using Support::waitUntil;

const std::string kLayouts = "format: 1\nlayouts: [{id: one}, {id: two}]\nblocks:\n";

/// A pipe, a gain and a result, all in the first of two layouts.
class LiveStructureTest : public Support::LiveFixture {
protected:
    LiveStructureTest() : pipe(folder.path("pipe")) { pipe.write("t,x\n"); }

    void startPiped() {
        start(kLayouts + sourceLine("in", "pipe", "x: x") + "  - {id: g, type: FilterGain}\n" +
              sinkLine("out", "out.csv") + "connections: [{from: in, to: g}, {from: g, to: out.x}]\n");
    }
    /// Sends a row, and waits until it has come to `input`.
    void send(const std::string& row, const std::string& input = "out.x") {
        const std::uint64_t before = linkStatistics(input).taken;
        pipe.write(row);
        EXPECT_TRUE(waitUntil([&] { return linkStatistics(input).taken > before; })) << row;
    }
    std::string layoutOf(const std::string& block) { return blockStatistics(block).layout; }

    static std::string refusalOf(const std::function<void()>& action) {
        try {
            action();
        } catch (const ControlException& exception) {
            return Support::refusalText(exception);
        }
        return "no refusal";
    }

    Fifo pipe;
};

TEST_F(LiveStructureTest, BlocksMoveToAnotherLayoutAndBackWhileSamplesCome) {
    startPiped();
    int second = 0;
    std::string wanted = "t,x[0]\n";
    const auto sendNext = [&] {
        const std::string row = std::to_string(second) + "," + std::to_string(second) + "\n";
        ++second;
        wanted += row;
        send(row);
    };
    sendNext();
    for (const char* const block : {"g", "in", "out", "g", "out", "in"}) {
        const std::string to = layoutOf(block) == "one" ? "two" : "one";
        liveRun->getStructure().move(block, to);
        EXPECT_EQ(layoutOf(block), to);
        sendNext();
        sendNext();
    }
    liveRun->stop();
    EXPECT_EQ(end(), "");
    EXPECT_EQ(folder.read("out.csv"), wanted);
    EXPECT_EQ(blockStatistics("g").lost, 0u);
    EXPECT_EQ(blockStatistics("g").samplesIn, 13u) << "counts go on through all moves";
}

TEST_F(LiveStructureTest, WhatIsInFlightOnAMovedBlocksLinksIsLostAndCounted) {
    start(kLayouts + sourceLine("in", "pipe", "x: x") + "  - {id: three, type: OddThrice}\n" +
          sinkLine("out", "out.csv") +
          "connections: [{from: in, to: three}, {from: three, to: out.x, buffer: 99}]\n");
    send("0,1\n");
    send("1,2\n");
    ASSERT_EQ(linkStatistics("out.x").waiting, 4u) << "the sink takes one a round";
    liveRun->getStructure().move("out", "two");
    const LiveStatistics::Link link = linkStatistics("out.x");
    EXPECT_EQ(link.received, 6u);
    EXPECT_EQ(link.taken, 2u);
    EXPECT_EQ(link.waiting, 0u);
    EXPECT_EQ(link.lost, 4u);
    send("2,3\n");
    EXPECT_TRUE(waitUntil([&] { return linkStatistics("out.x").taken == 5; })) << "now it takes what comes";
    liveRun->stop();
    EXPECT_EQ(end(), "");
    ASSERT_EQ(liveRun->getOutcome().warnings.size(), 1u) << "the run says so at its end";
    EXPECT_EQ(withoutFolder(liveRun->getOutcome().warnings[0].getText()),
              "g.yaml:7:38: warning: 4 of the 9 samples that 'three.out' sent to 'out.x' were lost, since it "
              "took them too late");
}

TEST_F(LiveStructureTest, RefusedMoves) {
    startPiped();
    EXPECT_EQ(refusalOf([&] { liveRun->getStructure().move("h", "two"); }),
              "found the block 'h'; expected one of in, g and out");
    EXPECT_EQ(refusalOf([&] { liveRun->getStructure().move("g", "tow"); }),
              "found the layout 'tow'; expected one of one and two; did you mean two?");
    EXPECT_EQ(refusalOf([&] { liveRun->getStructure().move("g", "one"); }), "no refusal") << "where it is";
    EXPECT_EQ(layoutOf("g"), "one");
}

TEST_F(LiveStructureTest, TheClockOfALayoutStays) {
    start(kLayouts + "  - {id: gen, type: OddGenerator}\n  - {id: other, type: OddGenerator}\n" +
          sinkLine("out", "out.csv") + "connections: [{from: gen, to: out.x}, {from: other, to: out.y}]\n");
    EXPECT_EQ(refusalOf([&] { liveRun->getStructure().move("gen", "two"); }),
              "found the block 'gen', which is the clock of 'one'; expected a block that another one drives");
    EXPECT_EQ(refusalOf([&] { liveRun->getStructure().move("other", "two"); }), "no refusal");
    EXPECT_TRUE(waitUntil([&] { return linkStatistics("out.y").taken > 100; })) << "it is a clock itself now";
    EXPECT_EQ(
        refusalOf([&] { liveRun->getStructure().move("other", "one"); }),
        "found the block 'other', which is the clock of 'two'; expected a block that another one drives");
    liveRun->stop();
    EXPECT_EQ(end(), "");
}

TEST_F(LiveStructureTest, AGeneratorThatIsAddedIsOneMoreThatTheRunWaitsFor) {
    const std::string ramp = "{Mode: triangular, SignalPeriod: 4, SignalAmplitude: 1, SampleRate: 1}";
    start(kLayouts + "  - {id: gen, type: FilterFunctionGenerator, properties: " + ramp + "}\n" +
              sinkLine("out", "out.csv") + "connections: [{from: gen, to: out.x}]\n",
          {.speed = 100.0}, {.rounds = {}, .seconds = 1000.0});
    liveRun->getStructure().add("late", "FilterFunctionGenerator", "two");
    liveRun->getSettings().write("late.SampleRate", "1000"); // its next step is its last
    std::uint64_t steps = 0;
    EXPECT_TRUE(waitUntil([&] {
        const std::uint64_t before = std::exchange(steps, blockStatistics("late").steps);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return steps > 0 && steps == before;
    })) << "it has come to its limit";
    EXPECT_EQ(liveRun->getState(), LiveRun::State::Running) << "the first one has ten seconds to go";
    liveRun->stop();
    EXPECT_EQ(end(), "");
}

TEST_F(LiveStructureTest, LinksAreTakenDownAndMadeWhileSamplesCome) {
    startPiped();
    send("0,1\n");
    liveRun->getStructure().detach("out.x");
    EXPECT_EQ(linkStatistics("out.x").from, "") << "its counts stay";
    EXPECT_EQ(linkStatistics("out.x").received, 1u);
    send("1,2\n", "g.input");
    liveRun->getStructure().attach({.from = "in.x", .to = "out.x"});
    EXPECT_EQ(linkStatistics("out.x").from, "in.x");
    liveRun->getSettings().write("g.Gain", "100");
    send("2,3\n");
    liveRun->getStructure().detach("out.x");
    liveRun->getStructure().attach({.from = "g.output", .to = "out.x", .buffer = 9});
    send("3,4\n");
    liveRun->stop();
    EXPECT_EQ(end(), "");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,1\n2,3\n3,400\n");
}

TEST_F(LiveStructureTest, ALinkTakesItsBufferAndItsOrder) {
    start(kLayouts + sourceLine("in", "pipe", "x: x") + "  - {id: three, type: OddThrice}\n" +
          sinkLine("out", "out.csv") + "connections: [{from: in, to: three}, {from: in, to: out.x}]\n");
    liveRun->getStructure().detach("out.x");
    liveRun->getStructure().attach({.from = "three.out", .to = "out.x", .buffer = 2, .isNewestFirst = true});
    send("0,1\n");
    EXPECT_EQ(linkStatistics("out.x").lost, 1u) << "of three the oldest";
    liveRun->stop();
    EXPECT_EQ(end(), "");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,1.75\n0,1.5\n");
}

TEST_F(LiveStructureTest, RefusedLinks) {
    startPiped();
    const struct {
        LinkRequest request;
        const char* refusal;
    } rows[] = {
        {{.from = "in.x", .to = "out.x"}, "found the input 'out.x', which has a link; expected one without"},
        {{.from = "in.y", .to = "out.x"}, "found the output 'y' of 'in'; expected one of x"},
        {{.from = "g.input", .to = "out.x"}, "found the output 'input' of 'g'; expected one of output"},
        {{.from = "in.x", .to = "g.output"}, "found the input 'output' of 'g'; expected one of input"},
        {{.from = "in", .to = "out.x"}, "found 'in'; expected BLOCK.PIN"},
        {{.from = "h.x", .to = "out.x"}, "found the block 'h'; expected one of in, g and out"},
        {{.from = "out.x", .to = "g.input"},
         "found the output 'x' of 'out'; expected something that is there"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(refusalOf([&] { liveRun->getStructure().attach(row.request); }), row.refusal)
            << row.request.from << " to " << row.request.to;
    EXPECT_EQ(refusalOf([&] { liveRun->getStructure().detach("out.y"); }),
              "found the input 'y' of 'out'; expected one of x");
    liveRun->getStructure().detach("out.x");
    EXPECT_EQ(refusalOf([&] { liveRun->getStructure().detach("out.x"); }),
              "found the input 'out.x', which has no link; expected one that has");
    EXPECT_EQ(
        refusalOf([&] { liveRun->getStructure().attach({.from = "g.output", .to = "out.x", .buffer = 0}); }),
        "found a buffer of 0; expected 1 sample at least");
    liveRun->getStructure().attach({.from = "g.output", .to = "out.x"});
    send("0,1\n");
}

TEST_F(LiveStructureTest, ABlockIsAddedBetweenTwoOthers) {
    startPiped();
    send("0,1\n");
    liveRun->getStructure().add("h", "FilterGain", "two");
    EXPECT_EQ(layoutOf("h"), "two");
    liveRun->getSettings().write("h.Gain", "-1");
    EXPECT_EQ(liveRun->getSettings().list("h.*").size(), 1u);
    liveRun->getStructure().attach({.from = "in.x", .to = "h.input", .buffer = 9});
    liveRun->getStructure().detach("out.x");
    liveRun->getStructure().attach({.from = "h.output", .to = "out.x", .buffer = 9});
    send("1,2\n");
    liveRun->getStructure().move("h", "one");
    send("2,3\n");
    liveRun->stop();
    EXPECT_EQ(end(), "");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,1\n1,-2\n2,-3\n");
    EXPECT_EQ(blockStatistics("h").samplesOut, 2u);
}

TEST_F(LiveStructureTest, RefusedBlocks) {
    startPiped();
    EXPECT_EQ(refusalOf([&] { liveRun->getStructure().add("g", "FilterGain", "one"); }),
              "found the id 'g' a second time; expected an id of its own");
    EXPECT_EQ(refusalOf([&] { liveRun->getStructure().add("h", "FilterGain", "three"); }),
              "found the layout 'three'; expected one of one and two");
    for (const char* const id : {"", "a.b", "a b"})
        EXPECT_EQ(refusalOf([&] { liveRun->getStructure().add(id, "FilterGain", "one"); }),
                  "found the id '" + std::string(id) + "'; expected letters, digits, '_' and '-'");
    EXPECT_TRUE(refusalOf([&] {
                    liveRun->getStructure().add("h", "FilterGian", "one");
                }).starts_with("found the block type 'FilterGian'; expected one of Filter"));
    EXPECT_TRUE(refusalOf([&] {
                    liveRun->getStructure().add("h", "FilterGian", "one");
                }).ends_with("; did you mean FilterGain?"));
    for (const char* const type : {"RecordingSource", "RecordingSink"})
        EXPECT_TRUE(refusalOf([&] {
                        liveRun->getStructure().add("h", type, "one");
                    }).starts_with("found the block type '" + std::string(type) + "'; expected one of"))
            << "it would have to be told what it reads or writes";
    EXPECT_EQ(liveRun->getStatistics().blocks.size(), 3u);
}

TEST_F(LiveStructureTest, AResultWhoseOtherSenderIsGoneWaitsForItNoMore) {
    start(kLayouts + sourceLine("in", "pipe", "x: x") + "  - {id: g, type: FilterGain, layout: two}\n" +
          "  - {id: never, type: FilterGain, layout: two}\n" + sinkLine("out", "out.csv", "two") +
          "connections: [{from: in, to: g}, {from: g, to: out.x}, {from: g, to: never}, {from: never, to: "
          "out.y, buffer: 2}]\n");
    liveRun->getStructure().detach("never.input");
    send("0,1\n");
    EXPECT_EQ(graphOfRun().getSinks().at(0)->getRows(), 0u) << "the row waits for the second pin";
    liveRun->getStructure().detach("out.y");
    EXPECT_TRUE(waitUntil([&] { return blockStatistics("out").steps >= 2; }));
    liveRun->stop();
    EXPECT_EQ(end(), "");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,1\n");
}

/// A live run whose changes find no memory: each of their allocations is the first that fails.
class ShortOfMemory : public Support::LiveFixture {
protected:
    void SetUp() override {
        if (!Support::MemoryShortage::getIsPossible())
            GTEST_SKIP() << "a sanitizer's allocator refuses nothing";
        startAnew();
    }
    void startAnew() {
        start(kLayouts + "  - {id: noise, type: FilterGaussianWhiteNoiseGenerator}\n" +
                  "  - {id: g, type: FilterGain}\n  - {id: h, type: FilterGain, layout: two}\n" +
                  sinkLine("out", "out.csv") +
                  "connections: [{from: noise, to: g, buffer: 3}, {from: g, to: out.x}, {from: g, to: h}]\n",
              {.speed = 1.0});
        liveRun->getStructure().detach("h.input");
    }
    /// Either nothing has changed and the run goes on, or something has and it ends. Tells how often it was
    /// which.
    std::pair<int, int> failEach(const std::function<void()>& change,
                                 const std::function<bool()>& hasChanged) {
        std::pair<int, int> found{0, 0};
        const std::uint64_t failures = Support::withEveryShortage([&](std::uint64_t granted) {
            if (Support::succeedsWith(granted, change)) return true;
            if (!hasChanged()) {
                EXPECT_FALSE(liveRun->waitFor(std::chrono::milliseconds(1))) << granted;
                return ++found.first, false;
            }
            if (!liveRun->waitFor(std::chrono::seconds(20))) {
                ADD_FAILURE() << "it goes on, although not all layouts know, after " << granted;
                return true;
            }
            EXPECT_EQ(end(), "out of memory");
            startAnew();
            return ++found.second, false;
        });
        EXPECT_GT(failures, 5u);
        return found;
    }
    const Quillmere::Core::AbstractInputPin& inputOf(std::size_t node) {
        return *graphOfRun().getNodes()[node].block->getInputPins().at(0);
    }
};

TEST_F(ShortOfMemory, AMoveIsMadeForAllLayoutsOrEndsTheRun) {
    const auto [unchanged, ended] = failEach([&] { liveRun->getStructure().move("g", "two"); },
                                             [&] { return blockStatistics("g").layout == "two"; });
    EXPECT_GT(unchanged, 0);
    EXPECT_GT(ended, 5);
}

TEST_F(ShortOfMemory, ALinkIsMadeForAllLayoutsOrEndsTheRun) {
    const auto isLinked = [&] { return inputOf(2).getConnectedOutput() != nullptr; };
    const auto [unchanged, ended] = failEach(
        [&] {
            const LinkRequest request{.from = "g.output",
                                      .to = "h.input",
                                      .buffer = 7,
                                      .isNewestFirst = true,
                                      .overflow = Overflow::Drop};
            liveRun->getStructure().attach(request);
        },
        [&] {
            EXPECT_TRUE(!isLinked() || (inputOf(2).getBufferCapacity() == 7 && inputOf(2).getIsLifo()));
            return isLinked();
        });
    EXPECT_GT(unchanged, 3);
    EXPECT_GT(ended, 5);
}

TEST_F(ShortOfMemory, ABlockIsAddedForAllLayoutsOrEndsTheRun) {
    const auto [unchanged, ended] =
        failEach([&] { liveRun->getStructure().add("late", "FilterGain", "two"); },
                 [&] { return liveRun->getStatistics().blocks.size() > 4; });
    EXPECT_GT(unchanged, 5);
    EXPECT_GT(ended, 5);
}

TEST_F(LiveStructureTest, NothingIsTouchedTwiceWhileEverythingMoves) {
    std::string text = "t,x\n";
    for (int i = 0; i < 3000; ++i)
        text += std::to_string(i) + "," + std::to_string(i) + "\n";
    folder.write("long.csv", text);
    prepare(
        kLayouts + sourceLine("in", "long.csv", "x: x") + sourceLine("second", "long.csv", "x: x", "two") +
        "  - {id: g, type: FilterGain}\n  - {id: h, type: FilterGain, layout: two}\n" +
        sinkLine("out", "out.csv") + sinkLine("other", "other.csv", "two") +
        "connections: [{from: in, to: g}, {from: g, to: out.x}, {from: g, to: h, buffer: 9}, {from: h, to: "
        "other.x}, {from: second, to: other.y}, {from: second, to: out.y}]\n");
    liveRun->start();
    const auto moveOn = [this](unsigned seed) {
        const char* const blocks[] = {"in", "out", "g", "second", "other", "h"};
        while (liveRun->getState() < LiveRun::State::Ended) {
            seed = seed * 1664525u + 1013904223u;
            liveRun->getStructure().move(blocks[(seed >> 16) % 6], (seed >> 24) % 2 == 0 ? "one" : "two");
        }
    };
    std::thread first(moveOn, 1u);
    std::thread second(moveOn, 2u);
    EXPECT_EQ(end(), "");
    first.join();
    second.join();
    EXPECT_EQ(liveRun->getProgress().rows, 6000u);
    for (const LiveStatistics::Link& link : liveRun->getStatistics().links)
        EXPECT_EQ(link.received, link.taken + link.lost + link.waiting) << link.to;
    EXPECT_EQ(blockStatistics("in").samplesOut, 3000u) << "no source is asked twice, and none forgotten";
    EXPECT_EQ(blockStatistics("second").samplesOut, 3000u);
}

TEST_F(LiveStructureTest, LinksMayChangeWhileTheRunEnds) {
    for (int i = 0; i < 20; ++i) {
        start(kLayouts + sourceLine("in", "in.csv", "x: x, y: y") +
              "  - {id: g, type: FilterGain, layout: two}\n" + sinkLine("out", "out.csv") +
              "connections: [{from: in.x, to: out.x}, {from: in.y, to: g, buffer: 9}, {from: g, to: out.y, "
              "buffer: 9}]\n");
        std::atomic<bool> isEnding{false};
        // Changes that follow each other at once all but starve the run, which makes it long; those with
        // pauses let it come to its end early, and meet it there at another moment each time.
        const std::chrono::microseconds pause{i % 5 == 0 ? 0 : 40 * i};
        std::thread changer([&] {
            while (!isEnding) {
                liveRun->getStructure().detach("out.y");
                liveRun->getStructure().attach({.from = "g.output", .to = "out.y", .buffer = 9});
                if (pause.count() > 0) std::this_thread::sleep_for(pause);
            }
        });
        EXPECT_EQ(end(), "");
        EXPECT_TRUE(folder.has("out.csv"));
        isEnding = true;
        changer.join();
    }
}

} // namespace
