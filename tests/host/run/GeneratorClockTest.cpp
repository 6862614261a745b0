// SPDX-License-Identifier: MIT
#include "host/run/GeneratorClock.h"

#include "host/run/RunOutcome.h"
#include "tests/host/kit/RefusalText.h"

#include <Poco/Timestamp.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Quillmere::Core;
using namespace Quillmere::Host;

/// Stamps its samples with `times`, one a step, the last again and again.
class Generator final : public Filter {
public:
    Generator(const std::string& name, std::vector<double> stamps)
        : Filter(name, true), out("out", this), times(std::move(stamps)) {}
    void process() override {
        out.send(times.front());
        if (times.size() > 1) times.erase(times.begin());
    }
    const char* getTypeName() const override { return "Generator"; }

    OutputPin<MatrixXd> out;

private:
    std::vector<double> times;
};

class Receiver final : public Filter {
public:
    Receiver() : Filter("receiver", true), in("in", this), out("out", this) {}
    void process() override {}
    const char* getTypeName() const override { return "Receiver"; }

    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;
};

/// Has no pins at all.
class Hermit final : public Filter {
public:
    Hermit() : Filter("hermit", true) {}
    void process() override {}
    const char* getTypeName() const override { return "Hermit"; }
};

TEST(GeneratorClock, IsTheFirstBlockWithAnOutputAndNoInput) {
    Receiver receiver;
    Hermit hermit;
    Generator first("first", {1});
    Generator second("second", {2});
    EXPECT_EQ(GeneratorClock({&receiver, &hermit, &first, &second}).getBlock(), &first);
    EXPECT_EQ(GeneratorClock({&second, &first}).getBlock(), &second);
    EXPECT_EQ(GeneratorClock({&receiver, &hermit}).getBlock(), nullptr);
    EXPECT_EQ(GeneratorClock({}).getBlock(), nullptr);
}

TEST(GeneratorClock, ReadsTheTimeOfItsGenerator) {
    Generator generator("g", {0.5, 2.0, 1.0});
    GeneratorClock clock({&generator});
    EXPECT_EQ(clock.getTime(), 0.0);
    for (const double time : {0.5, 2.0, 1.0}) {
        clock.step();
        EXPECT_EQ(clock.getTime(), time);
        EXPECT_EQ(clock.getElapsed(), time) << "a time of its own begins with 0";
        EXPECT_FALSE(clock.getIsWallClock());
    }
}

TEST(GeneratorClock, ATimeOfTheWallClockBeginsWithTheRun) {
    const double now = static_cast<double>(Poco::Timestamp().utcTime()) * 1e-7;
    Generator generator("g", {now + 1000.0});
    GeneratorClock clock({&generator});
    clock.step();
    EXPECT_TRUE(clock.getIsWallClock());
    EXPECT_EQ(clock.getTime(), now + 1000.0);
    EXPECT_LE(clock.getElapsed(), 1000.0);
    EXPECT_GT(clock.getElapsed(), 900.0);
}

TEST(GeneratorClock, ALimitIsReachedByRoundsOrByTime) {
    Generator generator("g", {1.0, 2.5, 4.0});
    GeneratorClock clock({&generator});
    const RunLimit twoRounds{.rounds = 2, .seconds = {}};
    const RunLimit twoSeconds{.rounds = {}, .seconds = 2.0};
    EXPECT_TRUE(clock.getIsReached({}, 0)) << "nothing to wait for";
    EXPECT_FALSE(clock.getIsReached(twoRounds, 0));
    EXPECT_FALSE(clock.getIsReached(twoSeconds, 0)) << "one round at least";
    clock.step();
    EXPECT_FALSE(clock.getIsReached(twoRounds, 1));
    EXPECT_FALSE(clock.getIsReached(twoSeconds, 1));
    clock.step();
    EXPECT_TRUE(clock.getIsReached(twoRounds, 2));
    EXPECT_TRUE(clock.getIsReached(twoSeconds, 2)) << "the round that reaches it is the last";
}

TEST(GeneratorClock, ATimeThatStandsStillEndsNoDuration) {
    Generator generator("g", {3.0});
    GeneratorClock clock({&generator});
    const RunLimit limit{.rounds = {}, .seconds = 5.0};
    for (int i = 0; i < 1000001; ++i)
        clock.step();
    EXPECT_FALSE(clock.getIsReached(limit, 1000001)) << "a wall clock may be coarse";
    clock.step();
    try {
        static_cast<void>(clock.getIsReached(limit, 1000002));
        ADD_FAILURE() << "no refusal";
    } catch (const RunException& exception) {
        EXPECT_EQ(Support::refusalText(exception),
                  "the time of 'g' stands still, so no duration ends the run");
    }
    EXPECT_FALSE(clock.getIsReached({.rounds = 2000000, .seconds = {}}, 1000002)) << "rounds end it";
}

} // namespace
