// SPDX-License-Identifier: MIT
#include "blocks/FilterGaussianWhiteNoiseGenerator.h"

#include "tests/support/Allocations.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <thread>
#include <vector>

#include <Poco/Exception.h>
#include <Poco/Timestamp.h>

using namespace Support;

namespace {
constexpr int kDraws = 32768;

/// The draws that the process-wide generator gives after `seed`.
std::vector<int> drawsAfter(unsigned seed, int count) {
    std::srand(seed);
    std::vector<int> draws;
    for (int i = 0; i < count; ++i)
        draws.push_back(std::rand() % kDraws);
    return draws;
}

/// The value of a draw: 6*r*c2/32768 - 3*(c2 - 1), over c1, in integers as far as they go.
double valueOf(int draw, int bits) {
    const std::int64_t c1 = (std::int64_t{1} << bits) - 1;
    const std::int64_t c2 = c1 / 3 + 1;
    const std::int64_t numerator = 6 * draw * c2 - 3 * (c2 - 1) * kDraws;
    return static_cast<double>(numerator) / (static_cast<double>(c1) * kDraws);
}

/// The block computes in another order; its terms are up to 6 * c2 / c1, which is at most 6.
const Tolerance kSameDraw = law(4e-15);
} // namespace

class FilterGaussianWhiteNoiseGeneratorTest : public testing::Test {
protected:
    double next() {
        feed.step();
        return feed.last().value(0);
    }
    FilterGaussianWhiteNoiseGenerator block{"noise"};
    Feed feed{block};
};

TEST_F(FilterGaussianWhiteNoiseGeneratorTest, Catalogue) {
    EXPECT_STREQ(block.getTypeName(), "FilterGaussianWhiteNoiseGenerator");
    EXPECT_EQ(block.getName(), "noise");
    EXPECT_EQ(catalogue(block), "output \"out\"\n"
                                "range int \"Precision\" 15 in [1;31] step 0\n");
    const auto& out = dynamic_cast<const OutputPin<MatrixXd>&>(block.getOutputPin("out"));
    EXPECT_EQ(out.data.value.rows(), 1);
    EXPECT_EQ(out.data.value.cols(), 1);
}

TEST_F(FilterGaussianWhiteNoiseGeneratorTest, DrawsOnceASample) {
    for (int bits = 1; bits <= 31; ++bits) {
        const std::vector<int> draws = drawsAfter(7, 51);
        feed.set("Precision", bits);
        std::srand(7);
        for (int i = 0; i < 50; ++i)
            EXPECT_TRUE(agree(next(), valueOf(draws[static_cast<std::size_t>(i)], bits), kSameDraw))
                << "precision " << bits << ", step " << i;
        EXPECT_EQ(std::rand() % kDraws, draws[50]) << "the next draw is still there";
    }
}

TEST_F(FilterGaussianWhiteNoiseGeneratorTest, ReachesItsLimitsAndNothingElse) {
    const struct {
        int bits;
        double lowest;
        double highest;
    } rows[] = {
        {.bits = 1, .lowest = 0.0, .highest = 6.0 * 32767.0 / 32768.0},
        {.bits = 2, .lowest = -1.0, .highest = 3.0 - 12.0 / 32768.0 / 3.0},
        {.bits = 15, .lowest = -32766.0 / 32767.0, .highest = 1.00009},
        {.bits = 31, .lowest = -1.0, .highest = 1.0},
    };
    for (const auto& row : rows) {
        feed.set("Precision", row.bits);
        std::srand(1);
        double lowest = next();
        double highest = lowest;
        // Each of 32768 draws is missed in 600000 steps with a chance of exp(-18).
        for (int i = 0; i < 600000; ++i) {
            const double value = next();
            lowest = std::min(lowest, value);
            highest = std::max(highest, value);
            if (feed.sent().size() > 4096) feed.forget();
        }
        // One step between two values is 6 * c2 / (c1 * 32768), at most 2e-4; the figure for 15 has five
        // decimals.
        EXPECT_TRUE(agree(lowest, row.lowest, law(1e-9))) << "precision " << row.bits;
        EXPECT_TRUE(agree(highest, row.highest, law(row.bits >= 15 ? 7e-5 : 1e-9)))
            << "precision " << row.bits;
    }
}

TEST_F(FilterGaussianWhiteNoiseGeneratorTest, EachPrecisionHasItsSetOfValues) {
    for (const int bits : {1, 2, 8, 15, 16, 31}) {
        std::vector<double> possible;
        for (int draw = 0; draw < kDraws; ++draw)
            possible.push_back(valueOf(draw, bits));
        feed.set("Precision", bits);
        std::srand(2);
        for (int i = 0; i < 2000; ++i) {
            const double value = next();
            const auto above = std::lower_bound(possible.begin(), possible.end(), value);
            const double up = above == possible.end() ? possible.back() : *above;
            const double down = above == possible.begin() ? possible.front() : *(above - 1);
            EXPECT_TRUE(agrees(value, up, kSameDraw) || agrees(value, down, kSameDraw))
                << "precision " << bits << ": " << digits17(value);
        }
    }
}

TEST_F(FilterGaussianWhiteNoiseGeneratorTest, WorkedSamples) {
    // With 1 the value is 6 * r / 32768; with 31 it is (6 * r * 715827883 / 32768 - 3 * 715827882) /
    // 2147483647.
    const std::vector<int> draws = drawsAfter(3, 2);
    feed.set("Precision", 1);
    std::srand(3);
    EXPECT_TRUE(agree(next(), 6.0 * draws[0] / 32768.0, same));
    feed.set("Precision", 31);
    const double x = draws[1] / 32768.0 * 715827883.0;
    EXPECT_TRUE(agree(next(), (2.0 * (3.0 * x) - 3.0 * 715827882.0) * (1.0 / 2147483647.0), same));
}

TEST_F(FilterGaussianWhiteNoiseGeneratorTest, IsUniformAndNotBellShaped) {
    constexpr int kBins = 64;
    constexpr int kSteps = 262144;
    std::srand(4);
    std::vector<int> counts(kBins);
    for (int i = 0; i < kSteps; ++i) {
        // From -32766/32767 upwards in 32768 steps of 6 * 10923 / (32767 * 32768).
        const double place = (next() + 32766.0 / 32767.0) * 32767.0 / (6.0 * 10923.0);
        const int bin = static_cast<int>(place * kBins + 1e-9);
        ASSERT_TRUE(bin >= 0 && bin < kBins) << "step " << i;
        ++counts[static_cast<std::size_t>(bin)];
        if (feed.sent().size() > 4096) feed.forget();
    }
    double chiSquare = 0.0;
    for (const int count : counts) {
        const double expected = static_cast<double>(kSteps) / kBins;
        chiSquare += (count - expected) * (count - expected) / expected;
    }
    // The quantiles of 0.001 and 0.999 for 63 degrees of freedom; a bell of three draws would give over
    // 100000.
    EXPECT_GT(chiSquare, 34.0);
    EXPECT_LT(chiSquare, 103.5);
}

TEST_F(FilterGaussianWhiteNoiseGeneratorTest, APrecisionActsFromTheNextStepOn) {
    const std::vector<int> draws = drawsAfter(5, 3);
    std::srand(5);
    EXPECT_TRUE(agree(next(), valueOf(draws[0], 15), kSameDraw));
    feed.set("Precision", 3);
    feed.set("Precision", 2);
    EXPECT_TRUE(agree(next(), valueOf(draws[1], 2), kSameDraw));
    EXPECT_TRUE(agree(next(), valueOf(draws[2], 2), kSameDraw));
}

TEST_F(FilterGaussianWhiteNoiseGeneratorTest, ConstructionSeedsWithTheCalendarTime) {
    const auto before = std::time(nullptr);
    const FilterGaussianWhiteNoiseGenerator another("another");
    const int drawn = std::rand();
    const auto after = std::time(nullptr);
    bool isSeeded = false;
    for (auto second = before; second <= after; ++second) {
        std::srand(static_cast<unsigned>(second));
        isSeeded = isSeeded || std::rand() == drawn;
    }
    EXPECT_TRUE(isSeeded);
}

TEST_F(FilterGaussianWhiteNoiseGeneratorTest, TwoBlocksDrawFromOneSequence) {
    FilterGaussianWhiteNoiseGenerator another("another");
    Feed anotherFeed(another);
    const std::vector<int> draws = drawsAfter(6, 4);
    std::srand(6);
    for (std::size_t i = 0; i < 4; i += 2) {
        EXPECT_TRUE(agree(next(), valueOf(draws[i], 15), kSameDraw));
        anotherFeed.step();
        EXPECT_TRUE(agree(anotherFeed.last().value(0), valueOf(draws[i + 1], 15), kSameDraw));
    }
}

TEST_F(FilterGaussianWhiteNoiseGeneratorTest, StampsTheWallClock) {
    const double before = static_cast<double>(Poco::Timestamp().utcTime()) * 1e-7;
    next();
    const double after = static_cast<double>(Poco::Timestamp().utcTime()) * 1e-7;
    EXPECT_GE(feed.last().timeStamp, before);
    EXPECT_LE(feed.last().timeStamp, after);
    EXPECT_GT(before, 1.3e10) << "seconds since October 1582";
}

TEST_F(FilterGaussianWhiteNoiseGeneratorTest, RefusesWhatLiesOutside) {
    EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set("Precision", 0); }),
              "0 does not fit in [1;31], (step : 0)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { feed.set("Precision", 32); }),
              "32 does not fit in [1;31], (step : 0)");
}

TEST(FilterGaussianWhiteNoiseGeneratorThreadsTest, EightGeneratorsOnEightThreads) {
    constexpr int kSteps = 20000;
    std::vector<std::unique_ptr<FilterGaussianWhiteNoiseGenerator>> blocks;
    for (int i = 0; i < 8; ++i)
        blocks.push_back(std::make_unique<FilterGaussianWhiteNoiseGenerator>("noise"));
    std::vector<int> outside(blocks.size());
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < blocks.size(); ++i)
        threads.emplace_back([&block = *blocks[i], &bad = outside[i]] {
            InputPin<MatrixXd> receiver("receiver", nullptr);
            block.getOutputPin("out").attach(receiver, true);
            for (int step = 0; step < kSteps; ++step) {
                block.process();
                if (!receiver.hasData()) return void(++bad);
                const double value = receiver.take()(0);
                if (!(value >= -1.0 && value <= 1.0001)) ++bad;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(outside, std::vector<int>(blocks.size()));
}

TEST_F(FilterGaussianWhiteNoiseGeneratorTest, AStepAllocatesNothing) {
    FilterGaussianWhiteNoiseGenerator own("own");
    own.process();
    const AllocationCounter counter;
    for (int i = 0; i < 100; ++i)
        own.process();
    EXPECT_EQ(counter.count(), 0u);
}
