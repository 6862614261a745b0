// SPDX-License-Identifier: MIT
#include "blocks/FilterDeadband.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/Scalars.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace Support;

TEST(FilterDeadbandTest, Catalogue) {
    FilterDeadband block("band");
    EXPECT_STREQ(block.getTypeName(), "FilterDeadband");
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "output \"out\"\n"
                                "value bool \"Absolute\" true\n"
                                "value bool \"Strict\" false\n"
                                "value double \"Threshold\" 0\n");
}

TEST(FilterDeadbandTest, RemovesWhatLiesInside) {
    struct Row {
        const char* name;
        double threshold;
        bool absolute;
        bool strict;
        MatrixXd input;
        MatrixXd output;
    };
    const Row rows[] = {
        {.name = "absolute, strict: the bound is inside, and zeros keep their sign",
         .threshold = 1.0,
         .absolute = true,
         .strict = true,
         .input = matrix({{-2, -1, -0.0, 0, 1, 2}}),
         .output = matrix({{-2, -0.0, -0.0, 0, 0, 2}})},
        {.name = "absolute, not strict: the bound passes",
         .threshold = 1.0,
         .absolute = true,
         .strict = false,
         .input = matrix({{-2, -1, -0.5}, {0.5, 1, 2}}),
         .output = matrix({{-2, -1, -0.0}, {0, 1, 2}})},
        {.name = "one-sided, strict: everything low is removed",
         .threshold = 1.0,
         .absolute = false,
         .strict = true,
         .input = matrix({{-2, -1, 0, 1, 2}}),
         .output = matrix({{-0.0, -0.0, 0, 0, 2}})},
        {.name = "one-sided, not strict",
         .threshold = 1.0,
         .absolute = false,
         .strict = false,
         .input = matrix({{-2, 1, 2}}),
         .output = matrix({{-0.0, 1, 2}})},
        {.name = "one-sided with a negative threshold",
         .threshold = -1.0,
         .absolute = false,
         .strict = false,
         .input = matrix({{-2, -1, -0.5, 3}}),
         .output = matrix({{-0.0, -1, -0.5, 3}})},
        {.name = "a product, not a selection: a removed infinity is not a number",
         .threshold = 1.0,
         .absolute = false,
         .strict = true,
         .input = matrix({{-kInf, kInf, kNaN}}),
         .output = matrix({{kNaN, kInf, kNaN}})},
        {.name = "not-a-number stays where the band is symmetric",
         .threshold = 1.0,
         .absolute = true,
         .strict = false,
         .input = matrix({{-kInf, kInf, kNaN}}),
         .output = matrix({{-kInf, kInf, kNaN}})},
        {.name = "an infinite threshold, strict, removes infinities",
         .threshold = kInf,
         .absolute = true,
         .strict = true,
         .input = matrix({{-kInf, kInf, 1}}),
         .output = matrix({{kNaN, kNaN, 0}})},
        {.name = "a threshold that is not a number removes everything",
         .threshold = kNaN,
         .absolute = true,
         .strict = false,
         .input = matrix({{-3, 3, kInf}}),
         .output = matrix({{-0.0, 0, kNaN}})},
        {.name = "a negative threshold passes everything",
         .threshold = -1.0,
         .absolute = true,
         .strict = true,
         .input = matrix({{-3, -0.0, 0, 0.5}}),
         .output = matrix({{-3, -0.0, 0, 0.5}})},
        {.name = "the smallest number is a number",
         .threshold = 0.0,
         .absolute = true,
         .strict = true,
         .input = matrix({{-5e-324, 0, -0.0, 5e-324}}),
         .output = matrix({{-5e-324, 0, -0.0, 5e-324}})},
    };
    for (const Row& row : rows) {
        FilterDeadband block("band");
        Feed feed(block);
        feed.set("Threshold", row.threshold);
        feed.set("Absolute", row.absolute);
        feed.set("Strict", row.strict);
        EXPECT_TRUE(agree(feed.run("in", row.input), row.output, same)) << row.name;
    }
}

TEST(FilterDeadbandTest, DefaultsPassEveryFiniteValue) {
    FilterDeadband block("band");
    Feed feed(block);
    const MatrixXd sample = matrix({{-1e308, -1, -0.0, 0, 5e-324, 2}});
    EXPECT_TRUE(agree(feed.run("in", sample), sample, same));
}

TEST(FilterDeadbandTest, ShapeFollowsEverySample) {
    FilterDeadband block("band");
    Feed feed(block);
    const MatrixXd samples[] = {matrix({{1, 2, 3}, {4, 5, 6}}),
                                matrix({{7}}),
                                MatrixXd(0, 0),
                                MatrixXd(0, 4),
                                MatrixXd(3, 0),
                                matrix({{1, 2}})};
    for (const MatrixXd& sample : samples)
        EXPECT_TRUE(agree(feed.run("in", sample, 2.5), sample, same));
    EXPECT_TRUE(agree(feed.last().timeStamp, 2.5, same));
}

TEST(FilterDeadbandTest, WithoutASampleNothingHappens) {
    FilterDeadband block("band");
    Feed feed(block);
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
}

TEST(FilterDeadbandTest, TheInputIsLeftAlone) {
    FilterDeadband block("band");
    Quillmere::Core::OutputPin<MatrixXd> sender("sender", nullptr);
    sender.attach(block.getInputPin("in"), false);
    sender.data.value = matrix({{-1, 2}});
    dynamic_cast<ValueProperty<double>&>(block.getProperty("Threshold")).setValue(9.0);
    sender.send(0.0);
    block.process();
    EXPECT_TRUE(agree(sender.data.value, matrix({{-1, 2}}), same));
}

TEST(FilterDeadbandTest, ASteadyStepAllocatesNothing) {
    FilterDeadband block("band");
    EXPECT_EQ(allocationsOfAHundredSteps(block, "in", MatrixXd::Ones(4, 6)), 0u);
}

TEST(FilterDeadbandTest, LongTrace) {
    std::mt19937_64 random(42);
    FilterDeadband block("band");
    Feed feed(block);
    bool absolute = true;
    bool strict = false;
    double t = 0.0;
    for (int n = 0; n < 3000; ++n) {
        if (onceIn(3, random)) feed.set("Absolute", absolute = onceIn(2, random));
        if (onceIn(3, random)) feed.set("Strict", strict = onceIn(2, random));
        if (onceIn(3, random)) feed.set("Threshold", t = anyNumber(random));
        const auto rows = static_cast<Eigen::Index>(random() % 5);
        const auto cols = static_cast<Eigen::Index>(random() % 7);
        const MatrixXd sample = anyMatrix(random, rows, cols);
        MatrixXd wanted(rows, cols);
        for (Eigen::Index i = 0; i < sample.size(); ++i) {
            const double x = absolute ? std::abs(sample(i)) : sample(i);
            const double mask = (strict ? x > t : x >= t) ? 1.0 : 0.0;
            wanted(i) = mask * sample(i);
        }
        ASSERT_TRUE(agree(feed.run("in", sample, n), wanted, same)) << "step " << n;
    }
}
