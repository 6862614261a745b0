// SPDX-License-Identifier: MIT
#include "everyday/Norm.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace Support;

TEST(NormTest, Catalogue) {
    Norm block("norm");
    EXPECT_STREQ(block.getTypeName(), "Norm");
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "output \"out\"\n"
                                "range int \"Columns\" 0 in [0;10000] step 1\n");
}

TEST(NormTest, GivesTheLengthOfEachVector) {
    struct Row {
        const char* name;
        int columns;
        MatrixXd input;
        MatrixXd output;
    };
    const Row rows[] = {
        {.name = "a whole row", .columns = 0, .input = matrix({{2, -3, 6}}), .output = matrix({{7}})},
        {.name = "rows by themselves",
         .columns = 0,
         .input = matrix({{3, 4}, {-5, 12}}),
         .output = matrix({{5}, {13}})},
        {.name = "two sensors side by side",
         .columns = 3,
         .input = matrix({{2, 3, 6, 1, 4, 8}}),
         .output = matrix({{7, 9}})},
        {.name = "what is left", .columns = 2, .input = matrix({{3, 4, -5}}), .output = matrix({{5, 5}})},
        {.name = "more than there is", .columns = 9, .input = matrix({{3, 4}}), .output = matrix({{5}})},
        {.name = "zeros lose their sign",
         .columns = 1,
         .input = matrix({{-0.0, 0}}),
         .output = matrix({{0, 0}})},
        {.name = "no number", .columns = 0, .input = matrix({{kNaN, kInf}}), .output = matrix({{kNaN}})},
        {.name = "infinite", .columns = 0, .input = matrix({{1, -kInf}}), .output = matrix({{kInf}})},
        {.name = "squares beyond all numbers",
         .columns = 0,
         .input = matrix({{1e200}}),
         .output = matrix({{kInf}})},
        {.name = "no rows", .columns = 0, .input = MatrixXd(0, 3), .output = MatrixXd(0, 1)},
        {.name = "no columns", .columns = 0, .input = MatrixXd(2, 0), .output = MatrixXd(2, 0)},
        {.name = "nothing", .columns = 3, .input = MatrixXd(0, 0), .output = MatrixXd(0, 0)},
    };
    for (const Row& row : rows) {
        Norm block("norm");
        Feed feed(block);
        feed.set("Columns", row.columns);
        EXPECT_TRUE(agree(feed.run("in", row.input, 0.25), row.output, same)) << row.name;
        EXPECT_TRUE(agree(feed.last().timeStamp, 0.25, same)) << row.name;
    }
}

TEST(NormTest, AddsFromLeftToRight) {
    const double a = 0.1;
    const double b = 1e8;
    const double c = 0.7;
    Norm block("norm");
    Feed feed(block);
    EXPECT_TRUE(
        agree(feed.run("in", matrix({{a, b, c}})), matrix({{std::sqrt((a * a + b * b) + c * c)}}), same));
}

TEST(NormTest, ASteadyStepAllocatesNothing) {
    Norm block("norm");
    EXPECT_EQ(allocationsOfAHundredSteps(block, "in", MatrixXd::Ones(4, 6)), 0U);
}
