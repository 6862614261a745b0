// SPDX-License-Identifier: MIT
#include "host/live/LiveClock.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using Quillmere::Host::LiveClock;
using Clock = LiveClock::Clock;

/// Seconds from the first time in the stream until something is due.
double wait(const LiveClock& clock, double firstTime, double streamTime) {
    return std::chrono::duration<double>(clock.dueOf(streamTime) - clock.dueOf(firstTime)).count();
}

TEST(LiveClock, IsAsFarBehindTheStartAsTheStreamIsOrNearerByTheSpeed) {
    // Whole numbers of a clock's ticks.
    const struct {
        double speed, firstTime, streamTime, seconds;
    } rows[] = {{1, 0, 0, 0},       {1, 0, 2.5, 2.5},   {4, 0, 2, 0.5},      {0.5, 0, 2, 4},
                {2, 100, 101, 0.5}, {1, -1.5, -1, 0.5}, {1, 5, 4.75, -0.25}, {1, 1e6, 1e6 + 0.125, 0.125}};
    for (const auto& row : rows) {
        LiveClock clock(row.speed);
        clock.start(row.firstTime);
        EXPECT_FALSE(clock.getIsUnpaced());
        EXPECT_EQ(wait(clock, row.firstTime, row.streamTime), row.seconds)
            << row.streamTime << " after " << row.firstTime << " at speed " << row.speed;
    }
}

TEST(LiveClock, TheFirstTimeIsDueAtTheStart) {
    LiveClock clock(3.0);
    const Clock::time_point before = Clock::now();
    clock.start(7.0);
    EXPECT_GE(clock.dueOf(7.0), before);
    EXPECT_LE(clock.dueOf(7.0), Clock::now());
}

TEST(LiveClock, WithoutAPaceEverythingIsDue) {
    LiveClock clock(LiveClock::kMaximum);
    clock.start(0.0);
    EXPECT_TRUE(clock.getIsUnpaced());
    for (const double time : {-1e300, 0.0, 1e300})
        EXPECT_EQ(clock.dueOf(time), Clock::time_point::min()) << time;
}

TEST(LiveClock, WhatIsTooFarAwayToBeCountedNeverComesOrHasLongComeButDoesNotOverflow) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    LiveClock clock(1.0);
    clock.start(0.0);
    for (const double time : {3e9, 1e300, kInfinity, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(clock.dueOf(time), Clock::time_point::max()) << time;
    for (const double time : {-3e9, -1e300, -kInfinity})
        EXPECT_EQ(wait(clock, 0.0, time), -3e9) << time;
    EXPECT_LT(clock.dueOf(2.9e9), Clock::time_point::max());
}

} // namespace
