// SPDX-License-Identifier: MIT
#include "blocks/FilterEllipticV1.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>

// What the pole-zero blocks share is tested in BlockPoleZeroBaseTest.cpp.

using namespace Support;

TEST(FilterEllipticV1Test, Catalogue) {
    FilterEllipticV1 block("filter");
    EXPECT_STREQ(block.getTypeName(), "FilterEllipticV1");
    EXPECT_EQ(catalogue(block),
              "input \"in\" blocking\n"
              "input \"reset\" non-blocking\n"
              "output \"out\"\n"
              "output \"gain\"\n"
              "output \"coeffs\"\n"
              "enum \"Mode\" 0 of LowPass, HighPass, BandPass, BandStop\n"
              "range int \"Order\" 1 in [1;10] step 1\n"
              "range double \"LowRelFreq\" 0.050000000000000003 in [0.01;1] step 0.0001\n"
              "range double \"HighRelFreq\" 0 in [0;1] step 0.0001 read-only\n"
              "range double \"Ripple BandPass\" 0.5 in [0.10000000000000001;10] step 0.01\n"
              "range double \"Ripple BandStop\" -10 in [-60;-0.10000000000000001] step 0.01\n"
              "command \"Reset\"\n");
}

TEST(FilterEllipticV1Test, DefaultsPublishTheReciprocalGain) {
    FilterEllipticV1 block("filter");
    Feed feed(block);
    const double first = feed.run("in", matrix({{1.0}}), 0.0, "out")(0);
    EXPECT_TRUE(agree(first, 0.183877, printed(6)));
    EXPECT_TRUE(agree(1.0 / feed.last("gain").value(0), 0.183877, printed(6)));
    const MatrixXd coeffs = feed.last("coeffs").value;
    ASSERT_EQ(coeffs.rows(), 2);
    ASSERT_EQ(coeffs.cols(), 2);
    EXPECT_TRUE(agree(coeffs(0, 0), 0.183877, printed(6)));
    EXPECT_TRUE(agree(coeffs(0, 1), 0.183877, printed(6)));
    EXPECT_TRUE(agree(coeffs(1, 0), -1.0, same));
    EXPECT_TRUE(agree(coeffs(1, 1), 0.632246, printed(6)));
    EXPECT_TRUE(agree(feed.run("in", matrix({{3.0}}), 0.0, "out")(0), coeffs(0, 0) * 3.0 - first, same))
        << "the previous output is subtracted";
}

TEST(FilterEllipticV1Test, OrderTwo) {
    FilterEllipticV1 block("filter");
    Feed feed(block);
    feed.set("Order", 2);
    feed.run("in", matrix({{1.0}}), 0.0, "out");
    const MatrixXd coeffs = feed.last("coeffs").value;
    EXPECT_TRUE(agree(coeffs(1, 0), -1.0, same));
    EXPECT_TRUE(agree(coeffs(1, 1), 1.803586, printed(7)));
    EXPECT_TRUE(agree(coeffs(1, 2), -0.839826, printed(6)));
}

TEST(FilterEllipticV1Test, OrderThreeLowPassIsHugeOrInfinite) {
    FilterEllipticV1 block("filter");
    Feed feed(block);
    feed.set("Order", 3);
    feed.set("LowRelFreq", 0.1);
    feed.set("Ripple BandStop", -40.0);
    // Its gain is a number over the rounding of a zero, so it is no NaN; the pin carries the reciprocal.
    EXPECT_GT(std::fabs(feed.run("in", matrix({{1.0}}), 0.0, "out")(0)), 1e13);
    EXPECT_LT(std::fabs(feed.last("gain").value(0)), 1e-13);
}

TEST(FilterEllipticV1Test, ABandStartsWithEqualEdges) {
    FilterEllipticV1 block("filter");
    Feed feed(block);
    EXPECT_TRUE(agree(feed.get<double>("HighRelFreq"), 0.0, same));
    feed.set("Mode", 3u);
    EXPECT_TRUE(agree(feed.get<double>("HighRelFreq"), 0.05, same));
    EXPECT_TRUE(std::isnan(feed.run("in", matrix({{1.0}}), 0.0, "out")(0)));
    feed.set("HighRelFreq", 0.2);
    EXPECT_TRUE(std::isfinite(feed.run("in", matrix({{1.0}}), 0.0, "out")(0)));
}

TEST(FilterEllipticV1Test, AHighEdgeBelowTheLowEdgesLimitRaisesStaysAndDesignsNothing) {
    struct BandPass {
        BandPass() {
            feed.set("Mode", 2u);
            feed.set("HighRelFreq", 0.2);
            run(1.0);
        }
        double run(double u) { return feed.run("in", matrix({{u}}), 0.0, "out")(0); }
        FilterEllipticV1 block{"filter"};
        Feed feed{block};
    };
    BandPass tested;
    BandPass untouched;
    EXPECT_EQ(refusal<Poco::RangeException>([&] { tested.feed.set("HighRelFreq", 0.005); }),
              "0.005 does not fit in [0.01;1], (step : 0.0001)");
    EXPECT_TRUE(agree(tested.feed.get<double>("HighRelFreq"), 0.005, same));
    EXPECT_TRUE(agree(tested.feed.get<double>("LowRelFreq"), 0.05, same));
    // The handler left before it could ask for a design, so the old one runs on from its state.
    tested.feed.forget();
    for (const double u : {2.0, -1.0, 0.5})
        EXPECT_TRUE(agree(tested.run(u), untouched.run(u), same));
    EXPECT_TRUE(tested.feed.sent("gain").empty());
    // The next setting designs with the edges as they stand.
    tested.feed.set("Ripple BandPass", 1.0);
    tested.run(1.0);
    EllipticDesigner design(Design::kBandPass, 1, 0.05, 1.0, -10.0, 0.005);
    design.step(matrix({{1.0}}));
    EXPECT_TRUE(agree(tested.feed.last("gain").value(0), 1.0 / design.getGain(), same));
}

TEST(FilterEllipticV1Test, RippleLimits) {
    FilterEllipticV1 block("filter");
    Feed feed(block);
    EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set("Ripple BandPass", 0.0); }),
              "0 does not fit in [0.1;10], (step : 0.01)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set("Ripple BandStop", 0.0); }),
              "0 does not fit in [-60;-0.1], (step : 0.01)");
    // Where a host has widened the limits, ripples without a design are put right.
    dynamic_cast<RangeProperty<double>&>(block.getProperty("Ripple BandPass")).setRange(-10.0, 10.0, 0.01);
    dynamic_cast<RangeProperty<double>&>(block.getProperty("Ripple BandStop")).setRange(-60.0, 60.0, 0.01);
    for (const double size : {0.0, 1.0}) {
        feed.set("Ripple BandPass", -size);
        EXPECT_TRUE(agree(feed.get<double>("Ripple BandPass"), 0.5, same)) << size;
        feed.set("Ripple BandStop", size);
        EXPECT_TRUE(agree(feed.get<double>("Ripple BandStop"), -10.0, same)) << size;
    }
}
