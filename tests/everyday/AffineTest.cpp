// SPDX-License-Identifier: MIT
#include "everyday/Affine.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <random>

using namespace Support;

TEST(AffineTest, Catalogue) {
    Affine block("affine");
    EXPECT_STREQ(block.getTypeName(), "Affine");
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "output \"out\"\n"
                                "value matrix \"Matrix\" (0 0)\n"
                                "value matrix \"Offset\" (0 0)\n");
}

TEST(AffineTest, MultipliesAndAdds) {
    struct Row {
        const char* name;
        MatrixXd matrix;
        MatrixXd offset;
        MatrixXd input;
        MatrixXd output;
    };
    const Row rows[] = {
        {.name = "axes turned",
         .matrix = matrix({{0, -1, 0}, {1, 0, 0}, {0, 0, 1}}),
         .offset = {},
         .input = matrix({{1, 2, 3}, {4, 5, 6}}),
         .output = matrix({{-2, 1, 3}, {-5, 4, 6}})},
        {.name = "calibrated",
         .matrix = matrix({{2, 0}, {0, 0.5}}),
         .offset = matrix({{-1, 3}}),
         .input = matrix({{1, 8}}),
         .output = matrix({{1, 7}})},
        {.name = "fewer columns",
         .matrix = matrix({{0.5, 0.5}}),
         .offset = matrix({{1}}),
         .input = matrix({{3, 5}}),
         .output = matrix({{5}})},
        {.name = "more columns",
         .matrix = matrix({{1}, {-1}, {2}}),
         .offset = {},
         .input = matrix({{3}, {0.0}}),
         .output = matrix({{3, -3, 6}, {0.0, -0.0, 0.0}})},
        {.name = "an offset alone, as a column",
         .matrix = {},
         .offset = matrix({{1}, {2}}),
         .input = matrix({{kNaN, -0.0}}),
         .output = matrix({{kNaN, 2}})},
        {.name = "neither",
         .matrix = {},
         .offset = {},
         .input = matrix({{kNaN, -0.0}}),
         .output = matrix({{kNaN, -0.0}})},
        {.name = "nothing by nothing",
         .matrix = {},
         .offset = {},
         .input = MatrixXd(0, 4),
         .output = MatrixXd(0, 4)},
        {.name = "no rows",
         .matrix = matrix({{1, 1}}),
         .offset = {},
         .input = MatrixXd(0, 2),
         .output = MatrixXd(0, 1)},
        {.name = "a factor of zero takes no infinity away",
         .matrix = matrix({{1, 0}, {0, 1}}),
         .offset = {},
         .input = matrix({{1, kInf}}),
         .output = matrix({{kNaN, kInf}})},
    };
    for (const Row& row : rows) {
        Affine block("affine");
        Feed feed(block);
        feed.set("Matrix", row.matrix);
        feed.set("Offset", row.offset);
        EXPECT_TRUE(agree(feed.run("in", row.input, 0.25), row.output, same)) << row.name;
        EXPECT_TRUE(agree(feed.last().timeStamp, 0.25, same)) << row.name;
    }
}

TEST(AffineTest, DropsRowsOfAnotherWidth) {
    Affine block("affine");
    Feed feed(block);
    feed.set("Matrix", matrix({{1, 2}}));
    for (const MatrixXd& sample : {matrix({{1}}), matrix({{1, 2, 3}}), MatrixXd(1, 0)})
        feed.give("in", sample), feed.step();
    EXPECT_TRUE(feed.sent().empty());
    feed.set("Matrix", MatrixXd());
    feed.set("Offset", matrix({{1, 2, 3}}));
    feed.give("in", matrix({{1}}));
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
    EXPECT_TRUE(agree(feed.run("in", matrix({{1, 1, 1}})), matrix({{2, 3, 4}}), same)) << "settings changed";
}

TEST(AffineTest, RefusesWhatDoesNotFitTogether) {
    Affine block("affine");
    Feed feed(block);
    feed.set("Matrix", MatrixXd(MatrixXd::Identity(3, 3)));
    using Poco::InvalidArgumentException;
    EXPECT_EQ(refusal<InvalidArgumentException>([&] {
                  feed.set("Offset", matrix({{1, 2}}));
              }),
              "a matrix of 3 by 3 has an offset of 3 numbers, not of 2");
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { feed.set("Offset", MatrixXd(MatrixXd::Zero(2, 2))); }),
              "an offset is one row or one column, not 2 by 2");
    feed.set("Offset", matrix({{1, 2, 3}}));
    EXPECT_EQ(refusal<InvalidArgumentException>([&] {
                  feed.set("Matrix", matrix({{1, 2}}));
              }),
              "a matrix of 1 by 2 has an offset of 1 numbers, not of 3");
    EXPECT_TRUE(agree(feed.run("in", matrix({{1, 1, 1}})), matrix({{2, 3, 4}}), same)) << "the old ones stay";
}

TEST(AffineTest, AddsFromLeftToRightWhateverTheWidth) {
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> number(-10.0, 10.0);
    for (const Eigen::Index width : {1, 2, 3, 7, 64}) {
        for (const Eigen::Index height : {1, 3, 5, 64}) {
            MatrixXd factors(height, width);
            MatrixXd offset(1, height);
            MatrixXd sample(2, width);
            for (MatrixXd* const filled : {&factors, &offset, &sample})
                for (Eigen::Index i = 0; i < filled->size(); ++i)
                    (*filled)(i) = number(random);
            MatrixXd wanted(2, height);
            for (Eigen::Index r = 0; r < 2; ++r) {
                for (Eigen::Index i = 0; i < height; ++i) {
                    double sum = factors(i, 0) * sample(r, 0);
                    for (Eigen::Index j = 1; j < width; ++j)
                        sum += factors(i, j) * sample(r, j);
                    wanted(r, i) = sum + offset(i);
                }
            }
            Affine block("affine");
            Feed feed(block);
            feed.set("Matrix", factors);
            feed.set("Offset", offset);
            ASSERT_TRUE(agree(feed.run("in", sample), wanted, same)) << height << " by " << width;
        }
    }
}

TEST(AffineTest, ASteadyStepAllocatesNothing) {
    Affine block("affine");
    Feed(block).set("Matrix", MatrixXd(MatrixXd::Identity(6, 6)));
    EXPECT_EQ(allocationsOfAHundredSteps(block, "in", MatrixXd::Ones(4, 6)), 0U);
}
