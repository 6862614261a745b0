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
                                "value matrix \"Pick\" (0 0)\n"
                                "value matrix \"Ranges\" (0 0)\n");
}

TEST(ColumnsTest, TakesRangesBehindWhatItPicks) {
    struct Row {
        const char* name;
        MatrixXd pick;
        MatrixXd ranges;
        MatrixXd output;
    };
    const MatrixXd sample = matrix({{0, 10, 20, 30, 40}});
    const Row rows[] = {
        {.name = "up to the last", .pick = {}, .ranges = matrix({{1, 3}}), .output = matrix({{10, 20, 30}})},
        {.name = "backwards", .pick = {}, .ranges = matrix({{4, 2}}), .output = matrix({{40, 30, 20}})},
        {.name = "one", .pick = {}, .ranges = matrix({{2, 2}}), .output = matrix({{20}})},
        {.name = "two, and a single one in front",
         .pick = matrix({{4}}),
         .ranges = matrix({{0, 1}, {3, 4}}),
         .output = matrix({{40, 0, 10, 30, 40}})},
        {.name = "none", .pick = matrix({{1}}), .ranges = MatrixXd(0, 2), .output = matrix({{10}})},
        {.name = "rows of none", .pick = matrix({{1}}), .ranges = MatrixXd(3, 0), .output = matrix({{10}})},
    };
    for (const Row& row : rows) {
        Columns block("columns");
        Feed feed(block);
        feed.set("Pick", row.pick);
        feed.set("Ranges", row.ranges);
        EXPECT_TRUE(agree(feed.run("in", sample), row.output, same)) << row.name;
    }
    Columns block("columns");
    Feed feed(block);
    feed.set("Ranges", matrix({{2, 5}}));
    feed.give("in", sample);
    feed.step();
    EXPECT_TRUE(feed.sent().empty()) << "which lacks column 5";
    EXPECT_EQ(block.getLosses(),
              std::vector<std::string>{
                  "1 of 1 sample of 'in' were dropped, since column 5 was asked for of 1 by 5, "
                  "counted from 0"});
    feed.give("in", matrix({{0, 1, 2, 3, 4, 5}}));
    feed.step();
    feed.give("in", matrix({{0}, {1}}));
    feed.step();
    EXPECT_EQ(block.getLosses(),
              std::vector<std::string>{
                  "2 of 3 samples of 'in' were dropped, since column 5 was asked for of 2 by 1, "
                  "counted from 0"});
}

TEST(ColumnsTest, RefusesWhatIsNoRange) {
    Columns block("columns");
    Feed feed(block);
    const auto refusalOf = [&](const MatrixXd& ranges) {
        return refusal<Poco::InvalidArgumentException>([&] { feed.set("Ranges", ranges); });
    };
    const std::string text = "ranges are rows of a first and a last column, whole numbers from 0 to 999999, "
                             "as in [[0, 2], [6, 8]]";
    for (const MatrixXd& wrong :
         {matrix({{1}}), matrix({{1, 2, 3}}), matrix({{-1, 2}}), matrix({{0, 0.5}}), matrix({{0, kNaN}})})
        EXPECT_EQ(refusalOf(wrong), text);
    EXPECT_EQ(refusalOf(matrix({{0, 999999}, {0, 0}})), "ranges hold 1000000 columns at most");
    feed.set("Ranges", matrix({{0, 999999}}));
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
