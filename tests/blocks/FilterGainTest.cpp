// SPDX-License-Identifier: MIT
#include "blocks/FilterGain.h"

#include "tests/support/Allocations.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <random>

using namespace Support;

TEST(FilterGainTest, Catalogue) {
    FilterGain block("gain");
    EXPECT_STREQ(block.getTypeName(), "FilterGain");
    EXPECT_EQ(block.getName(), "gain");
    EXPECT_EQ(catalogue(block), "input \"input\" blocking\n"
                                "output \"output\"\n"
                                "value double \"Gain\" 1\n");
}

TEST(FilterGainTest, MultipliesEachElement) {
    struct Row {
        const char* name;
        double gain;
        MatrixXd input;
        MatrixXd output;
    };
    const Row rows[] = {
        {.name = "doubles", .gain = 2.0, .input = matrix({{1, -2, 3}}), .output = matrix({{2, -4, 6}})},
        {.name = "zeros, with the sign of the product",
         .gain = 0.0,
         .input = matrix({{1, -1}, {0, -0.0}}),
         .output = matrix({{0, -0.0}, {0, -0.0}})},
        {.name = "one product is one rounding",
         .gain = 0.1,
         .input = matrix({{0.3}}),
         .output = matrix({{0.1 * 0.3}})},
        {.name = "non-finite",
         .gain = 0.0,
         .input = matrix({{kNaN, kInf, -kInf}}),
         .output = matrix({{kNaN, kNaN, kNaN}})},
        {.name = "infinite gain",
         .gain = -kInf,
         .input = matrix({{2, 0}}),
         .output = matrix({{-kInf, kNaN}})},
    };
    for (const Row& row : rows) {
        FilterGain block("gain");
        Feed feed(block);
        feed.set("Gain", row.gain);
        EXPECT_TRUE(agree(feed.run("input", row.input), row.output, same)) << row.name;
    }
}

TEST(FilterGainTest, WithoutASampleNothingHappens) {
    FilterGain block("gain");
    Feed feed(block);
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
}

TEST(FilterGainTest, ShapeFollowsEverySample) {
    FilterGain block("gain");
    Feed feed(block);
    const MatrixXd samples[] = {matrix({{1, 2, 3}, {4, 5, 6}}),
                                matrix({{7}}),
                                MatrixXd(0, 0),
                                MatrixXd(0, 4),
                                MatrixXd(3, 0),
                                matrix({{1, 2}})};
    for (const MatrixXd& sample : samples)
        EXPECT_TRUE(agree(feed.run("input", sample), sample, same));
}

TEST(FilterGainTest, KeepsTheTimeStamp) {
    FilterGain block("gain");
    Feed feed(block);
    for (const double stamp : {0.0, 1.0 / 3.0, -5.0, 1e300, kInf}) {
        feed.run("input", matrix({{1}}), stamp);
        EXPECT_TRUE(agree(feed.last().timeStamp, stamp, same));
    }
    feed.run("input", MatrixXd(0, 0), 7.25);
    EXPECT_TRUE(agree(feed.last().timeStamp, 7.25, same)) << "an empty sample is sent like any other";
}

TEST(FilterGainTest, AWriteAppliesFromTheNextStepOn) {
    FilterGain block("gain");
    Feed feed(block);
    feed.run("input", matrix({{3}}));
    feed.set("Gain", -2.0);
    EXPECT_TRUE(agree(feed.sent().front().value, matrix({{3}}), same));
    EXPECT_TRUE(agree(feed.run("input", matrix({{3}})), matrix({{-6}}), same));
}

TEST(FilterGainTest, TwoBlocksOfOneNameAreIndependent) {
    FilterGain one("gain");
    FilterGain other("gain");
    Feed feedOne(one);
    Feed feedOther(other);
    feedOne.set("Gain", 5.0);
    EXPECT_TRUE(agree(feedOther.run("input", matrix({{1}})), matrix({{1}}), same));
}

TEST(FilterGainTest, ASteadyStepAllocatesNothing) {
    FilterGain block("gain");
    Quillmere::Core::OutputPin<MatrixXd> sender("sender", nullptr);
    InputPin<MatrixXd> receiver("receiver", nullptr);
    sender.attach(block.getInputPin("input"), false);
    block.getOutputPin("output").attach(receiver, false);
    sender.data.value = MatrixXd::Ones(4, 6);
    const auto step = [&] {
        sender.send(1.0);
        block.process();
        ASSERT_TRUE(receiver.hasData());
        receiver.take();
    };
    step();
    const AllocationCounter counter;
    for (int i = 0; i < 100; ++i)
        step();
    sender.data.value.resize(8, 3); // another shape of as many elements keeps the storage
    step();
    EXPECT_EQ(counter.count(), 0u);
}

TEST(FilterGainTest, LongTrace) {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> number(-10.0, 10.0);
    std::uniform_int_distribution<int> size(0, 5);
    FilterGain block("gain");
    Feed feed(block);
    for (int n = 0; n < 2000; ++n) {
        const double gain = number(random);
        feed.set("Gain", gain);
        MatrixXd sample(size(random), size(random));
        MatrixXd wanted(sample.rows(), sample.cols());
        for (Eigen::Index i = 0; i < sample.size(); ++i) {
            sample(i) = number(random);
            wanted(i) = sample(i) * gain;
        }
        ASSERT_TRUE(agree(feed.run("input", sample, n), wanted, same)) << "step " << n;
        ASSERT_TRUE(agree(feed.last().timeStamp, n, same));
    }
}
