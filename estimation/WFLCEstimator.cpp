// SPDX-License-Identifier: MIT
#include "estimation/WFLCEstimator.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <type_traits>

using Quillmere::Core::MatrixXd;
using Quillmere::Core::resizeSample;

WFLCEstimator::WFLCEstimator(std::int32_t newOrder, double newMu, double newMu0, double newMuB, double newWf0,
                             double newW1, double newWm1, double newOffset) {
    configure(newOrder, newMu, newMu0, newMuB, newWf0, newW1, newWm1, newOffset);
}

void WFLCEstimator::configure(std::int32_t newOrder, double newMu, double newMu0, double newMuB,
                              double newWf0, double newW1, double newWm1, double newOffset) {
    order = newOrder;
    mu = newMu;
    mu0 = newMu0;
    muB = newMuB;
    wf0 = newWf0;
    w1 = newW1;
    wm1 = newWm1;
    offset = newOffset;
    reset();
}

void WFLCEstimator::reset() {
    const auto n = static_cast<std::size_t>(order);
    phase = 0.0;
    bias = 0.0;
    error = 0.0;
    std::fill_n(weights.begin() + 1, 2 * n, 0.0);
    weights[0] = wf0;
    weights[1] = w1;
    weights[n + 1] = wm1;
}

void WFLCEstimator::step(double sample) {
    // Most signals are tracked with few harmonics, and loops of a known length leave nothing but their
    // arithmetic.
    switch (order) {
    case 1:
        return stepHarmonics(sample, std::integral_constant<std::size_t, 1>());
    case 2:
        return stepHarmonics(sample, std::integral_constant<std::size_t, 2>());
    case 3:
        return stepHarmonics(sample, std::integral_constant<std::size_t, 3>());
    default:
        return stepHarmonics(sample, static_cast<std::size_t>(order));
    }
}

template <class Count>
void WFLCEstimator::stepHarmonics(double sample, Count harmonics) {
    const std::size_t n = harmonics;
    double* const x = regressors.data();
    double* const w = weights.data();
    const double v = sample - offset;

    // Order matters, from here to the end.
    phase = phase + w[0];
    for (std::size_t k = 1; k <= n; ++k)
        // the bits of sin and cos, for the price of one
        ::sincos(static_cast<double>(k) * phase, &x[k], &x[n + k]);

    double sum = 0.0;
    for (std::size_t i = 1; i <= 2 * n; ++i)
        sum += w[i] * x[i];
    estimate = sum;
    error = v - estimate - bias;
    bias = bias + 2.0 * muB * error;

    double slope = 0.0; // of the estimate over the phase, with the amplitude weights of the step before
    for (std::size_t k = 1; k <= n; ++k)
        slope += static_cast<double>(k) * (x[n + k] * w[k] - x[k] * w[n + k]);
    w[0] = w[0] + 2.0 * mu0 * error * slope;

    const double pull = 2.0 * mu * error;
    for (std::size_t i = 1; i <= 2 * n; ++i)
        w[i] = w[i] + pull * x[i];
}

MatrixXd WFLCEstimator::getAmplitudeWeights() const {
    MatrixXd result;
    copyAmplitudeWeights(result);
    return result;
}

MatrixXd WFLCEstimator::getHarmonicWeights() const {
    MatrixXd result;
    copyHarmonicWeights(result);
    return result;
}

void WFLCEstimator::copyAmplitudeWeights(MatrixXd& to) const {
    resizeSample(to, 1, 2 * order);
    std::copy_n(weights.begin() + 1, 2 * order, to.data());
}

void WFLCEstimator::copyHarmonicWeights(MatrixXd& to) const {
    const std::int32_t others = order - 1;
    resizeSample(to, 1, 2 * others);
    std::copy_n(weights.begin() + 2, others, to.data());
    std::copy_n(weights.begin() + order + 2, others, to.data() + others);
}
