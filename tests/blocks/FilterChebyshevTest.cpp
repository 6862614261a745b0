// SPDX-License-Identifier: MIT
#include "blocks/FilterChebyshev.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>

// What the pole-zero blocks share is tested in BlockPoleZeroBaseTest.cpp.

using namespace Support;

TEST(FilterChebyshevTest, Catalogue) {
    FilterChebyshev block("filter");
    EXPECT_STREQ(block.getTypeName(), "FilterChebyshev");
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
        "range double \"Ripple\" -0.5 in [-10;-0.10000000000000001] step 0.10000000000000001\n"
        "value bool \"MatchedZ-Transform\" true\n"
        "command \"Reset\"\n");
}

TEST(FilterChebyshevTest, OrderOneByHand) {
    FilterChebyshev block("filter");
    Feed feed(block);
    // At order 1 sinh(asinh(1 / eps)) is 1 / eps: the pole is exp(-0.05 pi / eps).
    const double eps = std::sqrt(std::pow(10.0, 0.05) - 1.0);
    const double pole = std::exp(-0.05 * std::acos(-1.0) / eps);
    EXPECT_TRUE(agree(feed.run("in", matrix({{1.0}}), 0.0, "out")(0), 1.0 - pole, withinRel(1e-13)));
    EXPECT_TRUE(agree(feed.run("in", matrix({{1.0}}), 0.0, "out")(0), 1.0 - pole * pole, withinRel(1e-13)));
    EXPECT_TRUE(agree(feed.last("coeffs").value, matrix({{1.0, 0.0}, {pole, -1.0}}), withinRel(1e-13)));
}

TEST(FilterChebyshevTest, RippleDesignsAnew) {
    FilterChebyshev block("filter");
    Feed feed(block);
    feed.run("in", matrix({{1.0}}), 0.0, "out");
    feed.forget();
    feed.set("Ripple", -3.0);
    feed.run("in", matrix({{1.0}}), 0.0, "out");
    EXPECT_EQ(feed.sent("coeffs").size(), 1u);
    const double eps = std::sqrt(std::pow(10.0, 0.3) - 1.0);
    EXPECT_TRUE(
        agree(feed.last("coeffs").value(1, 0), std::exp(-0.05 * std::acos(-1.0) / eps), withinRel(1e-13)));
}

TEST(FilterChebyshevTest, RippleLimits) {
    FilterChebyshev block("filter");
    Feed feed(block);
    EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set("Ripple", 0.0); }),
              "0 does not fit in [-10;-0.1], (step : 0.1)");
    // Where a host has widened the limits, a ripple without a design is put right.
    dynamic_cast<RangeProperty<double>&>(block.getProperty("Ripple")).setRange(-10.0, 10.0, 0.1);
    feed.set("Ripple", 0.0);
    EXPECT_TRUE(agree(feed.get<double>("Ripple"), -0.5, same));
    feed.set("Ripple", 2.0);
    EXPECT_TRUE(agree(feed.get<double>("Ripple"), -0.5, same));
}
