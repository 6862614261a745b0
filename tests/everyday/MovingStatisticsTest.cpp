// SPDX-License-Identifier: MIT
#include "everyday/MovingStatistics.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

using namespace Support;

namespace {

struct Figures {
    const char* kind;
    unsigned number;
    std::vector<double> trace;
    std::vector<double> statistic;
};

const Figures kFigures[] = {
#include "tests/everyday/MovingFigures.inc"
};

constexpr unsigned kKinds = 7;
constexpr unsigned kMean = 0;
constexpr unsigned kSpread = 1;
constexpr unsigned kRms = 2;
constexpr unsigned kMinimum = 3;
constexpr unsigned kMaximum = 4;
constexpr unsigned kMedian = 5;

void setUp(Feed& feed, unsigned kind, int samples) {
    feed.set("Kind", kind);
    feed.set("Samples", samples);
}

MatrixXd statisticOf(Feed& feed, const MatrixXd& sample, double time = 0.0) {
    return feed.run("in", sample, time, "out");
}

/// What comes of single values.
std::vector<double> run(unsigned kind, int samples, const std::vector<double>& values) {
    MovingStatistics block("statistics");
    Feed feed(block);
    setUp(feed, kind, samples);
    std::vector<double> results;
    for (const double value : values)
        results.push_back(statisticOf(feed, matrix({{value}}))(0));
    return results;
}

void expectSame(const std::vector<double>& got, const std::vector<double>& wanted, unsigned kind) {
    ASSERT_EQ(got.size(), wanted.size());
    for (std::size_t i = 0; i < got.size(); ++i)
        EXPECT_TRUE(agree(got[i], wanted[i], same)) << "kind " << kind << ", sample " << i;
}

} // namespace

TEST(MovingStatisticsTest, Catalogue) {
    MovingStatistics block("statistics");
    EXPECT_STREQ(block.getTypeName(), "MovingStatistics");
    EXPECT_EQ(catalogue(block),
              "input \"in\" blocking\n"
              "output \"out\"\n"
              "output \"scaled\"\n"
              "range int \"Samples\" 100 in [1;100000] step 1\n"
              "enum \"Kind\" 0 of Mean, StandardDeviation, RMS, Minimum, Maximum, Median, Range\n"
              "value bool \"OnlyFull\" false\n"
              "command \"Reset\"\n");
}

TEST(MovingStatisticsTest, AgreesWithNumPy) {
    for (const Figures& figures : kFigures) {
        MovingStatistics block("statistics");
        Feed feed(block);
        setUp(feed, figures.number, 7);
        for (std::size_t i = 0; i + 1 < figures.trace.size(); i += 2) {
            const MatrixXd got =
                statisticOf(feed, matrix({{figures.trace[i], figures.trace[i + 1]}}), 0.1 * double(i));
            const MatrixXd wanted = matrix({{figures.statistic[i], figures.statistic[i + 1]}});
            // A spread of 0.25 around 1000: NumPy's own mean is off by 1e-13, the square of which it adds up.
            ASSERT_TRUE(agree(got, wanted, withinRel(1e-12))) << figures.kind << ", row " << i / 2;
            ASSERT_TRUE(agree(feed.last("out").timeStamp, 0.1 * double(i), same));
        }
    }
}

TEST(MovingStatisticsTest, KnownWindows) {
    const std::vector<double> values{2, 4, 4, -6, 10, 1};
    expectSame(run(kMean, 2, values), {2, 3, 4, -1, 2, 5.5}, kMean);
    expectSame(run(kSpread, 2, values), {0, 1, 0, 5, 8, 4.5}, kSpread);
    expectSame(run(2, 1, values), {2, 4, 4, 6, 10, 1}, 2);
    expectSame(run(kMinimum, 3, values), {2, 2, 2, -6, -6, -6}, kMinimum);
    expectSame(run(kMaximum, 3, values), {2, 4, 4, 4, 10, 10}, kMaximum);
    expectSame(run(kMedian, 4, values), {2, 3, 4, 3, 4, 2.5}, kMedian);
    expectSame(run(6, 3, values), {0, 2, 2, 10, 16, 16}, 6);
}

TEST(MovingStatisticsTest, WhatIsNoNumberLeavesNothingBehind) {
    const double huge = 1e300;
    for (unsigned kind = 0; kind < kKinds; ++kind) {
        for (const double odd : {kNaN, kInf, -kInf, huge}) {
            const auto tail = run(kind, 3, {1, odd, 2, 2, 2, 5, 5, 5, 5});
            EXPECT_TRUE(agree(tail[4], run(kind, 3, {2, 2, 2})[2], same)) << "kind " << kind << ", " << odd;
            EXPECT_TRUE(agree(tail[8], run(kind, 3, {5, 5, 5})[2], same)) << "kind " << kind << ", " << odd;
        }
        for (const double result :
             {run(kind, 3, {1, kNaN})[1], run(kind, 3, {kNaN, 1})[1], run(kind, 3, {1, kNaN, 7, 8})[3]})
            EXPECT_TRUE(std::isnan(result)) << "kind " << kind;
    }
}

TEST(MovingStatisticsTest, ZerosKeepTheirSigns) {
    expectSame(run(kMinimum, 2, {0.0, -0.0, 0.0, 0.0}), {0.0, 0.0, -0.0, 0.0}, kMinimum);
    expectSame(run(kMaximum, 2, {-0.0, 0.0, -0.0, -0.0}), {-0.0, -0.0, 0.0, -0.0}, kMaximum);
    expectSame(run(kMedian, 1, {0.0, -0.0, 0.0}), {0.0, -0.0, 0.0}, kMedian);
    expectSame(run(kMedian, 3, {0.0, -0.0, -0.0, -0.0, 0.0, 0.0}), {0.0, 0.0, -0.0, -0.0, -0.0, 0.0},
               kMedian);
}

// A running sum that subtracts what leaves would keep an error of 1e-16 of the largest value it ever held.
TEST(MovingStatisticsTest, NothingPilesUp) {
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> number(0.5, 1.5);
    for (const unsigned kind : {kMean, kSpread}) {
        MovingStatistics block("statistics");
        Feed feed(block);
        setUp(feed, kind, 50);
        for (int i = 0; i < 20000; ++i)
            statisticOf(feed, matrix({{1e12 * number(random)}}));
        MatrixXd last;
        std::vector<double> values;
        for (int i = 0; i < 50; ++i) {
            values.push_back(number(random));
            last = statisticOf(feed, matrix({{values.back()}}));
        }
        feed.forget();
        long double mean = 0.0L;
        for (const double value : values)
            mean += value;
        mean /= 50.0L;
        long double squares = 0.0L;
        for (const double value : values)
            squares += (value - mean) * (value - mean);
        const auto wanted = static_cast<double>(kind == kMean ? mean : std::sqrt(squares / 50.0L));
        EXPECT_TRUE(agree(last(0), wanted, withinRel(1e-14))) << "kind " << kind;
    }
}

TEST(MovingStatisticsTest, EveryLengthAgreesWithTheRule) {
    std::mt19937_64 random(5);
    std::uniform_int_distribution<int> number(-4, 4);
    for (const int length : {1, 2, 3, 5, 8}) {
        std::vector<double> values;
        for (int i = 0; i < 60; ++i)
            values.push_back(number(random));
        const auto least = run(kMinimum, length, values);
        const auto most = run(kMaximum, length, values);
        const auto middle = run(kMedian, length, values);
        const auto mean = run(kMean, length, values);
        for (std::size_t n = 0; n < values.size(); ++n) {
            const std::size_t count = std::min<std::size_t>(n + 1, static_cast<std::size_t>(length));
            std::vector<double> window(values.begin() + static_cast<std::ptrdiff_t>(n + 1 - count),
                                       values.begin() + static_cast<std::ptrdiff_t>(n + 1));
            std::sort(window.begin(), window.end());
            double sum = 0.0; // of small whole numbers: exact in any order
            for (const double value : window)
                sum += value;
            ASSERT_EQ(least[n], window.front()) << length << ", " << n;
            ASSERT_EQ(most[n], window.back()) << length << ", " << n;
            ASSERT_EQ(middle[n], 0.5 * (window[(count - 1) / 2] + window[count / 2])) << length << ", " << n;
            ASSERT_EQ(mean[n], sum / static_cast<double>(count)) << length << ", " << n;
        }
    }
}

TEST(MovingStatisticsTest, OnlyFullWaits) {
    for (unsigned kind = 0; kind < kKinds; ++kind) {
        MovingStatistics block("statistics");
        Feed feed(block);
        setUp(feed, kind, 3);
        feed.set("OnlyFull", true);
        for (int i = 0; i < 5; ++i) {
            feed.give("in", matrix({{1.0}}), i);
            feed.step();
        }
        ASSERT_EQ(feed.sent("out").size(), 3U) << "kind " << kind;
        EXPECT_EQ(feed.sent("out").front().timeStamp, 2.0);
    }
}

TEST(MovingStatisticsTest, StartsAnew) {
    for (unsigned kind = 0; kind < kKinds; ++kind) {
        MovingStatistics block("statistics");
        Feed feed(block);
        setUp(feed, kind, 5);
        const MatrixXd first = statisticOf(feed, matrix({{3, 4}}));
        statisticOf(feed, matrix({{8, -1}}));
        EXPECT_TRUE(agree(statisticOf(feed, matrix({{3}, {4}})), MatrixXd(first.transpose()), same))
            << "another shape";
        statisticOf(feed, matrix({{9}, {9}}));
        feed.fire("Reset");
        EXPECT_TRUE(agree(statisticOf(feed, matrix({{3}, {4}})), MatrixXd(first.transpose()), same))
            << "a reset";
        statisticOf(feed, matrix({{9}, {9}}));
        feed.set("Samples", 6);
        EXPECT_TRUE(agree(statisticOf(feed, matrix({{3}, {4}})), MatrixXd(first.transpose()), same))
            << "another length";
        feed.forget();
        feed.give("in", MatrixXd(0, 3));
        feed.step();
        EXPECT_TRUE(feed.sent("out").empty());
    }
}

TEST(MovingStatisticsTest, ScaledIsTheSampleOverTheStatistic) {
    MovingStatistics block("statistics");
    Feed feed(block);
    setUp(feed, kRms, 2);
    const auto scaled = [&](const MatrixXd& sample) { return feed.run("in", sample, 0.25, "scaled"); };
    EXPECT_TRUE(agree(scaled(matrix({{3, 0}})), matrix({{1, 0}}), same)) << "nothing over nothing is nothing";
    EXPECT_TRUE(agree(scaled(matrix({{-4, -0.0}})), matrix({{-4 / std::sqrt(12.5), 0}}), same));
    EXPECT_EQ(feed.last("scaled").timeStamp, 0.25);
    EXPECT_TRUE(agree(scaled(matrix({{kNaN, kInf}})), matrix({{kNaN, kNaN}}), same));
    feed.set("Kind", kMean);
    EXPECT_TRUE(agree(scaled(matrix({{2}, {0}})), matrix({{1}, {0}}), same));
    EXPECT_TRUE(agree(scaled(matrix({{-2}, {-1}})), matrix({{-kInf}, {2}}), same)) << "a mean of 0";
    feed.set("OnlyFull", true);
    feed.fire("Reset");
    feed.forget();
    feed.give("in", matrix({{1}}));
    feed.step();
    EXPECT_TRUE(feed.sent("scaled").empty());
}

TEST(MovingStatisticsTest, ASteadyStepAllocatesNothing) {
    for (unsigned kind = 0; kind < kKinds; ++kind) {
        MovingStatistics block("statistics");
        {
            Feed feed(block); // its links are gone before others are made
            setUp(feed, kind, 7);
        }
        EXPECT_EQ(allocationsOfAHundredSteps(block, "in", MatrixXd::Ones(4, 6)), 0U) << "kind " << kind;
    }
}
