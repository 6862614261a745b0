// SPDX-License-Identifier: MIT
#include "host/ends/TimeStampWatch.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

using Quillmere::Host::SourceAccount;
using Quillmere::Host::TimeStampWatch;

/// Row i stands in line i + 1, behind a row of names.
SourceAccount accountOf(const std::vector<double>& times) {
    TimeStampWatch watch;
    std::uint64_t row = 0;
    for (const double time : times) {
        ++row;
        watch.take(time, row, row + 1);
    }
    SourceAccount account;
    watch.tell(account);
    return account;
}

/// The times of `count` more steps of one size.
void go(std::vector<double>& times, double step, int count) {
    for (int i = 0; i < count; ++i)
        times.push_back(times.back() + step);
}

TEST(TimeStampWatch, HasNothingToTellOfNothing) {
    const SourceAccount none = accountOf({});
    EXPECT_EQ(none.getLength(), 0.0);
    EXPECT_FALSE(none.firstStep || none.medianStep || none.getMedianRate());
    const SourceAccount one = accountOf({5.0});
    EXPECT_EQ(one.firstTime, 5.0);
    EXPECT_EQ(one.lastTime, 5.0);
    EXPECT_FALSE(one.firstStep || one.medianStep);
}

TEST(TimeStampWatch, ASteadyRecordingHasItsStepExactly) {
    std::vector<double> times{-2.0};
    go(times, 0.0078125, 1000); // a power of two, so that sums are exact
    const SourceAccount account = accountOf(times);
    EXPECT_EQ(account.firstTime, -2.0);
    EXPECT_EQ(account.getLength(), 7.8125);
    EXPECT_EQ(account.firstStep, 0.0078125);
    EXPECT_EQ(account.medianStep, 0.0078125);
    EXPECT_EQ(account.getMedianRate(), 128.0);
    EXPECT_EQ(account.backward.count + account.equal.count + account.jumps.count, 0u);
}

TEST(TimeStampWatch, TheMedianIsThatOfTheStepsForward) {
    EXPECT_EQ(accountOf({0, 1, 3, 7, 15, 31}).medianStep, 4.0);
    EXPECT_EQ(accountOf({0, 1, 3, 7, 15}).medianStep, 2.0) << "of two in the middle the smaller";
    EXPECT_EQ(accountOf({0, 0, 0, 0, 2, 2, 2, 1, 3}).medianStep, 2.0) << "rows of one time stamp are no rate";
    EXPECT_FALSE(accountOf({3, 2, 2, 1}).medianStep) << "time never goes on";
}

/// The bound is a bin's width.
TEST(TimeStampWatch, TheMedianOfUnevenStepsIsOffByLessThanASixteenth) {
    std::vector<double> times{0.0};
    for (int i = 0; i < 2001; ++i)
        times.push_back(times.back() + 0.01 + 1e-5 * ((i * 1237) % 2001)); // 0.01 to 0.03, each once
    EXPECT_NEAR(accountOf(times).medianStep.value(), 0.02, 0.02 / 16);
}

TEST(TimeStampWatch, AGapAtTheStartIsAJumpThoughTheRateIsKnownLaterOnly) {
    std::vector<double> times{0.0, 1.0};
    go(times, 0.01, 3000);
    const SourceAccount account = accountOf(times);
    EXPECT_EQ(account.firstStep, 1.0);
    EXPECT_NEAR(account.medianStep.value(), 0.01, 1e-9);
    EXPECT_EQ(account.jumps.count, 1u);
    EXPECT_EQ(account.jumps.first.row, 2u);
    EXPECT_EQ(account.jumps.first.line, 3u);
    EXPECT_EQ(account.jumps.first.before, 0.0);
    EXPECT_EQ(account.jumps.first.time, 1.0);
}

TEST(TimeStampWatch, JumpsAreCountedWhereverTheyAreAndTheFirstIsTold) {
    std::vector<double> times{0.0};
    go(times, 0.01, 500);
    go(times, 5.0, 1);
    go(times, 0.01, 500);
    for (int i = 0; i < 70; ++i) { // more than anybody would list
        go(times, 0.25, 1);
        go(times, 0.01, 20);
    }
    go(times, 30.0, 1);
    const SourceAccount account = accountOf(times);
    EXPECT_EQ(account.jumps.count, 72u);
    EXPECT_EQ(account.jumps.first.row, 502u) << "the first, not the largest";
    EXPECT_NEAR(account.jumps.first.time - account.jumps.first.before, 5.0, 1e-9);
}

TEST(TimeStampWatch, WhatBeganSlowlyHasNoJumpsWhenMostOfItIsSlow) {
    std::vector<double> times{0.0};
    go(times, 0.001, 200);
    go(times, 1.0, 1000);
    const SourceAccount slow = accountOf(times);
    EXPECT_EQ(slow.medianStep, 1.0);
    EXPECT_EQ(slow.jumps.count, 0u) << "a thousand times the steps of the beginning, but the usual step";
    times.resize(301);
    EXPECT_EQ(accountOf(times).jumps.count, 100u) << "here the fast rows are most";
}

TEST(TimeStampWatch, AJumpIsMoreThanTenSteps) {
    std::vector<double> times{0.0};
    go(times, 1.0, 100);
    go(times, 10.0, 1);
    EXPECT_EQ(accountOf(times).jumps.count, 0u);
    go(times, 10.5, 1);
    EXPECT_EQ(accountOf(times).jumps.count, 1u);
}

TEST(TimeStampWatch, StepsBackAndStepsOfNothingAreCountedApart) {
    const SourceAccount account = accountOf({0, 1, 2, 2, 2, 1.5, 2.5, 2.5, 0.5, 1.5});
    EXPECT_EQ(account.equal.count, 3u);
    EXPECT_EQ(account.equal.first.row, 4u);
    EXPECT_EQ(account.equal.first.time, 2.0);
    EXPECT_EQ(account.backward.count, 2u);
    EXPECT_EQ(account.backward.first.row, 6u);
    EXPECT_EQ(account.backward.first.line, 7u);
    EXPECT_EQ(account.backward.first.before, 2.0);
    EXPECT_EQ(account.backward.first.time, 1.5);
    EXPECT_EQ(accountOf({4, 3, 5}).firstStep, -1.0) << "the first step may be one of them";
    EXPECT_EQ(accountOf({4, 4, 5}).firstStep, 0.0);
}

TEST(TimeStampWatch, AnyFiniteStepHasItsPlace) {
    constexpr double kTiny = std::numeric_limits<double>::denorm_min();
    constexpr double kHuge = std::numeric_limits<double>::max();
    EXPECT_EQ(accountOf({0.0, kTiny}).medianStep, kTiny);
    EXPECT_EQ(accountOf({0.0, kHuge}).medianStep, kHuge);
    EXPECT_EQ(accountOf({-kHuge, kHuge, kHuge, 0.0}).jumps.count, 0u);
    EXPECT_EQ(accountOf({0.0, 1.0, 2.0, 3.0, kHuge}).jumps.count, 1u);
    EXPECT_EQ(accountOf({1.6e18, 1.6e18 + 256, 1.6e18 + 512, 1.6e18 + 10e9}).jumps.count, 1u)
        << "nanoseconds since 1970, which doubles round";
}

} // namespace
