// SPDX-License-Identifier: MIT
#include "blocks/FilterAbsoluteErode.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/Scalars.h"
#include "tests/support/Signals.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>

using namespace Support;

namespace {

/// What is cut off along one direction, and what must stay.
struct Cut {
    int front = 0;
    int back = 0;
    int least = 0;
};

void setRows(Feed& feed, const Cut& cut) {
    feed.set("TopErode", cut.front);
    feed.set("BottomErode", cut.back);
    feed.set("MinRows", cut.least);
}

void setColumns(Feed& feed, const Cut& cut) {
    feed.set("LeftErode", cut.front);
    feed.set("RightErode", cut.back);
    feed.set("MinCols", cut.least);
}
} // namespace

TEST(FilterAbsoluteErodeTest, Catalogue) {
    FilterAbsoluteErode block("crop");
    EXPECT_STREQ(block.getTypeName(), "FilterAbsoluteErode");
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "output \"out\"\n"
                                "range int \"LeftErode\" 0 in [0;200000] step 1\n"
                                "range int \"RightErode\" 0 in [0;200000] step 1\n"
                                "range int \"TopErode\" 0 in [0;200000] step 1\n"
                                "range int \"BottomErode\" 0 in [0;200000] step 1\n"
                                "range int \"MinRows\" 0 in [0;200000] step 1\n"
                                "range int \"MinCols\" 0 in [0;200000] step 1\n"
                                "value bool \"FwdEmptyMat\" false\n");
}

TEST(FilterAbsoluteErodeTest, KeepsTheRowsAndColumnsAsked) {
    struct Row {
        const char* name;
        int lines;
        Cut cut;
        int first;
        int kept; ///< 0: nothing is sent
    };
    // clang-format off
    const Row rows[] = {
        // name                                       lines cut                  first kept
        {"nothing off",                               4,    {},                  0,    4},
        {"front and back",                            10,   {2, 3, 0},           2,    5},
        {"all but one",                               10,   {5, 4, 0},           5,    1},
        {"all off",                                   10,   {5, 5, 0},           0,    0},
        {"more than all off",                         10,   {50, 50, 0},         0,    0},
        {"all off, one must stay",                    10,   {5, 5, 1},           4,    1},
        {"all off, two must stay",                    10,   {5, 5, 2},           4,    2},
        {"an odd line more in front",                 10,   {5, 5, 3},           3,    3},
        {"the crop alone leaves enough",              10,   {2, 3, 5},           2,    5},
        {"one is missing: in front",                  10,   {2, 3, 6},           1,    6},
        {"two are missing: one on each side",         10,   {2, 3, 7},           1,    7},
        {"beyond the back: against the back",         4,    {3, 0, 3},           1,    3},
        {"beyond the back, by one of many",           10,   {8, 0, 6},           4,    6},
        {"beyond the front: against the front",       10,   {0, 8, 6},           0,    6},
        {"beyond the front, not by the exact excess", 10,   {1, 8, 6},           0,    6},
        {"as many as there are",                      10,   {2, 3, 10},          0,    10},
        {"more than there are",                       10,   {2, 3, 15},          0,    10},
        {"more than there are, cut in front only",    4,    {3, 0, 200000},      0,    4},
        {"more than there are, cut at the back only", 4,    {0, 3, 200000},      0,    4},
        {"cut far beyond the front",                  4,    {0, 20, 1},          0,    1},
        {"cut far beyond the back",                   4,    {20, 0, 1},          3,    1},
        {"cut far beyond both",                       4,    {10, 10, 1},         1,    1},
        {"the largest cuts",                          4,    {200000, 200000, 2}, 1,    2},
        {"one line that must stay",                   1,    {9, 0, 1},           0,    1},
    };
    // clang-format on
    for (const Row& row : rows) {
        FilterAbsoluteErode block("crop");
        Feed feed(block);
        const MatrixXd standing = numbered(row.lines, 3);
        const MatrixXd lying = numbered(3, row.lines);
        setRows(feed, row.cut);
        feed.give("in", standing, 1.0);
        feed.step();
        setRows(feed, {});
        setColumns(feed, row.cut);
        feed.give("in", lying, 2.0);
        feed.step();
        if (row.kept == 0) {
            EXPECT_TRUE(feed.sent().empty()) << row.name;
            continue;
        }
        ASSERT_EQ(feed.sent().size(), 2u) << row.name;
        EXPECT_TRUE(agree(feed.sent()[0].value, standing.middleRows(row.first, row.kept), same)) << row.name;
        EXPECT_TRUE(agree(feed.sent()[1].value, lying.middleCols(row.first, row.kept), same)) << row.name;
        EXPECT_TRUE(agree(feed.sent()[0].timeStamp, 1.0, same));
        EXPECT_TRUE(agree(feed.sent()[1].timeStamp, 2.0, same));
    }
}

TEST(FilterAbsoluteErodeTest, RowsAndColumnsTogether) {
    FilterAbsoluteErode block("crop");
    Feed feed(block);
    setRows(feed, {1, 2, 0});
    setColumns(feed, {0, 9, 2});
    const MatrixXd sample = numbered(6, 5);
    EXPECT_TRUE(agree(feed.run("in", sample), sample.block(1, 0, 3, 2), same));
    setRows(feed, {3, 3, 0});
    feed.forget();
    feed.give("in", sample);
    feed.step();
    EXPECT_TRUE(feed.sent().empty()) << "no row is left, whatever the columns must keep";
}

TEST(FilterAbsoluteErodeTest, TheEmptyCaseFollowsItsSetting) {
    FilterAbsoluteErode block("crop");
    Feed feed(block);
    setRows(feed, {1, 1, 0});
    const MatrixXd samples[] = {MatrixXd(0, 0), MatrixXd(0, 3), MatrixXd(3, 0), numbered(2, 3)};
    for (const MatrixXd& sample : samples) {
        feed.give("in", sample);
        feed.step();
    }
    EXPECT_TRUE(feed.sent().empty());
    feed.set("FwdEmptyMat", true);
    for (const MatrixXd& sample : samples) {
        EXPECT_TRUE(agree(feed.run("in", sample, 3.5), MatrixXd(0, 0), same));
        EXPECT_TRUE(agree(feed.last().timeStamp, 3.5, same));
    }
    EXPECT_TRUE(agree(feed.run("in", numbered(3, 3)), numbered(3, 3).middleRows(1, 1), same))
        << "a kept row again";
    setRows(feed, {1, 1, 5});
    EXPECT_TRUE(agree(feed.run("in", MatrixXd(0, 3)), MatrixXd(0, 0), same))
        << "no minimum makes something of nothing";
}

TEST(FilterAbsoluteErodeTest, BitsPass) {
    FilterAbsoluteErode block("crop");
    Feed feed(block);
    setColumns(feed, {1, 0, 0});
    EXPECT_TRUE(agree(feed.run("in", matrix({{1, kNaN, -0.0}, {1, -kInf, 5e-324}})),
                      matrix({{kNaN, -0.0}, {-kInf, 5e-324}}), same));
}

TEST(FilterAbsoluteErodeTest, WithoutASampleNothingHappens) {
    FilterAbsoluteErode block("crop");
    Feed feed(block);
    feed.set("FwdEmptyMat", true);
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
}

TEST(FilterAbsoluteErodeTest, RefusesCountsOutsideTheirLimits) {
    FilterAbsoluteErode block("crop");
    Feed feed(block);
    for (const char* const name :
         {"LeftErode", "RightErode", "TopErode", "BottomErode", "MinRows", "MinCols"}) {
        EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set(name, -1); }),
                  "-1 does not fit in [0;200000], (step : 1)")
            << name;
        EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set(name, 200001); }),
                  "200001 does not fit in [0;200000], (step : 1)")
            << name;
        EXPECT_EQ(feed.get<int>(name), 0);
    }
}

TEST(FilterAbsoluteErodeTest, ASteadyStepAllocatesNothing) {
    FilterAbsoluteErode block("crop");
    dynamic_cast<ValueProperty<int>&>(block.getProperty("TopErode")).setValue(2);
    EXPECT_EQ(allocationsOfAHundredSteps(block, "in", MatrixXd::Ones(8, 3)), 0u);
}

namespace {
/// The rule along one direction, word by word; a first line of -1 stands for the empty case.
std::pair<int, int> literalSpan(int lines, const Cut& cut) {
    if (!(lines > cut.front + cut.back) && cut.least == 0) return {-1, 0};
    const int least = std::min(cut.least, lines);
    const int length = std::max(lines - cut.back - cut.front, least);
    const int last = lines - cut.back - 1;
    if (!(last - cut.front < cut.least - 1)) return {cut.front, length};
    const double half = (cut.front + cut.least - last - 1) * 0.5;
    const double newLast = last + std::floor(half);
    const double newFirst = cut.front - std::ceil(half);
    if (newLast > lines - 1 && !(newFirst < 0)) return {lines - least, length};
    if (newLast > lines - 1) return {0, length};
    if (newFirst < 0) return {0, length};
    return {static_cast<int>(newFirst), length};
}
} // namespace

TEST(FilterAbsoluteErodeTest, EverySmallCropFollowsTheRuleAndStaysInside) {
    FilterAbsoluteErode block("crop");
    Feed feed(block);
    feed.set("FwdEmptyMat", true);
    for (int code = 0; code < 6 * 9 * 9 * 9; ++code) {
        const int lines = code % 6 + 1;
        const Cut cut{code / 6 % 9, code / 54 % 9, code / 486};
        const auto [first, length] = literalSpan(lines, cut);
        ASSERT_LE(first + length, lines);
        setRows(feed, cut);
        const MatrixXd sample = numbered(lines, 2);
        const MatrixXd wanted = first < 0 ? MatrixXd(0, 0) : MatrixXd(sample.middleRows(first, length));
        ASSERT_TRUE(agree(feed.run("in", sample), wanted, same))
            << lines << " lines, " << cut.front << ", " << cut.back << ", at least " << cut.least;
        feed.forget();
    }
}

TEST(FilterAbsoluteErodeTest, LongTrace) {
    std::mt19937_64 random(52);
    FilterAbsoluteErode block("crop");
    Feed feed(block);
    feed.set("FwdEmptyMat", true);
    int empty = 0;
    const auto small = [&] { return onceIn(2, random) ? 0 : static_cast<int>(random() % 8); };
    for (int n = 0; n < 5000; ++n) {
        const Cut rowCut{small(), small(), small()};
        const Cut columnCut{small(), small(), small()};
        setRows(feed, rowCut);
        setColumns(feed, columnCut);
        const MatrixXd sample = anyMatrix(random, static_cast<Eigen::Index>(random() % 12),
                                          static_cast<Eigen::Index>(random() % 12));
        const auto [firstRow, rows] = literalSpan(static_cast<int>(sample.rows()), rowCut);
        const auto [firstColumn, columns] = literalSpan(static_cast<int>(sample.cols()), columnCut);
        const bool isEmpty = sample.size() == 0 || firstRow < 0 || firstColumn < 0;
        empty += isEmpty ? 1 : 0;
        const MatrixXd wanted =
            isEmpty ? MatrixXd(0, 0) : MatrixXd(sample.block(firstRow, firstColumn, rows, columns));
        ASSERT_TRUE(agree(feed.run("in", sample, n), wanted, same)) << "step " << n;
    }
    EXPECT_GT(empty, 500);
    EXPECT_LT(empty, 3500);
}
