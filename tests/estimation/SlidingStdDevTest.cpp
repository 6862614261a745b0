// SPDX-License-Identifier: MIT
#include "estimation/SlidingStdDev.h"

#include "tests/support/Numbers.h"

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {
using namespace Support;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

struct Row {
    std::string name;
    std::int32_t capacity;
    std::vector<double> pushes;
    double wanted;
};

const std::vector<Row> kRows{
    {.name = "nothing pushed", .capacity = 5, .pushes = {}, .wanted = 0.0},
    {.name = "one number spreads nowhere", .capacity = 5, .pushes = {3.0}, .wanted = 0.0},
    {.name = "population form, not sample form", .capacity = 5, .pushes = {1.0, 3.0}, .wanted = 1.0},
    {.name = "a window not yet full counts what was seen",
     .capacity = 200,
     .pushes = {2, 4, 4, 4, 5, 5, 7, 9},
     .wanted = 2.0},
    {.name = "exactly full", .capacity = 8, .pushes = {2, 4, 4, 4, 5, 5, 7, 9}, .wanted = 2.0},
    {.name = "the oldest leave", .capacity = 2, .pushes = {100, -50, 1, 3}, .wanted = 1.0},
    {.name = "a window of one", .capacity = 1, .pushes = {7, 8, 9}, .wanted = 0.0},
    {.name = "a window of none keeps nothing", .capacity = 0, .pushes = {1, 2, 3}, .wanted = 0.0},
    {.name = "constant", .capacity = 4, .pushes = {2, 2, 2, 2, 2, 2}, .wanted = 0.0},
    {.name = "not a number", .capacity = 3, .pushes = {1, kNan, 2}, .wanted = kNan},
    {.name = "not a number stays after it left the window",
     .capacity = 2,
     .pushes = {1, kNan, 2, 3, 4, 5},
     .wanted = kNan},
    {.name = "an infinity leaves not a number behind", .capacity = 1, .pushes = {kInf, 1, 1}, .wanted = kNan},
};

TEST(SlidingStdDev, workedSamples) {
    for (const Row& row : kRows) {
        SlidingStdDev window;
        window.reset(row.capacity);
        for (const double x : row.pushes)
            window.push(x);
        EXPECT_TRUE(agree(window.stdDev(), row.wanted, same)) << row.name;
    }
}

TEST(SlidingStdDev, startsWithAWindowOfOne) {
    SlidingStdDev window;
    EXPECT_TRUE(agree(window.stdDev(), 0.0, same));
    window.push(5.0);
    window.push(7.0); // 5 has left: nothing is spread
    EXPECT_TRUE(agree(window.stdDev(), 0.0, same));
}

// 0.7 has no end in binary: after five of them the squares sum to a little less than they should, and nothing
// is clamped.
TEST(SlidingStdDev, varianceThatRoundsBelowZeroIsNotANumber) {
    SlidingStdDev window;
    window.reset(10);
    for (int i = 0; i < 5; ++i)
        window.push(0.7);
    EXPECT_TRUE(agree(window.stdDev(), kNan, same));
}

TEST(SlidingStdDev, resetForgetsAndTakesTheNewCapacity) {
    SlidingStdDev window;
    window.reset(3);
    for (const double x : {kNan, 4.0, 8.0, 1.0})
        window.push(x);
    window.reset(2);
    EXPECT_TRUE(agree(window.stdDev(), 0.0, same));
    for (const double x : {10.0, 1.0, 3.0})
        window.push(x);
    EXPECT_TRUE(agree(window.stdDev(), 1.0, same));
}

TEST(SlidingStdDev, copiesKeepApart) {
    SlidingStdDev window;
    window.reset(2);
    window.push(1.0);
    SlidingStdDev other = window;
    other.push(3.0);
    EXPECT_TRUE(agree(window.stdDev(), 0.0, same));
    EXPECT_TRUE(agree(other.stdDev(), 1.0, same));
}

TEST(SlidingStdDev, refusesASizeThatIsNone) {
    SlidingStdDev window;
    try {
        window.reset(-1);
        FAIL() << "a window of -1 was taken";
    } catch (const std::bad_alloc& e) {
        EXPECT_STREQ(e.what(), "bad allocation");
    }
}

/// The variance of the last `capacity` of `numbers` from two passes in a wider type.
long double twoPassVariance(const std::vector<double>& numbers, std::size_t end, std::size_t capacity) {
    const std::size_t begin = end > capacity ? end - capacity : 0;
    const auto n = static_cast<long double>(end - begin);
    long double mean = 0.0L;
    for (std::size_t i = begin; i < end; ++i)
        mean += numbers[i];
    mean /= n;
    long double variance = 0.0L;
    for (std::size_t i = begin; i < end; ++i)
        variance += (numbers[i] - mean) * (numbers[i] - mean);
    return variance / n;
}

struct Drift {
    std::string name;
    std::int32_t capacity;
    double level;
    double spread;
};

TEST(SlidingStdDev, driftsFromTwoPassesNoFurtherThanItsRunningSumsAllow) {
    const std::vector<Drift> rows{
        {.name = "short window", .capacity = 7, .level = 0.0, .spread = 1.0},
        {.name = "usual window", .capacity = 200, .level = 0.0, .spread = 1.0},
        {.name = "long window", .capacity = 10000, .level = 0.0, .spread = 1.0},
        {.name = "small spread on a level", .capacity = 200, .level = 1.0, .spread = 0.01},
        {.name = "large numbers", .capacity = 50, .level = 1000.0, .spread = 10.0},
    };
    for (const Drift& row : rows) {
        std::mt19937 random(20240 + static_cast<unsigned>(row.capacity));
        std::uniform_real_distribution<double> deviate(row.level - row.spread, row.level + row.spread);
        std::vector<double> numbers;
        SlidingStdDev window;
        window.reset(row.capacity);
        for (std::size_t end = 1; end <= 30000; ++end) {
            numbers.push_back(deviate(random));
            window.push(numbers.back());
            if (end % 997 != 0) continue;
            const double got = window.stdDev() * window.stdDev();
            const auto wanted =
                static_cast<double>(twoPassVariance(numbers, end, static_cast<std::size_t>(row.capacity)));
            // Let M bound |x| and u = 2^-53. A push rounds the difference (at most 2M) and the sum (at most
            // nM): S is off by at most pushes * u * (n + 2) M, Q by at most pushes * u * (n + 3) M^2. Then Q
            // / n moves the variance by that over n, and S^2 / n^2 by 2 M / n times S's error: together at
            // most 3 (n + 3) / n * pushes * u * M^2, with a few roundings of M^2 for the formula itself.
            const double n = std::min(static_cast<double>(end), static_cast<double>(row.capacity));
            const double largest = std::fabs(row.level) + row.spread;
            const double roundings = 3.0 * (n + 3.0) / n * static_cast<double>(end) + 8.0;
            EXPECT_TRUE(agree(got, wanted, law(roundings * 0x1p-53 * largest * largest)))
                << row.name << ", push " << end;
        }
    }
}
} // namespace
