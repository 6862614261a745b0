// SPDX-License-Identifier: MIT
#include "host/report/SignalLevels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace {

using Quillmere::Core::MatrixXd;
using Quillmere::Host::levelsOf;
using Quillmere::Host::SignalCurves;
using Quillmere::Host::SignalLevel;
using Numbers = std::vector<double>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

MatrixXd pair(double one, double other) {
    MatrixXd sample(1, 2);
    sample << one, other;
    return sample;
}

MatrixXd single(double value) {
    return MatrixXd::Constant(1, 1, value);
}

/// Equal by value, or both not-a-number.
void expectSame(const Numbers& got, const Numbers& wanted) {
    ASSERT_EQ(got.size(), wanted.size());
    for (std::size_t i = 0; i < got.size(); ++i)
        EXPECT_TRUE(got[i] == wanted[i] || (std::isnan(got[i]) && std::isnan(wanted[i])))
            << i << ": " << got[i] << ", " << wanted[i];
}

TEST(SignalLevels, AShortSignalIsItsSamples) {
    SignalCurves curves(4096);
    for (int i = 0; i < 3; ++i)
        curves.take(0.1 * i, pair(i, -i));
    const auto levels = levelsOf(curves);
    ASSERT_EQ(levels.size(), 1u);
    EXPECT_EQ(levels[0].step, 0.0);
    EXPECT_EQ(levels[0].count, 3u);
    EXPECT_EQ(levels[0].times, (Numbers{0.0, 0.1, 0.2}));
    EXPECT_EQ(levels[0].low, (Numbers{0, 1, 2, -0.0, -1, -2}));
    EXPECT_TRUE(levels[0].high.empty());
    EXPECT_TRUE(levelsOf(SignalCurves(4096)).empty()) << "of nothing there is none";
}

TEST(SignalLevels, WhatIsNotFiniteBreaksItsOwnCurve) {
    SignalCurves both(4096), alone(4096);
    for (const double time : {0.0, 1.0, 2.0}) {
        both.take(time, pair(time, time == 1.0 ? kNan : time));
        alone.take(time, single(time == 1.0 ? kNan : time));
    }
    expectSame(levelsOf(both)[0].times, {0, 1, 2});
    expectSame(levelsOf(both)[0].low, {0, 1, 2, 0, kNan, 2});
    expectSame(levelsOf(alone)[0].times, {0, 1, 2}); // in the middle of the way between two numbers
    expectSame(levelsOf(alone)[0].low, {0, kNan, 2});
}

TEST(SignalLevels, SamplesOfOneTimeAreARange) {
    SignalCurves curves(4096);
    for (const double value : {5.0, 1.0, 3.0})
        curves.take(7.0, single(value));
    curves.take(8.0, single(2.0));
    const SignalLevel level = levelsOf(curves).at(0);
    EXPECT_EQ(level.times, (Numbers{7.0, 8.0}));
    EXPECT_EQ(level.low, (Numbers{1.0, 2.0}));
    EXPECT_EQ(level.high, (Numbers{5.0, 2.0}));
}

/// A sample each 10 ms, with one that stands out.
SignalCurves longSignal(std::size_t pieces, int samples, int outlier) {
    SignalCurves curves(pieces);
    for (int i = 0; i < samples; ++i)
        curves.take(0.01 * i, single(i == outlier ? 100.0 : std::sin(0.1 * i)));
    return curves;
}

/// Nothing gets lost on the way from one grain to the next, and nothing is made up.
TEST(SignalLevels, EveryLevelHasEveryExtreme) {
    for (const std::size_t pieces : {std::size_t{4096}, std::size_t{1} << 20}) {
        const auto levels = levelsOf(longSignal(pieces, 100000, 54321));
        ASSERT_GT(levels.size(), 1u);
        EXPECT_LE(levels[0].count, 2048u) << "what a screen takes in";
        for (std::size_t i = 1; i < levels.size(); ++i)
            EXPECT_GT(levels[i].count, levels[i - 1].count) << "from the coarsest to the finest";
        for (const SignalLevel& level : levels) {
            const Numbers& high = level.high.empty() ? level.low : level.high;
            double largest = 0.0;
            std::size_t place = 0;
            for (std::size_t i = 0; i < level.count; ++i) {
                if (!(high[i] > largest)) continue;
                largest = high[i];
                place = i;
            }
            EXPECT_EQ(largest, 100.0);
            const double begin = level.times.empty() ? level.begin + level.step * static_cast<double>(place)
                                                     : level.times[place];
            EXPECT_LE(begin, 543.21);
            EXPECT_GE(begin + level.step, 543.21);
        }
        EXPECT_EQ(levels.back().step == 0.0, pieces > 100000) << "samples as long as they fit";
    }
}

TEST(SignalLevels, AYearWithoutSamplesCostsNothing) {
    SignalCurves curves(4096);
    for (const double start : {0.0, 3e7})
        for (int i = 0; i < 50000; ++i)
            curves.take(start + 0.01 * i, single(i));
    for (const SignalLevel& level : levelsOf(curves)) {
        EXPECT_LE(level.count, 8192u);
        EXPECT_EQ(level.low.size(), level.count);
    }
}

TEST(SignalLevels, ABucketWithoutSamplesHasNoNumber) {
    SignalCurves curves(2048);
    for (int i = 0; i < 100000; ++i)
        if (i < 40000 || i > 60000) curves.take(0.01 * i, single(1.0));
    const SignalLevel level = levelsOf(curves).front();
    ASSERT_TRUE(level.times.empty());
    const auto at = [&](double time) {
        return level.low[static_cast<std::size_t>((time - level.begin) / level.step)];
    };
    EXPECT_EQ(at(100.0), 1.0);
    EXPECT_TRUE(std::isnan(at(500.0)));
    EXPECT_EQ(at(900.0), 1.0);
}

} // namespace
