// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

/// The frequency tracker told again in plain loops, one rule a line: what `WFLCEstimator` and `FilterWFLC`
/// are compared with. Arrays are counted from 1, sines in 1 to n and cosines in n + 1 to 2n; weight 0 is the
/// frequency weight.
struct LiteralWFLC {
    int n = 1;
    double mu = 0.15;
    double mu0 = 0.001;
    double muB = 0.001;
    double wf0 = 0.125663706144;
    double w1 = 0.0;
    double wm1 = 0.0;
    double offset = 0.0;

    double phase = 0.0;
    double bias = 0.0;
    double estimate = 0.0;
    double error = 0.0;
    std::array<double, 21> regressor{};
    std::array<double, 21> weight{};

    std::size_t harmonicCount() const { return static_cast<std::size_t>(n); }

    /// The last estimate and the regressors outlive it.
    void reset() {
        const std::size_t order = harmonicCount();
        phase = 0.0;
        bias = 0.0;
        error = 0.0;
        for (std::size_t i = 1; i <= 2 * order; ++i)
            weight.at(i) = 0.0;
        weight.at(0) = wf0;
        weight.at(1) = w1;
        weight.at(order + 1) = wm1;
    }

    void step(double sample) {
        const std::size_t order = harmonicCount();
        const double v = sample - offset;
        phase = phase + weight.at(0);
        for (std::size_t k = 1; k <= order; ++k) {
            const double angle = static_cast<double>(k) * phase;
            regressor.at(k) = std::sin(angle);
            regressor.at(order + k) = std::cos(angle);
        }
        estimate = 0.0;
        for (std::size_t i = 1; i <= 2 * order; ++i)
            estimate = estimate + weight.at(i) * regressor.at(i);
        error = v - estimate - bias;
        bias = bias + 2.0 * muB * error;
        // The frequency learns from the amplitudes as they were, so it goes before them.
        double s = 0.0;
        for (std::size_t k = 1; k <= order; ++k) {
            const double slope =
                regressor.at(order + k) * weight.at(k) - regressor.at(k) * weight.at(order + k);
            s = s + static_cast<double>(k) * slope;
        }
        weight.at(0) = weight.at(0) + 2.0 * mu0 * error * s;
        for (std::size_t i = 1; i <= 2 * order; ++i)
            weight.at(i) = weight.at(i) + 2.0 * mu * error * regressor.at(i);
    }

    /// Weights 1 to 2n.
    std::vector<double> amplitudes() const {
        const std::size_t order = harmonicCount();
        std::vector<double> result;
        for (std::size_t i = 1; i <= 2 * order; ++i)
            result.push_back(weight.at(i));
        return result;
    }

    /// The same without the two of the first harmonic.
    std::vector<double> harmonics() const {
        const std::size_t order = harmonicCount();
        std::vector<double> result;
        for (std::size_t i = 2; i <= order; ++i)
            result.push_back(weight.at(i));
        for (std::size_t i = order + 2; i <= 2 * order; ++i)
            result.push_back(weight.at(i));
        return result;
    }
};
