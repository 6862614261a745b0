// SPDX-License-Identifier: MIT
#include "host/report/SignalCurves.h"

#include <gtest/gtest.h>

#include <limits>

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
        rare.take(time, row({1}));
    for (int i = 0; i < 12; ++i)
        even.take(8.0 * i, row({1}));
    wide.take(0.0, MatrixXd::Zero(17, 1));
    EXPECT_EQ(every.getKind(100), Kind::Curves);
    EXPECT_EQ(rare.getKind(100), Kind::Marks);
    EXPECT_EQ(even.getKind(100), Kind::Curves) << "rare, and yet no events";
    EXPECT_EQ(wide.getKind(100), Kind::Map);
    EXPECT_EQ(none.getKind(100), Kind::Curves);
}

} // namespace
