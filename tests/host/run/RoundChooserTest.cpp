// SPDX-License-Identifier: MIT
#include "host/run/RoundChooser.h"

#include "tests/host/run/ScriptedSource.h"

#include <gtest/gtest.h>

#include <deque>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Core;
using namespace Quillmere::Host;
using Clock = RoundChooser::Clock;
using Answer = RoundChooser::Answer;

constexpr std::chrono::seconds kSecond{1};
const Clock::time_point kStart = Clock::time_point{} + 100 * kSecond;

/// Time passes as in the stream, from `kStart` on.
class TestPace final : public RoundPace {
public:
    bool getIsUnpaced() const override { return isUnpaced; }
    Clock::time_point dueOf(double streamTime) const override {
        if (isUnpaced) return Clock::time_point::min();
        return kStart +
               std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(streamTime));
    }
    void watch(const WakingSource& source) override { watched.push_back(&source); }

    bool isUnpaced = false;
    std::vector<const WakingSource*> watched;
};

class Generator final : public Filter {
public:
    explicit Generator(std::vector<double> stamps)
        : Filter("generator", true), out("out", this), times(std::move(stamps)) {}
    void process() override {
        if (times.empty()) throw std::runtime_error("spent");
        out.send(times.front());
        times.erase(times.begin());
    }
    const char* getTypeName() const override { return "Generator"; }

    OutputPin<MatrixXd> out;

private:
    std::vector<double> times;
};

class RoundChooserTest : public testing::Test {
protected:
    Support::ScriptedSource& addSource(const std::string& name, std::vector<double> times) {
        Support::ScriptedSource& source = scripts.emplace_back(name, std::move(times));
        sources.push_back({&source, &source});
        return source;
    }
    void takeUp(RoundChooser& chooser) {
        std::vector<RunSource*> all;
        for (RunSource& source : sources)
            all.push_back(&source);
        chooser.setSources(all);
    }
    /// The sources that begin rounds from now on, in their order, as `name time`.
    std::vector<std::string> runAll(RoundChooser& chooser) {
        std::vector<std::string> rounds;
        while (chooser.choose(kStart).answer == Answer::Round) {
            chooser.begin();
            chooser.release();
            for (Support::ScriptedSource& source : scripts)
                if (source.takeReleased())
                    rounds.push_back(source.getName() + " " + std::to_string(int(chooser.getStreamTime())));
        }
        return rounds;
    }

    std::deque<Support::ScriptedSource> scripts;
    std::deque<RunSource> sources;
    TestPace pace;
};

using Rounds = std::vector<std::string>;

TEST_F(RoundChooserTest, WithoutAPaceTheEarliestSampleGoesFirstAndOfEqualsTheFirstSource) {
    addSource("a", {1, 3, 4});
    addSource("b", {0, 1, 4, 5});
    RoundChooser chooser;
    takeUp(chooser);
    EXPECT_EQ(runAll(chooser), (Rounds{"b 0", "a 1", "b 1", "a 3", "a 4", "b 4", "b 5"}));
    EXPECT_EQ(chooser.takeEnded(), 2u);
    EXPECT_EQ(chooser.takeEnded(), 0u) << "told once";
    EXPECT_TRUE(chooser.getHasEnded());
    EXPECT_FALSE(chooser.getIsDriven());
    EXPECT_TRUE(sources[0].hasEnded && sources[1].hasEnded);
}

TEST_F(RoundChooserTest, WithNothingThereIsNoRound) {
    RoundChooser chooser;
    EXPECT_EQ(chooser.choose(kStart).answer, Answer::End);
    EXPECT_EQ(chooser.choose(kStart).due, Clock::time_point::max());
    EXPECT_EQ(chooser.getClock(), nullptr);
}

TEST_F(RoundChooserTest, WithAPaceASampleWaitsUntilItIsDue) {
    addSource("a", {0, 3});
    addSource("b", {2});
    RoundChooser chooser(&pace);
    takeUp(chooser);
    const RoundChooser::Choice first = chooser.choose(kStart);
    EXPECT_EQ(first.answer, Answer::Round);
    EXPECT_EQ(first.due, kStart + 2 * kSecond) << "of what comes behind it";
    chooser.begin();
    chooser.release();
    const RoundChooser::Choice second = chooser.choose(kStart);
    EXPECT_EQ(second.answer, Answer::NotYet);
    EXPECT_EQ(second.due, kStart + 2 * kSecond);
    EXPECT_EQ(chooser.choose(kStart + 2 * kSecond).answer, Answer::Round);
    chooser.begin();
    EXPECT_EQ(chooser.getStreamTime(), 2.0);
    EXPECT_EQ(chooser.getElapsed(), 2.0);
}

TEST_F(RoundChooserTest, WhatIsChosenWaitsUntilItIsReleased) {
    addSource("a", {1});
    RoundChooser chooser;
    takeUp(chooser);
    for (int look = 0; look < 3; ++look)
        EXPECT_EQ(chooser.choose(kStart).answer, Answer::Round);
    EXPECT_FALSE(scripts.front().takeReleased());
    EXPECT_EQ(runAll(chooser), Rounds{"a 1"});
}

TEST_F(RoundChooserTest, AnUnpacedRunStillWatchesPipesInsteadOfWaitingForThem) {
    pace.isUnpaced = true;
    Support::ScriptedSource& pipe = addSource("pipe", {7});
    pipe.comesByItself = true;
    pipe.isPrepared = false;
    addSource("file", {9});
    RoundChooser chooser(&pace);
    takeUp(chooser);
    EXPECT_EQ(runAll(chooser), Rounds{"file 9"});
    EXPECT_EQ(pace.watched, std::vector<const WakingSource*>(2, &pipe)) << "each look";
    EXPECT_EQ(chooser.choose(kStart).answer, Answer::NotYet);
    pipe.isPrepared = true;
    EXPECT_EQ(runAll(chooser), Rounds{"pipe 7"});
}

TEST_F(RoundChooserTest, WhatComesOverAPipeIsDueWhenItComes) {
    Support::ScriptedSource& pipe = addSource("pipe", {1000});
    pipe.comesByItself = true;
    RoundChooser chooser(&pace);
    takeUp(chooser);
    EXPECT_EQ(runAll(chooser), Rounds{"pipe 1000"});
}

TEST_F(RoundChooserTest, ASourceThatHasEndedIsNotTakenUpAgain) {
    addSource("a", {});
    addSource("b", {1});
    RoundChooser chooser;
    takeUp(chooser);
    EXPECT_EQ(chooser.choose(kStart).answer, Answer::Round);
    EXPECT_EQ(chooser.takeEnded(), 1u);
    takeUp(chooser);
    EXPECT_EQ(runAll(chooser), Rounds{"b 1"});
    EXPECT_EQ(chooser.takeEnded(), 1u);
}

TEST_F(RoundChooserTest, WhoRaisesIsKnown) {
    Support::ScriptedSource& bad = addSource("bad", {1});
    bad.refusal = "a bad row";
    RoundChooser chooser;
    takeUp(chooser);
    EXPECT_EQ(chooser.getAsked(), nullptr);
    EXPECT_THROW(chooser.choose(kStart), std::runtime_error);
    EXPECT_EQ(chooser.getAsked(), &bad);

    Generator generator({});
    RoundChooser clocked;
    clocked.setClock(GeneratorClock({&generator}), std::nullopt);
    EXPECT_EQ(clocked.choose(kStart).answer, Answer::Round);
    EXPECT_THROW(clocked.begin(), std::runtime_error);
    EXPECT_EQ(clocked.getAsked(), &generator);
}

TEST_F(RoundChooserTest, AClockStepsOnceARoundUntilItsLimit) {
    Generator generator({0.5, 1.0, 1.5, 2.0});
    RoundChooser chooser;
    chooser.setClock(GeneratorClock({&generator}), RunLimit{.rounds = 2, .seconds = {}});
    EXPECT_EQ(chooser.getClock(), &generator);
    for (const double time : {0.5, 1.0}) {
        EXPECT_EQ(chooser.choose(kStart).answer, Answer::Round);
        EXPECT_FALSE(chooser.getHasBegun());
        chooser.begin();
        EXPECT_TRUE(chooser.getHasBegun());
        EXPECT_EQ(chooser.choose(kStart).answer, Answer::Round) << "the rest of it is to come";
        chooser.begin(); // as behind a timeline
        EXPECT_EQ(chooser.getStreamTime(), time);
        chooser.release();
    }
    EXPECT_FALSE(chooser.getHasEnded());
    EXPECT_EQ(chooser.choose(kStart).answer, Answer::End);
    EXPECT_TRUE(chooser.getHasEnded());
    EXPECT_TRUE(chooser.getIsDriven());
    EXPECT_EQ(chooser.takeEnded(), 1u);
    EXPECT_EQ(chooser.choose(kStart).answer, Answer::End);
    EXPECT_EQ(chooser.takeEnded(), 0u) << "told once";
}

TEST_F(RoundChooserTest, APacedClockIsDueWhenItsTimeStampSaysOrAHundredTimesASecond) {
    Generator generator({2.0, 2.0, 3.0});
    RoundChooser chooser(&pace);
    chooser.setClock(GeneratorClock({&generator}), std::nullopt);
    const auto due = [&](Clock::time_point now) {
        EXPECT_EQ(chooser.choose(now).answer, Answer::Round);
        chooser.begin();
        chooser.release();
        const RoundChooser::Choice next = chooser.choose(now);
        EXPECT_EQ(next.answer, Answer::NotYet);
        return next.due;
    };
    EXPECT_EQ(due(kStart), kStart + 2 * kSecond) << "a time of its own";
    const Clock::time_point later = kStart + 2 * kSecond;
    EXPECT_EQ(due(later), later + std::chrono::milliseconds(10)) << "a time that stands still";
    EXPECT_EQ(due(later + std::chrono::milliseconds(500)), kStart + 3 * kSecond);
}

TEST_F(RoundChooserTest, AnUnpacedClockIsAlwaysDue) {
    pace.isUnpaced = true;
    Generator generator({1.0, 1.0, 1e6});
    RoundChooser chooser(&pace);
    chooser.setClock(GeneratorClock({&generator}), std::nullopt);
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(chooser.choose(Clock::time_point::min()).answer, Answer::Round);
        chooser.begin();
        chooser.release();
    }
}

} // namespace
