// SPDX-License-Identifier: MIT
#include "blocks/FilterBandPass.h"

#include "design/ButterworthComputer.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace Support;

namespace {

constexpr const char* kLow = "Low Cutoff Freq. (relative)";
constexpr const char* kHigh = "High Cutoff Freq. (relative)";

/// The two engines in series, without a block between them.
class Series {
public:
    Series(double low, double high, int order) {
        highPass.setParameters(low, order);
        highPass.setHighPass(true);
        lowPass.setParameters(high, order);
    }
    MatrixXd step(const MatrixXd& input) {
        highPass.step(input);
        lowPass.step(highPass.output());
        return lowPass.output();
    }

    ButterworthComputer highPass;
    ButterworthComputer lowPass;
};

MatrixXd wave(int n) {
    return matrix({{std::sin(0.3 * n), std::cos(0.11 * n) + 2, 0.01 * n * n}});
}

} // namespace

TEST(FilterBandPassTest, Catalogue) {
    FilterBandPass block("band");
    EXPECT_STREQ(block.getTypeName(), "FilterBandPass");
    EXPECT_EQ(catalogue(block),
              "input \"in\" blocking\n"
              "output \"out\"\n"
              "range double \"Low Cutoff Freq. (relative)\" 0.001 in [0;1] step 0.001\n"
              "range double \"High Cutoff Freq. (relative)\" 0.050000000000000003 in [0;1] step 0.001\n"
              "range int \"Order\" 1 in [0;10] step 1\n");
}

TEST(FilterBandPassTest, UntilASettingIsWrittenBothEdgesAreAtTheInnerDefault) {
    FilterBandPass block("band");
    Feed feed(block);
    Series wanted(0.05, 0.05, 1);
    for (int n = 0; n < 50; ++n)
        EXPECT_TRUE(agree(feed.run("in", wave(n), n), wanted.step(wave(n)), same)) << n;
    // A write of the value shown is no change.
    feed.set(kLow, 0.001);
    EXPECT_TRUE(agree(feed.run("in", wave(50)), wanted.step(wave(50)), same));
}

TEST(FilterBandPassTest, AnyWriteForwardsAllThree) {
    struct Row {
        const char* name;
        void (*write)(Feed&);
        double low;
        double high;
        int order;
    };
    const Row rows[] = {
        {.name = "order alone: the shown edges go with it",
         .write = [](Feed& feed) { feed.set("Order", 2); },
         .low = 0.001,
         .high = 0.05,
         .order = 2},
        {.name = "low edge",
         .write = [](Feed& feed) { feed.set(kLow, 0.01); },
         .low = 0.01,
         .high = 0.05,
         .order = 1},
        {.name = "high edge",
         .write = [](Feed& feed) { feed.set(kHigh, 0.4); },
         .low = 0.001,
         .high = 0.4,
         .order = 1},
        {.name = "the low edge above the high one",
         .write = [](Feed& feed) { feed.set(kLow, 0.6); },
         .low = 0.6,
         .high = 0.05,
         .order = 1},
        {.name = "all",
         .write =
             [](Feed& feed) {
                 feed.set(kLow, 0.02);
                 feed.set(kHigh, 0.3);
                 feed.set("Order", 10);
             },
         .low = 0.02,
         .high = 0.3,
         .order = 10},
    };
    for (const Row& row : rows) {
        FilterBandPass block("band");
        Feed feed(block);
        row.write(feed);
        Series wanted(row.low, row.high, row.order);
        for (int n = 0; n < 50; ++n)
            EXPECT_TRUE(agree(feed.run("in", wave(n), n), wanted.step(wave(n)), same))
                << row.name << ", step " << n;
    }
}

TEST(FilterBandPassTest, OnlyWhatChangesRestarts) {
    FilterBandPass block("band");
    Feed feed(block);
    feed.set(kLow, 0.01);
    feed.set(kHigh, 0.2);
    Series wanted(0.01, 0.2, 1);
    for (int n = 0; n < 10; ++n)
        EXPECT_TRUE(agree(feed.run("in", wave(n)), wanted.step(wave(n)), same));
    feed.set(kHigh, 0.3);
    wanted.lowPass.setParameters(0.3, 1); // the high-pass runs on
    for (int n = 10; n < 20; ++n)
        EXPECT_TRUE(agree(feed.run("in", wave(n)), wanted.step(wave(n)), same));
    feed.set(kLow, 0.02);
    wanted.highPass.setParameters(0.02, 1); // the low-pass runs on
    for (int n = 20; n < 30; ++n)
        EXPECT_TRUE(agree(feed.run("in", wave(n)), wanted.step(wave(n)), same));
}

TEST(FilterBandPassTest, AConstantGivesZeroFromTheFirstOutputOn) {
    FilterBandPass block("band");
    Feed feed(block);
    feed.set("Order", 2);
    feed.set(kLow, 0.05);
    for (int n = 0; n < 50; ++n)
        // 20 to fourteen digits, the high-pass being a difference.
        EXPECT_TRUE(agree(feed.run("in", matrix({{1, -20, 3}})), MatrixXd::Zero(1, 3), law(2e-13))) << n;
}

TEST(FilterBandPassTest, OrderZeroGivesTheInput) {
    FilterBandPass block("band");
    Feed feed(block);
    feed.set("Order", 0);
    for (int n = 0; n < 5; ++n)
        EXPECT_TRUE(agree(feed.run("in", wave(n)), wave(n), same));
}

TEST(FilterBandPassTest, AZeroLowEdgeIsNotFinite) {
    FilterBandPass block("band");
    Feed feed(block);
    feed.set(kLow, 0.0);
    EXPECT_FALSE(std::isfinite(feed.run("in", matrix({{1}}))(0)));
    feed.set(kLow, 0.1);
    EXPECT_TRUE(std::isnan(feed.run("in", matrix({{1}}))(0)))
        << "the low-pass was not restarted and remembers";
    feed.set("Order", 2);
    EXPECT_TRUE(agree(feed.run("in", matrix({{1}}))(0), 0.0, law(1e-14)));
}

TEST(FilterBandPassTest, AnEmptySampleAndTheTimeStampRunThrough) {
    FilterBandPass block("band");
    Feed feed(block);
    for (const MatrixXd& input : {MatrixXd(0, 0), MatrixXd(0, 4), MatrixXd(3, 0)})
        EXPECT_TRUE(agree(feed.run("in", input, 2.5), input, same));
    EXPECT_TRUE(agree(feed.last().timeStamp, 2.5, same));
    feed.run("in", matrix({{1, 2}, {3, 4}}), 1.0 / 3.0);
    EXPECT_TRUE(agree(feed.last().timeStamp, 1.0 / 3.0, same));
}

TEST(FilterBandPassTest, WithoutASampleNothingIsSent) {
    FilterBandPass block("band");
    Feed feed(block);
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
    feed.run("in", matrix({{1}}));
    feed.step();
    EXPECT_EQ(feed.sent().size(), 1u);
}

TEST(FilterBandPassTest, RefusesWhatDoesNotFitAndForwardsNothing) {
    FilterBandPass block("band");
    Feed feed(block);
    EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set(kLow, 1.5); }),
              "1.5 does not fit in [0;1], (step : 0.001)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set("Order", -1); }),
              "-1 does not fit in [0;10], (step : 1)");
    Series wanted(0.05, 0.05, 1);
    for (int n = 0; n < 5; ++n)
        EXPECT_TRUE(agree(feed.run("in", wave(n)), wanted.step(wave(n)), same));
}

TEST(FilterBandPassTest, RunsTheSameInsideALayout) {
    FilterBandPass block("band");
    FilterBandPass placed("band");
    Quillmere::Core::LayoutManager layout("layout");
    layout.add(placed);
    Feed feed(block);
    Feed feedPlaced(placed);
    for (Feed* const each : {&feed, &feedPlaced})
        each->set("Order", 3);
    EXPECT_EQ(layout.getFilters().size(), 1u) << "the inner blocks are not the host's";
    for (int n = 0; n < 20; ++n)
        EXPECT_TRUE(agree(feedPlaced.run("in", wave(n)), feed.run("in", wave(n)), same));
    layout.remove(placed);
}

TEST(FilterBandPassTest, ASteadyStepAllocatesNothing) {
    FilterBandPass block("band");
    EXPECT_EQ(allocationsOfAHundredSteps(block, "in", MatrixXd::Ones(1, 3)), 0u);
}

TEST(FilterBandPassTest, LongTrace) {
    std::mt19937_64 random(13);
    std::uniform_real_distribution<double> number(-10.0, 10.0);
    std::uniform_int_distribution<int> size(1, 4);
    FilterBandPass block("band");
    Feed feed(block);
    feed.set(kLow, 0.03);
    feed.set(kHigh, 0.4);
    feed.set("Order", 4);
    Series wanted(0.03, 0.4, 4);
    MatrixXd sample(2, 3);
    for (int n = 0; n < 2000; ++n) {
        if (n % 100 == 99) sample.resize(size(random), size(random));
        for (Eigen::Index i = 0; i < sample.size(); ++i)
            sample(i) = number(random);
        ASSERT_TRUE(agree(feed.run("in", sample, n), wanted.step(sample), same)) << "step " << n;
    }
}
