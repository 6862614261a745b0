// SPDX-License-Identifier: MIT
#include "blocks/FilterFastFourierTransform.h"

#include "spectral/FFTPack.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/Signals.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

using namespace Support;

namespace {

MatrixXd noise(std::mt19937_64& random, Eigen::Index rows, Eigen::Index cols) {
    MatrixXd sample(rows, cols);
    for (Eigen::Index i = 0; i < sample.size(); ++i)
        sample(i) = static_cast<double>(random() >> 11) * 0x1p-52 - 1.0;
    return sample;
}

MatrixXd transformed(MatrixXd sample) {
    FFTPack pack;
    pack.setSize(static_cast<std::int32_t>(sample.rows() - sample.rows() % 2));
    pack.forwardTransform(sample.data());
    return sample;
}

/// Writes its name into a log that it shares with others.
class LoggingPin final : public Quillmere::Core::InputPinBase<MatrixXd> {
public:
    LoggingPin(const std::string& name, std::vector<std::string>& sharedLog)
        : Pin(name, nullptr), InputPinBase(name, nullptr), log(sharedLog) {}
    ~LoggingPin() override { InputPinBase::detachAll(); }
    void clear() override {}
    void rebuildStrategy() override {}
    void setConnectedOutput(Quillmere::Core::AbstractOutputPin* output, bool synchronous) override {
        connectedOutput = output;
        isSynchronous = synchronous;
    }
    void receive(const Sample&) override { log.push_back(getName()); }

private:
    std::vector<std::string>& log;
};
} // namespace

class FilterFastFourierTransformTest : public testing::Test {
protected:
    FilterFastFourierTransform block{"spectrum"};
    Feed feed{block};
};

TEST_F(FilterFastFourierTransformTest, Catalogue) {
    EXPECT_STREQ(block.getTypeName(), "FilterFastFourierTransform");
    EXPECT_EQ(block.getName(), "spectrum");
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "output \"fft\"\n"
                                "output \"powerSpectrum\"\n"
                                "value bool \"Pause\" false\n");
}

TEST_F(FilterFastFourierTransformTest, RunsAtOnceAndHoldsStillWhilePaused) {
    feed.set("Pause", true);
    feed.give("in", column({3, 5}), 1.5);
    feed.step();
    EXPECT_TRUE(feed.sent("fft").empty());
    EXPECT_TRUE(feed.sent("powerSpectrum").empty());
    feed.set("Pause", false);
    feed.step();
    EXPECT_EQ(feed.sent("fft").size(), 1u);
    EXPECT_EQ(feed.sent("powerSpectrum").size(), 1u);
}

TEST_F(FilterFastFourierTransformTest, WorkedSamples) {
    const struct {
        const char* name;
        MatrixXd sample;
        MatrixXd fft;
        MatrixXd spectrum;
    } rows[] = {
        {.name = "two rows: sum and difference",
         .sample = column({3, 5}),
         .fft = column({8, -2}),
         .spectrum = column({std::sqrt(2.0 * 2.0 + 8.0 * 8.0) / 2.0})},
        {.name = "the fifth of five rows comes out as it came in",
         .sample = column({1, 2, 4, 8, -0.0}),
         .fft = column({15, -3, 6, -5, -0.0}),
         .spectrum =
             column({std::sqrt(5.0 * 5.0 + 15.0 * 15.0) / 4.0, std::sqrt(3.0 * 3.0 + 6.0 * 6.0) / 2.0})},
        {.name = "a constant",
         .sample = MatrixXd::Constant(4, 1, -2.5),
         .fft = column({-10, 0, 0, 0}),
         .spectrum = column({2.5, 0})},
        {.name = "columns interleave, the rest stays",
         .sample = matrix({{1, 2}, {4, 8}, {5, 6}, {7, 9}}),
         .fft = matrix({{15, -3}, {6, -5}, {5, 6}, {7, 9}}),
         .spectrum =
             column({std::sqrt(7.0 * 7.0 + 15.0 * 15.0) / 4.0, std::sqrt(6.0 * 6.0 + 5.0 * 5.0) / 2.0})},
        {.name = "not-a-number spreads",
         .sample = column({kNaN, 1}),
         .fft = column({kNaN, kNaN}),
         .spectrum = column({kNaN})},
    };
    for (const auto& row : rows) {
        EXPECT_TRUE(agree(feed.run("in", row.sample, 0.0, "fft"), row.fft, same)) << row.name;
        EXPECT_TRUE(agree(feed.last("powerSpectrum").value, row.spectrum, same)) << row.name;
    }
}

TEST_F(FilterFastFourierTransformTest, UnusableSamplesAreUsedUpWithoutAWord) {
    const MatrixXd samples[] = {MatrixXd(0, 0), MatrixXd(0, 3), matrix({{1}}), matrix({{1, 2, 3, 4}}),
                                MatrixXd(4, 0)};
    for (const MatrixXd& sample : samples) {
        feed.give("in", sample);
        feed.step();
        EXPECT_TRUE(feed.sent("fft").empty()) << sample.rows() << " by " << sample.cols();
        EXPECT_TRUE(feed.sent("powerSpectrum").empty()) << sample.rows() << " by " << sample.cols();
    }
    EXPECT_TRUE(agree(feed.run("in", column({3, 5}), 0.0, "fft"), column({8, -2}), same));
}

TEST_F(FilterFastFourierTransformTest, ASinusoidAtAnExactBinReadsItsAmplitude) {
    for (const Eigen::Index k : {1, 7, 31}) {
        const MatrixXd spectrum =
            feed.run("in", tone(64, 0.5, static_cast<double>(k), 1.0), 0.0, "powerSpectrum");
        // The angle of the last sample is off by up to its rounding, 2*pi*k * 2^-52; the transform adds less.
        for (Eigen::Index row = 0; row < 32; ++row)
            EXPECT_TRUE(agree(spectrum(row), row == k ? 0.5 : 0.0, law(0.5 * 64 * 1e-15)))
                << "bin " << k << ", row " << row;
    }
}

TEST_F(FilterFastFourierTransformTest, PlansForEverySample) {
    std::mt19937_64 random(21);
    for (const Eigen::Index rows : {64, 32, 16, 17, 8, 2, 30, 64})
        for (const Eigen::Index cols : {1, 3}) {
            const MatrixXd sample = noise(random, rows, cols);
            EXPECT_TRUE(agree(feed.run("in", sample, 0.0, "fft"), transformed(sample), same))
                << rows << " by " << cols;
            EXPECT_EQ(feed.last("powerSpectrum").value.rows(), rows / 2);
            EXPECT_EQ(feed.last("powerSpectrum").value.cols(), 1);
        }
}

TEST_F(FilterFastFourierTransformTest, BothOutputsCarryTheTimeStampFftFirst) {
    feed.run("in", column({1, 2}), 1.0 / 3.0, "fft");
    EXPECT_TRUE(agree(feed.last("fft").timeStamp, 1.0 / 3.0, same));
    EXPECT_TRUE(agree(feed.last("powerSpectrum").timeStamp, 1.0 / 3.0, same));
    std::vector<std::string> log;
    LoggingPin spectrum("powerSpectrum", log);
    LoggingPin raw("fft", log);
    block.getOutputPin("powerSpectrum").attach(spectrum, false);
    block.getOutputPin("fft").attach(raw, false);
    feed.give("in", column({1, 2}));
    feed.step();
    EXPECT_EQ(log, (std::vector<std::string>{"fft", "powerSpectrum"}));
}

TEST_F(FilterFastFourierTransformTest, ASteadyStepAllocatesNothing) {
    FilterFastFourierTransform own("own");
    EXPECT_EQ(allocationsOfAHundredSteps(own, "in", MatrixXd::Ones(30, 1)), 0u);
}
