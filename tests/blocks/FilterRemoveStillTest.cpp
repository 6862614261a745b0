// SPDX-License-Identifier: MIT
#include "blocks/FilterRemoveStill.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/Scalars.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace Support;

TEST(FilterRemoveStillTest, Catalogue) {
    FilterRemoveStill block("thin");
    EXPECT_STREQ(block.getTypeName(), "FilterRemoveStill");
    const std::string limits =
        " 0.10000000000000001 in [-1.7976931348623157e+308;1.7976931348623157e+308] step 0\n";
    EXPECT_EQ(catalogue(block), "input \"signal\" blocking\n"
                                "output \"signalDecimated\"\n"
                                "range double \"distancex\"" +
                                    limits + "range double \"distancey\"" + limits +
                                    "range double \"distancez\"" + limits);
}

TEST(FilterRemoveStillTest, KeepsRowsThatMoved) {
    struct Row {
        const char* name;
        MatrixXd distances;
        MatrixXd input;
        MatrixXd output;
    };
    const MatrixXd tenth = matrix({{0.1, 0.1, 0.1}});
    const Row rows[] = {
        {.name = "one row", .distances = tenth, .input = matrix({{1, 2, 3}}), .output = matrix({{1, 2, 3}})},
        {.name = "exactly the distance is still",
         .distances = tenth,
         .input = matrix({{0, 0, 0}, {0.1, 0, 0}, {0.2, 0, 0}}),
         .output = matrix({{0, 0, 0}, {0.2, 0, 0}})},
        {.name = "compared with the last kept row, so a drift adds up",
         .distances = tenth,
         .input = matrix({{0, 0, 0}, {0, 0.06, 0}, {0, 0.12, 0}, {0, 0.18, 0}, {0, 0.24, 0}}),
         .output = matrix({{0, 0, 0}, {0, 0.12, 0}, {0, 0.24, 0}})},
        {.name = "x alone",
         .distances = matrix({{1, 9, 9}}),
         .input = matrix({{0, 0, 0}, {-1.5, 0, 0}}),
         .output = matrix({{0, 0, 0}, {-1.5, 0, 0}})},
        {.name = "y alone",
         .distances = matrix({{9, 1, 9}}),
         .input = matrix({{0, 0, 0}, {5, 1.5, 5}}),
         .output = matrix({{0, 0, 0}, {5, 1.5, 5}})},
        {.name = "z alone",
         .distances = matrix({{9, 9, 1}}),
         .input = matrix({{0, 0, 0}, {5, 5, 0.5}, {0, 0, -1.5}}),
         .output = matrix({{0, 0, 0}, {0, 0, -1.5}})},
        {.name = "small moves on all axes don't add up",
         .distances = tenth,
         .input = matrix({{0, 0, 0}, {0.09, 0.09, 0.09}}),
         .output = matrix({{0, 0, 0}})},
        {.name = "zero keeps what differs at all; zeros of either sign don't",
         .distances = matrix({{0, 0, 0}}),
         .input = matrix({{0, 0, 0}, {-0.0, 0, 0}, {5e-324, 0, 0}, {5e-324, 0, 0}}),
         .output = matrix({{0, 0, 0}, {5e-324, 0, 0}})},
        {.name = "a negative distance keeps every row",
         .distances = matrix({{9, -1, 9}}),
         .input = matrix({{1, 1, 1}, {1, 1, 1}, {1, 1, 1}}),
         .output = matrix({{1, 1, 1}, {1, 1, 1}, {1, 1, 1}})},
        {.name = "a difference that is not a number is no move, not even beyond a negative distance",
         .distances = matrix({{-1, -1, -1}}),
         .input = matrix({{kNaN, kInf, kNaN}, {1, kInf, 3}, {2, 2, 2}}),
         .output = matrix({{kNaN, kInf, kNaN}, {2, 2, 2}})},
        {.name = "not-a-number on one axis leaves the others",
         .distances = tenth,
         .input = matrix({{0, 0, 0}, {kNaN, 1, 0}, {5, 1, 0}, {5, 2, 0}}),
         .output = matrix({{0, 0, 0}, {kNaN, 1, 0}, {5, 2, 0}})},
        {.name = "infinities move once",
         .distances = tenth,
         .input = matrix({{0, 0, 0}, {kInf, 0, 0}, {kInf, 0, 0}, {-kInf, 0, 0}}),
         .output = matrix({{0, 0, 0}, {kInf, 0, 0}, {-kInf, 0, 0}})},
        {.name = "bits of a kept row pass",
         .distances = tenth,
         .input = matrix({{-0.0, kNaN, -kInf}}),
         .output = matrix({{-0.0, kNaN, -kInf}})},
    };
    for (const Row& row : rows) {
        FilterRemoveStill block("thin");
        Feed feed(block);
        feed.set("distancex", row.distances(0));
        feed.set("distancey", row.distances(1));
        feed.set("distancez", row.distances(2));
        EXPECT_TRUE(agree(feed.run("signal", row.input, 1.5), row.output, same)) << row.name;
        EXPECT_TRUE(agree(feed.last().timeStamp, 1.5, same));
    }
}

TEST(FilterRemoveStillTest, WithoutRowsTheSamplePasses) {
    FilterRemoveStill block("thin");
    Feed feed(block);
    feed.run("signal", matrix({{1, 2, 3}}));
    EXPECT_TRUE(agree(feed.run("signal", MatrixXd(0, 3), 2.5), MatrixXd(0, 3), same));
    EXPECT_TRUE(agree(feed.last().timeStamp, 2.5, same));
}

TEST(FilterRemoveStillTest, AnotherWidthIsUsedUpAndSendsNothing) {
    FilterRemoveStill block("thin");
    Feed feed(block);
    for (const MatrixXd& odd :
         {MatrixXd(MatrixXd::Ones(5, 2)), MatrixXd(MatrixXd::Ones(3, 1)), MatrixXd(MatrixXd::Ones(3, 4)),
          MatrixXd(0, 0), MatrixXd(3, 0), MatrixXd(0, 2)}) {
        feed.give("signal", odd);
        feed.step();
    }
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
}

TEST(FilterRemoveStillTest, NothingIsRememberedBetweenSamples) {
    FilterRemoveStill block("thin");
    Feed feed(block);
    const MatrixXd sample = matrix({{1, 1, 1}, {1, 1, 1}});
    EXPECT_TRUE(agree(feed.run("signal", sample), matrix({{1, 1, 1}}), same));
    EXPECT_TRUE(agree(feed.run("signal", sample), matrix({{1, 1, 1}}), same))
        << "row 0 is kept whatever came before";
}

TEST(FilterRemoveStillTest, RefusesWhatIsNoNumber) {
    FilterRemoveStill block("thin");
    Feed feed(block);
    EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set("distancex", kNaN); }),
              "nan does not fit in [-1.79769e+308;1.79769e+308], (step : 0)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set("distancez", kInf); }),
              "inf does not fit in [-1.79769e+308;1.79769e+308], (step : 0)");
    EXPECT_TRUE(agree(feed.get<double>("distancex"), 0.1, same));
}

TEST(FilterRemoveStillTest, ASteadyStepAllocatesNothing) {
    FilterRemoveStill block("thin");
    MatrixXd trajectory(40, 3);
    for (Eigen::Index i = 0; i < trajectory.size(); ++i)
        trajectory(i) = 0.02 * static_cast<double>(i);
    EXPECT_EQ(allocationsOfAHundredSteps(block, "signal", trajectory), 0u);
}

TEST(FilterRemoveStillTest, LongTrace) {
    std::mt19937_64 random(51);
    FilterRemoveStill block("thin");
    Feed feed(block);
    const char* const names[3] = {"distancex", "distancey", "distancez"};
    double distances[3] = {0.1, 0.1, 0.1};
    Eigen::Index given = 0;
    Eigen::Index keptInAll = 0;
    for (int n = 0; n < 2000; ++n) {
        const auto axis = static_cast<std::size_t>(random() % 3);
        feed.set(names[axis], distances[axis] = 0.5 * static_cast<double>(random() % 16) - 0.5);
        const MatrixXd sample = anyMatrix(random, static_cast<Eigen::Index>(random() % 30), 3);
        std::vector<Eigen::Index> kept;
        for (Eigen::Index r = 0; r < sample.rows(); ++r) {
            bool keeps = kept.empty();
            for (Eigen::Index c = 0; c < 3 && !keeps; ++c)
                keeps = std::abs(sample(r, c) - sample(kept.back(), c)) > distances[c];
            if (keeps) kept.push_back(r);
        }
        MatrixXd wanted(static_cast<Eigen::Index>(kept.size()), 3);
        for (std::size_t i = 0; i < kept.size(); ++i)
            wanted.row(static_cast<Eigen::Index>(i)) = sample.row(kept[i]);
        ASSERT_TRUE(agree(feed.run("signal", sample, n), wanted, same)) << "step " << n;
        given += sample.rows();
        keptInAll += wanted.rows();
    }
    EXPECT_GT(keptInAll, given / 4);
    EXPECT_LT(keptInAll, given - given / 8);
}
