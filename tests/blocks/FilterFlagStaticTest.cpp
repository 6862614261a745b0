// SPDX-License-Identifier: MIT
#include "blocks/FilterFlagStatic.h"

#include "tests/blocks/LiteralFlagStatic.h"
#include "tests/blocks/SendLog.h"
#include "tests/support/Allocations.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

using namespace Support;

namespace {
const MatrixXd kNoBias = matrix({{0, 0, 0}});

/// A block that is fed pairs of samples.
struct Fixture {
    FilterFlagStatic block{"flag"};
    Feed feed{block};

    bool step(const MatrixXd& signal, double time, const MatrixXd& bias = kNoBias) {
        const std::size_t before = feed.sent("FlagStatic").size();
        feed.give("3g", signal, time);
        feed.give("3bias", bias, -1.0);
        feed.step();
        EXPECT_EQ(feed.sent("StdDev").size(), feed.sent("FlagStatic").size());
        return feed.sent("FlagStatic").size() > before;
    }
    double flag() { return feed.last("FlagStatic").value(0); }
    MatrixXd estimate() { return feed.last("StdDev").value; }
};

MatrixXd level(double value) {
    return matrix({{value, value, value}});
}

/// The i-th sample of a signal that jumps by `spread` to both sides: its deviation is `spread` over an even
/// window.
MatrixXd jumping(int i, double spread) {
    return level(i % 2 == 0 ? spread : -spread);
}
} // namespace

TEST(FilterFlagStaticTest, Catalogue) {
    FilterFlagStatic block("flag");
    EXPECT_STREQ(block.getTypeName(), "FilterFlagStatic");
    EXPECT_EQ(block.getName(), "flag");
    EXPECT_EQ(catalogue(block), "input \"3g\" blocking\n"
                                "input \"3bias\" blocking\n"
                                "output \"FlagStatic\"\n"
                                "output \"StdDev\"\n"
                                "range int \"Windows Size\" 200 in [0;10000] step 1\n"
                                "range double \"MaxStdDev\" 2 in [0;5] step 0.01\n"
                                "range double \"FlagThreshold\" 4 in [0;1000] step 0.01\n"
                                "range double \"StepStdDevThreshold\" 100 in [0;2000] step 0.001\n"
                                "range double \"StdDevIni\" 40 in [0;150] step 1\n"
                                "command \"Clear\"\n");
}

TEST(FilterFlagStaticTest, FirstSampleSendsNothingAndEveryLaterOneBoth) {
    Fixture f;
    EXPECT_FALSE(f.step(level(1), 0.0));
    for (int i = 1; i < 5; ++i)
        EXPECT_TRUE(f.step(level(1), 0.1 * i)) << i;
    f.feed.fire("Clear");
    EXPECT_FALSE(f.step(level(1), 1.0)) << "after a start";
    EXPECT_TRUE(f.step(level(1), 1.1));
}

TEST(FilterFlagStaticTest, SendsTheEstimateFirstWithTheTimeOfTheSignal) {
    Fixture f;
    f.step(level(1), 3.0);
    SendLog log(f.block);
    f.step(level(1), 3.25);
    EXPECT_EQ(log.order, (std::vector<std::string>{"StdDev", "FlagStatic"}));
    EXPECT_TRUE(agree(f.feed.last("StdDev").timeStamp, 3.25, same));
    EXPECT_TRUE(agree(f.feed.last("FlagStatic").timeStamp, 3.25, same));
}

TEST(FilterFlagStaticTest, ASignalIsHeldUntilItsBiasComes) {
    Fixture f;
    f.step(level(1), 0.0);
    f.feed.give("3g", level(2), 1.0);
    for (int i = 0; i < 3; ++i)
        f.feed.step();
    EXPECT_TRUE(f.feed.sent("FlagStatic").empty());
    f.feed.give("3bias", kNoBias, 9.0);
    f.feed.step();
    ASSERT_EQ(f.feed.sent("FlagStatic").size(), 1u);
    EXPECT_TRUE(agree(f.feed.last("FlagStatic").timeStamp, 1.0, same));
    f.feed.step();
    EXPECT_EQ(f.feed.sent("FlagStatic").size(), 1u) << "one of each is used up";

    f.feed.give("3bias", kNoBias, 10.0);
    f.feed.step();
    EXPECT_EQ(f.feed.sent("FlagStatic").size(), 1u) << "a bias alone waits as well";
    f.feed.give("3g", level(2), 2.0);
    f.feed.step();
    EXPECT_EQ(f.feed.sent("FlagStatic").size(), 2u);
}

TEST(FilterFlagStaticTest, DefaultsFlagAlmostAnythingStillAtFirst) {
    struct Row {
        const char* name;
        MatrixXd signal;
        double flag;
    };
    // |estimate| * 4 = 160 * sqrt(3), which is 277.128...
    const Row rows[] = {
        {.name = "below", .signal = matrix({{277.0, 0, 0}}), .flag = 1.0},
        {.name = "above", .signal = matrix({{277.2, 0, 0}}), .flag = 0.0},
        {.name = "length, not axis", .signal = matrix({{200, 200, 0}}), .flag = 0.0},
        {.name = "zero", .signal = level(0), .flag = 1.0},
        {.name = "not a number", .signal = matrix({{kNaN, 0, 0}}), .flag = 0.0},
        {.name = "infinite", .signal = matrix({{0, -kInf, 0}}), .flag = 0.0},
    };
    for (const Row& row : rows) {
        Fixture f;
        f.step(level(0), 0.0);
        ASSERT_TRUE(f.step(row.signal, 0.01));
        EXPECT_TRUE(agree(f.flag(), row.flag, same)) << row.name;
        EXPECT_TRUE(agree(f.estimate(), level(40), same)) << row.name;
    }
}

TEST(FilterFlagStaticTest, ComparisonIsStrict) {
    Fixture f;
    f.feed.set("StdDevIni", 3.0);
    f.feed.set("FlagThreshold", 2.0);
    const double edge = std::sqrt(27.0) * 2.0;
    f.step(level(0), 0.0);
    f.step(matrix({{edge, 0, 0}}), 0.01);
    EXPECT_TRUE(agree(f.flag(), 0.0, same));
    f.step(matrix({{std::nextafter(edge, 0.0), 0, 0}}), 0.02);
    EXPECT_TRUE(agree(f.flag(), 1.0, same));
}

TEST(FilterFlagStaticTest, AnEquallyLoudWindowIsNotAdopted) {
    Fixture f;
    f.feed.set("Windows Size", 2);
    f.feed.set("MaxStdDev", 1.0);
    f.step(matrix({{1, 2, 2}}), 0.0);
    f.step(matrix({{-1, -2, -2}}), 1.0);
    ASSERT_TRUE(agree(f.estimate(), matrix({{1, 2, 2}}), same));
    f.step(matrix({{-2, -1, -2}}), 2.0); // a third axis that rests counts double: too loud
    f.step(matrix({{2, 1, 2}}), 3.0);    // deviations of 2, 1 and 2, as long as 1, 2 and 2
    EXPECT_TRUE(agree(f.estimate(), matrix({{1, 2, 2}}), same));
}

TEST(FilterFlagStaticTest, BiasEntersTheFlagAlone) {
    Fixture f;
    const MatrixXd offset = matrix({{1000, -2000, 3000}});
    f.step(offset, 0.0, offset);
    f.step(offset, 0.01, offset);
    EXPECT_TRUE(agree(f.flag(), 1.0, same));
    f.step(offset, 0.02);
    EXPECT_TRUE(agree(f.flag(), 0.0, same));
    f.step(offset, 0.03, matrix({{1000, -2000, kNaN}}));
    EXPECT_TRUE(agree(f.flag(), 0.0, same));
    EXPECT_TRUE(agree(f.estimate(), level(40), same));
}

TEST(FilterFlagStaticTest, QuietIsBelievedOnceSettled) {
    struct Row {
        const char* name;
        double time;
        bool adopted;
    };
    const Row rows[] = {
        {.name = "long before", .time = 0.3, .adopted = false},
        {.name = "just before", .time = 0.4989, .adopted = false},
        {.name = "just after", .time = 0.4991, .adopted = true},
        {.name = "long after", .time = 100.0, .adopted = true},
        {.name = "backwards", .time = -1.0, .adopted = false},
        {.name = "no time at all", .time = kNaN, .adopted = false},
    };
    for (const Row& row : rows) {
        Fixture f;
        f.step(level(1), 0.0);
        f.step(level(-1), row.time);
        EXPECT_TRUE(agree(f.estimate(), level(row.adopted ? 1 : 40), same)) << row.name;
    }
}

TEST(FilterFlagStaticTest, AQuietStretchIsAdoptedAtTheNextStepAfterSettling) {
    Fixture f;
    for (int i = 0; i < 50; ++i) {
        f.step(jumping(i, 1.0), 0.01 * i);
        if (i > 0) {
            EXPECT_TRUE(agree(f.estimate(), level(40), same)) << i;
        }
    }
    f.step(jumping(50, 1.0), 0.5);
    EXPECT_LT(f.estimate()(0), 1.01);
}

TEST(FilterFlagStaticTest, StatisticsCoverWhatWasSeenSoFar) {
    Fixture f;
    f.step(level(2), 0.0);
    f.step(level(4), 1.0);
    EXPECT_TRUE(agree(f.estimate(), level(1), same)) << "two samples, not 200";
    f.step(matrix({{3, 3, 3}}), 2.0);
    EXPECT_TRUE(agree(f.estimate(), level(std::sqrt(29.0 / 3.0 - 81.0 / 9.0)), same)) << "three";
}

// A factor that has grown to 1 + n * 0.0001 adopts a window that is at most so much louder.
TEST(FilterFlagStaticTest, ToleranceGrowsByTheRateOfTheFirstTwoSamples) {
    Fixture f;
    f.feed.set("Windows Size", 2);
    f.step(level(1), 0.0);
    f.step(level(-1), 0.01); // the rate is 100 from here on
    double factor = 1.0 + 1.0 / (200.0 * 100.0) + 1.0 / (200.0 * 100.0);
    int i = 2;
    for (; i <= 50; ++i) {
        f.step(jumping(i, 1.0), 0.01 * i);
        factor += 1.0 / (1.0 / 0.01 * 100.0);
    }
    ASSERT_TRUE(agree(f.estimate(), level(1), same));
    factor = 1.0; // adopted
    for (; i < 150; ++i) {
        // Louder than the factor allows: a pair (-1, 1 + 2 * louder) has the deviation 1 + louder.
        const double louder = 1.5 * (factor - 1.0) + 0.001;
        f.step(level(i % 2 == 0 ? 1.0 + louder : -1.0 - louder), 0.01 * i);
        factor += 0.0001;
        ASSERT_TRUE(agree(f.estimate(), level(1), same)) << i;
    }
    // 100 samples later the factor is 1.01: a window 1.005 times as loud passes, one 1.015 times as loud does
    // not.
    f.step(level(1.015), 1.5);
    f.step(level(-1.015), 1.51);
    EXPECT_TRUE(agree(f.estimate(), level(1), same));
    f.step(level(1.005), 1.52);
    f.step(level(-1.005), 1.53);
    EXPECT_TRUE(agree(f.estimate(), level(1.005), withinRel(1e-12)));
    f.step(level(1.01), 1.54);
    f.step(level(-1.01), 1.55);
    EXPECT_TRUE(agree(f.estimate(), level(1.005), withinRel(1e-12))) << "the factor is 1 again";
}

TEST(FilterFlagStaticTest, EqualFirstTimeStampsStopTheRamp) {
    Fixture f;
    f.feed.set("Windows Size", 2);
    f.feed.set("MaxStdDev", 5.0);
    f.feed.set("StepStdDevThreshold", 0.001);
    f.feed.set("StdDevIni", 10.0);
    // the first two steps still use 200: the factor is at most 1 + 2 * 4 / 0.2 by then
    f.step(level(20), 7.0);
    f.step(level(-20), 7.0);
    f.step(level(1), 8.0);
    f.step(level(-1), 8.1);
    ASSERT_TRUE(agree(f.estimate(), level(1), same));
    for (int i = 0; i < 1000; ++i)
        f.step(jumping(i, 1.1), 9.0 + i);
    EXPECT_TRUE(agree(f.estimate(), level(1), same)) << "an infinite rate adds 0 a sample";
}

TEST(FilterFlagStaticTest, ARampOfNoTimeAdoptsAnythingAtOnce) {
    Fixture f;
    f.feed.set("Windows Size", 2);
    f.feed.set("StepStdDevThreshold", 0.0);
    f.step(level(1), 0.0);
    f.step(level(-1), 1.0);
    ASSERT_TRUE(agree(f.estimate(), level(1), same));
    f.step(level(1e6), 2.0);
    EXPECT_GT(f.estimate()(0), 1e5);
    f.step(level(-1e9), 3.0);
    EXPECT_GT(f.estimate()(0), 1e8);
}

TEST(FilterFlagStaticTest, WithoutToleranceTheEstimateOnlyFalls) {
    for (const double largest : {0.0, 0.5, 1.0}) {
        Fixture f;
        f.feed.set("Windows Size", 2);
        f.feed.set("MaxStdDev", largest);
        f.feed.set("StepStdDevThreshold", 0.0);
        double before = 40.0;
        for (int i = 0; i < 100; ++i) {
            if (!f.step(level((i * 7 % 13) * (i % 2 == 0 ? 1.0 : -1.0)), i)) continue;
            EXPECT_LE(f.estimate()(0), before) << largest << ", step " << i;
            before = f.estimate()(0);
        }
        EXPECT_LT(before, 40.0);
    }
}

TEST(FilterFlagStaticTest, ADeadSensorCountsAsTwiceItsEstimate) {
    Fixture f;
    f.feed.set("StepStdDevThreshold", 0.05); // the factor grows by (2 - 1) / (1 * 0.05) = 20 a second sample
    f.feed.set("StdDevIni", 1.0);
    f.feed.set("MaxStdDev", 1.9);
    f.step(level(0), 0.0);
    f.step(level(0), 1.0);
    // Two steps at a rate of 200: 1 + 2 * 0.09 = 1.18, not above 2.
    EXPECT_TRUE(agree(f.estimate(), level(1), same));
    f.step(level(0), 2.0); // 1.18 + 0.9 / 0.05 = 19.18
    EXPECT_TRUE(agree(f.estimate(), level(2), same));
    f.step(level(0), 3.0); // 1 + 18, adopted again
    EXPECT_TRUE(agree(f.estimate(), level(4), same));
}

TEST(FilterFlagStaticTest, ADeadAxisIsToldFromALivingOne) {
    Fixture f;
    f.feed.set("StdDevIni", 2.0);
    f.step(matrix({{1, 5, 1}}), 0.0);
    f.step(matrix({{-1, 5, -1}}), 1.0);
    // w = (1, 4, 1) is longer than the estimate (2, 2, 2).
    EXPECT_TRUE(agree(f.estimate(), level(2), same));
    f.feed.set("StdDevIni", 2.5);
    f.feed.set("MaxStdDev", 2.5);
    f.feed.set("StepStdDevThreshold", 0.01);
    f.step(matrix({{1, 5, 1}}), 2.0);
    f.step(matrix({{-1, 5, -1}}), 3.0);
    // The factor is 1 + 1.5 / (1 * 0.01) + ..., and w = (1, 5, 1).
    EXPECT_TRUE(agree(f.estimate(), matrix({{1, 5, 1}}), same));
}

TEST(FilterFlagStaticTest, AWindowOfNothingNeverLearns) {
    Fixture f;
    f.feed.set("Windows Size", 0);
    f.feed.set("MaxStdDev", 1.0);
    for (int i = 0; i < 10; ++i)
        f.step(jumping(i, 0.5), i);
    EXPECT_TRUE(agree(f.estimate(), level(40), same)) << "twice the estimate is never below it";
    EXPECT_TRUE(agree(f.flag(), 1.0, same));
}

TEST(FilterFlagStaticTest, AThresholdOfZeroFlagsNothing) {
    Fixture f;
    f.feed.set("FlagThreshold", 0.0);
    for (int i = 0; i < 4; ++i)
        if (f.step(level(0), i)) {
            EXPECT_TRUE(agree(f.flag(), 0.0, same)) << i;
        }
}

TEST(FilterFlagStaticTest, NotANumberIsNeverLearned) {
    Fixture f;
    f.step(level(1), 0.0);
    f.step(level(-1), 1.0);
    f.step(matrix({{1, kNaN, 1}}), 2.0);
    for (int i = 0; i < 300; ++i)
        f.step(jumping(i, 0.1), 3.0 + i);
    EXPECT_TRUE(agree(f.estimate(), level(1), same)) << "the sums never lose it";
    f.feed.fire("Clear");
    f.step(level(0.5), 400.0);
    f.step(level(-0.5), 401.0);
    EXPECT_TRUE(agree(f.estimate(), level(0.5), same));
}

TEST(FilterFlagStaticTest, TooFewValuesAreUsedUpAndChangeNothing) {
    const MatrixXd shapes[] = {matrix({}), matrix({{1}}), matrix({{1, 2}}), matrix({{1}, {2}}),
                               MatrixXd(0, 3)};
    for (const MatrixXd& shape : shapes) {
        Fixture f;
        Fixture twin;
        const auto both = [&](const MatrixXd& signal, double time) {
            f.step(signal, time);
            twin.step(signal, time);
        };
        EXPECT_FALSE(f.step(shape, 0.0)) << "not even the start is done";
        EXPECT_FALSE(f.step(level(1), 0.0, shape));
        both(level(1), 0.5);
        EXPECT_FALSE(f.step(shape, 0.7));
        EXPECT_FALSE(f.step(level(77), 0.8, shape));
        both(level(-1), 1.5);
        EXPECT_TRUE(agree(f.estimate(), twin.estimate(), same));
        EXPECT_FALSE(f.step(level(77), 0.8, shape));
        both(level(3), 2.5);
        EXPECT_TRUE(agree(f.estimate(), twin.estimate(), same));
        EXPECT_TRUE(agree(f.flag(), twin.flag(), same));
        EXPECT_EQ(f.feed.sent("FlagStatic").size(), twin.feed.sent("FlagStatic").size());
    }
}

TEST(FilterFlagStaticTest, OnlyTheFirstThreeStoredValuesCount) {
    Fixture f;
    f.step(matrix({{1, 1}, {1, kNaN}}), 0.0, matrix({{0}, {0}, {0}, {kNaN}}));
    f.step(matrix({{-1, -1}, {-1, kNaN}}), 1.0, matrix({{0}, {0}, {0}, {kNaN}}));
    EXPECT_TRUE(agree(f.estimate(), level(1), same));
    EXPECT_TRUE(agree(f.flag(), 1.0, same));
}

TEST(FilterFlagStaticTest, AStartKeepsTheRateAndForgetsTheRest) {
    Fixture f;
    f.feed.set("Windows Size", 2);
    f.step(level(1), 0.0);
    f.step(level(-1), 1.0);
    ASSERT_TRUE(agree(f.estimate(), level(1), same));
    f.feed.set("StdDevIni", 30.0);
    EXPECT_FALSE(f.step(level(5), 10.0));
    f.step(level(-5), 10.1);
    EXPECT_TRUE(agree(f.estimate(), level(30), same)) << "settling starts again";
    f.feed.set("StdDevIni", 30.0);
    EXPECT_TRUE(f.step(level(5), 10.2)) << "the same value is no change";

    // At a rate of 1 the first sample after a start adds (2 - 1) / (1 * 0.5) = 2 to the factor, at 200 only
    // 0.01.
    Fixture slow;
    slow.feed.set("StepStdDevThreshold", 0.5);
    slow.step(level(0), 0.0);
    slow.step(level(0), 1.0);
    slow.feed.fire("Clear");
    slow.step(level(60), 2.0);
    slow.step(level(-60), 3.0);
    EXPECT_TRUE(agree(slow.estimate(), level(60), same));
    Fixture fresh;
    fresh.feed.set("StepStdDevThreshold", 0.5);
    fresh.step(level(60), 2.0);
    fresh.step(level(-60), 3.0);
    EXPECT_TRUE(agree(fresh.estimate(), level(40), same));
}

TEST(FilterFlagStaticTest, WindowSizeWaitsForTheSecondSampleAfterAStart) {
    Fixture f;
    f.step(level(3), 0.0);
    f.feed.set("Windows Size", 2); // taken at the second sample
    f.step(level(-3), 1.0);
    f.step(level(-1), 2.0);
    EXPECT_TRUE(agree(f.estimate(), level(1), same)) << "a window of two";
    f.feed.set("Windows Size", 3);
    f.step(level(0.5), 3.0);
    f.step(level(1), 4.0);
    EXPECT_TRUE(agree(f.estimate(), level(0.25), same)) << "still of two";
    f.feed.fire("Clear");
    f.step(level(1), 5.0);
    f.step(level(2), 6.0);
    f.step(level(3), 7.0);
    f.step(level(3), 8.0);
    EXPECT_TRUE(agree(f.estimate(), level(std::sqrt(22.0 / 3.0 - 64.0 / 9.0)), same)) << "of three";
}

TEST(FilterFlagStaticTest, ASteadyStepAllocatesNothing) {
    FilterFlagStatic block("flag");
    Quillmere::Core::OutputPin<MatrixXd> signal("signal", nullptr);
    Quillmere::Core::OutputPin<MatrixXd> bias("bias", nullptr);
    signal.attach(block.getInputPin("3g"), false);
    bias.attach(block.getInputPin("3bias"), false);
    signal.data.value = level(1);
    bias.data.value = kNoBias;
    double time = 0.0;
    const auto step = [&] {
        signal.data.value(0) = -signal.data.value(0);
        signal.send(time += 0.01);
        bias.send(time);
        block.process();
    };
    step();
    step();
    const AllocationCounter counter;
    for (int i = 0; i < 500; ++i)
        step();
    EXPECT_EQ(counter.count(), 0u);
}

TEST(FilterFlagStaticTest, LongTrace) {
    for (unsigned seed = 1; seed <= 6; ++seed) {
        std::mt19937_64 random(seed);
        std::uniform_real_distribution<double> unit(0.0, 1.0);
        std::normal_distribution<double> normal(0.0, 1.0);
        Fixture f;
        LiteralFlagStatic literal;
        const MatrixXd bias = matrix({{normal(random), normal(random), normal(random)}});
        double time = normal(random);
        double loudness = 1.0;
        int still = 0;
        int moving = 0;
        for (int i = 0; i < 6000; ++i) {
            const double what = unit(random);
            if (what < 0.002) {
                literal.windowsSize = static_cast<int>(unit(random) * 60.0);
                f.feed.set("Windows Size", literal.windowsSize);
            } else if (what < 0.004) {
                literal.maxStdDev = 5.0 * unit(random);
                f.feed.set("MaxStdDev", literal.maxStdDev);
            } else if (what < 0.006) {
                literal.flagThreshold = 6.0 * unit(random);
                f.feed.set("FlagThreshold", literal.flagThreshold);
            } else if (what < 0.008) {
                literal.stepStdDevThreshold = 20.0 * unit(random);
                f.feed.set("StepStdDevThreshold", literal.stepStdDevThreshold);
            } else if (what < 0.010) {
                literal.stdDevIni = 20.0 * unit(random);
                literal.resetFlag = true;
                f.feed.set("StdDevIni", literal.stdDevIni);
            } else if (what < 0.012) {
                literal.resetFlag = true;
                f.feed.fire("Clear");
            } else if (what < 0.022) {
                loudness = std::pow(10.0, 2.0 * unit(random) - 1.0);
            }
            if (unit(random) < 0.98) time += 0.01;
            const double held = unit(random) < 0.05 ? 0.0 : 1.0; // an axis that repeats 0 now and then
            const MatrixXd signal =
                matrix({{bias(0) + loudness * normal(random), bias(1) + loudness * normal(random),
                         held * loudness * normal(random)}});
            const auto wanted = literal.step(signal, bias, time);
            ASSERT_EQ(f.step(signal, time, bias), wanted.has_value()) << "seed " << seed << ", step " << i;
            if (!wanted) continue;
            ASSERT_TRUE(agree(f.estimate(), wanted->stdDev, same)) << "seed " << seed << ", step " << i;
            ASSERT_TRUE(agree(f.feed.last("FlagStatic").value, matrix({{wanted->flag}}), same))
                << seed << ", step " << i;
            ++(wanted->flag == 1.0 ? still : moving);
        }
        EXPECT_GT(still, 100) << "the trace has lost its point";
        EXPECT_GT(moving, 100) << "the trace has lost its point";
    }
}
