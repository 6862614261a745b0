// SPDX-License-Identifier: MIT
#include "blocks/FilterDiscarder.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/Scalars.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

using namespace Support;

namespace {

struct Fixture {
    FilterDiscarder block{"skip"};
    Feed feed{block};

    std::vector<MatrixXd> run(std::initializer_list<double> inputs) {
        feed.forget();
        for (const MatrixXd& x : scalars(inputs)) {
            feed.give("in", x, time += 1.0);
            feed.step();
        }
        return feed.values();
    }
    double time = 0.0;
};
} // namespace

TEST(FilterDiscarderTest, Catalogue) {
    FilterDiscarder block("skip");
    EXPECT_STREQ(block.getTypeName(), "FilterDiscarder");
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "input \"reset\" blocking\n"
                                "output \"out\"\n"
                                "range int \"Samples\" 0 in [0;2147483647] step 0\n"
                                "command \"Reset\"\n");
}

TEST(FilterDiscarderTest, DropsTheFirstSamples) {
    Fixture f;
    f.feed.set("Samples", 2);
    EXPECT_TRUE(agree(f.run({1, 2, 3, 4}), scalars({3, 4}), same));
    EXPECT_TRUE(agree(f.feed.sent()[0].timeStamp, 3.0, same));
    EXPECT_TRUE(agree(f.feed.sent()[1].timeStamp, 4.0, same));
    EXPECT_TRUE(agree(f.run({5}), scalars({5}), same));
}

TEST(FilterDiscarderTest, ZeroPassesAll) {
    Fixture f;
    EXPECT_TRUE(agree(f.run({1, kNaN, -0.0, kInf}), scalars({1, kNaN, -0.0, kInf}), same));
}

TEST(FilterDiscarderTest, ShapesPassAndEmptySamplesCount) {
    Fixture f;
    f.feed.set("Samples", 1);
    f.feed.give("in", MatrixXd(0, 0));
    f.feed.step();
    EXPECT_TRUE(f.feed.sent().empty());
    for (const MatrixXd& sample : {matrix({{1, 2}, {3, 4}}), MatrixXd(0, 0), MatrixXd(0, 3), MatrixXd(2, 0)})
        EXPECT_TRUE(agree(f.feed.run("in", sample), sample, same));
}

TEST(FilterDiscarderTest, ASettingCountsAtOnce) {
    Fixture f;
    f.feed.set("Samples", 3);
    EXPECT_TRUE(f.run({1, 2}).empty());
    f.feed.set("Samples", 1);
    EXPECT_TRUE(agree(f.run({3}), scalars({3}), same)) << "lowered: passes at once";
    f.feed.set("Samples", 4);
    EXPECT_TRUE(agree(f.run({4, 5, 6}), scalars({6}), same)) << "raised: two were gone, two more go";
}

TEST(FilterDiscarderTest, TheResetPinIsSeenBeforeTheInput) {
    Fixture f;
    f.feed.set("Samples", 2);
    f.run({1, 2, 3});
    f.feed.give("reset", matrix({{1}}));
    EXPECT_TRUE(agree(f.run({4, 5, 6}), scalars({6}), same))
        << "the sample of the same step is the first dropped";
}

TEST(FilterDiscarderTest, OnlyElementZeroOfTheResetPinCounts) {
    struct Row {
        const char* name;
        MatrixXd request;
        bool resets;
    };
    const Row rows[] = {
        {.name = "zero", .request = matrix({{0}}), .resets = false},
        {.name = "minus zero", .request = matrix({{-0.0}}), .resets = false},
        {.name = "zero, one", .request = matrix({{0, 1}}), .resets = false},
        {.name = "empty", .request = MatrixXd(0, 0), .resets = false},
        {.name = "without columns", .request = MatrixXd(2, 0), .resets = false},
        {.name = "one", .request = matrix({{1, 0}}), .resets = true},
        {.name = "a negative fraction", .request = matrix({{-1e-300}}), .resets = true},
        {.name = "not-a-number", .request = matrix({{kNaN}}), .resets = true},
        {.name = "infinity", .request = matrix({{kInf}}), .resets = true},
    };
    for (const Row& row : rows) {
        Fixture f;
        f.feed.set("Samples", 1);
        f.run({1});
        f.feed.give("reset", row.request);
        EXPECT_EQ(f.run({2}).empty(), row.resets) << row.name;
        EXPECT_EQ(f.run({3}).size(), 1u) << row.name << ": a request counts once";
    }
}

TEST(FilterDiscarderTest, AResetWithoutASampleIsKept) {
    Fixture f;
    f.feed.set("Samples", 1);
    f.run({1});
    f.feed.give("reset", matrix({{1}}));
    f.feed.step();
    EXPECT_TRUE(agree(f.run({2, 3}), scalars({3}), same));
    f.feed.fire("Reset");
    f.feed.step();
    EXPECT_TRUE(agree(f.run({4, 5}), scalars({5}), same));
}

TEST(FilterDiscarderTest, TheResetPinHoldsTheStepUpAcrossLayouts) {
    FilterDiscarder block("skip");
    EXPECT_TRUE(block.getInputPin("reset").getIsBlocking());
    EXPECT_TRUE(block.getInputPin("in").getIsBlocking());
}

TEST(FilterDiscarderTest, RefusesANegativeNumber) {
    Fixture f;
    EXPECT_EQ(refusal<Poco::RangeException>([&] { f.feed.set("Samples", -1); }),
              "-1 does not fit in [0;2147483647], (step : 0)");
    EXPECT_EQ(f.feed.get<int>("Samples"), 0);
    f.feed.set("Samples", std::numeric_limits<int>::max());
    EXPECT_TRUE(f.run({1, 2, 3}).empty());
}

TEST(FilterDiscarderTest, ASteadyStepAllocatesNothing) {
    FilterDiscarder block("skip");
    EXPECT_EQ(allocationsOfAHundredSteps(block, "in", MatrixXd::Ones(4, 6)), 0u);
}

TEST(FilterDiscarderTest, LongTrace) {
    std::mt19937_64 random(46);
    Fixture f;
    int limit = 0;
    int dropped = 0;
    std::vector<MatrixXd> wanted;
    for (int n = 0; n < 10000; ++n) {
        if (onceIn(20, random)) f.feed.set("Samples", limit = static_cast<int>(random() % 10));
        if (onceIn(30, random)) {
            f.feed.fire("Reset");
            dropped = 0;
        }
        if (onceIn(10, random)) {
            const MatrixXd request = anyMatrix(random, static_cast<Eigen::Index>(random() % 3), 1);
            f.feed.give("reset", request);
            if (request.size() > 0 && request(0) != 0.0) dropped = 0;
        }
        const MatrixXd sample = anyMatrix(random, 1, static_cast<Eigen::Index>(random() % 4));
        const bool hasSample = !onceIn(8, random);
        if (hasSample) f.feed.give("in", sample, n);
        f.feed.step();
        if (!hasSample) continue;
        if (dropped < limit)
            ++dropped;
        else
            wanted.push_back(sample);
    }
    EXPECT_GT(wanted.size(), 2000u);
    EXPECT_TRUE(agree(f.feed.values(), wanted, same));
}
