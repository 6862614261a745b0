// SPDX-License-Identifier: MIT
#include "blocks/FilterThreshold.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/Scalars.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace Support;

TEST(FilterThresholdTest, Catalogue) {
    FilterThreshold block("level");
    EXPECT_STREQ(block.getTypeName(), "FilterThreshold");
    EXPECT_EQ(block.getName(), "level");
    EXPECT_EQ(catalogue(block), "input \"Input\" blocking\n"
                                "output \"Output\"\n"
                                "enum \"Mode\" 0 of High Level, Low Level\n"
                                "value double \"Threshold\" 0\n");
}

TEST(FilterThresholdTest, ComparesStrictly) {
    struct Row {
        const char* name;
        double threshold;
        double x;
        double high;
        double low;
    };
    const Row rows[] = {
        {.name = "above", .threshold = 1.0, .x = 1.5, .high = 1.0, .low = 0.0},
        {.name = "below", .threshold = 1.0, .x = 0.5, .high = 0.0, .low = 1.0},
        {.name = "on it", .threshold = 1.0, .x = 1.0, .high = 0.0, .low = 0.0},
        {.name = "one step above", .threshold = 1.0, .x = std::nextafter(1.0, 2.0), .high = 1.0, .low = 0.0},
        {.name = "one step below", .threshold = 1.0, .x = std::nextafter(1.0, 0.0), .high = 0.0, .low = 1.0},
        {.name = "minus zero is zero", .threshold = 0.0, .x = -0.0, .high = 0.0, .low = 0.0},
        {.name = "not-a-number", .threshold = 0.0, .x = kNaN, .high = 0.0, .low = 0.0},
        {.name = "not-a-number as threshold", .threshold = kNaN, .x = 1.0, .high = 0.0, .low = 0.0},
        {.name = "infinity", .threshold = 1e308, .x = kInf, .high = 1.0, .low = 0.0},
        {.name = "infinity on itself", .threshold = kInf, .x = kInf, .high = 0.0, .low = 0.0},
        {.name = "minus infinity", .threshold = -1e308, .x = -kInf, .high = 0.0, .low = 1.0},
    };
    for (const Row& row : rows) {
        FilterThreshold block("level");
        Feed feed(block);
        feed.set("Threshold", row.threshold);
        EXPECT_TRUE(agree(feed.run("Input", matrix({{row.x}})), matrix({{row.high}}), same)) << row.name;
        feed.set("Mode", 1u);
        EXPECT_TRUE(agree(feed.run("Input", matrix({{row.x}})), matrix({{row.low}}), same)) << row.name;
    }
}

TEST(FilterThresholdTest, OnlyElementZeroCounts) {
    FilterThreshold block("level");
    Feed feed(block);
    EXPECT_TRUE(agree(feed.run("Input", matrix({{-1, 5}, {5, 5}})), matrix({{0}}), same));
    EXPECT_TRUE(agree(feed.run("Input", matrix({{1}, {-5}, {kNaN}})), matrix({{1}}), same));
}

TEST(FilterThresholdTest, AnEmptySampleSendsNothingButIsUsedUp) {
    FilterThreshold block("level");
    Feed feed(block);
    for (const MatrixXd& empty : {MatrixXd(0, 0), MatrixXd(0, 3), MatrixXd(2, 0)}) {
        feed.give("Input", empty, 3.5);
        feed.step();
    }
    EXPECT_TRUE(feed.sent().empty());
    const auto& pin = dynamic_cast<InputPin<MatrixXd>&>(block.getInputPin("Input"));
    EXPECT_TRUE(agree(pin.getTimeStamp(), 3.5, same)) << "its time stamp is noted";
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
}

TEST(FilterThresholdTest, KeepsTheTimeStamp) {
    FilterThreshold block("level");
    Feed feed(block);
    for (const double stamp : {0.0, 1.0 / 3.0, -5.0, 1e300}) {
        feed.run("Input", matrix({{1}}), stamp);
        EXPECT_TRUE(agree(feed.last().timeStamp, stamp, same));
    }
}

TEST(FilterThresholdTest, RefusesAModeWithoutALabel) {
    FilterThreshold block("level");
    Feed feed(block);
    EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set("Mode", 2u); }), "");
    EXPECT_EQ(refusal<Poco::DataFormatException>([&] { feed.setText("Mode", "Low Level"); }), "");
    EXPECT_EQ(feed.get<unsigned>("Mode"), 0u);
}

TEST(FilterThresholdTest, ASteadyStepAllocatesNothing) {
    FilterThreshold block("level");
    EXPECT_EQ(allocationsOfAHundredSteps(block, "Input", MatrixXd::Ones(4, 6)), 0u);
}

TEST(FilterThresholdTest, LongTrace) {
    std::mt19937_64 random(41);
    FilterThreshold block("level");
    Feed feed(block);
    unsigned mode = 0;
    double threshold = 0.0;
    int ones = 0;
    for (int n = 0; n < 5000; ++n) {
        if (onceIn(5, random)) feed.set("Mode", mode = static_cast<unsigned>(random() % 2));
        if (onceIn(5, random)) feed.set("Threshold", threshold = anyNumber(random));
        const double x = anyNumber(random);
        const double wanted = (mode == 0 ? x > threshold : x < threshold) ? 1.0 : 0.0;
        ASSERT_TRUE(agree(feed.run("Input", matrix({{x, 1}}), n), matrix({{wanted}}), same)) << "step " << n;
        ones += wanted == 1.0 ? 1 : 0;
    }
    EXPECT_GT(ones, 1000);
    EXPECT_LT(ones, 4000);
}
