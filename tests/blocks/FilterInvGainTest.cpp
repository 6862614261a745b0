// SPDX-License-Identifier: MIT
#include "blocks/FilterInvGain.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

using namespace Support;

TEST(FilterInvGainTest, Catalogue) {
    FilterInvGain block("inverse");
    EXPECT_STREQ(block.getTypeName(), "FilterInvGain");
    EXPECT_EQ(catalogue(block), "input \"input\" blocking\n"
                                "output \"output\"\n"
                                "value double \"invGain\" 1\n");
}

TEST(FilterInvGainTest, DividesEachElement) {
    struct Row {
        const char* name;
        double divisor;
        MatrixXd input;
        MatrixXd output;
    };
    const Row rows[] = {
        {.name = "halves",
         .divisor = 2.0,
         .input = matrix({{1, -2}, {3, 0}}),
         .output = matrix({{0.5, -1}, {1.5, 0}})},
        {.name = "divides, not multiplies by the inverse",
         .divisor = 49.0,
         .input = matrix({{49.0}}),
         .output = matrix({{1.0}})},
        {.name = "by zero",
         .divisor = 0.0,
         .input = matrix({{1, -1, 0, -0.0}}),
         .output = matrix({{kInf, -kInf, kNaN, kNaN}})},
        {.name = "by minus zero",
         .divisor = -0.0,
         .input = matrix({{1, -1}}),
         .output = matrix({{-kInf, kInf}})},
        {.name = "by infinity",
         .divisor = kInf,
         .input = matrix({{1, -1, kInf}}),
         .output = matrix({{0.0, -0.0, kNaN}})},
    };
    for (const Row& row : rows) {
        FilterInvGain block("inverse");
        Feed feed(block);
        feed.set("invGain", row.divisor);
        EXPECT_TRUE(agree(feed.run("input", row.input), row.output, same)) << row.name;
    }
}

TEST(FilterInvGainTest, StampsTheWallClockWhateverCameIn) {
    FilterInvGain block("inverse");
    Feed feed(block);
    const auto now = [] { return static_cast<double>(Poco::Timestamp().utcTime()) * 1e-7; };
    const double before = now();
    feed.run("input", matrix({{1}}), 3.0);
    const double after = now();
    EXPECT_GE(feed.last().timeStamp, before);
    EXPECT_LE(feed.last().timeStamp, after);
    // 2020 and 2120 in seconds since 15 October 1582: 159689 and 196214 days.
    EXPECT_GT(feed.last().timeStamp, 159689.0 * 86400.0);
    EXPECT_LT(feed.last().timeStamp, 196214.0 * 86400.0);
}

TEST(FilterInvGainTest, WithoutASampleNothingHappens) {
    FilterInvGain block("inverse");
    Feed feed(block);
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
}

TEST(FilterInvGainTest, ShapeFollowsEverySample) {
    FilterInvGain block("inverse");
    Feed feed(block);
    for (const MatrixXd& sample :
         {matrix({{1, 2, 3}, {4, 5, 6}}), matrix({{7}}), MatrixXd(0, 0), MatrixXd(0, 4)})
        EXPECT_TRUE(agree(feed.run("input", sample), sample, same));
}
