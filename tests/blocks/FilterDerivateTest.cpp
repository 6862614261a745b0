// SPDX-License-Identifier: MIT
#include "blocks/FilterDerivate.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/Scalars.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <random>

using namespace Support;

namespace {

struct Fixture {
    FilterDerivate block{"change"};
    Feed feed{block};

    std::vector<MatrixXd> run(const std::vector<MatrixXd>& inputs, double period = 1.0) {
        feed.forget();
        for (const MatrixXd& x : inputs)
            feed.run("Input", x, time += period);
        return feed.values();
    }
    double time = 0.0;
};
} // namespace

TEST(FilterDerivateTest, Catalogue) {
    FilterDerivate block("change");
    EXPECT_STREQ(block.getTypeName(), "FilterDerivate");
    EXPECT_EQ(catalogue(block), "input \"Input\" blocking\n"
                                "output \"Output\"\n"
                                "command \"Reset\"\n");
}

TEST(FilterDerivateTest, SubtractsTheSampleBefore) {
    struct Row {
        const char* name;
        std::vector<MatrixXd> inputs;
        std::vector<MatrixXd> changes;
    };
    const Row rows[] = {
        {.name = "scalars", .inputs = scalars({1, 3, 6, 6}), .changes = scalars({0, 2, 3, 0})},
        {.name = "element by element",
         .inputs = {matrix({{1, 2}, {3, 4}}), matrix({{2, 0}, {3, -4}})},
         .changes = {matrix({{0, 0}, {0, 0}}), matrix({{1, -2}, {0, -8}})}},
        {.name = "one subtraction is one rounding",
         .inputs = scalars({0.1, 0.3}),
         .changes = scalars({0, 0.3 - 0.1})},
        {.name = "minus zero: its change is zero",
         .inputs = scalars({-0.0, -0.0, 0.0, -0.0}),
         .changes = scalars({0, 0, 0, -0.0})},
        {.name = "not-a-number spoils two",
         .inputs = scalars({1, kNaN, 2, 3}),
         .changes = scalars({0, kNaN, kNaN, 1})},
        {.name = "infinity",
         .inputs = scalars({1, kInf, kInf, 2, -kInf}),
         .changes = scalars({0, kInf, kNaN, -kInf, -kInf})},
        {.name = "a first infinity has no change",
         .inputs = scalars({kInf, 1}),
         .changes = scalars({kNaN, -kInf})},
    };
    for (const Row& row : rows) {
        Fixture f;
        EXPECT_TRUE(agree(f.run(row.inputs), row.changes, same)) << row.name;
    }
}

TEST(FilterDerivateTest, AChangeOfShapeStartsAnew) {
    Fixture f;
    const MatrixXd zeros = MatrixXd::Zero(2, 3);
    const auto changes = f.run({matrix({{1, 2, 3, 4, 5, 6}}), matrix({{6, 5, 4}, {3, 2, 1}}),
                                matrix({{6, 5, 4}, {3, 2, 2}}), matrix({{7, 7}, {7, 7}, {7, 7}}),
                                MatrixXd(0, 0), MatrixXd(0, 3), MatrixXd(3, 0), matrix({{1}})});
    const std::vector<MatrixXd> wanted{
        MatrixXd::Zero(1, 6), MatrixXd::Zero(2, 3), matrix({{0, 0, 0}, {0, 0, 1}}),
        MatrixXd::Zero(3, 2), MatrixXd(0, 0),       MatrixXd(0, 3),
        MatrixXd(3, 0),       MatrixXd::Zero(1, 1)};
    EXPECT_TRUE(agree(changes, wanted, same));
}

TEST(FilterDerivateTest, TimeStampsPlayNoPart) {
    for (const double period : {1.0, 0.001, 0.0, -1.0}) {
        Fixture f;
        EXPECT_TRUE(agree(f.run(scalars({1, 3, 6}), period), scalars({0, 2, 3}), same)) << period;
    }
}

TEST(FilterDerivateTest, KeepsTheTimeStamp) {
    Fixture f;
    f.feed.run("Input", matrix({{1}}), 1.0 / 3.0);
    EXPECT_TRUE(agree(f.feed.last().timeStamp, 1.0 / 3.0, same));
    f.feed.run("Input", MatrixXd(0, 0), 7.5);
    EXPECT_TRUE(agree(f.feed.last().timeStamp, 7.5, same)) << "an empty sample is sent like any other";
}

TEST(FilterDerivateTest, ResetForgetsTheSampleBefore) {
    Fixture f;
    f.run(scalars({1, 3}));
    f.feed.fire("Reset");
    f.feed.step();
    EXPECT_EQ(f.feed.sent().size(), 2u)
        << "a command makes no step, and a step without a sample does nothing";
    EXPECT_TRUE(agree(f.run(scalars({9, 10})), scalars({0, 1}), same));
    f.feed.fire("Reset");
    f.feed.fire("Reset");
    EXPECT_TRUE(agree(f.run(scalars({4, 6, 9})), scalars({0, 2, 3}), same));
}

TEST(FilterDerivateTest, AfterAResetABlockIsLikeNew) {
    Fixture used;
    Fixture fresh;
    used.run(scalars({5, kNaN, kInf}));
    used.feed.fire("Reset");
    const std::vector<MatrixXd> inputs{matrix({{1, 2}}), matrix({{4, 4}})};
    EXPECT_TRUE(agree(used.run(inputs), fresh.run(inputs), same));
}

TEST(FilterDerivateTest, ASteadyStepAllocatesNothing) {
    FilterDerivate block("change");
    EXPECT_EQ(allocationsOfAHundredSteps(block, "Input", MatrixXd::Ones(4, 6)), 0u);
}

TEST(FilterDerivateTest, LongTrace) {
    std::mt19937_64 random(45);
    Fixture f;
    MatrixXd before;
    Eigen::Index rows = 1;
    Eigen::Index cols = 3;
    for (int n = 0; n < 5000; ++n) {
        if (onceIn(20, random)) rows = static_cast<Eigen::Index>(random() % 4);
        if (onceIn(20, random)) cols = static_cast<Eigen::Index>(random() % 4);
        if (onceIn(20, random)) {
            f.feed.fire("Reset");
            before = MatrixXd();
        }
        const MatrixXd sample = anyMatrix(random, rows, cols);
        if (before.rows() != rows || before.cols() != cols) before = sample;
        MatrixXd wanted(rows, cols);
        for (Eigen::Index i = 0; i < sample.size(); ++i)
            wanted(i) = sample(i) - before(i);
        before = sample;
        ASSERT_TRUE(agree(f.feed.run("Input", sample, n), wanted, same)) << "step " << n;
    }
}
