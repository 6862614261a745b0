// SPDX-License-Identifier: MIT
#include "host/ends/SampleRate.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace Quillmere::Host;

/// Of stamps that a clock of `tick` seconds gives to `count` samples at `rate`, without those that `isLost`
/// names.
template <class IsLost>
SampleRate measured(double rate, double tick, int count, IsLost isLost) {
    RateMeter meter;
    for (int i = 0; i < count; ++i)
        if (!isLost(i)) meter.take(std::floor(i / rate / tick + 1e-9) * tick);
    return *meter.measure();
}

bool none(int) {
    return false;
}

TEST(SampleRateTest, EvenStampsGiveTheirRateWithoutRounding) {
    for (const double rate : {1.0, 50.0, 100.0, 250.0, 1000.0}) {
        RateMeter meter;
        for (int i = 0; i < 2000; ++i)
            meter.take(i / rate);
        EXPECT_EQ(meter.measure()->perSecond, rate);
        EXPECT_EQ(meter.measure()->unsteadyPart, 0.0);
        EXPECT_TRUE(meter.measure()->isMeasured);
    }
}

TEST(SampleRateTest, ACoarseClockGivesTheRateThatNoneOfItsStepsHas) {
    for (const double rate : {128.0, 400.0, 59.7}) {
        const SampleRate found = measured(rate, 0.001, 4000, none);
        EXPECT_NEAR(found.perSecond, rate, 1e-3 * rate) << rate;
        EXPECT_TRUE(found.getIsSteady()) << rate;
    }
}

TEST(SampleRateTest, LostSamplesAndPausesDontSlowItDown) {
    const auto isLost = [](int i) { return i % 50 == 7; };
    EXPECT_NEAR(measured(100.0, 0.001, 4000, isLost).perSecond, 100.0, 1e-9);
    const auto isPause = [](int i) { return i > 1000 && i < 3000; };
    EXPECT_NEAR(measured(100.0, 0.001, 4000, isPause).perSecond, 100.0, 1e-9);
}

TEST(SampleRateTest, StampsInBunchesAreNotSteady) {
    EXPECT_FALSE(measured(50.0, 1.0, 500, none).getIsSteady()) << "whole seconds";
    const auto isLost = [](int i) { return i % 10 == 7; };
    EXPECT_FALSE(measured(100.0, 0.001, 4000, isLost).getIsSteady()) << "a tenth lost";
}

TEST(SampleRateTest, StepsOfWhichNoRateIsANumberGiveNone) {
    for (const double step : {5e-324, 1e-310, 1e304}) {
        RateMeter meter;
        for (int i = 0; i < 5; ++i)
            meter.take(i * step);
        EXPECT_FALSE(meter.measure()) << step;
    }
}

TEST(SampleRateTest, NoStepForwardIsNoRate) {
    RateMeter meter;
    EXPECT_FALSE(meter.measure());
    meter.take(1.0);
    EXPECT_FALSE(meter.measure());
    meter.take(1.0);
    meter.take(0.5);
    EXPECT_FALSE(meter.measure());
}

} // namespace
