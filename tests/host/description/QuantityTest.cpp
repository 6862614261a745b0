// SPDX-License-Identifier: MIT
#include "host/description/Quantity.h"

#include <gtest/gtest.h>

namespace {

using namespace Quillmere::Host;

Value plain(const char* text) {
    Value value;
    value.kind = Value::Kind::Scalar;
    value.text = text;
    return value;
}

double hertz(const char* text) {
    const auto quantity = toQuantity(plain(text));
    return quantity && quantity->kind == Quantity::Kind::Frequency ? quantity->number : -1.0;
}

double seconds(const char* text) {
    const auto quantity = toQuantity(plain(text));
    return quantity && quantity->kind == Quantity::Kind::Time ? quantity->number : -1.0;
}

TEST(QuantityTest, ANumberAndAUnitAreAFrequencyOrATime) {
    EXPECT_EQ(hertz("5 Hz"), 5.0);
    EXPECT_EQ(hertz("+0.5kHz"), 500.0);
    EXPECT_EQ(hertz("250 mHz"), 0.25);
    EXPECT_EQ(seconds("0.2 s"), 0.2);
    EXPECT_EQ(seconds("200 ms"), 0.2);
    EXPECT_EQ(seconds("3e2us"), 0.0003);
    EXPECT_EQ(seconds("10 ns"), 1e-8);
    EXPECT_EQ(seconds("1.5 min"), 90.0);
    EXPECT_EQ(seconds("0.5 h"), 1800.0);
    EXPECT_TRUE(toQuantity(valueOf("5 Hz"))) << "in quotes";
}

TEST(QuantityTest, WhatIsNoNumberWithAKnownUnitIsNone) {
    for (const char* const text :
         {"5", "Hz", "5 Hz!", "5 hz", "5 MHz", "inf Hz", "nan s", "", "5 Hz s", "- 5 s"})
        EXPECT_FALSE(toQuantity(plain(text))) << text;
    EXPECT_FALSE(toQuantity(Value{}));
}

TEST(QuantityTest, ASlipInAUnitIsSuggestedRightButMegaIsNotMilli) {
    EXPECT_EQ(withNearestUnit(plain("5 hz")), "5 Hz");
    EXPECT_EQ(withNearestUnit(plain("0.2 seconds")), "0.2 s");
    EXPECT_EQ(withNearestUnit(plain("200msec")), "200ms");
    EXPECT_EQ(withNearestUnit(plain("5 MHz")), "5000 kHz");
    EXPECT_EQ(withNearestUnit(plain("5,0 Hz")), "5.0 Hz");
    EXPECT_EQ(withNearestUnit(plain("0,25s")), "0.25s");
    for (const char* const text : {"5 Ms", "5 Hz", "5", "5 apples", "5,0", "1,2,3 Hz", ""})
        EXPECT_EQ(withNearestUnit(plain(text)), "") << text;
}

} // namespace
