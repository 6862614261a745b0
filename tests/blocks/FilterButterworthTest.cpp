// SPDX-License-Identifier: MIT
#include "blocks/FilterButterworth.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace Support;

namespace {

constexpr unsigned kLowPass = 0;
constexpr unsigned kHiPass = 1;

/// The engine as the block should have set it up.
ButterworthComputer engine(double cutOff, int order, bool highPass = false) {
    ButterworthComputer computer;
    computer.setParameters(cutOff, order);
    computer.setHighPass(highPass);
    return computer;
}

MatrixXd stepped(ButterworthComputer& computer, const MatrixXd& input) {
    computer.step(input);
    return computer.output();
}

} // namespace

TEST(FilterButterworthTest, Catalogue) {
    FilterButterworth block("smooth");
    EXPECT_STREQ(block.getTypeName(), "FilterButterworth");
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "input \"reset\" non-blocking\n"
                                "output \"out\"\n"
                                "command \"Init\"\n"
                                "range double \"RelativeCutOffFreq\" 0.050000000000000003 in [0;1] step "
                                "9.9999999999999995e-07\n"
                                "range int \"Order\" 1 in [0;10] step 1\n"
                                "enum \"Mode\" 0 of LowPass, HiPass\n");
}

TEST(FilterButterworthTest, WorkedSample) {
    // At half the band t is tan(pi/4), one unit below 1: a1 is a rounding error, so y is the mean of two
    // inputs.
    FilterButterworth block("smooth");
    Feed feed(block);
    feed.set("RelativeCutOffFreq", 0.5);
    const double inputs[] = {4.0, 2.0, -1.0, 7.0};
    const double wanted[] = {4.0, 3.0, 0.5, 3.0};
    for (int n = 0; n < 4; ++n)
        EXPECT_TRUE(agree(feed.run("in", matrix({{inputs[n]}}))(0), wanted[n], law(1e-14))) << n;
}

TEST(FilterButterworthTest, StartsInTheSteadyState) {
    const MatrixXd input = matrix({{1, -2, 3}, {0.5, 1e3, 0}});
    for (int order = 1; order <= 10; ++order)
        for (const unsigned mode : {kLowPass, kHiPass}) {
            FilterButterworth block("smooth");
            Feed feed(block);
            feed.set("Order", order);
            feed.set("Mode", mode);
            const MatrixXd wanted = mode == kLowPass ? input : MatrixXd::Zero(2, 3);
            for (int n = 0; n < 30; ++n)
                // 1e3 times the eleven digits that a steady state at this cut-off holds.
                EXPECT_TRUE(agree(feed.run("in", input), wanted, law(1e-8))) << "order " << order;
        }
}

TEST(FilterButterworthTest, OrderZeroGivesTheInputInBothModes) {
    for (const unsigned mode : {kLowPass, kHiPass}) {
        FilterButterworth block("smooth");
        Feed feed(block);
        feed.set("Order", 0);
        feed.set("Mode", mode);
        for (const MatrixXd& input : {matrix({{1, kNaN, -0.0}}), matrix({{2}, {3}}), MatrixXd(0, 0)})
            EXPECT_TRUE(agree(feed.run("in", input), input, same));
    }
}

TEST(FilterButterworthTest, SettingsReachTheEngine) {
    struct Row {
        const char* name;
        double cutOff;
        int order;
        unsigned mode;
    };
    const Row rows[] = {
        {.name = "as placed", .cutOff = 0.05, .order = 1, .mode = kLowPass},
        {.name = "a1 of zero, one pair", .cutOff = 0.5, .order = 2, .mode = kLowPass},
        {.name = "a1 of zero, a pair and one", .cutOff = 0.5, .order = 3, .mode = kHiPass},
        {.name = "five pairs", .cutOff = 0.3, .order = 10, .mode = kLowPass},
        {.name = "the highest cut-off", .cutOff = 1.0, .order = 4, .mode = kLowPass},
        {.name = "the lowest cut-off: not finite", .cutOff = 0.0, .order = 2, .mode = kLowPass},
    };
    for (const Row& row : rows) {
        FilterButterworth block("smooth");
        Feed feed(block);
        feed.set("RelativeCutOffFreq", row.cutOff);
        feed.set("Order", row.order);
        feed.set("Mode", row.mode);
        ButterworthComputer wanted = engine(row.cutOff, row.order, row.mode == kHiPass);
        for (const double x : {1.0, -3.0, 2.5, 0.0, 8.0}) {
            const MatrixXd input = matrix({{x, 1 - x, x * x}});
            EXPECT_TRUE(agree(feed.run("in", input), stepped(wanted, input), same)) << row.name;
        }
    }
}

TEST(FilterButterworthTest, ZeroCutOffIsNotFiniteUntilAnotherIsWritten) {
    FilterButterworth block("smooth");
    Feed feed(block);
    feed.set("RelativeCutOffFreq", 0.0);
    for (int n = 0; n < 3; ++n)
        EXPECT_FALSE(std::isfinite(feed.run("in", matrix({{1}}))(0)));
    feed.set("RelativeCutOffFreq", 0.2);
    EXPECT_TRUE(agree(feed.run("in", matrix({{1}}))(0), 1.0, withinRel(1e-14)));
}

TEST(FilterButterworthTest, AResetWithoutASampleHappensAtOnce) {
    FilterButterworth block("smooth");
    Feed feed(block);
    feed.run("in", matrix({{0}}));
    feed.give("reset", matrix({{1}}));
    feed.step(); // nothing on "in", and yet the request is taken from its pin
    feed.give("reset", matrix({{0}}));
    EXPECT_TRUE(agree(feed.run("in", matrix({{8}}))(0), 8.0, withinRel(1e-14))) << "in the steady state of 8";
}

TEST(FilterButterworthTest, AnotherShapeStartsAnewWithoutAGap) {
    FilterButterworth block("smooth");
    Feed feed(block);
    feed.run("in", matrix({{1, 2, 3}}));
    feed.run("in", matrix({{9, 9, 9}}));
    const MatrixXd square = matrix({{1, 2}, {3, 4}});
    ButterworthComputer wanted = engine(0.05, 1);
    EXPECT_TRUE(agree(feed.run("in", square), stepped(wanted, square), same));
}

TEST(FilterButterworthTest, AnEmptySampleIsSentOn) {
    FilterButterworth block("smooth");
    Feed feed(block);
    for (const MatrixXd& input : {MatrixXd(0, 0), MatrixXd(0, 4), MatrixXd(3, 0)})
        EXPECT_TRUE(agree(feed.run("in", input, 2.5), input, same));
    EXPECT_TRUE(agree(feed.last().timeStamp, 2.5, same));
}

TEST(FilterButterworthTest, KeepsTheTimeStamp) {
    FilterButterworth block("smooth");
    Feed feed(block);
    for (const double stamp : {0.0, 1.0 / 3.0, -7.0}) {
        feed.run("in", matrix({{1}}), stamp);
        EXPECT_TRUE(agree(feed.last().timeStamp, stamp, same));
    }
}

TEST(FilterButterworthTest, WithoutASampleNothingIsSent) {
    FilterButterworth block("smooth");
    Feed feed(block);
    feed.step();
    feed.give("reset", matrix({{1}}));
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
}

TEST(FilterButterworthTest, RefusesWhatDoesNotFit) {
    FilterButterworth block("smooth");
    Feed feed(block);
    EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set("Order", 11); }),
              "11 does not fit in [0;10], (step : 1)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set("RelativeCutOffFreq", 1.5); }),
              "1.5 does not fit in [0;1], (step : 1e-06)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set("Mode", 2u); }), "");
}

TEST(FilterButterworthTest, WhatRestartsAndWhatDoesNot) {
    struct Row {
        const char* name;
        void (*act)(Feed&);
        bool restarts;
    };
    const Row rows[] = {
        {.name = "nothing", .act = [](Feed&) {}, .restarts = false},
        {.name = "Init", .act = [](Feed& feed) { feed.fire("Init"); }, .restarts = true},
        {.name = "reset 1",
         .act =
             [](Feed& feed) {
                 feed.give("reset", matrix({{1, 0}}));
             },
         .restarts = true},
        {.name = "reset not-a-number",
         .act = [](Feed& feed) { feed.give("reset", matrix({{kNaN}})); },
         .restarts = true},
        {.name = "reset 0",
         .act =
             [](Feed& feed) {
                 feed.give("reset", matrix({{0, 1}}));
             },
         .restarts = false},
        {.name = "reset -0",
         .act = [](Feed& feed) { feed.give("reset", matrix({{-0.0}})); },
         .restarts = false},
        {.name = "reset empty",
         .act = [](Feed& feed) { feed.give("reset", MatrixXd(0, 1)); },
         .restarts = false},
        {.name = "a setting and back",
         .act =
             [](Feed& feed) {
                 feed.set("Order", 7);
                 feed.set("Order", 3);
             },
         .restarts = true},
        {.name = "a setting that has the value",
         .act = [](Feed& feed) { feed.set("Order", 3); },
         .restarts = false},
        {.name = "the mode and back",
         .act =
             [](Feed& feed) {
                 feed.set("Mode", kHiPass);
                 feed.set("Mode", kLowPass);
             },
         .restarts = true},
    };
    for (const Row& row : rows) {
        FilterButterworth block("smooth");
        Feed feed(block);
        feed.set("Order", 3);
        ButterworthComputer running = engine(0.05, 3);
        for (const double x : {1.0, 5.0, -2.0}) {
            feed.run("in", matrix({{x}}));
            running.step(matrix({{x}}));
        }
        row.act(feed);
        ButterworthComputer fresh = engine(0.05, 3);
        ButterworthComputer& wanted = row.restarts ? fresh : running;
        for (const double x : {10.0, -4.0, 0.5})
            EXPECT_TRUE(agree(feed.run("in", matrix({{x}})), stepped(wanted, matrix({{x}})), same))
                << row.name;
    }
}

TEST(FilterButterworthTest, AResetIsKeptUntilTheNextSample) {
    FilterButterworth block("smooth");
    Feed feed(block);
    feed.run("in", matrix({{1}}));
    feed.run("in", matrix({{5}}));
    feed.give("reset", matrix({{1}}));
    feed.step();
    feed.step();
    ButterworthComputer fresh = engine(0.05, 1);
    EXPECT_TRUE(agree(feed.run("in", matrix({{-3}})), stepped(fresh, matrix({{-3}})), same));
}

TEST(FilterButterworthTest, ASteadyStepAllocatesNothing) {
    FilterButterworth block("smooth");
    EXPECT_EQ(allocationsOfAHundredSteps(block, "in", MatrixXd::Ones(1, 3)), 0u);
}

TEST(FilterButterworthTest, LongTrace) {
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> number(-10.0, 10.0);
    std::uniform_int_distribution<int> dice(0, 19);
    FilterButterworth block("smooth");
    FilterButterworth twin("smooth");
    Feed feed(block);
    Feed feedTwin(twin);
    ButterworthComputer wanted = engine(0.05, 1);
    double cutOff = 0.05;
    int order = 1;
    MatrixXd sample(1, 3);
    for (int n = 0; n < 2000; ++n) {
        if (dice(random) == 0) {
            cutOff = 0.04 * (1 + dice(random));
            order = dice(random) % 11;
            for (Feed* const each : {&feed, &feedTwin}) {
                each->set("RelativeCutOffFreq", cutOff);
                each->set("Order", order);
                each->fire("Init");
            }
            wanted.setParameters(cutOff, order);
        }
        if (dice(random) == 0) sample.resize(1 + dice(random) % 3, 1 + dice(random) % 4);
        for (Eigen::Index i = 0; i < sample.size(); ++i)
            sample(i) = number(random);
        const MatrixXd got = feed.run("in", sample, n);
        ASSERT_TRUE(agree(got, stepped(wanted, sample), same)) << "step " << n;
        ASSERT_TRUE(agree(feedTwin.run("in", sample, n), got, same)) << "step " << n;
    }
}
