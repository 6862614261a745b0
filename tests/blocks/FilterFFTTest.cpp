// SPDX-License-Identifier: MIT
#include "blocks/FilterFFT.h"

#include "spectral/FFTPack.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/Signals.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

using namespace Support;

namespace {

/// The spectrum by the rule, with a plan of `planned` doubles over the sample's values and zeros behind them.
MatrixXd spectrumByRule(const MatrixXd& sample, std::int32_t planned) {
    const auto n = static_cast<Eigen::Index>(sample.rows() - sample.rows() % 2);
    MatrixXd x = MatrixXd::Zero(std::max<Eigen::Index>(sample.size(), planned), 1);
    for (Eigen::Index i = 0; i < sample.size(); ++i)
        x(i) = sample(i);
    FFTPack pack;
    pack.setSize(planned);
    pack.forwardTransform(x.data());
    const auto row = [&](Eigen::Index r) { return x(r * sample.cols()); };
    MatrixXd spectrum(n / 2, 1);
    spectrum(0) = std::sqrt(row(n - 1) * row(n - 1) + row(0) * row(0)) / static_cast<double>(n);
    for (Eigen::Index k = 1; k < n / 2; ++k)
        spectrum(k) =
            std::sqrt(row(2 * k - 1) * row(2 * k - 1) + row(2 * k) * row(2 * k)) / static_cast<double>(n / 2);
    return spectrum;
}

MatrixXd spectrumByRule(const MatrixXd& sample) {
    return spectrumByRule(sample, static_cast<std::int32_t>(sample.rows() - sample.rows() % 2));
}

MatrixXd noise(std::mt19937_64& random, Eigen::Index rows, Eigen::Index cols) {
    MatrixXd sample(rows, cols);
    for (Eigen::Index i = 0; i < sample.size(); ++i)
        sample(i) = static_cast<double>(random() >> 11) * 0x1p-52 - 1.0;
    return sample;
}
} // namespace

TEST(FilterFFTTest, Catalogue) {
    FilterFFT block("spectrum");
    EXPECT_STREQ(block.getTypeName(), "FilterFFT");
    EXPECT_EQ(block.getName(), "spectrum");
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "output \"out\"\n"
                                "value bool \"Pause\" true\n");
}

TEST(FilterFFTTest, ANewBlockIsPausedAndSamplesWait) {
    FilterFFT block("spectrum");
    Feed feed(block);
    feed.give("in", column({3, 5}), 1.5);
    feed.step();
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
    feed.set("Pause", false);
    feed.step();
    ASSERT_EQ(feed.sent().size(), 1u) << "the sample had waited in the pin";
    EXPECT_TRUE(agree(feed.last().timeStamp, 1.5, same));
    feed.set("Pause", true);
    feed.give("in", column({1, 1}), 2.5);
    feed.step();
    EXPECT_EQ(feed.sent().size(), 1u) << "not even a former spectrum";
}

class RunningFFT : public testing::Test {
protected:
    RunningFFT() { feed.set("Pause", false); }
    FilterFFT block{"spectrum"};
    Feed feed{block};
};

TEST_F(RunningFFT, WorkedSamples) {
    const struct {
        const char* name;
        MatrixXd sample;
        MatrixXd spectrum;
    } rows[] = {
        {.name = "two rows: sum and difference",
         .sample = column({3, 5}),
         .spectrum = column({std::sqrt(2.0 * 2.0 + 8.0 * 8.0) / 2.0})},
        {.name = "five rows are four",
         .sample = column({1, 2, 4, 8, 77}),
         .spectrum =
             column({std::sqrt(5.0 * 5.0 + 15.0 * 15.0) / 4.0, std::sqrt(3.0 * 3.0 + 6.0 * 6.0) / 2.0})},
        {.name = "a constant", .sample = MatrixXd::Constant(8, 1, -2.5), .spectrum = column({2.5, 0, 0, 0})},
        {.name = "half the rate lands in row 0",
         .sample = column({3, -3, 3, -3}),
         .spectrum = column({3, 0})},
        {.name = "columns interleave and column 0 of the result is read",
         .sample = matrix({{1, 2}, {4, 8}, {0, 0}, {0, 0}}),
         .spectrum =
             column({std::sqrt(0.0 * 0.0 + 15.0 * 15.0) / 4.0, std::sqrt(6.0 * 6.0 + 0.0 * 0.0) / 2.0})},
        {.name = "not-a-number spreads", .sample = column({kNaN, 1}), .spectrum = column({kNaN})},
        {.name = "infinity minus itself", .sample = column({kInf, kInf}), .spectrum = column({kNaN})},
    };
    for (const auto& row : rows) {
        EXPECT_TRUE(agree(feed.run("in", row.sample), row.spectrum, same)) << row.name;
        // keeps the cases apart: a half of a former length is a case of its own
        feed.run("in", MatrixXd::Ones(40, 1));
    }
}

TEST_F(RunningFFT, UnusableSamplesAreUsedUpWithoutAWord) {
    const MatrixXd samples[] = {MatrixXd(0, 0), MatrixXd(0, 3), matrix({{1}}), matrix({{1, 2, 3, 4}}),
                                MatrixXd(4, 0)};
    for (const MatrixXd& sample : samples) {
        feed.give("in", sample);
        feed.step();
        EXPECT_TRUE(feed.sent().empty()) << sample.rows() << " by " << sample.cols();
    }
    EXPECT_TRUE(agree(feed.run("in", column({3, -3, 3, -3})), column({3, 0}), same));
}

TEST_F(RunningFFT, ASinusoidAtAnExactBinReadsItsAmplitude) {
    for (const Eigen::Index n : {8, 50, 64, 100, 202, 1000})
        for (Eigen::Index k = 1; 2 * k < n; k += 1 + n / 10) {
            const MatrixXd spectrum = feed.run("in", tone(n, 7.25, static_cast<double>(k), 0.3));
            ASSERT_EQ(spectrum.rows(), n / 2);
            // The angle of the last sample is off by up to its rounding, 2*pi*k * 2^-52; the transform adds
            // less.
            const Tolerance nearly = law(7.25 * 1e-15 * static_cast<double>(n));
            for (Eigen::Index row = 0; row < n / 2; ++row)
                EXPECT_TRUE(agree(spectrum(row), row == k ? 7.25 : 0.0, nearly))
                    << n << ": bin " << k << ", row " << row;
        }
}

TEST_F(RunningFFT, MatchesTheRuleForEveryShape) {
    std::mt19937_64 random(11);
    for (const Eigen::Index rows : {2, 3, 5, 7, 9, 30, 33, 101, 128, 17})
        for (const Eigen::Index cols : {1, 2, 3}) {
            const MatrixXd sample = noise(random, rows, cols);
            EXPECT_TRUE(agree(feed.run("in", sample), spectrumByRule(sample), same))
                << rows << " by " << cols;
        }
}

TEST_F(RunningFFT, HalfTheFormerLengthGoesThroughTheFormerPlan) {
    std::mt19937_64 random(12);
    for (const Eigen::Index cols : {1, 2, 3}) {
        const MatrixXd whole = noise(random, 16, cols);
        const MatrixXd half = noise(random, 8, cols);
        EXPECT_TRUE(agree(feed.run("in", whole), spectrumByRule(whole), same)) << cols << " columns";
        EXPECT_TRUE(agree(feed.run("in", half), spectrumByRule(half, 16), same)) << cols << " columns";
        EXPECT_TRUE(agree(feed.run("in", half), spectrumByRule(half), same))
            << "the next one has its own plan";
    }
}

TEST_F(RunningFFT, HalvedAgainAndAgainItPlansEveryOtherTime) {
    std::mt19937_64 random(13);
    const struct {
        Eigen::Index rows;
        std::int32_t plan;
    } steps[] = {{64, 64}, {32, 64}, {16, 64}, {8, 64}, {9, 8}, {4, 8}, {2, 8}, {2, 2}};
    for (const auto& step : steps) {
        const MatrixXd sample = noise(random, step.rows, 1);
        EXPECT_TRUE(agree(feed.run("in", sample), spectrumByRule(sample, step.plan), same))
            << step.rows << " rows";
    }
}

TEST_F(RunningFFT, KeepsTheTimeStamp) {
    for (const double stamp : {0.0, -2.0, 1.0 / 3.0, kInf}) {
        feed.run("in", column({1, 2}), stamp);
        EXPECT_TRUE(agree(feed.last().timeStamp, stamp, same));
    }
}

TEST_F(RunningFFT, RemembersNothingOfASignal) {
    std::mt19937_64 random(14);
    const MatrixXd first = noise(random, 24, 1);
    const MatrixXd second = noise(random, 24, 1);
    feed.run("in", first);
    FilterFFT other("other");
    Feed otherFeed(other);
    otherFeed.set("Pause", false);
    EXPECT_TRUE(agree(feed.run("in", second), otherFeed.run("in", second), same));
}

TEST_F(RunningFFT, ASteadyStepAllocatesNothing) {
    FilterFFT own("own");
    dynamic_cast<ValueProperty<bool>&>(own.getProperty("Pause")).setValue(false);
    EXPECT_EQ(allocationsOfAHundredSteps(own, "in", MatrixXd::Ones(30, 1)), 0u);
}
