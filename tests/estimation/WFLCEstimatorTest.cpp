// SPDX-License-Identifier: MIT
#include "estimation/WFLCEstimator.h"

#include "tests/estimation/LiteralWFLC.h"
#include "tests/support/Numbers.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace {
using namespace Support;
using Quillmere::Core::MatrixXd;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kStart = 0.125663706144;
constexpr double kRate = 100.0; // samples per second, in every law below

double radians(double hertz) {
    return 2.0 * std::numbers::pi * hertz / kRate;
}
double hertz(double radiansPerSample) {
    return radiansPerSample * kRate / (2.0 * std::numbers::pi);
}

MatrixXd row(const std::vector<double>& values) {
    MatrixXd result(1, static_cast<Eigen::Index>(values.size()));
    std::copy(values.begin(), values.end(), result.data());
    return result;
}

WFLCEstimator defaults() {
    return {1, 0.15, 0.001, 0.001, kStart, 0.0, 0.0, 0.0};
}

TEST(WFLCEstimator, startsFromItsParameters) {
    const WFLCEstimator estimator(3, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7);
    EXPECT_TRUE(agree(estimator.getEstimate(), 0.0, same));
    EXPECT_TRUE(agree(estimator.getError(), 0.7, same));
    EXPECT_TRUE(agree(estimator.getFrequencyWeight(), 0.4, same));
    EXPECT_TRUE(agree(estimator.getAmplitudeWeights(), matrix({{0.5, 0, 0, 0.6, 0, 0}}), same));
    EXPECT_TRUE(agree(estimator.getHarmonicWeights(), matrix({{0, 0, 0, 0}}), same));
}

TEST(WFLCEstimator, firstStepLearnsOnlyAmplitudes) {
    for (const double x : {1.0, -2.5, 1e-300, 1e300, 0.0}) {
        WFLCEstimator estimator = defaults();
        estimator.step(x);
        EXPECT_TRUE(agree(estimator.getEstimate(), 0.0, same)) << x;
        EXPECT_TRUE(agree(estimator.getError(), x, same)) << x;
        EXPECT_TRUE(agree(estimator.getFrequencyWeight(), kStart, same)) << x;
        const double pull = 0.3 * x;
        EXPECT_TRUE(agree(estimator.getAmplitudeWeights(),
                          matrix({{pull * std::sin(kStart), pull * std::cos(kStart)}}), same))
            << x;
    }
}

// Every number is a small fraction of powers of two and the phase stays 0, so each of the updates can be read
// off.
TEST(WFLCEstimator, updatesInOrder) {
    WFLCEstimator estimator(1, 0.5, 0.25, 0.125, 0.0, 3.0, 2.0, 1.0);
    estimator.step(9.0);
    // v = 8; sin = 0, cos = 1; estimate = 3 * 0 + 2 * 1; error = 8 - 2 - 0.
    EXPECT_TRUE(agree(estimator.getEstimate(), 2.0, same));
    EXPECT_TRUE(agree(estimator.getError(), 6.0 + 1.0, same));
    // slope = 1 * (1 * 3 - 0 * 2), with the weights as they were; 0 + 2 * 0.25 * 6 * 3.
    EXPECT_TRUE(agree(estimator.getFrequencyWeight(), 9.0, same));
    // 2 + 2 * 0.5 * 6 * 1
    EXPECT_TRUE(agree(estimator.getAmplitudeWeights(), matrix({{3.0, 8.0}}), same));
    estimator.step(9.0);
    // phase = 9 now; bias = 2 * 0.125 * 6.
    const double estimate = 3.0 * std::sin(9.0) + 8.0 * std::cos(9.0);
    EXPECT_TRUE(agree(estimator.getEstimate(), estimate, same));
    EXPECT_TRUE(agree(estimator.getError(), 8.0 - estimate - 1.5 + 1.0, same));
}

TEST(WFLCEstimator, offsetIsTakenOffTheSampleAndPutBackOnTheError) {
    WFLCEstimator estimator(1, 0.15, 0.001, 0.001, kStart, 0.0, 0.0, 1.0);
    estimator.step(1.0);
    EXPECT_TRUE(agree(estimator.getError(), 1.0, same));
    EXPECT_TRUE(agree(estimator.getAmplitudeWeights(), matrix({{0.0, 0.0}}), same));
}

TEST(WFLCEstimator, oneHarmonicHasNoHarmonicWeights) {
    const MatrixXd weights = defaults().getHarmonicWeights();
    EXPECT_EQ(weights.rows(), 1);
    EXPECT_EQ(weights.cols(), 0);
}

TEST(WFLCEstimator, harmonicWeightsLeaveOutTheFirst) {
    WFLCEstimator estimator(4, 0.1, 0.001, 0.0, 0.5, 0.0, 0.0, 0.0);
    for (const double x : {1.0, -0.5, 2.0})
        estimator.step(x);
    const MatrixXd all = estimator.getAmplitudeWeights();
    ASSERT_EQ(all.cols(), 8);
    EXPECT_TRUE(agree(estimator.getHarmonicWeights(),
                      matrix({{all(1), all(2), all(3), all(5), all(6), all(7)}}), same));
}

TEST(WFLCEstimator, startFrequencyWaitsForTheReset) {
    WFLCEstimator estimator = defaults();
    estimator.setStartFrequency(0.5);
    estimator.step(0.0);
    EXPECT_TRUE(agree(estimator.getFrequencyWeight(), kStart, same));
    estimator.reset();
    EXPECT_TRUE(agree(estimator.getFrequencyWeight(), 0.5, same));
}

TEST(WFLCEstimator, startFrequencyOfZeroStopsThePhase) {
    WFLCEstimator estimator(1, 0.25, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0);
    estimator.step(1.0);
    estimator.step(1.0);
    // sin 0 = 0 and cos 0 = 1 in both steps: 0.5, then 0.5 + 0.5 * 0.5.
    EXPECT_TRUE(agree(estimator.getAmplitudeWeights(), matrix({{0.0, 0.75}}), same));
}

TEST(WFLCEstimator, resetForgetsAllButTheEstimate) {
    WFLCEstimator estimator(2, 0.15, 0.001, 0.1, 0.3, 0.25, 0.125, 0.5);
    for (const double x : {3.0, -1.0, 2.0})
        estimator.step(x);
    const double estimate = estimator.getEstimate();
    ASSERT_NE(estimate, 0.0);
    estimator.reset();
    EXPECT_TRUE(agree(estimator.getEstimate(), estimate, same));
    EXPECT_TRUE(agree(estimator.getError(), 0.5, same));
    EXPECT_TRUE(agree(estimator.getFrequencyWeight(), 0.3, same));
    EXPECT_TRUE(agree(estimator.getAmplitudeWeights(), matrix({{0.25, 0.0, 0.125, 0.0}}), same));

    WFLCEstimator fresh(2, 0.15, 0.001, 0.1, 0.3, 0.25, 0.125, 0.5);
    for (const double x : {1.0, 0.5, -2.0, 4.0}) {
        estimator.step(x);
        fresh.step(x);
        EXPECT_TRUE(agree(estimator.getError(), fresh.getError(), same)) << x;
        EXPECT_TRUE(agree(estimator.getFrequencyWeight(), fresh.getFrequencyWeight(), same)) << x;
        EXPECT_TRUE(agree(estimator.getAmplitudeWeights(), fresh.getAmplitudeWeights(), same)) << x;
    }
}

TEST(WFLCEstimator, anotherOrderLeavesNothingBehind) {
    WFLCEstimator estimator(10, 0.15, 0.001, 0.001, 0.3, 1.0, 2.0, 0.0);
    for (int i = 0; i < 20; ++i)
        estimator.step(std::sin(0.3 * i));
    for (const int order : {2, 10, 1, 5}) {
        estimator.configure(order, 0.1, 0.002, 0.003, 0.4, 0.5, 0.6, 0.7);
        WFLCEstimator fresh(order, 0.1, 0.002, 0.003, 0.4, 0.5, 0.6, 0.7);
        for (int i = 0; i < 20; ++i) {
            estimator.step(std::cos(0.2 * i));
            fresh.step(std::cos(0.2 * i));
        }
        EXPECT_TRUE(agree(estimator.getAmplitudeWeights(), fresh.getAmplitudeWeights(), same)) << order;
        EXPECT_TRUE(agree(estimator.getFrequencyWeight(), fresh.getFrequencyWeight(), same)) << order;
    }
}

TEST(WFLCEstimator, badNumbersTravelOn) {
    for (const double bad : {kNan, kInf, -kInf}) {
        WFLCEstimator estimator = defaults();
        estimator.step(1.0);
        estimator.step(bad);
        EXPECT_FALSE(std::isfinite(estimator.getError())) << bad;
        EXPECT_FALSE(std::isfinite(estimator.getFrequencyWeight())) << bad;
        estimator.step(1.0);
        EXPECT_TRUE(agree(estimator.getError(), kNan, same)) << bad;
        estimator.reset();
        estimator.step(1.0);
        EXPECT_TRUE(agree(estimator.getError(), 1.0, same)) << bad;
    }
}

TEST(WFLCEstimator, frequencyWeightMayTurnNegative) {
    WFLCEstimator estimator(1, 0.0, 0.5, 0.0, 0.1, 0.0, 1.0, 0.0);
    estimator.step(2.0);
    // slope = -sin(0.1), error = 2 - cos(0.1): the weight falls by about 0.1.
    EXPECT_LT(estimator.getFrequencyWeight(), 0.0);
}

// With nothing to adapt, the estimate is the sine of the running sum of the frequency weight, however large
// that grows.
TEST(WFLCEstimator, phaseIsNeverReduced) {
    WFLCEstimator estimator(1, 0.0, 0.0, 0.0, 1234567.89, 1.0, 0.0, 0.0);
    double phase = 0.0;
    for (int i = 0; i < 100000; ++i) {
        estimator.step(0.0);
        phase += 1234567.89;
        ASSERT_TRUE(agree(estimator.getEstimate(), 0.0 + 1.0 * std::sin(phase) + 0.0 * std::cos(phase), same))
            << i;
    }
}

struct Gains {
    std::string name;
    double mu;
    double mu0;
    double lockSeconds; ///< until the frequency stays within 0.1 Hz
    double finalHertz;  ///< how far off it may be after 20 s
};

// Near the lock the amplitude weights turn after the phase at the rate mu, which leaves an error that moves
// the frequency by mu0 / mu * A * A of its own error per sample: a time constant of mu / mu0 samples at
// amplitude 1, so 2.3 of those from 1 Hz to 0.1 Hz and 13.3 in 20 s; twice as long is allowed for the way in,
// when the error is not small.
TEST(WFLCEstimator, locksOntoTremorFrequenciesFromOneHertzOff) {
    const std::vector<Gains> rows{
        {.name = "defaults", .mu = 0.15, .mu0 = 0.001, .lockSeconds = 5.0, .finalHertz = 1e-5},
        {.name = "nimble", .mu = 0.05, .mu0 = 0.001, .lockSeconds = 2.5, .finalHertz = 1e-9},
    };
    for (const Gains& gains : rows)
        for (int frequency = 3; frequency <= 12; ++frequency)
            for (const double away : {-1.0, 1.0})
                for (const double startPhase : {0.0, 1.0, 2.0, 3.0, 4.0, 5.0}) {
                    WFLCEstimator estimator(1, gains.mu, gains.mu0, 0.0, radians(frequency + away), 0.0, 0.0,
                                            0.0);
                    double locked = 0.0;
                    for (int i = 0; i < 2000; ++i) {
                        estimator.step(std::sin(radians(frequency) * i + startPhase));
                        if (std::fabs(hertz(estimator.getFrequencyWeight()) - frequency) > 0.1)
                            locked = (i + 1) / kRate;
                    }
                    EXPECT_LE(locked, gains.lockSeconds) << gains.name << ", " << frequency << " Hz from "
                                                         << away << " Hz off, phase " << startPhase;
                    EXPECT_TRUE(
                        agree(hertz(estimator.getFrequencyWeight()), frequency, law(gains.finalHertz)))
                        << gains.name << ", " << frequency << " Hz from " << away << " Hz off, phase "
                        << startPhase;
                }
}

// A frequency that moves by c a sample is followed c * mu / mu0 / (A * A) behind, by the time constant above.
TEST(WFLCEstimator, followsASlowChirpByItsTimeConstantBehind) {
    constexpr double kMu = 0.05;
    constexpr double kMu0 = 0.001;
    for (const double amplitude : {1.0, 0.7}) {
        WFLCEstimator estimator(1, kMu, kMu0, 0.0, radians(4.0), 0.0, 0.0, 0.0);
        constexpr int kSamples = 6000;
        constexpr double kHertzPerSample = 4.0 / kSamples; // 4 to 8 Hz in a minute
        const double lag = kHertzPerSample * kMu / kMu0 / (amplitude * amplitude);
        double phase = 0.0;
        for (int i = 0; i < kSamples; ++i) {
            const double frequency = 4.0 + kHertzPerSample * i;
            phase += radians(frequency);
            estimator.step(amplitude * std::sin(phase));
            if (i < 1000) continue;
            // A tenth of the lag covers the ripple at twice the frequency.
            ASSERT_TRUE(agree(hertz(estimator.getFrequencyWeight()), frequency - lag, law(0.1 * lag)))
                << "amplitude " << amplitude << ", sample " << i;
        }
    }
}

TEST(WFLCEstimator, findsTheAmplitudesOfTwoHarmonics) {
    WFLCEstimator estimator(2, 0.05, 0.001, 0.0, radians(4.7), 0.0, 0.0, 0.0);
    for (int i = 0; i < 6000; ++i)
        estimator.step(std::sin(radians(5.0) * i + 0.3) + 0.4 * std::cos(radians(10.0) * i - 1.0));
    const MatrixXd weights = estimator.getAmplitudeWeights();
    // 60 s are 120 time constants: what is left is rounding, in steps of the weights' last bits.
    EXPECT_TRUE(agree(std::hypot(weights(0), weights(2)), 1.0, law(1e-11)));
    EXPECT_TRUE(agree(std::hypot(weights(1), weights(3)), 0.4, law(1e-11)));
    EXPECT_TRUE(agree(hertz(estimator.getFrequencyWeight()), 5.0, law(1e-10)));
}

TEST(WFLCEstimator, biasTakesTheLevel) {
    WFLCEstimator estimator(1, 0.05, 0.001, 0.01, radians(5.0), 0.0, 0.0, 0.0);
    for (int i = 0; i < 6000; ++i)
        estimator.step(std::sin(radians(5.5) * i) + 0.7);
    // The level leaves with (1 - 2 muB) a sample: 0.98 to the 6000th is nothing.
    EXPECT_TRUE(agree(hertz(estimator.getFrequencyWeight()), 5.5, law(1e-9)));
    EXPECT_TRUE(agree(estimator.getError(), 0.0, law(1e-9)));
}

TEST(WFLCEstimator, longTrace) {
    for (int order = 1; order <= 10; ++order) {
        std::mt19937 random(811u + static_cast<unsigned>(order));
        std::uniform_real_distribution<double> deviate(-1.0, 1.0);
        LiteralWFLC literal;
        literal.n = order;
        literal.mu = 0.02;
        literal.wm1 = 0.1;
        literal.offset = 0.05;
        literal.reset();
        WFLCEstimator estimator(order, 0.02, 0.001, 0.001, kStart, 0.0, 0.1, 0.05);
        for (int i = 0; i < 5000; ++i) {
            if (i % 1777 == 1776) {
                const double start = deviate(random);
                estimator.setStartFrequency(start);
                literal.wf0 = start;
            }
            if (i % 1500 == 1499) {
                estimator.reset();
                literal.reset();
            }
            const double x = std::sin(0.31 * i) + 0.3 * std::sin(0.62 * i) + 0.2 * deviate(random);
            estimator.step(x);
            literal.step(x);
            ASSERT_TRUE(agree(estimator.getEstimate(), literal.estimate, same)) << order << ", step " << i;
            ASSERT_TRUE(agree(estimator.getError(), literal.error + literal.offset, same))
                << order << ", step " << i;
            ASSERT_TRUE(agree(estimator.getFrequencyWeight(), literal.weight.at(0), same))
                << order << ", step " << i;
            ASSERT_TRUE(agree(estimator.getAmplitudeWeights(), row(literal.amplitudes()), same))
                << order << ", step " << i;
            ASSERT_TRUE(agree(estimator.getHarmonicWeights(), row(literal.harmonics()), same))
                << order << ", step " << i;
        }
    }
}
} // namespace
