// SPDX-License-Identifier: MIT
#include "host/picture/HeatScale.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using Quillmere::Host::HeatScale;

TEST(HeatScale, IsInDecibelsWhereNoValueIsNegative) {
    const HeatScale amplitudes(0.0, 2.0);
    EXPECT_TRUE(amplitudes.getIsDecibels());
    EXPECT_EQ(amplitudes.getHigh(), 2.0);
    EXPECT_EQ(amplitudes.getPart(2.0), 1.0);
    EXPECT_NEAR(amplitudes.getPart(0.2), 1.0 - 20.0 / 60.0, 1e-12); // a tenth is 20 dB
    EXPECT_NEAR(amplitudes.getPart(0.002), 0.0, 1e-12);
    EXPECT_EQ(amplitudes.getPart(1e-9), 0.0);
    EXPECT_EQ(amplitudes.getPart(0.0), 0.0);
}

TEST(HeatScale, IsEvenWhereSomeAre) {
    const HeatScale swing(-1.0, 3.0);
    EXPECT_FALSE(swing.getIsDecibels());
    EXPECT_EQ(swing.getPart(-1.0), 0.0);
    EXPECT_EQ(swing.getPart(1.0), 0.5);
    EXPECT_EQ(swing.getPart(3.0), 1.0);
}

TEST(HeatScale, TheRangeMayBeMoreThanANumberCanBe) {
    const double most = std::numeric_limits<double>::max();
    const HeatScale wide(-most, most);
    EXPECT_EQ(wide.getPart(-most), 0.0);
    EXPECT_EQ(wide.getPart(0.0), 0.5);
    EXPECT_EQ(wide.getPart(most), 1.0);
    const double least = std::numeric_limits<double>::denorm_min();
    EXPECT_EQ(HeatScale(-least, least).getPart(0.0), 0.5);
}

TEST(HeatScale, OfNothingOrOneValueHasAColour) {
    const double endless = std::numeric_limits<double>::infinity();
    EXPECT_EQ(HeatScale(endless, -endless).getPart(0.0), 0.0);
    EXPECT_EQ(HeatScale(0.0, 0.0).getPart(0.0), 0.0);
    EXPECT_EQ(HeatScale(-2.0, -2.0).getPart(-2.0), 0.0);
    EXPECT_EQ(HeatScale(3.0, 3.0).getPart(3.0), 1.0);
}

} // namespace
