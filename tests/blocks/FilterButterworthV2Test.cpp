// SPDX-License-Identifier: MIT
#include "blocks/FilterButterworthV2.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>

// What the pole-zero blocks share is tested in BlockPoleZeroBaseTest.cpp.

using namespace Support;

TEST(FilterButterworthV2Test, Catalogue) {
    FilterButterworthV2 block("filter");
    EXPECT_STREQ(block.getTypeName(), "FilterButterworthV2");
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

TEST(FilterButterworthV2Test, OrderOneAtHalfNyquistByHand) {
    FilterButterworthV2 block("filter");
    Feed feed(block);
    feed.set("MatchedZ-Transform", false);
    feed.set("LowRelativeCutOffFreq", 0.5);
    EXPECT_TRUE(agree(feed.run("in", matrix({{1.0}}), 0.0, "out")(0), 0.5, withinRel(1e-15)));
    EXPECT_TRUE(agree(feed.last("gain").value, matrix({{2.0}}), withinRel(1e-15)));
    // The pole is 0 but for the rounding of tan(pi / 4).
    EXPECT_TRUE(agree(feed.last("coeffs").value, matrix({{1.0, 1.0}, {0.0, -1.0}}), withinRel(1e-15)));
}

TEST(FilterButterworthV2Test, OrderTwoHasItsPolesOnTheDiagonal) {
    FilterButterworthV2 block("filter");
    Feed feed(block);
    feed.set("Order", 2);
    feed.run("in", matrix({{1.0}}), 0.0, "out");
    // Poles w (-1 +- i) / sqrt(2) with w = 0.05 pi, mapped by z = exp(s).
    const double half = 0.05 * std::acos(-1.0) / std::sqrt(2.0);
    const double radius = std::exp(-half);
    EXPECT_TRUE(agree(feed.last("coeffs").value,
                      matrix({{1.0, 0.0, 0.0}, {-radius * radius, 2.0 * radius * std::cos(half), -1.0}}),
                      withinRel(1e-14)));
}

TEST(FilterButterworthV2Test, HighPassTakesTheConstantAwayAtOrderOne) {
    FilterButterworthV2 block("filter");
    Feed feed(block);
    feed.set("Mode", 1u);
    MatrixXd last;
    for (int n = 0; n < 500; ++n)
        last = feed.run("in", matrix({{4.0}}), 0.0, "out");
    EXPECT_TRUE(agree(last(0), 0.0, law(1e-15))); // 0.855^500 of the first output
}
