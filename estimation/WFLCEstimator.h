// SPDX-License-Identifier: MIT
#pragma once

#include "framework/transport/MatrixXd.h"

#include <array>
#include <cstdint>

/// A weighted-frequency Fourier linear combiner: it follows the frequency and the Fourier amplitudes of a
/// signal that nearly repeats, one number at a time.
///
/// The model is a sum of N harmonics of an integrated phase, and the phase rate is itself an adapted weight.
/// With v the number less `offset`, w[0] the frequency weight in radians per sample, w[k] the sine and w[N+k]
/// the cosine weight of harmonic k, one step is
///
///     phase    = phase + w[0]
///     x[k]     = sin(k * phase),  x[N+k] = cos(k * phase)              k = 1 .. N
///     estimate = sum of w[i] * x[i]                                    i = 1 .. 2N
///     error    = v - estimate - bias
///     bias     = bias + 2 * muB * error
///     w[0]     = w[0] + 2 * mu0 * error * sum of k * (x[N+k] * w[k] - x[k] * w[N+k])
///     w[i]     = w[i] + 2 * mu * error * x[i]
///
/// in this order: the phase moves by the frequency weight of the step before, and the frequency weight adapts
/// before the amplitude weights do. Nothing here knows a sample rate: a frequency f at a rate r is 2 * pi * f
/// / r.
///
/// `reset` forgets phase, bias, error and every weight; `estimate` keeps its last value until the next step.
///
/// Kept as is: the frequency weight is not clamped and may turn negative or grow without bound; the phase is
/// never reduced by whole turns; the arrays are counted from 1, as the equations are.
///
/// After Riviere, Rader and Thakor, "Adaptive canceling of physiological tremor for improved precision in
/// microsurgery", IEEE Transactions on Biomedical Engineering 45 (1998), with a bias weight added.
class WFLCEstimator {
public:
    static constexpr std::int32_t kLargestOrder = 10;

    /// Requires, here and in `configure`: 1 <= order <= kLargestOrder.
    WFLCEstimator(std::int32_t newOrder, double newMu, double newMu0, double newMuB, double newWf0,
                  double newW1, double newWm1, double newOffset);

    /// Takes eight new parameters and starts anew: number of harmonics; adaptation gains of the amplitude
    /// weights, the frequency weight and the bias; starting values of the frequency weight, the first sine
    /// and the first cosine weight; the level taken off every number.
    void configure(std::int32_t newOrder, double newMu, double newMu0, double newMuB, double newWf0,
                   double newW1, double newWm1, double newOffset);

    void reset();

    /// Takes effect at the next `reset`; the frequency weight in use stays.
    void setStartFrequency(double value) { wf0 = value; }

    void step(double sample);

    double getEstimate() const { return estimate; }
    /// The residual with `offset` put back.
    double getError() const { return error + offset; }
    double getFrequencyWeight() const { return weights[0]; }
    /// 1 by 2N: the sine weights of harmonics 1 to N, then the cosine weights.
    Quillmere::Core::MatrixXd getAmplitudeWeights() const;
    /// 1 by 2N-2: the same without the first harmonic; 1 by 0 for one harmonic.
    Quillmere::Core::MatrixXd getHarmonicWeights() const;
    /// The same two into a matrix at hand, which keeps its storage while the order stays.
    void copyAmplitudeWeights(Quillmere::Core::MatrixXd& to) const;
    void copyHarmonicWeights(Quillmere::Core::MatrixXd& to) const;

private:
    /// Index 0, then sine and cosine of each harmonic.
    using Terms = std::array<double, 2 * kLargestOrder + 1>;

    template <class Count>
    void stepHarmonics(double sample, Count harmonics);

    std::int32_t order = 1; ///< N
    double mu = 0.0;
    double mu0 = 0.0;
    double muB = 0.0;
    double wf0 = 0.0; ///< radians per sample
    double w1 = 0.0;
    double wm1 = 0.0;
    double offset = 0.0;
    double phase = 0.0; ///< radians
    double bias = 0.0;
    double estimate = 0.0;
    double error = 0.0;
    Terms regressors{}; ///< index 0 is not used
    Terms weights{};    ///< index 0 is the frequency weight
};
