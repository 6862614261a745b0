// SPDX-License-Identifier: MIT
#include "blocks/FilterRelativeErode.h"

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

void setRows(Feed& feed, double top, double bottom) {
    feed.set("TopErode (%)", top);
    feed.set("BottomErode (%)", bottom);
}

void setColumns(Feed& feed, double left, double right) {
    feed.set("LeftErode (%)", left);
    feed.set("RightErode (%)", right);
}

/// The rule along one direction, word by word, before the block is kept inside the sample.
std::pair<int, int> literalSpan(int lines, double front, double back) {
    const double real = lines * (100.0 - front - back) / 100.0;
    const auto length = static_cast<int>(std::floor(real + 0.5));
    auto first = static_cast<int>(std::floor(lines * front / 100.0 + 0.5));
    if (real - std::floor(real) == 0.5 && first > 0) --first;
    return {first, length};
}
} // namespace

TEST(FilterRelativeErodeTest, Catalogue) {
    FilterRelativeErode block("crop");
    EXPECT_STREQ(block.getTypeName(), "FilterRelativeErode");
    const std::string limits = " 0 in [0;100] step 0.001\n";
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "output \"out\"\n"
                                "range double \"LeftErode (%)\"" +
                                    limits + "range double \"RightErode (%)\"" + limits +
                                    "range double \"TopErode (%)\"" + limits +
                                    "range double \"BottomErode (%)\"" + limits +
                                    "value bool \"FwdEmptyMat\" false\n");
}

TEST(FilterRelativeErodeTest, KeepsTheRowsAndColumnsAsked) {
    struct Row {
        const char* name;
        int lines;
        double front;
        double back;
        int first;
        int kept; ///< 0: nothing is sent
    };
    // clang-format off
    const Row rows[] = {
        // name                                      lines front   back first kept
        {"nothing off",                              4,    0,      0,   0,    4},
        {"a tie starts one earlier",                 3,    50,     0,   1,    2},
        {"a tie at the back",                        3,    0,      50,  0,    2},
        {"a tie on both sides",                      5,    50,     20,  2,    2},
        {"tenths",                                   5,    10,     10,  1,    4},
        {"all off",                                  10,   60,     40,  0,    0},
        {"more than all off",                        10,   100,    100, 0,    0},
        {"one line, half off",                       1,    50,     0,   0,    1},
        {"one line, a little more than half off",    1,    50.001, 0,   0,    0},
        {"one line, less than half off",             1,    20,     29,  0,    1},
        {"a third",                                  10,   33,     0,   3,    7},
        {"rounding alone would end beyond the last", 125,  35.6,   0,   44,   81},
        {"all but the last",                         200,  99.5,   0,   199,  1},
    };
    // clang-format on
    for (const Row& row : rows) {
        FilterRelativeErode block("crop");
        Feed feed(block);
        const MatrixXd standing = numbered(row.lines, 3);
        const MatrixXd lying = numbered(3, row.lines);
        setRows(feed, row.front, row.back);
        feed.give("in", standing, 1.0);
        feed.step();
        setRows(feed, 0, 0);
        setColumns(feed, row.front, row.back);
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

TEST(FilterRelativeErodeTest, RowsAndColumnsTogether) {
    FilterRelativeErode block("crop");
    Feed feed(block);
    setRows(feed, 25, 50);
    setColumns(feed, 0, 40);
    const MatrixXd sample = numbered(8, 5);
    EXPECT_TRUE(agree(feed.run("in", sample), sample.block(2, 0, 2, 3), same));
    setColumns(feed, 100, 0);
    feed.forget();
    feed.give("in", sample);
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
}

TEST(FilterRelativeErodeTest, TheEmptyCaseFollowsItsSetting) {
    FilterRelativeErode block("crop");
    Feed feed(block);
    const MatrixXd samples[] = {MatrixXd(0, 0), MatrixXd(0, 3), MatrixXd(3, 0)};
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
    setRows(feed, 60, 40);
    EXPECT_TRUE(agree(feed.run("in", numbered(10, 3)), MatrixXd(0, 0), same));
    setRows(feed, 60, 30);
    EXPECT_TRUE(agree(feed.run("in", numbered(10, 3)), numbered(10, 3).middleRows(6, 1), same));
}

TEST(FilterRelativeErodeTest, BitsPass) {
    FilterRelativeErode block("crop");
    Feed feed(block);
    setColumns(feed, 33.4, 0);
    EXPECT_TRUE(agree(feed.run("in", matrix({{1, kNaN, -0.0}, {1, -kInf, 5e-324}})),
                      matrix({{kNaN, -0.0}, {-kInf, 5e-324}}), same));
}

TEST(FilterRelativeErodeTest, WithoutASampleNothingHappens) {
    FilterRelativeErode block("crop");
    Feed feed(block);
    feed.set("FwdEmptyMat", true);
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
}

TEST(FilterRelativeErodeTest, RefusesPercentagesOutsideTheirLimits) {
    FilterRelativeErode block("crop");
    Feed feed(block);
    for (const char* const name : {"LeftErode (%)", "RightErode (%)", "TopErode (%)", "BottomErode (%)"}) {
        EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set(name, -0.5); }),
                  "-0.5 does not fit in [0;100], (step : 0.001)")
            << name;
        EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set(name, 100.5); }),
                  "100.5 does not fit in [0;100], (step : 0.001)")
            << name;
        EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set(name, kNaN); }),
                  "nan does not fit in [0;100], (step : 0.001)")
            << name;
        EXPECT_TRUE(agree(feed.get<double>(name), 0.0, same));
        feed.set(name, 0.0005); // between two steps
    }
}

TEST(FilterRelativeErodeTest, ASteadyStepAllocatesNothing) {
    FilterRelativeErode block("crop");
    dynamic_cast<ValueProperty<double>&>(block.getProperty("TopErode (%)")).setValue(25.0);
    EXPECT_EQ(allocationsOfAHundredSteps(block, "in", MatrixXd::Ones(8, 3)), 0u);
}

TEST(FilterRelativeErodeTest, OnlyABlockBeyondTheLastLineIsMoved) {
    FilterRelativeErode block("crop");
    Feed feed(block);
    feed.set("FwdEmptyMat", true);
    int moved = 0;
    for (int lines = 1; lines <= 250; ++lines) {
        const MatrixXd sample = numbered(lines, 1);
        for (int tenths = 0; tenths < 1000; tenths += 4) {
            const double front = 0.1 * tenths;
            setRows(feed, front, 0.0);
            auto [first, length] = literalSpan(lines, front, 0.0);
            if (first + length > lines) {
                ASSERT_EQ(first + length, lines + 1) << "one line too late is all that rounding can do";
                --first;
                ++moved;
            }
            const MatrixXd wanted = length < 1 ? MatrixXd(0, 0) : MatrixXd(sample.middleRows(first, length));
            ASSERT_TRUE(agree(feed.run("in", sample), wanted, same))
                << lines << " lines, " << front << " percent";
            feed.forget();
        }
    }
    EXPECT_GT(moved, 0);
}

TEST(FilterRelativeErodeTest, LongTrace) {
    std::mt19937_64 random(53);
    FilterRelativeErode block("crop");
    Feed feed(block);
    feed.set("FwdEmptyMat", true);
    const auto percent = [&] {
        return onceIn(2, random) ? 12.5 * static_cast<double>(random() % 5)
                                 : 0.001 * static_cast<double>(random() % 50000);
    };
    int empty = 0;
    for (int n = 0; n < 5000; ++n) {
        const double top = percent();
        const double bottom = percent();
        const double left = percent();
        const double right = percent();
        setRows(feed, top, bottom);
        setColumns(feed, left, right);
        const MatrixXd sample = anyMatrix(random, static_cast<Eigen::Index>(random() % 20),
                                          static_cast<Eigen::Index>(random() % 20));
        auto [firstRow, rows] = literalSpan(static_cast<int>(sample.rows()), top, bottom);
        auto [firstColumn, columns] = literalSpan(static_cast<int>(sample.cols()), left, right);
        const bool isEmpty = rows < 1 || columns < 1;
        empty += isEmpty ? 1 : 0;
        firstRow = std::min(firstRow, static_cast<int>(sample.rows()) - rows);
        firstColumn = std::min(firstColumn, static_cast<int>(sample.cols()) - columns);
        const MatrixXd wanted =
            isEmpty ? MatrixXd(0, 0) : MatrixXd(sample.block(firstRow, firstColumn, rows, columns));
        ASSERT_TRUE(agree(feed.run("in", sample, n), wanted, same)) << "step " << n;
    }
    EXPECT_GT(empty, 200);
    EXPECT_LT(empty, 2500);
}
