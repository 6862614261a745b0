// SPDX-License-Identifier: MIT
#include "everyday/Columns.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

using namespace Support;

TEST(ColumnsTest, Catalogue) {
    Columns block("columns");
    EXPECT_STREQ(block.getTypeName(), "Columns");
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "output \"out\"\n"
                                "value matrix \"Pick\" (0 0)\n");
}

TEST(ColumnsTest, PicksInAnyOrder) {
    struct Row {
        const char* name;
        MatrixXd pick;
        MatrixXd input;
        MatrixXd output;
    };
    const MatrixXd sample = matrix({{1, -0.0, kNaN}, {4, 5, kInf}});
    const Row rows[] = {
        {.name = "one", .pick = matrix({{1}}), .input = sample, .output = matrix({{-0.0}, {5}})},
        {.name = "another order",
         .pick = matrix({{2, 0, 1}}),
         .input = sample,
         .output = matrix({{kNaN, 1, -0.0}, {kInf, 4, 5}})},
        {.name = "twice", .pick = matrix({{0, 0}}), .input = sample, .output = matrix({{1, 1}, {4, 4}})},
        {.name = "as a column",
         .pick = matrix({{1}, {0}}),
         .input = sample,
         .output = matrix({{-0.0, 1}, {5, 4}})},
        {.name = "all", .pick = {}, .input = sample, .output = sample},
        {.name = "no rows", .pick = matrix({{1, 2}}), .input = MatrixXd(0, 3), .output = MatrixXd(0, 2)},
        {.name = "nothing", .pick = {}, .input = MatrixXd(0, 0), .output = MatrixXd(0, 0)},
    };
    for (const Row& row : rows) {
        Columns block("columns");
        Feed feed(block);
        feed.set("Pick", row.pick);
        EXPECT_TRUE(agree(feed.run("in", row.input, 0.25), row.output, same)) << row.name;
        EXPECT_TRUE(agree(feed.last().timeStamp, 0.25, same)) << row.name;
    }
}

TEST(ColumnsTest, DropsWhatLacksAColumn) {
    Columns block("columns");
    Feed feed(block);
    feed.set("Pick", matrix({{0, 3}}));
    feed.give("in", matrix({{1, 2, 3}}));
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
    EXPECT_TRUE(agree(feed.run("in", matrix({{1, 2, 3, 4}})), matrix({{1, 4}}), same));
    feed.set("Pick", matrix({{1}}));
    EXPECT_TRUE(agree(feed.run("in", matrix({{1, 2, 3}})), matrix({{2}}), same)) << "from the next step on";
}

TEST(ColumnsTest, RefusesWhatIsNoColumn) {
    Columns block("columns");
    Feed feed(block);
    for (const double wrong : {-1.0, 0.5, 1e6, kNaN, kInf})
        EXPECT_EQ(refusal<Poco::InvalidArgumentException>([&] {
                      feed.set("Pick", matrix({{0, wrong}}));
                  }),
                  "columns are whole numbers from 0 to 999999, the first being 0")
            << wrong;
}

TEST(ColumnsTest, ASteadyStepAllocatesNothing) {
    Columns block("columns");
    Feed(block).set("Pick", matrix({{2, 1}}));
    EXPECT_EQ(allocationsOfAHundredSteps(block, "in", MatrixXd::Ones(4, 6)), 0U);
}
