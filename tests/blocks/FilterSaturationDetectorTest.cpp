// SPDX-License-Identifier: MIT
#include "blocks/FilterSaturationDetector.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace Support;

namespace {

/// The rule for one element: a number is free of both bounds only if it is told to be.
double saturation(double low, double high, double x) {
    const bool belowHigh = x < high;
    const bool aboveLow = x > low;
    return belowHigh && aboveLow ? 0.0 : 1.0;
}
} // namespace

TEST(FilterSaturationDetectorTest, Catalogue) {
    FilterSaturationDetector block("saturation");
    EXPECT_STREQ(block.getTypeName(), "FilterSaturationDetector");
    EXPECT_EQ(block.getName(), "saturation");
    EXPECT_EQ(catalogue(block),
              "input \"in\" blocking\n"
              "output \"saturation\"\n"
              "range double \"Threshold Low\" -10 in [-100000;100000] step 0.10000000000000001\n"
              "range double \"Threshold High\" 10 in [-100000;100000] step 0.10000000000000001\n");
}

TEST(FilterSaturationDetectorTest, BothBoundsAreSaturated) {
    struct Row {
        const char* name;
        double low;
        double high;
        MatrixXd input;
        MatrixXd output;
    };
    const Row rows[] = {
        {.name = "defaults",
         .low = -10,
         .high = 10,
         .input = matrix({{10, -10, 9.9, -9.9, 0}}),
         .output = matrix({{1, 1, 0, 0, 0}})},
        {.name = "beyond",
         .low = -10,
         .high = 10,
         .input = matrix({{10.1, -10.1}, {1e300, -1e300}}),
         .output = matrix({{1, 1}, {1, 1}})},
        {.name = "one step inside",
         .low = -10,
         .high = 10,
         .input = matrix({{std::nextafter(10.0, 0.0), std::nextafter(-10.0, 0.0)}}),
         .output = matrix({{0, 0}})},
        {.name = "non-finite",
         .low = -10,
         .high = 10,
         .input = matrix({{kNaN, kInf, -kInf}}),
         .output = matrix({{1, 1, 1}})},
        {.name = "both zeros are one number",
         .low = 0,
         .high = 1,
         .input = matrix({{0.0, -0.0, 0.5}}),
         .output = matrix({{1, 1, 0}})},
        {.name = "thresholds crossed: everything",
         .low = 5,
         .high = -5,
         .input = matrix({{-6, 0, 6}}),
         .output = matrix({{1, 1, 1}})},
        {.name = "thresholds alike",
         .low = 5,
         .high = 5,
         .input = matrix({{4, 5, 6}}),
         .output = matrix({{1, 1, 1}})},
    };
    for (const Row& row : rows) {
        FilterSaturationDetector block("saturation");
        Feed feed(block);
        feed.set("Threshold Low", row.low);
        feed.set("Threshold High", row.high);
        EXPECT_TRUE(agree(feed.run("in", row.input, 0.5), row.output, same)) << row.name;
        EXPECT_TRUE(agree(feed.last().timeStamp, 0.5, same)) << row.name;
    }
}

TEST(FilterSaturationDetectorTest, WithoutASampleNothingHappens) {
    FilterSaturationDetector block("saturation");
    Feed feed(block);
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
}

TEST(FilterSaturationDetectorTest, ShapeFollowsEverySample) {
    FilterSaturationDetector block("saturation");
    Feed feed(block);
    const MatrixXd shapes[] = {
        MatrixXd(0, 0), MatrixXd::Constant(2, 3, 11.0), MatrixXd::Constant(1, 1, 11.0), MatrixXd(0, 4),
        MatrixXd(3, 0), MatrixXd::Constant(3, 2, 11.0)};
    for (const MatrixXd& shape : shapes)
        EXPECT_TRUE(agree(feed.run("in", shape), MatrixXd(MatrixXd::Ones(shape.rows(), shape.cols())), same));
}

TEST(FilterSaturationDetectorTest, AWriteAppliesFromTheNextStepOn) {
    FilterSaturationDetector block("saturation");
    Feed feed(block);
    EXPECT_TRUE(agree(feed.run("in", matrix({{7, -7}})), matrix({{0, 0}}), same));
    feed.set("Threshold High", 7.0);
    EXPECT_TRUE(agree(feed.run("in", matrix({{7, -7}})), matrix({{1, 0}}), same));
    feed.set("Threshold Low", -7.0);
    EXPECT_TRUE(agree(feed.run("in", matrix({{7, -7}})), matrix({{1, 1}}), same));
}

TEST(FilterSaturationDetectorTest, ASteadyStepAllocatesNothing) {
    FilterSaturationDetector block("saturation");
    EXPECT_EQ(allocationsOfAHundredSteps(block, "in", MatrixXd::Ones(4, 6)), 0u);
}

TEST(FilterSaturationDetectorTest, LongTrace) {
    std::mt19937_64 random(3);
    std::uniform_int_distribution<int> number(-12, 12);
    std::uniform_int_distribution<int> size(0, 4);
    FilterSaturationDetector block("saturation");
    Feed feed(block);
    double low = -10.0;
    double high = 10.0;
    for (int n = 0; n < 3000; ++n) {
        if (n % 7 == 0) feed.set("Threshold Low", low = number(random));
        if (n % 11 == 0) feed.set("Threshold High", high = number(random));
        MatrixXd sample(size(random), size(random));
        MatrixXd wanted(sample.rows(), sample.cols());
        for (Eigen::Index r = 0; r < sample.rows(); ++r)
            for (Eigen::Index c = 0; c < sample.cols(); ++c) {
                const int drawn = number(random);
                sample(r, c) = drawn == 12 ? kNaN : drawn;
                wanted(r, c) = saturation(low, high, sample(r, c));
            }
        ASSERT_TRUE(agree(feed.run("in", sample, n), wanted, same)) << "step " << n;
    }
}
