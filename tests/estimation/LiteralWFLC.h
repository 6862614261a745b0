// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>
#include <map>
#include <vector>

/// The frequency tracker once more, rule by rule and with no thought for speed: what `WFLCEstimator` is compared with.
/// Weights and regressors live in maps that are counted as the equations are; sine and cosine are taken one by one.
struct LiteralWFLC {
    int n = 1;
    double mu = 0.15, mu0 = 0.001, muB = 0.001;
    double wf0 = 0.125663706144, w1 = 0.0, wm1 = 0.0, offset = 0.0;
    double phase = 0.0, bias = 0.0, estimate = 0.0, error = 0.0;
    std::map<int, double> weight;

    void reset() {
        phase = 0.0;
        bias = 0.0;
        error = 0.0;
        for (int i = 1; i <= 2 * n; ++i)
            weight[i] = 0.0;
        weight[0] = wf0;
        weight[1] = w1;
        weight[n + 1] = wm1;
    }

    void step(double sample) {
        const double v = sample - offset;
        phase = phase + weight[0];
        std::map<int, double> x;
        for (int k = 1; k <= n; ++k) {
            volatile double angle = k * phase; // volatile: sine and cosine are two calls
            x[k] = std::sin(angle);
            x[n + k] = std::cos(angle);
        }
        estimate = 0.0;
        for (int i = 1; i <= 2 * n; ++i)
            estimate = estimate + weight[i] * x[i];
        error = v - estimate - bias;
        bias = bias + 2 * muB * error;
        const std::map<int, double> before = weight;
        double s = 0.0;
        for (int k = 1; k <= n; ++k)
            s = s + k * (x[n + k] * before.at(k) - x[k] * before.at(n + k));
        weight[0] = before.at(0) + 2 * mu0 * error * s;
        for (int i = 1; i <= 2 * n; ++i)
            weight[i] = before.at(i) + 2 * mu * error * x[i];
    }

    std::vector<double> amplitudes() const {
        std::vector<double> result;
        for (int i = 1; i <= 2 * n; ++i)
            result.push_back(weight.at(i));
        return result;
    }

    std::vector<double> harmonics() const {
        std::vector<double> result;
        for (int i = 2; i <= n; ++i)
            result.push_back(weight.at(i));
        for (int i = n + 2; i <= 2 * n; ++i)
            result.push_back(weight.at(i));
        return result;
    }
};
