// SPDX-License-Identifier: MIT
#include "blocks/FilterThresholdLeveler.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/Scalars.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>

using namespace Support;

namespace {
constexpr unsigned kLower = 0;
constexpr unsigned kUpper = 1;
constexpr unsigned kNone = 2;
constexpr auto kNothing = std::nullopt; // is sent

constexpr const char* kThresholdsEmpty = "'Thresholds' matrix can't be empty";
constexpr const char* kThresholdsColumns = "'Thresholds' matrix must have 2 columns: [min; max]";
constexpr const char* kThresholdsOrder =
    "'Thresholds' matrix first column value (min) must be strictly inferior to "
    "second column value (max)";
constexpr const char* kThresholdsMin =
    "'Thresholds' matrix can't have a min value belonging to another interval";
constexpr const char* kThresholdsMax =
    "'Thresholds' matrix can't have a max value belonging to another interval";
constexpr const char* kAccepted = "no exception";

struct Fixture {
    FilterThresholdLeveler block{"levels"};
    Feed feed{block};

    /// What a sample of one value sends, if anything.
    std::optional<double> at(double x) {
        feed.forget();
        feed.give("In", matrix({{x}}), 2.5);
        feed.step();
        if (feed.sent().empty()) return std::nullopt;
        EXPECT_TRUE(agree(feed.last().timeStamp, 2.5, same));
        EXPECT_EQ(feed.last().value.size(), 1);
        return feed.last().value(0);
    }
};
} // namespace

TEST(FilterThresholdLevelerTest, Catalogue) {
    FilterThresholdLeveler block("levels");
    EXPECT_STREQ(block.getTypeName(), "FilterThresholdLeveler");
    EXPECT_EQ(catalogue(block), "input \"In\" blocking\n"
                                "output \"Level\"\n"
                                "enum \"OnIntersectionUse\" 0 of LowerInterval, UpperInterval, None\n"
                                "value matrix \"Thresholds\" (1 2 0 1)\n"
                                "value matrix \"Levels\" (1 1 1)\n");
}

TEST(FilterThresholdLevelerTest, DefaultsGateTheUnitInterval) {
    Fixture f;
    EXPECT_EQ(f.at(0.5), 1.0);
    EXPECT_EQ(f.at(0.0), 1.0);
    EXPECT_EQ(f.at(-0.0), 1.0);
    EXPECT_EQ(f.at(1.0), 1.0);
    EXPECT_EQ(f.at(2.0), std::nullopt);
    EXPECT_EQ(f.at(-5e-324), std::nullopt);
    EXPECT_EQ(f.at(kNaN), std::nullopt);
    EXPECT_EQ(f.at(kInf), std::nullopt);
}

TEST(FilterThresholdLevelerTest, PicksALevel) {
    const MatrixXd rising = matrix({{0, 1}, {1, 2}});
    const MatrixXd falling = matrix({{1, 2}, {0, 1}});
    const MatrixXd nested = matrix({{0, 10}, {2, 3}});
    const MatrixXd threeNested = matrix({{0, 10}, {1, 9}, {2, 5}});
    const MatrixXd apart = matrix({{0, 1}, {2, 3}});
    const MatrixXd aroundZero = matrix({{-1, 0}, {0, 1}});
    const MatrixXd unbounded = matrix({{-kInf, 0}, {0, kInf}});
    const MatrixXd halfBounded = matrix({{1.5, kNaN}, {1, 1.5}});
    const MatrixXd unit = matrix({{0, 1}});
    const MatrixXd ten = matrix({{10}});
    const MatrixXd tenTwenty = matrix({{10}, {20}});
    const MatrixXd tenToThirty = matrix({{10}, {20}, {30}});
    const MatrixXd oneToThree = matrix({{1}, {2}, {3}});
    const MatrixXd unusual = matrix({{-kInf}, {-0.0}});
    struct Row {
        const char* name;
        MatrixXd thresholds;
        MatrixXd levels;
        unsigned use;
        double x;
        std::optional<double> level;
    };
    // clang-format off
    const Row rows[] = {
        // name                                         thresholds   levels       use     x     level
        {"first row",                                   rising,      tenTwenty,   kNone,  0.5,  10},
        {"second row",                                  rising,      tenTwenty,   kNone,  2.0,  20},
        {"shared, lower",                               rising,      tenTwenty,   kLower, 1,    10},
        {"shared, upper",                               rising,      tenTwenty,   kUpper, 1,    20},
        {"shared, none",                                rising,      tenTwenty,   kNone,  1,    kNothing},
        {"falling, lower",                              falling,     tenTwenty,   kLower, 1,    20},
        {"falling, upper",                              falling,     tenTwenty,   kUpper, 1,    10},
        {"nested, lower: the first",                    nested,      tenTwenty,   kLower, 2.5,  10},
        {"nested, upper: the first",                    nested,      tenTwenty,   kUpper, 2.5,  10},
        {"nested on its max, lower",                    nested,      tenTwenty,   kLower, 3,    20},
        {"nested on its min, upper",                    nested,      tenTwenty,   kUpper, 2,    20},
        {"nested, none: dropped",                       nested,      tenTwenty,   kNone,  2.5,  kNothing},
        {"nested, outside the inner one",               nested,      tenTwenty,   kNone,  5,    10},
        {"a gap",                                       apart,       tenTwenty,   kLower, 1.5,  kNothing},
        {"a row without a level",                       rising,      ten,         kLower, 1.5,  kNothing},
        {"an intersection picks a row without a level", rising,      ten,         kUpper, 1,    kNothing},
        {"more levels than rows",                       unit,        tenToThirty, kLower, 1,    10},
        {"the search stops at the second match",        threeNested, oneToThree,  kLower, 5,    1},
        {"infinite bounds",                             unbounded,   tenTwenty,   kUpper, kInf, 20},
        {"minus zero is the bound zero",                aroundZero,  tenTwenty,   kUpper, -0.0, 20},
        {"a bound that is not a number holds nothing",  halfBounded, tenTwenty,   kNone,  1.5,  20},
        {"an infinite level",                           rising,      unusual,     kLower, 0,    -kInf},
    };
    // clang-format on
    for (const Row& row : rows) {
        Fixture f;
        f.feed.set("Thresholds", row.thresholds);
        f.feed.set("Levels", row.levels);
        f.feed.set("OnIntersectionUse", row.use);
        EXPECT_EQ(f.at(row.x), row.level) << row.name;
    }
}

TEST(FilterThresholdLevelerTest, ALevelPassesBitForBit) {
    Fixture f;
    f.feed.set("Levels", matrix({{-0.0}}));
    EXPECT_TRUE(agree(f.feed.run("In", matrix({{0}})), matrix({{-0.0}}), same));
    f.feed.set("Levels", matrix({{0.0}}));
    EXPECT_TRUE(agree(f.feed.run("In", matrix({{0}})), matrix({{0.0}}), same))
        << "equal to the one before, other bits";
    f.feed.set("Levels", matrix({{kNaN}}));
    EXPECT_TRUE(agree(f.feed.run("In", matrix({{0}})), matrix({{kNaN}}), same));
}

TEST(FilterThresholdLevelerTest, OnlyElementZeroCounts) {
    Fixture f;
    EXPECT_TRUE(agree(f.feed.run("In", matrix({{0.5, 9}, {9, 9}})), matrix({{1}}), same));
    f.feed.forget();
    f.feed.give("In", matrix({{9, 0.5}}));
    f.feed.step();
    EXPECT_TRUE(f.feed.sent().empty());
}

TEST(FilterThresholdLevelerTest, AnEmptySampleIsUsedUpAndSendsNothing) {
    Fixture f;
    for (const MatrixXd& empty : {MatrixXd(0, 0), MatrixXd(0, 1), MatrixXd(1, 0)}) {
        f.feed.give("In", empty);
        f.feed.step();
    }
    f.feed.step();
    EXPECT_TRUE(f.feed.sent().empty());
}

TEST(FilterThresholdLevelerTest, ChecksThresholds) {
    struct Row {
        const char* name;
        MatrixXd thresholds;
        const char* text;
    };
    const Row rows[] = {
        {.name = "0 by 0", .thresholds = MatrixXd(0, 0), .text = kThresholdsEmpty},
        {.name = "0 by 2", .thresholds = MatrixXd(0, 2), .text = kThresholdsEmpty},
        {.name = "empty comes before the columns", .thresholds = MatrixXd(0, 3), .text = kThresholdsEmpty},
        {.name = "a column", .thresholds = matrix({{0}, {1}}), .text = kThresholdsColumns},
        {.name = "three columns", .thresholds = matrix({{0, 1, 2}}), .text = kThresholdsColumns},
        {.name = "inverted", .thresholds = matrix({{1, 0}}), .text = kThresholdsOrder},
        {.name = "without width", .thresholds = matrix({{1, 1}}), .text = kThresholdsOrder},
        {.name = "plus and minus zero are equal",
         .thresholds = matrix({{-0.0, 0.0}}),
         .text = kThresholdsOrder},
        {.name = "shared bound, rising", .thresholds = matrix({{0, 1}, {1, 2}}), .text = kAccepted},
        {.name = "shared bound, falling", .thresholds = matrix({{1, 2}, {0, 1}}), .text = kAccepted},
        {.name = "inside an earlier one", .thresholds = matrix({{0, 10}, {2, 3}}), .text = kAccepted},
        {.name = "around an earlier one", .thresholds = matrix({{2, 3}, {0, 10}}), .text = kThresholdsMin},
        {.name = "the same twice", .thresholds = matrix({{0, 1}, {0, 1}}), .text = kThresholdsMin},
        {.name = "the same min, inside", .thresholds = matrix({{0, 10}, {0, 3}}), .text = kThresholdsMin},
        {.name = "the same max, inside", .thresholds = matrix({{0, 10}, {7, 10}}), .text = kThresholdsMax},
        {.name = "over the max", .thresholds = matrix({{0, 2}, {1, 3}}), .text = kThresholdsMax},
        {.name = "over the min", .thresholds = matrix({{1, 3}, {0, 2}}), .text = kThresholdsMin},
        {.name = "rows that are not neighbours",
         .thresholds = matrix({{0, 2}, {5, 6}, {1, 3}}),
         .text = kThresholdsMax},
        {.name = "pairs of a row come before a later row's order",
         .thresholds = matrix({{0, 2}, {9, 8}, {1, 3}}),
         .text = kThresholdsMax},
        {.name = "a later row's order",
         .thresholds = matrix({{0, 2}, {9, 8}, {3, 4}}),
         .text = kThresholdsOrder},
        {.name = "an inverted later row can fail as a pair first",
         .thresholds = matrix({{0, 2}, {1, -1}}),
         .text = kThresholdsOrder},
        {.name = "an inverted later row above fails as a pair",
         .thresholds = matrix({{0, 2}, {1.9, 2}}),
         .text = kThresholdsMax},
        {.name = "not-a-number as max", .thresholds = matrix({{0, kNaN}}), .text = kAccepted},
        {.name = "not-a-number as min", .thresholds = matrix({{kNaN, 0}}), .text = kAccepted},
        {.name = "not-a-number beside others",
         .thresholds = matrix({{0, 1}, {kNaN, kNaN}, {0.5, kNaN}}),
         .text = kAccepted},
        {.name = "infinite bounds", .thresholds = matrix({{-kInf, 0}, {0, kInf}}), .text = kAccepted},
        {.name = "infinite on both sides", .thresholds = matrix({{kInf, kInf}}), .text = kThresholdsOrder},
    };
    for (const Row& row : rows) {
        Fixture f;
        const std::string text =
            refusal<Poco::DataFormatException>([&] { f.feed.set("Thresholds", row.thresholds); });
        EXPECT_EQ(text, row.text) << row.name;
        const MatrixXd kept = text == kAccepted ? row.thresholds : matrix({{0, 1}});
        EXPECT_TRUE(agree(f.feed.get<MatrixXd>("Thresholds"), kept, same)) << row.name;
    }
}

TEST(FilterThresholdLevelerTest, ChecksLevels) {
    struct Row {
        const char* name;
        MatrixXd levels;
        const char* text;
    };
    // clang-format off
    const Row rows[] = {
        // name         levels                      text
        {"0 by 0",      MatrixXd(0, 0),             "'Levels' matrix can't be empty"},
        {"0 by 2",      MatrixXd(0, 2),             "'Levels' matrix can't be empty"},
        {"a row",       matrix({{1, 2}}),           "'Levels' matrix must have 1 column"},
        {"two columns", matrix({{1, 2}, {3, 4}}),   "'Levels' matrix must have 1 column"},
        {"a column",    matrix({{1}, {kNaN}, {3}}), kAccepted},
    };
    // clang-format on
    for (const Row& row : rows) {
        Fixture f;
        const std::string text =
            refusal<Poco::DataFormatException>([&] { f.feed.set("Levels", row.levels); });
        EXPECT_EQ(text, row.text) << row.name;
        const MatrixXd kept = text == kAccepted ? row.levels : matrix({{1}});
        EXPECT_TRUE(agree(f.feed.get<MatrixXd>("Levels"), kept, same)) << row.name;
    }
}

TEST(FilterThresholdLevelerTest, TextGoesThroughTheChecks) {
    Fixture f;
    f.feed.setText("Thresholds", "2 2 0 1 1 2");
    f.feed.setText("Levels", "2 1 10 20");
    EXPECT_EQ(f.at(1.5), 20.0);
    EXPECT_EQ(refusal<Poco::DataFormatException>([&] { f.feed.setText("Thresholds", "1 2 5 4"); }),
              kThresholdsOrder);
    EXPECT_EQ(refusal<Poco::DataFormatException>([&] { f.feed.setText("Levels", "0 0"); }),
              "'Levels' matrix can't be empty");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { f.feed.set("OnIntersectionUse", 3u); }), "");
    EXPECT_EQ(f.at(1.5), 20.0);
}

TEST(FilterThresholdLevelerTest, AStepAllocatesItsTwoCopiesAndNoMore) {
    FilterThresholdLeveler block("levels");
    EXPECT_EQ(allocationsOfAHundredSteps(block, "In", MatrixXd::Ones(4, 6)), 200u);
}

TEST(FilterThresholdLevelerTest, LongTrace) {
    std::mt19937_64 random(48);
    Fixture f;
    MatrixXd thresholds = matrix({{0, 1}});
    MatrixXd levels = matrix({{1}});
    unsigned use = kLower;
    int sent = 0;
    int accepted = 0;
    for (int n = 0; n < 20000; ++n) {
        if (onceIn(4, random)) {
            const MatrixXd proposed = anyMatrix(random, 1 + static_cast<Eigen::Index>(random() % 3), 2);
            const bool fits =
                refusal<Poco::DataFormatException>([&] { f.feed.set("Thresholds", proposed); }) == kAccepted;
            accepted += fits ? 1 : 0;
            if (fits) thresholds = proposed;
        }
        if (onceIn(10, random)) {
            levels = anyMatrix(random, 1 + static_cast<Eigen::Index>(random() % 3), 1);
            f.feed.set("Levels", levels);
        }
        if (onceIn(10, random)) f.feed.set("OnIntersectionUse", use = static_cast<unsigned>(random() % 3));

        const double v = anyNumber(random);
        Eigen::Index index = -1;
        bool isDropped = false;
        for (Eigen::Index i = 0; i < thresholds.rows(); ++i) {
            if (!(v >= thresholds(i, 0) && v <= thresholds(i, 1))) continue;
            if (index == -1) {
                index = i;
                continue;
            }
            if (use == kLower && v == thresholds(i, 1)) index = i;
            if (use == kUpper && v == thresholds(i, 0)) index = i;
            isDropped = use == kNone;
            break;
        }
        f.feed.forget();
        f.feed.give("In", matrix({{v}}));
        f.feed.step();
        if (isDropped || index == -1 || index >= levels.rows()) {
            ASSERT_TRUE(f.feed.sent().empty()) << "step " << n;
            continue;
        }
        ++sent;
        ASSERT_TRUE(agree(f.feed.values(), {matrix({{levels(index, 0)}})}, same)) << "step " << n;
    }
    EXPECT_GT(sent, 2000);
    EXPECT_GT(accepted, 500);
}
