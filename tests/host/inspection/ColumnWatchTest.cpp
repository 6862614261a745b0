// SPDX-License-Identifier: MIT
#include "host/inspection/ColumnWatch.h"
#include "host/inspection/LogHistogram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace {

using namespace Quillmere::Host;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

ColumnWatch watched(const std::vector<double>& numbers) {
    ColumnWatch watch;
    for (const double number : numbers)
        watch.take(number);
    return watch;
}

/// A sine that a sensor cuts off above `most`.
std::vector<double> sineUpTo(double most, int rows = 1000) {
    std::vector<double> numbers;
    for (int i = 0; i < rows; ++i)
        numbers.push_back(std::min(most, std::sin(0.01 * i)));
    return numbers;
}

TEST(ColumnWatch, TellsRangeAndWhatIsNoNumber) {
    const ColumnWatch watch = watched({3.0, kNan, -1.5, kInfinity, 2.0});
    EXPECT_EQ(watch.getNumbers(), 3U);
    EXPECT_EQ(watch.getRowsWithout(), 2U);
    EXPECT_EQ(watch.getSmallest(), -1.5);
    EXPECT_EQ(watch.getLargest(), 3.0);
    EXPECT_FALSE(watch.getIsConstant());
}

TEST(ColumnWatch, HasNoRangeWithoutANumber) {
    for (const ColumnWatch& watch : {watched({}), watched({kNan, kNan})}) {
        EXPECT_FALSE(watch.getSmallest());
        EXPECT_FALSE(watch.getLargest());
        EXPECT_FALSE(watch.getIsConstant());
        EXPECT_FALSE(watch.getIsClippedAbove());
    }
}

TEST(ColumnWatch, KnowsAConstantColumn) {
    EXPECT_TRUE(watched({2.0, kNan, 2.0}).getIsConstant());
    EXPECT_FALSE(watched({2.0}).getIsConstant()) << "one row tells nothing";
    EXPECT_FALSE(watched({2.0, 2.0, 2.5}).getIsConstant());
}

TEST(ColumnWatch, KnowsAClippedColumn) {
    EXPECT_FALSE(watched(sineUpTo(1.0)).getIsClippedAbove());
    const ColumnWatch clipped = watched(sineUpTo(0.9));
    EXPECT_TRUE(clipped.getIsClippedAbove());
    EXPECT_FALSE(clipped.getIsClippedBelow());
    EXPECT_GT(clipped.getRowsAtLargest(), 50U);
    std::vector<double> below = sineUpTo(0.9);
    for (double& number : below)
        number = -number;
    EXPECT_TRUE(watched(below).getIsClippedBelow());
    EXPECT_FALSE(watched(below).getIsClippedAbove());
}

TEST(ColumnWatch, TakesNeitherFlagsNorHeldNorRestingColumnsForClipped) {
    std::vector<double> flag(1000, 1.0);
    flag[3] = 0.0;
    EXPECT_FALSE(watched(flag).getIsClippedAbove());
    std::vector<double> held;
    for (int i = 0; i < 1000; ++i)
        held.push_back(std::floor(i / 20.0));
    EXPECT_FALSE(watched(held).getIsClippedAbove());
    EXPECT_FALSE(watched(held).getIsClippedBelow());
    std::vector<double> resting;
    for (int i = 0; i < 1000; ++i)
        resting.push_back(i % 10 == 0 ? i : 0.0);
    EXPECT_FALSE(watched(resting).getIsClippedBelow());
}

TEST(ColumnWatch, PaintsTheWholeRecordingInFewPieces) {
    for (const int rows : {1, 39, 40, 79, 80, 81, 1000, 100000}) {
        ColumnWatch watch;
        for (int i = 0; i < rows; ++i)
            watch.take(i);
        const std::vector<NumberRange> picture = watch.getPicture();
        ASSERT_FALSE(picture.empty()) << rows;
        EXPECT_LE(picture.size(), 2 * ColumnWatch::kPieces) << rows;
        EXPECT_GE(picture.size(), std::min<std::size_t>(static_cast<std::size_t>(rows), 40)) << rows;
        EXPECT_EQ(picture.front().smallest, 0.0) << rows;
        EXPECT_EQ(picture.back().largest, rows - 1.0) << rows;
        for (std::size_t i = 1; i < picture.size(); ++i)
            EXPECT_EQ(picture[i].smallest, picture[i - 1].largest + 1.0) << rows << ", piece " << i;
    }
    ColumnWatch without(false);
    for (int i = 0; i < 1000; ++i)
        without.take(i);
    EXPECT_TRUE(without.getPicture().empty());
    EXPECT_EQ(without.getLargest(), 999.0);
}

TEST(PictureText, IsOneLine) {
    std::vector<NumberRange> pieces(6);
    const double ranges[][2] = {{0, 0.1}, {0.5, 0.5}, {0.9, 1}, {0, 0.5}, {0.5, 1}};
    for (std::size_t i = 0; i < 5; ++i)
        pieces[i] = {ranges[i][0], ranges[i][1]};
    EXPECT_EQ(pictureText(pieces, 40, false), "_-\",' ");
    EXPECT_EQ(pictureText(pieces, 3, false), ",|'");
    // Low and the third height; high and low to the third; the upper half and none.
    EXPECT_EQ(pictureText(pieces, 40, true), "\xE2\xA1\x90\xE2\xA2\xB1\xE2\xA0\x83");
    EXPECT_EQ(pictureText({{2.0, 2.0}}, 40, false), "-") << "constant";
    EXPECT_EQ(pictureText({}, 40, true), "");
    constexpr double kMost = std::numeric_limits<double>::max();
    EXPECT_EQ(pictureText({{-kMost, -kMost}, {kMost, kMost}}, 40, false), "_\"");
}

TEST(LogHistogram, GivesPercentilesWithinItsBins) {
    LogHistogram histogram;
    EXPECT_FALSE(histogram.getPercentile(0.5));
    for (int i = 1; i <= 10000; ++i)
        histogram.take(i * 1e-5);
    for (const double part : {0.05, 0.5, 0.95})
        EXPECT_NEAR(*histogram.getPercentile(part), part * 0.1, 0.016 * part * 0.1);
}

TEST(LogHistogram, IsExactWhereAllAreEqualAndLeavesOutWhatIsNoSize) {
    LogHistogram histogram;
    for (const double number : {0.25, 0.25, 0.0, -1.0, kNan, kInfinity})
        histogram.take(number);
    for (const double part : {0.0, 0.5, 1.0})
        EXPECT_EQ(histogram.getPercentile(part), 0.25);
    LogHistogram outermost;
    outermost.take(1e-300);
    outermost.take(1e300);
    EXPECT_EQ(outermost.getPercentile(0.5), 1e-300);
    EXPECT_EQ(outermost.getPercentile(1.0), 1e300);
}

} // namespace
