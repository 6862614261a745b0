// SPDX-License-Identifier: MIT
#include "blocks/FilterFrequency.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/Scalars.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <random>

using namespace Support;

namespace {

struct Fixture {
    FilterFrequency block{"rate"};
    Feed feed{block};

    explicit Fixture(int length = 2) { feed.set("SampleNbr", length); }
    /// One step at each time; which rates were sent.
    std::vector<MatrixXd> at(std::initializer_list<double> times) {
        feed.forget();
        for (const double time : times) {
            feed.give("in", matrix({{1, 2, 3}}), time);
            feed.step();
        }
        return feed.values();
    }
};
} // namespace

TEST(FilterFrequencyTest, Catalogue) {
    FilterFrequency block("rate");
    EXPECT_STREQ(block.getTypeName(), "FilterFrequency");
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "output \"out\"\n"
                                "range int \"SampleNbr\" 100 in [2;1000] step 1\n"
                                "command \"reset\"\n");
}

TEST(FilterFrequencyTest, MeasuresTheMeanRate) {
    struct Row {
        const char* name;
        int length;
        std::vector<double> times;
        std::vector<double> rates;
        std::vector<double> stamps;
    };
    // clang-format off
    const Row rows[] = {
        // name                             length times                        rates              stamps
        {"once a second",                   2,     {0, 1, 2, 3, 4},             {1, 1},            {2, 4}},
        {"three distances",                 3,     {0, 0.5, 1, 1.5, 2, 2.5, 3}, {2, 2},            {1.5, 3}},
        {"an end begins the next interval", 2,     {10, 11, 12, 12.5, 13},      {1, 2},            {12, 13}},
        {"one quotient is one rounding",    3,     {0.1, 0.2, 0.3, 0.4},        {3 / (0.4 - 0.1)}, {0.4}},
        {"equal ends",                      2,     {5, 7, 5, 5, 5},             {-1, -1},          {5, 5}},
        {"zeros of either sign are equal",  2,     {0.0, 1, -0.0},              {-1},              {-0.0}},
        {"backwards",                       2,     {4, 3, 2},                   {-1},              {2}},
        {"backwards, faster",               2,     {1, 0.9, 0.5},               {-4},              {0.5}},
        {"not-a-number",                    2,     {0, 1, kNaN, 3, 4},          {kNaN, kNaN},      {kNaN, 4}},
        {"an infinite time",                2,     {0, 1, kInf, 3, 4},          {0, -0.0},         {kInf, 4}},
    };
    // clang-format on
    for (const Row& row : rows) {
        Fixture f(row.length);
        for (const double time : row.times) {
            f.feed.give("in", matrix({{1}}), time);
            f.feed.step();
        }
        EXPECT_TRUE(agree(f.feed.values(), scalars(row.rates), same)) << row.name;
        ASSERT_EQ(f.feed.sent().size(), row.stamps.size()) << row.name;
        for (std::size_t i = 0; i < row.stamps.size(); ++i)
            EXPECT_TRUE(agree(f.feed.sent()[i].timeStamp, row.stamps[i], same)) << row.name;
    }
}

TEST(FilterFrequencyTest, ByDefaultAHundredDistances) {
    FilterFrequency block("rate");
    Feed feed(block);
    for (int n = 0; n <= 300; ++n) {
        feed.give("in", matrix({{0}}), 0.125 * n);
        feed.step();
        ASSERT_EQ(feed.sent().size(), static_cast<std::size_t>(n / 100)) << n;
    }
    EXPECT_TRUE(agree(feed.values(), scalars({8, 8, 8}), same));
}

TEST(FilterFrequencyTest, ValuesAreIgnored) {
    Fixture f;
    const MatrixXd samples[] = {MatrixXd(0, 0), matrix({{kNaN, kInf}}), MatrixXd(0, 3)};
    double time = 0.0;
    for (const MatrixXd& sample : samples) {
        f.feed.give("in", sample, time += 0.5);
        f.feed.step();
    }
    EXPECT_TRUE(agree(f.feed.values(), scalars({2}), same));
}

TEST(FilterFrequencyTest, WithoutASampleNothingIsCounted) {
    Fixture f;
    f.at({0});
    f.feed.step();
    f.feed.step();
    EXPECT_TRUE(agree(f.at({1, 2}), scalars({1}), same));
}

TEST(FilterFrequencyTest, ResetBeginsWithTheNextSample) {
    Fixture f;
    f.at({0, 1});
    f.feed.fire("reset");
    EXPECT_TRUE(agree(f.at({2, 3, 3.5, 4, 4.5}), scalars({2 / 1.5, 2}), same));
    f.feed.fire("reset");
    f.feed.fire("reset");
    EXPECT_TRUE(agree(f.at({10, 11, 12}), scalars({1}), same));
}

TEST(FilterFrequencyTest, ANewLengthBeginsWithTheNextSample) {
    Fixture f;
    f.at({0, 1});
    f.feed.set("SampleNbr", 3);
    EXPECT_TRUE(agree(f.at({2, 3, 4, 5}), scalars({1}), same));
    f.at({6});
    f.feed.set("SampleNbr", 3);
    EXPECT_TRUE(agree(f.at({7, 7.5}), scalars({3 / 2.5}), same)) << "the same length is no new one";
    f.feed.set("SampleNbr", 2);
    f.feed.set("SampleNbr", 3);
    EXPECT_TRUE(agree(f.at({8, 8.5, 9}), scalars({3 / 1.5}), same))
        << "there and back between two samples: unseen";
}

TEST(FilterFrequencyTest, RefusesLengthsOutsideTheirLimits) {
    Fixture f;
    EXPECT_EQ(refusal<Poco::RangeException>([&] { f.feed.set("SampleNbr", 1); }),
              "1 does not fit in [2;1000], (step : 1)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { f.feed.set("SampleNbr", 1001); }),
              "1001 does not fit in [2;1000], (step : 1)");
    EXPECT_EQ(f.feed.get<int>("SampleNbr"), 2);
}

TEST(FilterFrequencyTest, ASteadyStepAllocatesNothing) {
    FilterFrequency block("rate");
    dynamic_cast<ValueProperty<int>&>(block.getProperty("SampleNbr")).setValue(2);
    EXPECT_EQ(allocationsOfAHundredSteps(block, "in", MatrixXd::Ones(4, 6)), 0u);
}

TEST(FilterFrequencyTest, LongTrace) {
    std::mt19937_64 random(50);
    Fixture f(100);
    int length = 100;
    std::vector<double> interval; // time stamps since the interval began
    std::vector<MatrixXd> wanted;
    double time = 0.0;
    for (int n = 0; n < 20000; ++n) {
        const int newLength = onceIn(80, random) ? 2 + static_cast<int>(random() % 20) : length;
        const bool resets = onceIn(80, random);
        f.feed.set("SampleNbr", newLength);
        if (resets) f.feed.fire("reset");
        if (resets || newLength != length) interval.clear();
        length = newLength;
        time += 0.25 * static_cast<double>(random() % 4);
        interval.push_back(time);
        f.feed.give("in", matrix({{0}}), time);
        f.feed.step();
        if (interval.size() <= static_cast<std::size_t>(length)) continue;
        const double duration = interval.back() - interval.front();
        wanted.push_back(matrix({{duration == 0.0 ? -1.0 : length / duration}}));
        interval = {time};
    }
    EXPECT_GT(wanted.size(), 500u);
    EXPECT_TRUE(agree(f.feed.values(), wanted, same));
}
