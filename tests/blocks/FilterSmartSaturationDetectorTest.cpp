// SPDX-License-Identifier: MIT
#include "blocks/FilterSmartSaturationDetector.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

using namespace Support;

namespace {

struct Settings {
    double minThreshold = -1024.0;
    double maxThreshold = 1024.0;
    double tolerance = 0.0;
    int samples = 3;
    bool integer = false;
};

void apply(Feed& feed, const Settings& settings) {
    feed.set("MinThreshold", settings.minThreshold);
    feed.set("MaxThreshold", settings.maxThreshold);
    feed.set("SteadyTolerance", settings.tolerance);
    feed.set("SteadySamples", settings.samples);
    feed.set("IntegerSaturation", settings.integer);
}

/// The rules for one element, one by one.
struct Element {
    double anchor = 0.0;
    int count = 0;

    /// 1.0 for saturated, 0.0 for not.
    double step(const Settings& s, double x) {
        const int before = count;
        double saturation = 0.0;
        count = 0;
        if (isCandidate(s, x) && isSteady(s, x)) {
            count = before + 1;
            if (count + 1 >= s.samples) saturation = 1.0;
        }
        if (count == 0) anchor = x;
        return saturation;
    }

    static bool isCandidate(const Settings& s, double x) {
        return x <= s.minThreshold || x >= s.maxThreshold;
    }

    bool isSteady(const Settings& s, double x) const {
        if (!(x >= anchor - s.tolerance && x <= anchor + s.tolerance)) return false;
        if (!s.integer) return true;
        return std::isinf(x) || x - std::trunc(x) == 0.0;
    }
};
} // namespace

TEST(FilterSmartSaturationDetectorTest, Catalogue) {
    FilterSmartSaturationDetector block("saturation");
    EXPECT_STREQ(block.getTypeName(), "FilterSmartSaturationDetector");
    EXPECT_EQ(block.getName(), "saturation");
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "output \"saturation\"\n"
                                "range double \"MinThreshold\" -1024 in [-100000;100000] step 0.001\n"
                                "range double \"MaxThreshold\" 1024 in [-100000;100000] step 0.001\n"
                                "range double \"SteadyTolerance\" 0 in [0;10000] step 0.001\n"
                                "range int \"SteadySamples\" 3 in [2;10000] step 1\n"
                                "value bool \"IntegerSaturation\" false\n");
}

TEST(FilterSmartSaturationDetectorTest, RunsAtALimitAreSaturated) {
    struct Row {
        const char* name;
        Settings settings;
        std::vector<double> in;
        std::vector<double> out;
    };
    const Row rows[] = {
        {.name = "the third of a run", .settings = {}, .in = {1024, 1024, 1024, 1024}, .out = {0, 0, 1, 1}},
        {.name = "at the lower limit", .settings = {}, .in = {-1024, -1024, -1024, 0}, .out = {0, 0, 1, 0}},
        {.name = "an element that leaves starts anew",
         .settings = {},
         .in = {1024, 1024, 1000, 1024, 1024, 1024},
         .out = {0, 0, 0, 0, 0, 1}},
        {.name = "flat, but below the limit",
         .settings = {},
         .in = {1023, 1023, 1023, 1023},
         .out = {0, 0, 0, 0}},
        {.name = "beyond, but not flat", .settings = {}, .in = {1024, 1025, 1026, 1027}, .out = {0, 0, 0, 0}},
        {.name = "another rail starts a run of its own",
         .settings = {},
         .in = {1024, 1024, 2000, 2000, 2000},
         .out = {0, 0, 0, 0, 1}},
        {.name = "two samples are enough",
         .settings = {.samples = 2},
         .in = {1024, 1024, 5, 1024, 1024},
         .out = {0, 1, 0, 0, 1}},
        {.name = "both ends of the tolerance belong to it",
         .settings = {.tolerance = 2.0},
         .in = {1030, 1032, 1028, 1030},
         .out = {0, 0, 1, 1}},
        {.name = "a drift leaves the anchor, not the last value",
         .settings = {.tolerance = 2.0},
         .in = {1030, 1031, 1032, 1033, 1034, 1035, 1036},
         .out = {0, 0, 1, 0, 0, 1, 0}},
        {.name = "tolerance of the first value and zero",
         .settings = {.minThreshold = 0.0, .tolerance = 1.0},
         .in = {-0.5, -0.5, -0.5},
         .out = {0, 1, 1}},
        {.name = "zero at a limit of zero follows the anchor at once",
         .settings = {.minThreshold = 0.0, .samples = 2},
         .in = {0, 0},
         .out = {1, 1}},
        {.name = "not a number ends a run",
         .settings = {},
         .in = {1024, 1024, kNaN, 1024, 1024, 1024},
         .out = {0, 0, 0, 0, 0, 1}},
        {.name = "not a number never makes one",
         .settings = {.tolerance = 10000.0},
         .in = {kNaN, kNaN, kNaN, kNaN},
         .out = {0, 0, 0, 0}},
        {.name = "infinities repeat as well",
         .settings = {},
         .in = {kInf, kInf, kInf, -kInf, -kInf, -kInf},
         .out = {0, 0, 1, 0, 0, 1}},
        {.name = "whole numbers only",
         .settings = {.integer = true},
         .in = {1024.5, 1024.5, 1024.5, 1024.5},
         .out = {0, 0, 0, 0}},
        {.name = "whole numbers do",
         .settings = {.integer = true},
         .in = {-2000, -2000, -2000},
         .out = {0, 0, 1}},
        {.name = "an infinity is whole",
         .settings = {.integer = true},
         .in = {kInf, kInf, kInf},
         .out = {0, 0, 1}},
        {.name = "a fraction starts a run but does not follow",
         .settings = {.tolerance = 1.0, .integer = true},
         .in = {1024.5, 1025, 1024, 1024.5, 1025, 1025},
         .out = {0, 0, 1, 0, 0, 1}},
    };
    for (const Row& row : rows) {
        FilterSmartSaturationDetector block("saturation");
        Feed feed(block);
        apply(feed, row.settings);
        for (std::size_t i = 0; i < row.in.size(); ++i)
            EXPECT_TRUE(agree(feed.run("in", matrix({{row.in[i]}}), 0.5), matrix({{row.out[i]}}), same))
                << row.name << ", sample " << i;
        EXPECT_TRUE(agree(feed.last().timeStamp, 0.5, same)) << row.name;
    }
}

TEST(FilterSmartSaturationDetectorTest, WithoutASampleNothingHappens) {
    FilterSmartSaturationDetector block("saturation");
    Feed feed(block);
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
}

TEST(FilterSmartSaturationDetectorTest, EveryElementHasARunOfItsOwn) {
    FilterSmartSaturationDetector block("saturation");
    Feed feed(block);
    EXPECT_TRUE(agree(feed.run("in", matrix({{1024, 0}, {-1024, 1024}})), matrix({{0, 0}, {0, 0}}), same));
    EXPECT_TRUE(agree(feed.run("in", matrix({{1024, 1024}, {-1024, 1025}})), matrix({{0, 0}, {0, 0}}), same));
    EXPECT_TRUE(agree(feed.run("in", matrix({{1024, 1024}, {-1024, 1025}})), matrix({{1, 0}, {1, 0}}), same));
    EXPECT_TRUE(agree(feed.run("in", matrix({{0, 1024}, {-1024, 1025}})), matrix({{0, 1}, {1, 1}}), same));
}

TEST(FilterSmartSaturationDetectorTest, AnotherShapeEndsAllRuns) {
    FilterSmartSaturationDetector block("saturation");
    Feed feed(block);
    const MatrixXd row = MatrixXd::Constant(1, 4, 1024.0);
    const MatrixXd square = MatrixXd::Constant(2, 2, 1024.0);
    for (int i = 0; i < 4; ++i)
        feed.run("in", row);
    // As many elements, in another shape.
    EXPECT_TRUE(agree(feed.run("in", square), MatrixXd(MatrixXd::Zero(2, 2)), same));
    EXPECT_TRUE(agree(feed.run("in", square), MatrixXd(MatrixXd::Zero(2, 2)), same));
    EXPECT_TRUE(agree(feed.run("in", square), MatrixXd(MatrixXd::Ones(2, 2)), same));
    // As wide, but not as high.
    EXPECT_TRUE(
        agree(feed.run("in", MatrixXd::Constant(3, 2, 1024.0)), MatrixXd(MatrixXd::Zero(3, 2)), same));
    for (const MatrixXd& empty : {MatrixXd(0, 0), MatrixXd(0, 3), MatrixXd(2, 0)})
        EXPECT_TRUE(agree(feed.run("in", empty), empty, same)) << "an empty sample is sent on";
    EXPECT_TRUE(agree(feed.run("in", square), MatrixXd(MatrixXd::Zero(2, 2)), same));
}

TEST(FilterSmartSaturationDetectorTest, ThresholdsDragEachOther) {
    FilterSmartSaturationDetector block("saturation");
    Feed feed(block);
    feed.set("MaxThreshold", -2000.0);
    EXPECT_TRUE(agree(feed.get<double>("MinThreshold"), -2000.0, same));
    EXPECT_TRUE(agree(feed.get<double>("MaxThreshold"), -2000.0, same));
    feed.set("MinThreshold", 5.0);
    EXPECT_TRUE(agree(feed.get<double>("MinThreshold"), 5.0, same));
    EXPECT_TRUE(agree(feed.get<double>("MaxThreshold"), 5.0, same));
    feed.set("MinThreshold", -5.0);
    EXPECT_TRUE(agree(feed.get<double>("MaxThreshold"), 5.0, same)) << "apart again";
}

TEST(FilterSmartSaturationDetectorTest, AWriteKeepsTheRuns) {
    FilterSmartSaturationDetector block("saturation");
    Feed feed(block);
    feed.set("SteadySamples", 10);
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(agree(feed.run("in", matrix({{1024}})), matrix({{0}}), same));
    feed.set("SteadySamples", 6);
    EXPECT_TRUE(agree(feed.run("in", matrix({{1024}})), matrix({{1}}), same));
}

TEST(FilterSmartSaturationDetectorTest, ASteadyStepAllocatesNothing) {
    FilterSmartSaturationDetector block("saturation");
    EXPECT_EQ(allocationsOfAHundredSteps(block, "in", MatrixXd::Constant(4, 6, 2000.0)), 0u);
}

TEST(FilterSmartSaturationDetectorTest, LongTrace) {
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::uniform_int_distribution<int> step(-1, 1);
    FilterSmartSaturationDetector block("saturation");
    Feed feed(block);
    Settings settings{.minThreshold = -2.0, .maxThreshold = 2.0};
    apply(feed, settings);
    MatrixXd sample = MatrixXd::Zero(2, 3);
    std::vector<Element> elements(6);
    int saturated = 0;
    for (int n = 0; n < 20000; ++n) {
        if (unit(random) < 0.01) {
            settings = {.minThreshold = -3.0 * unit(random),
                        .maxThreshold = 3.0 * unit(random),
                        .tolerance = unit(random) < 0.5 ? 0.0 : 0.5 * step(random) + 0.5,
                        .samples = 2 + static_cast<int>(4.0 * unit(random)),
                        .integer = unit(random) < 0.3};
            apply(feed, settings);
        }
        if (unit(random) < 0.002) {
            sample = MatrixXd::Zero(sample.cols(), sample.rows());
            elements.assign(6, Element());
        }
        MatrixXd wanted(sample.rows(), sample.cols());
        for (Eigen::Index i = 0; i < 6; ++i) {
            // A walk in halves that rests often, with a gap now and then.
            if (unit(random) < 0.3) sample(i) = std::clamp(sample(i) + 0.5 * step(random), -4.0, 4.0);
            if (unit(random) < 0.01)
                sample(i) = unit(random) < 0.5 ? kNaN : kInf;
            else if (!std::isfinite(sample(i)))
                sample(i) = 0.0;
            wanted(i) = elements[static_cast<std::size_t>(i)].step(settings, sample(i));
            saturated += wanted(i) == 1.0;
        }
        ASSERT_TRUE(agree(feed.run("in", sample, n), wanted, same)) << "step " << n;
    }
    EXPECT_GT(saturated, 1000) << "the trace has lost its point";
}
