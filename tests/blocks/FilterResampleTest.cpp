// SPDX-License-Identifier: MIT
#include "blocks/FilterResample.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/Scalars.h"
#include "tests/support/Signals.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace Support;

namespace {

std::vector<int> rowsPicked(int rows, int limit) {
    FilterResample block("thin");
    Feed feed(block);
    feed.set("Matrix size", limit);
    const MatrixXd picked = feed.run("in", numbered(rows, 2));
    std::vector<int> numbers;
    for (Eigen::Index r = 0; r < picked.rows(); ++r) {
        numbers.push_back(static_cast<int>(picked(r, 0)));
        EXPECT_TRUE(agree(picked(r, 1), picked(r, 0) + 0.001, same)) << "whole rows are picked";
    }
    return numbers;
}
} // namespace

TEST(FilterResampleTest, Catalogue) {
    FilterResample block("thin");
    EXPECT_STREQ(block.getTypeName(), "FilterResample");
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "output \"out\"\n"
                                "range int \"Matrix size\" 900 in [1;10000] step 1\n");
}

TEST(FilterResampleTest, PicksTheNearestRows) {
    struct Row {
        const char* name;
        int rows;
        int limit;
        std::vector<int> picked;
    };
    const Row rows[] = {
        {.name = "every second", .rows = 5, .limit = 3, .picked = {0, 2, 4}},
        {.name = "a half rounds up", .rows = 4, .limit = 3, .picked = {0, 2, 3}},
        {.name = "two: the ends", .rows = 9, .limit = 2, .picked = {0, 8}},
        {.name = "one: the first", .rows = 9, .limit = 1, .picked = {0}},
        {.name = "one less", .rows = 5, .limit = 4, .picked = {0, 1, 3, 4}},
        {.name = "ten to four", .rows = 10, .limit = 4, .picked = {0, 3, 6, 9}},
        {.name = "ten to five, by a ratio that is no whole number",
         .rows = 10,
         .limit = 5,
         .picked = {0, 2, 5, 7, 9}},
        {.name = "as many pass", .rows = 4, .limit = 4, .picked = {0, 1, 2, 3}},
        {.name = "fewer pass", .rows = 2, .limit = 9, .picked = {0, 1}},
        {.name = "one row always passes", .rows = 1, .limit = 1, .picked = {0}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(rowsPicked(row.rows, row.limit), row.picked) << row.name;
}

TEST(FilterResampleTest, FirstAndLastRowsAreKeptForEverySize) {
    for (int rows = 3; rows < 400; rows += 7) {
        for (int limit = 2; limit < rows; limit += 5) {
            const std::vector<int> picked = rowsPicked(rows, limit);
            ASSERT_EQ(picked.size(), static_cast<std::size_t>(limit));
            ASSERT_EQ(picked.front(), 0);
            ASSERT_EQ(picked.back(), rows - 1) << rows << " to " << limit;
        }
    }
}

TEST(FilterResampleTest, ShapesThatPassUnchanged) {
    FilterResample block("thin");
    Feed feed(block);
    feed.set("Matrix size", 2);
    const MatrixXd samples[] = {MatrixXd(0, 0),      MatrixXd(0, 3),        MatrixXd(2, 0),
                                matrix({{1, 2, 3}}), matrix({{1}, {-0.0}}), matrix({{kNaN, kInf}})};
    for (const MatrixXd& sample : samples)
        EXPECT_TRUE(agree(feed.run("in", sample, 4.5), sample, same));
    EXPECT_TRUE(agree(feed.last().timeStamp, 4.5, same));
    EXPECT_TRUE(agree(feed.run("in", MatrixXd(5, 0)), MatrixXd(2, 0), same))
        << "rows without columns are rows";
}

TEST(FilterResampleTest, BitsPass) {
    FilterResample block("thin");
    Feed feed(block);
    feed.set("Matrix size", 2);
    EXPECT_TRUE(agree(feed.run("in", matrix({{kNaN, -0.0}, {1, 1}, {-kInf, 5e-324}})),
                      matrix({{kNaN, -0.0}, {-kInf, 5e-324}}), same));
}

TEST(FilterResampleTest, WithoutASampleNothingHappens) {
    FilterResample block("thin");
    Feed feed(block);
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
}

TEST(FilterResampleTest, RefusesSizesOutsideItsLimits) {
    FilterResample block("thin");
    Feed feed(block);
    EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set("Matrix size", 0); }),
              "0 does not fit in [1;10000], (step : 1)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set("Matrix size", 10001); }),
              "10001 does not fit in [1;10000], (step : 1)");
    EXPECT_EQ(feed.get<int>("Matrix size"), 900);
    feed.set("Matrix size", 10000);
    feed.set("Matrix size", 1);
}

TEST(FilterResampleTest, ASteadyStepAllocatesNothing) {
    FilterResample block("thin");
    EXPECT_EQ(allocationsOfAHundredSteps(block, "in", MatrixXd::Ones(8, 3)), 0u);
    dynamic_cast<ValueProperty<int>&>(block.getProperty("Matrix size")).setValue(4);
    EXPECT_EQ(allocationsOfAHundredSteps(block, "in", MatrixXd::Ones(8, 3)), 0u);
}

TEST(FilterResampleTest, LongTrace) {
    std::mt19937_64 random(47);
    FilterResample block("thin");
    Feed feed(block);
    int limit = 900;
    for (int n = 0; n < 2000; ++n) {
        if (onceIn(3, random)) feed.set("Matrix size", limit = 1 + static_cast<int>(random() % 30));
        const MatrixXd sample = anyMatrix(random, static_cast<Eigen::Index>(random() % 40), 3);
        MatrixXd wanted = sample;
        if (limit < sample.rows()) {
            wanted.resize(limit, 3);
            const double ratio = limit > 1 ? double(sample.rows() - 1) / double(limit - 1) : 0.0;
            for (int i = 0; i < limit; ++i)
                wanted.row(i) = sample.row(static_cast<Eigen::Index>(std::floor(i * ratio + 0.5)));
        }
        ASSERT_TRUE(agree(feed.run("in", sample, n), wanted, same)) << "step " << n;
    }
}
