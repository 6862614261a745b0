// SPDX-License-Identifier: MIT
#include "host/picture/CurvePath.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

using Quillmere::Host::CurvePath;

/// Every way is as long as it has to be and no longer than it may: a hundred rounds of a circle.
TEST(CurvePath, LeavesOutWhatCantBeSeen) {
    constexpr std::size_t kMost = 5000;
    CurvePath path(kMost);
    const auto angleOf = [](int i) { return i * 2.0 * std::numbers::pi / 10000.0; };
    for (int i = 0; i < 1000000; ++i)
        path.take(std::cos(angleOf(i)), std::sin(angleOf(i)));
    EXPECT_LE(path.getPoints().size(), 2 * kMost);
    EXPECT_GT(path.getPoints().size(), kMost / 4);
    double widest = 0.0;
    double shortest = 2.0;
    const auto& points = path.getPoints();
    for (std::size_t i = 1; i < points.size(); ++i) {
        widest = std::max(widest, std::hypot(points[i].x - points[i - 1].x, points[i].y - points[i - 1].y));
        shortest = std::min(shortest, std::hypot(points[i].x, points[i].y));
    }
    EXPECT_LT(widest, 0.5) << "it goes on round and round";
    EXPECT_NEAR(shortest, 1.0, 1e-12) << "points are those that came";
}

TEST(CurvePath, KeepsBreaksAndAllOfAShortWay) {
    CurvePath path(16);
    EXPECT_TRUE(path.getIsEmpty());
    path.take(0.0, std::nan(""));
    EXPECT_TRUE(path.getIsEmpty()) << "nothing is broken off at the begin";
    path.take(0.0, 1.0);
    path.take(0.0, INFINITY);
    path.take(0.0, std::nan(""));
    path.take(1.0, 1.0);
    ASSERT_EQ(path.getPoints().size(), 3u);
    EXPECT_TRUE(std::isnan(path.getPoints()[1].y));
    for (int i = 0; i < 1000; ++i)
        path.take(1.0, 1.0);
    EXPECT_TRUE(std::isnan(path.getPoints()[1].y));
    EXPECT_LE(path.getPoints().size(), 32u);
}

} // namespace
