// SPDX-License-Identifier: MIT
#include "everyday/Peaks.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace Support;

namespace {

struct Figures {
    double height;
    double prominence;
    std::vector<double> course;
    std::vector<int> places;
};

const Figures kFigures[] = {
#include "tests/everyday/PeakFigures.inc"
};

constexpr unsigned kFrequency = 1;

/// Gives a course a second apart, and gives back the times of its peaks.
std::vector<double> timesOf(Feed& feed, const std::vector<double>& course) {
    feed.forget();
    double time = 0.0;
    for (const double value : course) {
        feed.give("in", matrix({{value}}), time);
        feed.step();
        time += 1.0;
    }
    std::vector<double> times;
    for (const Sample& peak : feed.sent())
        times.push_back(peak.value(0));
    return times;
}

MatrixXd column(const std::vector<double>& values) {
    MatrixXd spectrum(static_cast<Eigen::Index>(values.size()), 1);
    for (std::size_t i = 0; i < values.size(); ++i)
        spectrum(static_cast<Eigen::Index>(i)) = values[i];
    return spectrum;
}

using Times = std::vector<double>;

} // namespace

TEST(PeaksTest, Catalogue) {
    Peaks block("peaks");
    EXPECT_STREQ(block.getTypeName(), "Peaks");
    EXPECT_EQ(catalogue(block),
              "input \"in\" blocking\n"
              "output \"out\"\n"
              "enum \"Axis\" 0 of Time, Frequency\n"
              "range double \"Height\" 0 in [-1.7976931348623157e+308;1.7976931348623157e+308] step "
              "0.10000000000000001\n"
              "range double \"Prominence\" 0 in [0;1.7976931348623157e+308] step 0.10000000000000001\n"
              "range double \"Distance\" 0 in [0;1.7976931348623157e+308] step 0.10000000000000001\n"
              "range double \"Step\" 1 in [1.0000000000000001e-09;1000000000] step 0.10000000000000001\n"
              "range int \"Most\" 1 in [1;1000] step 1\n"
              "range double \"From\" 0 in [0;1.7976931348623157e+308] step 0.10000000000000001\n"
              "range double \"To\" 0 in [0;1.7976931348623157e+308] step 0.10000000000000001\n"
              "command \"Reset\"\n");
}

TEST(PeaksTest, AgreesWithSciPy) {
    for (const Figures& figures : kFigures) {
        Peaks block("peaks");
        Feed feed(block);
        feed.set("Height", figures.height);
        feed.set("Prominence", figures.prominence);
        const Times found = timesOf(feed, figures.course);
        const Times wanted(figures.places.begin(), figures.places.end());
        EXPECT_EQ(found, wanted) << "height " << figures.height << ", prominence " << figures.prominence;
        for (std::size_t i = 0; i < found.size(); ++i)
            EXPECT_EQ(feed.sent()[i].value(1), figures.course[static_cast<std::size_t>(found[i])]);
    }
}

TEST(PeaksTest, OfASpectrumOnlyTheBandCounts) {
    // Peaks at 1, 2, 3 and 4 Hz; that at 3 Hz comes down by 5 on its left only outside a band from 3 Hz.
    const MatrixXd spectrum = column({0, 1, 9, 3, 4, 1, 6, 5, 7, 0});
    struct Row {
        const char* name;
        double from;
        double to;
        double prominence;
        double distance;
        MatrixXd peak; ///< its place before the refinement, to the nearest step, and nothing else
    };
    const Row rows[] = {
        {.name = "all", .from = 0, .to = 0, .prominence = 0, .distance = 0, .peak = matrix({{1}})},
        {.name = "above", .from = 1.1, .to = 0, .prominence = 0, .distance = 0, .peak = matrix({{4}})},
        {.name = "on the edges", .from = 2, .to = 3, .prominence = 0, .distance = 0, .peak = matrix({{3}})},
        {.name = "the edge as a peak", .from = 4, .to = 4, .prominence = 7, .distance = 0, .peak = {}},
        {.name = "told by what is beyond",
         .from = 4,
         .to = 4,
         .prominence = 6,
         .distance = 0,
         .peak = matrix({{4}})},
        {.name = "a higher one beyond takes no place",
         .from = 1.5,
         .to = 2.5,
         .prominence = 0,
         .distance = 3,
         .peak = matrix({{2}})},
        {.name = "none", .from = 4.5, .to = 0, .prominence = 0, .distance = 0, .peak = {}},
    };
    for (const Row& row : rows) {
        Peaks block("peaks");
        Feed feed(block);
        feed.set("Axis", kFrequency);
        feed.set("Step", 0.5);
        feed.set("From", row.from);
        feed.set("To", row.to);
        feed.set("Prominence", row.prominence);
        feed.set("Distance", row.distance);
        feed.give("in", spectrum, 0.0);
        feed.step();
        ASSERT_EQ(feed.sent().size(), static_cast<std::size_t>(row.peak.size())) << row.name;
        if (row.peak.size() > 0) {
            EXPECT_EQ(std::round(2.0 * feed.last().value(0)), 2.0 * row.peak(0)) << row.name;
        }
    }
}

TEST(PeaksTest, ASignalHasNoBand) {
    Peaks block("peaks");
    Feed feed(block);
    feed.set("From", 100.0);
    feed.set("To", 200.0);
    EXPECT_EQ(timesOf(feed, {0, 3, 0}), Times{1});
}

TEST(PeaksTest, IsSentWithTheSampleThatDecides) {
    Peaks block("peaks");
    Feed feed(block);
    feed.set("Prominence", 2.0);
    EXPECT_EQ(timesOf(feed, {0, 3, 2, 1.5, 0.5}), Times{1});
    EXPECT_TRUE(agree(feed.last().timeStamp, 4.0, same));
    EXPECT_TRUE(agree(feed.last().value, matrix({{1, 3}}), same));
}

TEST(PeaksTest, OfPeaksThatAreNearTheHigherStays) {
    struct Row {
        const char* name;
        double distance;
        std::vector<double> course;
        Times times;
    };
    const Row rows[] = {
        {.name = "no distance", .distance = 0, .course = {0, 1, 0, 2, 0, 3, 0}, .times = {1, 3, 5}},
        {.name = "just as far", .distance = 2, .course = {0, 1, 0, 2, 0, 3, 0, 0, 0}, .times = {1, 3, 5}},
        {.name = "the higher", .distance = 3, .course = {0, 1, 0, 2, 0, 0, 0, 0}, .times = {3}},
        {.name = "each against the one that stays",
         .distance = 3,
         .course = {0, 3, 0, 2, 0, 1, 0, 0, 0},
         .times = {1, 5}},
        {.name = "of equal ones the first", .distance = 3, .course = {0, 2, 0, 2, 0, 0, 0}, .times = {1}},
        {.name = "undecided", .distance = 9, .course = {0, 2, 0, 1, 0}, .times = {}},
        {.name = "while another one rises",
         .distance = 3,
         .course = {0, 1, 0, 2, 2, 2, 2, 0, 0},
         .times = {3}},
    };
    for (const Row& row : rows) {
        Peaks block("peaks");
        Feed feed(block);
        feed.set("Distance", row.distance);
        EXPECT_EQ(timesOf(feed, row.course), row.times) << row.name;
    }
}

TEST(PeaksTest, OddCourses) {
    Peaks block("peaks");
    Feed feed(block);
    EXPECT_EQ(timesOf(feed, {0, 2, 2, 2, 1}), Times{1}) << "of a flat top the first";
    EXPECT_EQ(timesOf(feed, {3, 2, 1}), Times{}) << "an end is no peak";
    EXPECT_EQ(timesOf(feed, {1, 1, 1}), Times{});
    EXPECT_EQ(timesOf(feed, {0, kNaN, 5, 1, 2, 0}), Times{4}) << "what stands beside no number is no peak";
    EXPECT_EQ(timesOf(feed, {0, 5, kNaN, 1, 2, 0}), Times{4});
    EXPECT_EQ(timesOf(feed, {0, kInf, 0, -kInf, 2, 0}), (Times{1, 4}));
    EXPECT_EQ(timesOf(feed, {-5, -3, -5, 0, -0.0, -1}), Times{3}) << "Height is 0";
    feed.set("Height", -10.0);
    EXPECT_EQ(timesOf(feed, {-5, -3, -5}), Times{1});
}

TEST(PeaksTest, TimesThatRepeatBreakNothing) {
    Peaks block("peaks");
    Feed feed(block);
    feed.set("Prominence", 1.0);
    const std::vector<std::pair<double, double>> course{{0, 0},   {0.1, 1}, {0.2, 3}, {0.2, 3},
                                                        {0.3, 1}, {0.4, 0}, {0.5, 4}, {0.6, 0}};
    for (const auto& [time, value] : course) {
        feed.give("in", matrix({{value}}), time);
        feed.step();
    }
    ASSERT_EQ(feed.sent().size(), 2U);
    EXPECT_TRUE(agree(feed.sent()[0].value, matrix({{0.2, 3}}), same));
    EXPECT_TRUE(agree(feed.sent()[1].value, matrix({{0.5, 4}}), same));
}

TEST(PeaksTest, StartsAnew) {
    Peaks block("peaks");
    Feed feed(block);
    timesOf(feed, {0, 1, 2});
    feed.give("in", matrix({{1}}), 1.5); // earlier than the one before
    feed.step();
    feed.give("in", MatrixXd(0, 3), 9.0);
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
    timesOf(feed, {0, 1, 2});
    feed.fire("Reset");
    feed.give("in", matrix({{1}}), 3.0);
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
}

TEST(PeaksTest, RefinesThePeakOfASpectrum) {
    std::vector<double> parabola(9, 0.0); // its top at 4.25 bins, 3 high
    for (int i = 3; i <= 5; ++i)
        parabola[static_cast<std::size_t>(i)] = 3.0 - (i - 4.25) * (i - 4.25);
    Peaks block("peaks");
    Feed feed(block);
    feed.set("Axis", kFrequency);
    feed.set("Step", 0.5);
    EXPECT_TRUE(agree(feed.run("in", column(parabola), 7.0), matrix({{2.125, 3.0}}), same));
    EXPECT_TRUE(agree(feed.last().timeStamp, 7.0, same));
    EXPECT_TRUE(agree(feed.run("in", column(parabola).transpose()), matrix({{2.125, 3.0}}), same))
        << "as a row";
}

TEST(PeaksTest, OfASpectrumTheHighest) {
    const MatrixXd spectrum = column({9, 0, 2, 0, 0, 5, 0, 0, 4, 0});
    Peaks block("peaks");
    Feed feed(block);
    feed.set("Axis", kFrequency);
    EXPECT_TRUE(agree(feed.run("in", spectrum), matrix({{5, 5}}), same));
    feed.set("Most", 4);
    EXPECT_TRUE(agree(feed.run("in", spectrum), matrix({{5, 5}, {8, 4}, {2, 2}, {kNaN, kNaN}}), same));
    feed.set("Distance", 3.5);
    EXPECT_TRUE(
        agree(feed.run("in", spectrum), matrix({{5, 5}, {kNaN, kNaN}, {kNaN, kNaN}, {kNaN, kNaN}}), same));
    feed.set("Height", 6.0);
    feed.forget();
    for (const MatrixXd& without :
         {spectrum, MatrixXd(0, 1), MatrixXd(MatrixXd::Ones(3, 3)), matrix({{1}})}) {
        feed.give("in", without);
        feed.step();
    }
    EXPECT_TRUE(feed.sent().empty());
}

TEST(PeaksTest, ASteadyStepAllocatesNothing) {
    Peaks block("peaks");
    EXPECT_EQ(allocationsOfAHundredSteps(block, "in", matrix({{1.0}})), 0U);
    Peaks ofSpectra("peaks");
    dynamic_cast<Quillmere::Core::ValueProperty<unsigned>&>(ofSpectra.getProperty("Axis"))
        .setValue(kFrequency);
    EXPECT_EQ(allocationsOfAHundredSteps(ofSpectra, "in", column({0, 1, 0, 3, 0, 2, 0})), 0U);
}
