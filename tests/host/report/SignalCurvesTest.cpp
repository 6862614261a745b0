// SPDX-License-Identifier: MIT
#include "host/report/SignalCurves.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using Quillmere::Core::MatrixXd;
using Quillmere::Host::SignalCurves;
using Kind = SignalCurves::Kind;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

MatrixXd row(std::initializer_list<double> values) {
    MatrixXd matrix(1, static_cast<Eigen::Index>(values.size()));
    Eigen::Index i = 0;
    for (const double value : values)
        matrix(0, i++) = value;
    return matrix;
}

TEST(SignalCurves, ElementsAreColumnsRowByRow) {
    SignalCurves curves(1000);
    MatrixXd sample(2, 2);
    sample << 1, 2, 3, 4;
    curves.take(0.5, sample);
    ASSERT_EQ(curves.getColumns().size(), 4u);
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(curves.getColumns()[i].sum, static_cast<double>(i + 1));
    EXPECT_EQ(curves.getBegin(), 0.5);
    EXPECT_EQ(curves.getEnd(), 0.5);
}

TEST(SignalCurves, ShapesMayChangeAndTimesGoBack) {
    SignalCurves curves(1000);
    curves.take(1.0, row({1}));
    curves.take(0.0, row({2, 5}));
    curves.take(kNan, row({9, 9}));
    curves.take(2.0, MatrixXd(0, 3));
    EXPECT_EQ(curves.getSamples(), 3u) << "without the one whose time has no place";
    EXPECT_EQ(curves.getBegin(), 0.0);
    EXPECT_EQ(curves.getEnd(), 2.0);
    EXPECT_EQ(curves.getColumns().at(0).envelope.getCount(), 2u);
    EXPECT_EQ(curves.getColumns().at(1).envelope.getCount(), 1u);
}

TEST(SignalCurves, WhatIsNotFiniteIsCountedAndInNoSum) {
    SignalCurves curves(1000);
    for (const double value : {1.0, kNan, 3.0})
        curves.take(value, row({value}));
    curves.take(2.0, row({kNan}));
    EXPECT_EQ(curves.getColumns()[0].sum, 4.0);
    EXPECT_EQ(curves.getColumns()[0].envelope.getBreaks(), 1u) << "a time that isn't finite is no sample";
}

TEST(SignalCurves, AreShownByWhatTheyAre) {
    SignalCurves every(1000), rare(1000), even(1000), wide(1000), none(1000);
    for (int i = 0; i < 100; ++i)
        every.take(i, row({0}));
    for (const double time : {1.0, 2.0, 50.0})
        rare.take(time, row({60 + time}));
    for (int i = 0; i < 12; ++i)
        even.take(8.0 * i, row({1.5}));
    wide.take(0.0, MatrixXd::Zero(17, 1));
    EXPECT_EQ(every.getKind(100), Kind::Curves);
    EXPECT_EQ(rare.getKind(100), Kind::Points);
    EXPECT_EQ(even.getKind(100), Kind::Curves) << "rare, and yet at a rate";
    EXPECT_EQ(wide.getKind(100), Kind::Map);
    EXPECT_EQ(none.getKind(100), Kind::Curves);
}

/// A curve whose rate somebody has turned is one, however rare its samples are beside those of the run.
TEST(SignalCurves, WithAnotherRateFromSomewhereOnAreCurves) {
    SignalCurves turned(1000);
    for (int i = 0; i < 100; ++i)
        turned.take(0.01 * i, row({1.0 * i}));
    for (int i = 0; i < 40; ++i)
        turned.take(1.0 + 0.025 * i, row({1.0 * i}));
    EXPECT_EQ(turned.getKind(4000), Kind::Curves);
}

TEST(SignalCurves, AreMarksOnlyWithoutAValueThatIsWorthAnAxis) {
    const auto kindOf = [](std::initializer_list<double> values, const std::string& unit = {}) {
        SignalCurves curves(1000);
        double time = 0.0;
        for (const double value : values)
            curves.take(time = 1.5 * time + 1.0, row({1, value}));
        return curves.getKind(1000, unit);
    };
    EXPECT_EQ(kindOf({1, 1, 1}), Kind::Marks);
    EXPECT_EQ(kindOf({0, 0, 0}), Kind::Marks);
    EXPECT_EQ(kindOf({1, 0, 1}), Kind::Points) << "on or off";
    EXPECT_EQ(kindOf({5, 5, 5}), Kind::Points);
    EXPECT_EQ(kindOf({1, 1, 1}, "s"), Kind::Points) << "seconds, and no events";
    SignalCurves steady(1000);
    for (int i = 0; i < 100; ++i)
        steady.take(i, row({1}));
    EXPECT_EQ(steady.getKind(1000), Kind::Marks) << "a line along the ones would tell nothing";
    EXPECT_EQ(steady.getKind(100), Kind::Curves);
}

} // namespace
