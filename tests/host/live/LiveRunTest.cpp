// SPDX-License-Identifier: MIT
// Time in a live run: when samples are due, when layouts sleep, and what wakes them.
#include "host/live/LiveRun.h"

#include "tests/host/kit/LiveFixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Support::Fifo;
using Support::Hold;
using Support::sinkLine;
using Support::sourceLine;
using Support::waitUntil;
using Clock = std::chrono::steady_clock;

class LiveRunTest : public Support::LiveFixture {
protected:
    /// The time of each row behind the start of the run, seconds, taken when the row had come out.
    std::vector<double> arrivals(const std::string& text, const LiveOptions& options, std::size_t rows,
                                 const RunLimit& limit = {}) {
        const Fifo result(folder.path("result"));
        prepare(text, options, limit);
        std::vector<double> times;
        const Clock::time_point begin = Clock::now();
        liveRun->start();
        EXPECT_TRUE(result.readLine().starts_with("t,"));
        while (times.size() < rows && result.readLine().ends_with('\n'))
            times.push_back(std::chrono::duration<double>(Clock::now() - begin).count());
        EXPECT_EQ(end(), "");
        return times;
    }
    /// Steps of a block that has come to rest: the same at two looks with time between them.
    std::uint64_t stepsAtRest(const std::string& id) {
        std::uint64_t steps = 0;
        const bool rests = waitUntil([&] {
            const std::uint64_t before = steps;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            steps = blockStatistics(id).steps;
            return steps == before;
        });
        EXPECT_TRUE(rests) << id << " never rests";
        return steps;
    }
};

TEST_F(LiveRunTest, NoSampleComesBeforeItsTime) {
    folder.write("in.csv", "t,x\n5,1\n5.1,2\n5.25,3\n5.2,4\n5.4,5\n");
    const std::string text = "format: 1\nblocks:\n" + sourceLine("in", "in.csv", "x: x") +
                             sinkLine("out", "result") + "connections: [{from: in, to: out.x}]\n";
    const std::vector<double> due{0.0, 0.1, 0.25, 0.25, 0.4};
    for (const double speed : {1.0, 4.0}) {
        const std::vector<double> times = arrivals(text, {.speed = speed}, due.size());
        ASSERT_EQ(times.size(), due.size());
        for (std::size_t i = 0; i < due.size(); ++i)
            EXPECT_GE(times[i], due[i] / speed) << i << " at speed " << speed;
    }
}

TEST_F(LiveRunTest, TheEarliestOfAllRecordingsIsDueFirstAndTheOthersBehindIt) {
    folder.write("early.csv", "t,x\n-1,1\n-0.8,2\n");
    folder.write("late.csv", "t,x\n-0.9,10\n-0.7,20\n");
    const std::string text = "format: 1\nlayouts: [{id: one}, {id: two}]\nblocks:\n" +
                             sourceLine("late", "late.csv", "x: x", "two") +
                             sourceLine("early", "early.csv", "x: x", "one") + sinkLine("out", "result") +
                             "connections: [{from: late, to: out.x}, {from: early, to: out.y}]\n";
    const std::vector<double> times = arrivals(text, {.speed = 2.0}, 3);
    ASSERT_EQ(times.size(), 3u);
    for (std::size_t i = 0; i < times.size(); ++i)
        EXPECT_GE(times[i], 0.05 * static_cast<double>(i)) << i;
}

TEST_F(LiveRunTest, WhatIsDueInALongTimeHoldsNothingUp) {
    folder.write("in.csv", "t,x\n0,1\n1e9,2\n");
    folder.write("later.csv", "t,x\n1e300,1\n");
    start("format: 1\nblocks:\n" + sourceLine("in", "in.csv", "x: x") +
              sourceLine("later", "later.csv", "x: x") + sinkLine("out", "out.csv") +
              "connections: [{from: in, to: out.x}, {from: later, to: out.y}]\n",
          {.speed = 1.0});
    ASSERT_TRUE(waitUntil([&] { return liveRun->getProgress().rounds == 1; }));
    liveRun->stop();
    EXPECT_EQ(end(), "");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,1\n");
}

TEST_F(LiveRunTest, AGeneratorRunsByItsOwnTimeUntilItsLimit) {
    const std::string text = "format: 1\nblocks:\n"
                             "  - {id: ramp, type: FilterFunctionGenerator, properties: {Mode: triangular, "
                             "SignalPeriod: 4, SignalAmplitude: 1, SampleRate: 1}}\n" +
                             sinkLine("out", "result") + "connections: [{from: ramp, to: out.x}]\n";
    const std::vector<double> byRounds = arrivals(text, {.speed = 20.0}, 4, {.rounds = 4, .seconds = {}});
    ASSERT_EQ(byRounds.size(), 4u);
    // A step is stamped with the second in which it ends, and the one behind it is due then.
    for (std::size_t i = 1; i < byRounds.size(); ++i)
        EXPECT_GE(byRounds[i], 0.05 * static_cast<double>(i)) << i;
    EXPECT_EQ(liveRun->getProgress().rounds, 4u);
}

TEST_F(LiveRunTest, AGeneratorWithoutATimeOfItsOwnDoesNotSpin) {
    const std::string text =
        "format: 1\nblocks:\n  - {id: noise, type: FilterGaussianWhiteNoiseGenerator}\n" +
        sinkLine("out", "result") + "connections: [{from: noise, to: out.x}]\n";
    const std::vector<double> times = arrivals(text, {.speed = 1.0}, 4, {.rounds = 4, .seconds = {}});
    ASSERT_EQ(times.size(), 4u);
    for (std::size_t i = 1; i < times.size(); ++i)
        EXPECT_GE(times[i], 0.01 * static_cast<double>(i)) << "a hundred rounds a second";
}

TEST_F(LiveRunTest, AGeneratorWithoutALimitRunsUntilItIsTold) {
    start("format: 1\nblocks:\n  - {id: gen, type: OddGenerator}\n" + sinkLine("out", "out.csv") +
          "connections: [{from: gen, to: out.x}]\n");
    ASSERT_TRUE(waitUntil([&] { return liveRun->getProgress().rounds >= 100; }));
    EXPECT_EQ(liveRun->getState(), LiveRun::State::Running);
    liveRun->stop();
    EXPECT_EQ(end(), "");
    const std::uint64_t rounds = liveRun->getProgress().rounds;
    EXPECT_TRUE(folder.read("out.csv").ends_with("\n0," + std::to_string(rounds) + "\n"));
}

TEST_F(LiveRunTest, ARunOfGeneratorsEndsWhenAllLayoutsHaveReachedTheLimit) {
    ASSERT_EQ(runLive("format: 1\nlayouts: [{id: one}, {id: two}]\nblocks:\n"
                      "  - {id: a, type: OddGenerator}\n  - {id: b, type: OddGenerator, layout: two}\n" +
                          sinkLine("x", "x.csv") + sinkLine("y", "y.csv", "two") +
                          "connections: [{from: a, to: x.n}, {from: b, to: y.n}]\n",
                      {.speed = Support::kUnpaced}, {.rounds = 300, .seconds = {}}),
              "");
    EXPECT_TRUE(folder.read("x.csv").ends_with("\n0,300\n"));
    EXPECT_TRUE(folder.read("y.csv").ends_with("\n0,300\n"));
    EXPECT_EQ(liveRun->getProgress().rounds, 600u);
}

/// A pipe in one layout, a gain and a result in another.
class SleepTest : public LiveRunTest {
protected:
    SleepTest() : pipe(folder.path("pipe")) {
        pipe.write("t,x\n");
        start("format: 1\nlayouts: [{id: one}, {id: two}]\nblocks:\n" + sourceLine("in", "pipe", "x: x") +
                  "  - {id: near, type: FilterGain}\n  - {id: far, type: FilterGain, layout: two}\n"
                  "  - {id: count, type: FilterPeriodCounter, layout: two}\n" +
                  sinkLine("out", "out.csv", "two") +
                  "connections: [{from: in, to: near}, {from: near, to: far, buffer: 99}, {from: far, to: "
                  "out.x}, {from: near, to: count.in}]\n",
              {.speed = 1.0});
    }
    Fifo pipe;
};

TEST_F(SleepTest, NothingStepsWhereNothingCanMove) {
    const std::uint64_t near = stepsAtRest("near");
    const std::uint64_t far = stepsAtRest("far");
    EXPECT_EQ(near, 0u);
    EXPECT_EQ(far, 0u);
    pipe.write("0,1\n1,2\n");
    ASSERT_TRUE(waitUntil([&] { return linkStatistics("out.x").taken == 2; }));
    EXPECT_GE(stepsAtRest("near"), 2u);
    EXPECT_LE(blockStatistics("far").steps, 4u) << "no more passes than samples came over both links";
}

TEST_F(SleepTest, HalfARowWakesNobodyForAPass) {
    const std::uint64_t before = stepsAtRest("near");
    pipe.write("0,");
    EXPECT_EQ(stepsAtRest("near"), before);
    pipe.write("1\n");
    EXPECT_TRUE(waitUntil([&] { return linkStatistics("out.x").taken == 1; }));
}

TEST_F(SleepTest, ASettingWakesTheLayoutOfItsBlockAndNoOther) {
    const std::uint64_t near = stepsAtRest("near");
    const std::uint64_t far = stepsAtRest("far");
    liveRun->getSettings().write("far.Gain", "3");
    EXPECT_TRUE(waitUntil([&] { return blockStatistics("far").steps > far; }));
    EXPECT_EQ(stepsAtRest("far"), far + 1) << "for one pass";
    EXPECT_EQ(blockStatistics("near").steps, near);
    EXPECT_THROW(liveRun->getSettings().write("far.Gain", "much"), ControlException);
    EXPECT_EQ(stepsAtRest("far"), far + 1) << "what is refused wakes nobody";
}

TEST_F(SleepTest, ACommandWakesTheLayoutOfItsBlock) {
    const std::uint64_t far = stepsAtRest("far");
    liveRun->getSettings().fire("count.Reset");
    EXPECT_TRUE(waitUntil([&] { return blockStatistics("far").steps > far; }));
}

TEST_F(SleepTest, ReadingAndListingWakeNobody) {
    const std::uint64_t far = stepsAtRest("far");
    EXPECT_EQ(liveRun->getSettings().read("far.Gain").value, "1");
    EXPECT_FALSE(liveRun->getSettings().list().empty());
    const auto watch = liveRun->getSettings().observe("far.*", [](const SettingState&) {});
    EXPECT_EQ(stepsAtRest("far"), far);
}

TEST_F(SleepTest, EverySampleIsCountedOnItsWay) {
    pipe.write("0,1\n1,2\n2,3\n");
    ASSERT_TRUE(waitUntil([&] { return linkStatistics("out.x").taken == 3; }));
    const LiveStatistics statistics = liveRun->getStatistics();
    std::vector<std::string> ids;
    for (const LiveStatistics::Block& block : statistics.blocks)
        ids.push_back(block.id);
    EXPECT_EQ(ids, (std::vector<std::string>{"in", "near", "far", "count", "out"}));
    const LiveStatistics::Block far = blockStatistics("far");
    EXPECT_EQ(far.type, "FilterGain");
    EXPECT_EQ(far.layout, "two");
    EXPECT_EQ(far.samplesIn, 3u);
    EXPECT_EQ(far.samplesOut, 3u);
    EXPECT_EQ(far.lost, 0u);
    EXPECT_EQ(blockStatistics("in").samplesOut, 3u);
    EXPECT_EQ(blockStatistics("in").steps, 3u) << "a source steps in rounds only";
    EXPECT_EQ(blockStatistics("out").samplesIn, 3u);
    const LiveStatistics::Link link = linkStatistics("far.input");
    EXPECT_EQ(link.from, "near.output");
    EXPECT_EQ(link.received, 3u);
    EXPECT_EQ(link.waiting, 0u);
}

/// A recording in one layout whose rows all come while the other is held.
class LagTest : public LiveRunTest {
protected:
    void SetUp() override {
        std::string text = "t,x\n";
        for (int i = 0; i < 100; ++i)
            text += std::to_string(i) + "," + std::to_string(i) + "\n";
        folder.write("in.csv", text);
    }
    void runHeld(const std::string& keys) {
        prepare("format: 1\nlayouts: [{id: one}, {id: two}]\nblocks:\n" + sourceLine("in", "in.csv", "x: x") +
                    "  - {id: slow, type: FilterGain, layout: two}\n" + sinkLine("out", "out.csv", "two") +
                    "connections: [{from: in, to: slow" + keys + "}, {from: slow, to: out.x}]\n",
                {.speed = Support::kUnpaced, .overflow = Overflow::Drop});
        Hold hold(*liveRun, "slow.Gain", "2");
        liveRun->start();
        ASSERT_TRUE(waitUntil([&] { return liveRun->getProgress().rounds == 100; }));
        hold.release();
        failure = end();
        EXPECT_EQ(failure.empty(), !isStrict) << failure;
    }

    std::string failure;
};

TEST_F(LagTest, AReaderThatLagsLosesAllButTheNewestAndEveryLossIsCounted) {
    runHeld("");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n99,198\n");
    const LiveStatistics::Link link = linkStatistics("slow.input");
    EXPECT_EQ(link.received, 100u);
    EXPECT_EQ(link.taken, 1u);
    EXPECT_EQ(link.lost, 99u);
    EXPECT_EQ(link.waiting, 0u);
    EXPECT_EQ(blockStatistics("slow").lost, 99u);
    EXPECT_EQ(blockStatistics("out").lost, 0u);
}

TEST_F(LagTest, WhatALinkLostIsAWarningOfTheOutcome) {
    runHeld("");
    outcome = liveRun->getOutcome();
    EXPECT_TRUE(outcome.getIsWhole());
    EXPECT_EQ(outcome.progress.rows, 100u);
    ASSERT_EQ(outcome.links.size(), 2u);
    EXPECT_EQ(outcome.links[0].lost, 99u);
    ASSERT_EQ(outcome.warnings.size(), 1u);
    EXPECT_EQ(withoutFolder(outcome.warnings[0].getText()),
              "g.yaml:7:15: warning: 99 of the 100 samples that 'in.x' sent to 'slow.input' were lost, since "
              "it took "
              "them too late");
}

TEST_F(LagTest, StrictTakesALossForAFailure) {
    isStrict = true;
    runHeld("");
    EXPECT_EQ(failure, "ended with a warning, taken for an error");
    EXPECT_EQ(liveRun->getState(), LiveRun::State::Failed);
    EXPECT_EQ(liveRun->getOutcome().failure, failure);
    EXPECT_EQ(folder.read("out.csv.partial"), "t,x[0]\n99,198\n");
    EXPECT_FALSE(folder.has("out.csv"));
}

TEST_F(LiveRunTest, StrictTellsOfTheResultThatReceivedNothingOnWhichItFails) {
    folder.write("in.csv", "t,x\n0,1\n1,2\n");
    isStrict = true;
    EXPECT_EQ(runLive("format: 1\nblocks:\n" + sourceLine("in", "in.csv", "x: x") +
                          "  - {id: rate, type: FilterFrequency}\n" + sinkLine("out", "out.csv") +
                          "connections: [{from: in, to: rate}, {from: rate, to: out.x}]\n",
                      {.speed = Support::kUnpaced}),
              "ended with a warning, taken for an error");
    ASSERT_EQ(liveRun->getOutcome().warnings.size(), 1u);
    EXPECT_EQ(liveRun->getOutcome().warnings[0].text,
              "'out' received nothing: 'rate' (FilterFrequency) received 2 samples and sent none");
}

TEST_F(LiveRunTest, AMakerInALayoutWithoutRoundsHasTheTimeOfWhatItTook) {
    folder.write("in.csv", "t,x\n0.5,1\n");
    EXPECT_EQ(runLive("format: 1\nlayouts: [{id: one}, {id: two}]\nblocks:\n" +
                      sourceLine("in", "in.csv", "x: x") +
                      "  - {id: inv, type: FilterInvGain, layout: two, properties: {invGain: 0}}\n" +
                      sinkLine("out", "out.csv", "two") +
                      "connections: [{from: in, to: inv}, {from: inv, to: out.x}]\n"),
              "");
    ASSERT_TRUE(liveRun->getOutcome().firstMaker.has_value());
    EXPECT_EQ(liveRun->getOutcome().firstMaker->block, "inv");
    EXPECT_EQ(liveRun->getOutcome().firstMaker->time, 0.5) << "its own stamp is the wall clock's";
}

TEST_F(LiveRunTest, AMakerInTheFirstRoundHasTheRoundsTime) {
    folder.write("in.csv", "t,x\n0.5,1e308\n");
    EXPECT_EQ(runLive("format: 1\nblocks:\n" + sourceLine("in", "in.csv", "x: x") +
                      "  - {id: stamp, type: FilterInvGain, properties: {invGain: 1}}\n"
                      "  - {id: large, type: FilterGain, properties: {Gain: 10}}\n" +
                      sinkLine("out", "out.csv") +
                      "connections: [{from: in, to: stamp}, {from: stamp, to: large}, {from: large, to: "
                      "out.x}]\n"),
              "");
    ASSERT_TRUE(liveRun->getOutcome().firstMaker.has_value());
    EXPECT_EQ(liveRun->getOutcome().firstMaker->block, "large");
    EXPECT_EQ(liveRun->getOutcome().firstMaker->time, 0.5) << "what it took has the wall clock's stamp";
}

TEST_F(LiveRunTest, WhatATimelineSentIsNoBlocksMaking) {
    folder.write("in.csv", "t,x\n0,1\n0.5,2\n");
    EXPECT_EQ(runLive("format: 1\nblocks:\n" + sourceLine("in", "in.csv", "x: x") +
                      "  - {id: sum, type: OddSum}\n" + sinkLine("out", "out.csv") +
                      "connections: [{from: in, to: sum.in}, {from: sum, to: out.x}]\n"
                      "timeline: [{at: 0.5, send: {sum.back: .nan}}]\n"),
              "");
    EXPECT_FALSE(liveRun->getOutcome().firstMaker.has_value());
    ASSERT_EQ(liveRun->getOutcome().warnings.size(), 2u);
    EXPECT_EQ(liveRun->getOutcome().warnings[0].text,
              "the timeline sent values that aren't finite, the first at 0.5 s");
}

TEST_F(LiveRunTest, BlocksStampTheWallClockLiveWhateverClockTheGraphNames) {
    const std::string text =
        "format: 1\nclock: stream\nlayouts: [{id: one}, {id: two}]\nblocks:\n"
        "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
        "  - {id: inverse, type: FilterInvGain}\n  - {id: rate, type: FilterGain, layout: two}\n"
        "  - {id: out, type: RecordingSink, layout: two, properties: {file: out.csv}}\n"
        "connections: [{from: in, to: inverse}, {from: inverse, to: rate, overflow: wait}, {from: rate, to: "
        "out.x}]\n";
    constexpr double kLongAgo = 1.6e9; // seconds since 1970, beyond which every clock is that tells the day
    const auto timeOfFirstRow = [&] {
        const std::string table = folder.read("out.csv");
        return std::stod(table.substr(table.find('\n') + 1));
    };
    EXPECT_EQ(runLive(text), "");
    EXPECT_GT(timeOfFirstRow(), kLongAgo) << "a row across layouts has its sample's stamp";
    EXPECT_EQ(run(text), "");
    EXPECT_EQ(timeOfFirstRow(), 0.0);
}

TEST_F(LagTest, ABufferKeepsAsManyAsItHolds) {
    runHeld(", buffer: 3");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n97,194\n98,196\n99,198\n");
    EXPECT_EQ(linkStatistics("slow.input").lost, 97u);
    runHeld(", buffer: 3, order: newest");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n99,198\n98,196\n97,194\n");
    runHeld(", buffer: 100");
    EXPECT_EQ(linkStatistics("slow.input").lost, 0u);
    EXPECT_EQ(linkStatistics("slow.input").taken, 100u);
}

TEST_F(LagTest, TheTimeInStepsIsTakenOfSomeOfThem) {
    runHeld(", buffer: 100");
    EXPECT_GT(blockStatistics("in").seconds, 0.0) << "of one of its hundred steps";
    EXPECT_LT(blockStatistics("in").seconds, 30.0);
}

} // namespace
