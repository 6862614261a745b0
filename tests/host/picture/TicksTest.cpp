// SPDX-License-Identifier: MIT
#include "host/picture/Ticks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;

std::string labels(const std::vector<AxisTick>& ticks) {
    std::string text;
    for (const AxisTick& tick : ticks)
        text += (text.empty() ? "" : " ") + tick.label;
    return text;
}

TEST(Ticks, NumbersAreRoundAndAsManyAsFit) {
    EXPECT_EQ(labels(numberTicks(0.0, 10.0, 6)), "0 2 4 6 8 10");
    EXPECT_EQ(labels(numberTicks(-1.2, 1.1, 5)), "-1.0 -0.5 0.0 0.5 1.0");
    EXPECT_EQ(labels(numberTicks(0.0, 0.025, 6)), "0.000 0.005 0.010 0.015 0.020 0.025");
    EXPECT_EQ(labels(numberTicks(9.79, 9.83, 4)), "9.79 9.80 9.81 9.82 9.83");
    EXPECT_EQ(labels(numberTicks(0.0, 2.5e9, 5)), "0 5e+08 1e+09 1.5e+09 2e+09 2.5e+09");
    EXPECT_EQ(labels(numberTicks(0.0, 3e-7, 3)), "0 1e-07 2e-07 3e-07");
}

TEST(Ticks, ASingleNumberTellsNoScale) {
    EXPECT_EQ(labels(numberTicks(-0.9, 0.9, 3)), "-0.5 0.0 0.5");
    EXPECT_EQ(labels(numberTicks(0.5, 9.5, 3)), "2 4 6 8");
    EXPECT_EQ(labels(numberTicks(3.875, 4.125, 3)), "3.9 4.0 4.1");
    EXPECT_EQ(labels(timeTicks(301.0, 359.0, 2).ticks), "5:15 5:30 5:45");
}

TEST(Ticks, AStepCanBeSaid) {
    EXPECT_EQ(labels(ticksApart(-194.0, 194.0, 90.0)), "-180 -90 0 90 180");
    EXPECT_EQ(labels(ticksApart(0.3, 1.1, 0.5)), "0.5 1.0");
}

TEST(Ticks, NumbersHaveAsManyDigitsAsTellThem) {
    EXPECT_EQ(labels(numberTicks(1565090000000.0, 1565090000030.0, 3)),
              "1565090000000 1565090000010 1565090000020 1565090000030");
    EXPECT_EQ(labels(numberTicks(1e15 + 2, 1e15 + 5, 3)),
              "1000000000000002 1000000000000003 1000000000000004 1000000000000005");
    EXPECT_EQ(labels(numberTicks(1.00000002e-5, 1.00000005e-5, 3)),
              "1.00000002e-05 1.00000003e-05 1.00000004e-05 1.00000005e-05");
    EXPECT_EQ(labels(numberTicks(1.0, 1.0 + 1.9e-13, 2)), "1.0000000000000 1.0000000000001");
}

TEST(Ticks, TimesHaveStepsOfAClock) {
    const auto told = [](double from, double to) {
        const TimeTicks times = timeTicks(from, to, 7);
        return labels(times.ticks) + " " + times.form;
    };
    EXPECT_EQ(told(0.0, 120.0), "0 20 40 60 80 100 120 seconds");
    EXPECT_EQ(told(0.0, 600.0), "0:00 2:00 4:00 6:00 8:00 10:00 minutes:seconds");
    EXPECT_EQ(told(300.0, 345.0), "5:00 5:10 5:20 5:30 5:40 minutes:seconds");
    EXPECT_EQ(told(300.0, 300.5), "300.0 300.1 300.2 300.3 300.4 300.5 seconds");
    EXPECT_EQ(told(0.0, 86400.0), "0:00 6:00 12:00 18:00 24:00 hours:minutes");
    EXPECT_EQ(told(0.0, 8 * 3600.0), "0:00 2:00 4:00 6:00 8:00 hours:minutes");
    EXPECT_EQ(told(0.0, 7 * 86400.0), "0 1 2 3 4 5 6 7 days");
    EXPECT_EQ(told(-90.0, 90.0), "-50 0 50 seconds");
    EXPECT_EQ(told(-200.0, 0.0), "-3:00 -2:30 -2:00 -1:30 -1:00 -0:30 0:00 minutes:seconds");
}

TEST(Ticks, LieWithinAnyRangeAndDiffer) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> part(-1.0, 1.0);
    for (int i = 0; i < 20'000; ++i) {
        const double low = part(random) * std::pow(10.0, 12.0 * part(random));
        const double high = low + std::fabs(part(random)) * std::pow(10.0, 12.0 * part(random));
        if (!(high - low > 1e-9 * std::fabs(low))) continue;
        for (const std::vector<AxisTick>& ticks :
             {numberTicks(low, high, 6), timeTicks(low, high, 6).ticks}) {
            EXPECT_LE(ticks.size(), 8u) << low << " " << high;
            EXPECT_GE(ticks.size(), 2u) << low << " " << high;
            const double room = 1e-5 * (high - low);
            for (std::size_t k = 0; k < ticks.size(); ++k) {
                EXPECT_GE(ticks[k].value, low - room);
                EXPECT_LE(ticks[k].value, high + room);
                if (k > 0) {
                    EXPECT_GT(ticks[k].value, ticks[k - 1].value);
                    EXPECT_NE(ticks[k].label, ticks[k - 1].label);
                }
            }
        }
    }
}

} // namespace
