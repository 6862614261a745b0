// SPDX-License-Identifier: MIT
#include "blocks/FilterEdge.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/Scalars.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <random>

using namespace Support;

namespace {
constexpr unsigned kRising = 0;
constexpr unsigned kFalling = 1;
constexpr unsigned kBoth = 2;

struct Fixture {
    FilterEdge block{"edge"};
    Feed feed{block};

    std::vector<MatrixXd> run(std::initializer_list<double> inputs) {
        feed.forget();
        for (const MatrixXd& x : scalars(inputs))
            feed.run("input", x, 3.0);
        return feed.values();
    }
};
} // namespace

TEST(FilterEdgeTest, Catalogue) {
    FilterEdge block("edge");
    EXPECT_STREQ(block.getTypeName(), "FilterEdge");
    EXPECT_EQ(catalogue(block), "input \"input\" blocking\n"
                                "output \"edge\"\n"
                                "enum \"mode\" 0 of rising edge, falling edge, both edges\n"
                                "value double \"threshold\" 1\n"
                                "value bool \"impulse\" true\n"
                                "command \"reset\"\n");
}

TEST(FilterEdgeTest, DetectsEdges) {
    struct Row {
        const char* name;
        unsigned mode;
        bool impulse;
        std::vector<double> inputs;
        std::vector<double> edges;
    };
    // clang-format off
    const Row rows[] = {
        // name                                mode      impulse inputs                 edges
        {"rising",                             kRising,  true,   {0, 2, 2, 0, 2},       {0, 1, 0, 0, 1}},
        {"rising: above at first is no edge",  kRising,  true,   {2, 2, 0, 2},          {0, 0, 0, 1}},
        {"rising: the threshold is above",     kRising,  true,   {0, 1, 2, 0},          {0, 1, 0, 0}},
        {"falling",                            kFalling, true,   {2, 0, 0, 2, 0},       {0, 1, 0, 0, 1}},
        {"falling: below at first is no edge", kFalling, true,   {0, 0, 1, 0},          {0, 0, 0, 1}},
        {"both",                               kBoth,    true,   {0, 2, 0, 0, 2, 1},    {0, 1, 1, 0, 1, 0}},
        {"both, as a level",                   kBoth,    false,  {2, 0, 0, 2, 2, 0},    {0, 1, 1, 0, 0, 1}},
        {"rising, as a level",                 kRising,  false,  {0, 2, 0, 2, 0, 2},    {0, 1, 1, 0, 0, 1}},
        {"not-a-number keeps a rising arm",    kRising,  true,   {0, kNaN, 2, kNaN, 2}, {0, 0, 1, 0, 0}},
        {"not-a-number keeps a falling arm",   kFalling, true,   {2, kNaN, 0, kNaN, 0}, {0, 0, 1, 0, 0}},
        {"not-a-number arms nothing",          kBoth,    true,   {kNaN, 2, kNaN, 0},    {0, 0, 0, 1}},
        {"infinities",                         kBoth,    true,   {-kInf, kInf, -kInf},  {0, 1, 1}},
    };
    // clang-format on
    for (const Row& row : rows) {
        FilterEdge block("edge");
        Feed feed(block);
        feed.set("mode", row.mode);
        feed.set("impulse", row.impulse);
        for (const double x : row.inputs)
            feed.run("input", matrix({{x}}));
        EXPECT_TRUE(agree(feed.values(), scalars(row.edges), same)) << row.name;
    }
}

TEST(FilterEdgeTest, MinusZeroLiesOnAThresholdOfZero) {
    Fixture f;
    f.feed.set("threshold", 0.0);
    EXPECT_TRUE(agree(f.run({-1, -0.0}), scalars({0, 1}), same));
}

TEST(FilterEdgeTest, AThresholdThatIsNotANumberSeesNoSide) {
    Fixture f;
    f.run({0});
    f.feed.set("threshold", kNaN);
    EXPECT_TRUE(agree(f.run({2, 0, 2}), scalars({0, 0, 0}), same));
    f.feed.set("threshold", 1.0);
    EXPECT_TRUE(agree(f.run({2}), scalars({1}), same)) << "the arm stayed as it was";
}

TEST(FilterEdgeTest, AMovedThresholdMakesAnEdge) {
    Fixture f;
    f.run({3});
    f.feed.set("threshold", 5.0);
    f.run({3});
    f.feed.set("threshold", 1.0);
    EXPECT_TRUE(agree(f.run({3}), scalars({1}), same));
}

TEST(FilterEdgeTest, StampsTheWallClockWhateverCameIn) {
    Fixture f;
    const auto now = [] { return static_cast<double>(Poco::Timestamp().utcTime()) * 1e-7; };
    const double before = now();
    f.run({1});
    const double after = now();
    EXPECT_GE(f.feed.last().timeStamp, before);
    EXPECT_LE(f.feed.last().timeStamp, after);
    EXPECT_GT(f.feed.last().timeStamp, 159689.0 * 86400.0); // 1 January 2020 since 15 October 1582
}

TEST(FilterEdgeTest, OnlyElementZeroCounts) {
    Fixture f;
    EXPECT_TRUE(agree(f.feed.run("input", matrix({{0, 5}, {5, 5}})), matrix({{0}}), same));
    EXPECT_TRUE(agree(f.feed.run("input", matrix({{5, 0, 0}})), matrix({{1}}), same));
}

TEST(FilterEdgeTest, AnEmptySampleIsUsedUpAndChangesNothing) {
    Fixture f;
    f.run({0});
    f.feed.forget();
    for (const MatrixXd& empty : {MatrixXd(0, 0), MatrixXd(0, 2)}) {
        f.feed.give("input", empty);
        f.feed.step();
    }
    f.feed.step();
    EXPECT_TRUE(f.feed.sent().empty());
    EXPECT_TRUE(agree(f.run({2}), scalars({1}), same));
}

TEST(FilterEdgeTest, ResetDisarmsAndClearsTheLevel) {
    Fixture f;
    f.feed.set("impulse", false);
    EXPECT_TRUE(agree(f.run({0, 2, 0}), scalars({0, 1, 1}), same));
    f.feed.fire("reset");
    EXPECT_TRUE(agree(f.run({2, 0, 2}), scalars({0, 0, 1}), same));
}

TEST(FilterEdgeTest, AChangeOfModeResets) {
    Fixture f;
    f.feed.set("impulse", false);
    f.run({0, 2, 0});
    f.feed.set("mode", kBoth);
    EXPECT_TRUE(agree(f.run({2, 2}), scalars({0, 0}), same));
}

TEST(FilterEdgeTest, TheSameModeAgainResetsNothing) {
    Fixture f;
    f.run({0});
    f.feed.set("mode", kRising);
    EXPECT_TRUE(agree(f.run({2}), scalars({1}), same));
}

TEST(FilterEdgeTest, AChangeOfImpulseKeepsArmsAndLevel) {
    Fixture f;
    f.run({0, 2});
    f.feed.set("impulse", false);
    EXPECT_TRUE(agree(f.run({2, 0, 2}), scalars({1, 1, 0}), same));
}

TEST(FilterEdgeTest, RefusesAModeWithoutALabel) {
    Fixture f;
    f.run({0});
    EXPECT_EQ(refusal<Poco::RangeException>([&] { f.feed.set("mode", 3u); }), "");
    EXPECT_TRUE(agree(f.run({2}), scalars({1}), same)) << "nothing is reset";
}

TEST(FilterEdgeTest, ASteadyStepAllocatesNothing) {
    FilterEdge block("edge");
    EXPECT_EQ(allocationsOfAHundredSteps(block, "input", MatrixXd::Ones(4, 6)), 0u);
}

TEST(FilterEdgeTest, LongTrace) {
    std::mt19937_64 random(44);
    Fixture f;
    unsigned mode = kRising;
    double threshold = 1.0;
    bool impulse = true;
    bool armedRising = false;
    bool armedFalling = false;
    bool level = false;
    int ones = 0;
    for (int n = 0; n < 20000; ++n) {
        const unsigned newMode = onceIn(50, random) ? static_cast<unsigned>(random() % 3) : mode;
        if (onceIn(50, random)) f.feed.set("threshold", threshold = anyNumber(random));
        if (onceIn(50, random)) f.feed.set("impulse", impulse = onceIn(2, random));
        f.feed.set("mode", newMode);
        const bool fires = onceIn(50, random);
        if (fires) f.feed.fire("reset");
        if (fires || newMode != mode) armedRising = armedFalling = level = false;
        mode = newMode;

        const double x = anyNumber(random);
        bool edge = false;
        if (mode == kRising || mode == kBoth) {
            if (armedRising && x >= threshold) edge = true;
            if (x < threshold) armedRising = true;
            if (x >= threshold) armedRising = false;
        }
        if (mode == kFalling || mode == kBoth) {
            if (armedFalling && x < threshold) edge = true;
            if (x >= threshold) armedFalling = true;
            if (x < threshold) armedFalling = false;
        }
        if (impulse)
            level = edge;
        else if (edge)
            level = !level;
        ASSERT_TRUE(agree(f.feed.run("input", matrix({{x}})), matrix({{level ? 1.0 : 0.0}}), same))
            << "step " << n;
        ones += level ? 1 : 0;
    }
    EXPECT_GT(ones, 2000);
}
