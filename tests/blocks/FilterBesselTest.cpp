// SPDX-License-Identifier: MIT
#include "blocks/FilterBessel.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>

// What the pole-zero blocks share is tested in BlockPoleZeroBaseTest.cpp.

using namespace Support;

TEST(FilterBesselTest, Catalogue) {
    FilterBessel block("filter");
    EXPECT_STREQ(block.getTypeName(), "FilterBessel");
    EXPECT_EQ(
        catalogue(block),
        "input \"in\" blocking\n"
        "input \"reset\" non-blocking\n"
        "output \"out\"\n"
        "output \"gain\"\n"
        "output \"coeffs\"\n"
        "enum \"Mode\" 0 of LowPass, HighPass, BandPass, BandStop\n"
        "range int \"Order\" 1 in [1;10] step 1\n"
        "range double \"LowRelativeCutOffFreq\" 0.050000000000000003 in [0;1] step 9.9999999999999995e-07\n"
        "range double \"HighRelativeCutOffFreq\" 0.10000000000000001 in [9.9999999999999995e-07;1] "
        "step 9.9999999999999995e-07 read-only\n"
        "value bool \"MatchedZ-Transform\" true\n"
        "command \"Reset\"\n");
}

TEST(FilterBesselTest, BilinearOrderThreePublishesFourCoefficients) {
    FilterBessel block("filter");
    Feed feed(block);
    feed.set("Order", 3);
    feed.set("MatchedZ-Transform", false);
    feed.run("in", matrix({{1.0}}), 0.0, "out");
    const MatrixXd coeffs = feed.last("coeffs").value;
    ASSERT_EQ(coeffs.rows(), 2);
    ASSERT_EQ(coeffs.cols(), 4);
    EXPECT_TRUE(agree(coeffs(1, 3), -1.0, same));
    EXPECT_TRUE(agree(MatrixXd(coeffs.topRows(1)), matrix({{1.0, 3.0, 3.0, 1.0}}), same))
        << "three zeros at -1";
}

TEST(FilterBesselTest, AMatchedLowPassHasNoZeros) {
    FilterBessel block("filter");
    Feed feed(block);
    feed.set("Order", 2);
    feed.run("in", matrix({{1.0}}), 0.0, "out");
    EXPECT_TRUE(agree(MatrixXd(feed.last("coeffs").value.topRows(1)), matrix({{1.0, 0.0, 0.0}}), same));
}

TEST(FilterBesselTest, MatchedOrderOneByHand) {
    FilterBessel block("filter");
    Feed feed(block);
    // The pole is exp(-0.05 pi), and the gain 1 / (1 - pole).
    const double pole = std::exp(-0.05 * std::acos(-1.0));
    const MatrixXd first = feed.run("in", matrix({{1.0}}), 0.0, "out");
    EXPECT_TRUE(agree(first(0), 1.0 - pole, withinRel(1e-14)));
    EXPECT_TRUE(agree(feed.last("gain").value(0), 1.0 / (1.0 - pole), withinRel(1e-14)));
    EXPECT_TRUE(agree(feed.last("coeffs").value, matrix({{1.0, 0.0}, {pole, -1.0}}), withinRel(1e-15)));
    EXPECT_TRUE(agree(feed.run("in", matrix({{1.0}}), 0.0, "out")(0), 1.0 - pole * pole, withinRel(1e-14)));
}

TEST(FilterBesselTest, ALowPassAtZeroIsNaN) {
    FilterBessel block("filter");
    Feed feed(block);
    feed.set("LowRelativeCutOffFreq", 0.0);
    EXPECT_TRUE(std::isnan(feed.run("in", matrix({{1.0}}), 0.0, "out")(0)));
    EXPECT_TRUE(std::isnan(feed.last("gain").value(0)));
    feed.set("LowRelativeCutOffFreq", 0.1);
    EXPECT_TRUE(std::isfinite(feed.run("in", matrix({{1.0}}), 0.0, "out")(0)));
}
