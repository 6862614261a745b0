// SPDX-License-Identifier: MIT
#pragma once

#include "framework/transport/MatrixXd.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <vector>

/// The stillness flag told again in plain loops, one rule a line: what `FilterFlagStatic` is compared with.
/// The settings are written from outside, and whoever does what raises the block's reset flag sets
/// `resetFlag`.
struct LiteralFlagStatic {
    using M = Quillmere::Core::MatrixXd;

    /// Running sums over the last `capacity` numbers, never summed anew.
    struct Window {
        int count = 0;
        int capacity = 0;
        std::vector<double> ring;
        std::size_t place = 0;
        double sum = 0.0;
        double squares = 0.0;

        void reset(int newCapacity) {
            capacity = newCapacity;
            count = 0;
            place = 0;
            sum = 0.0;
            squares = 0.0;
            ring.assign(static_cast<std::size_t>(newCapacity), 0.0);
        }

        void push(double x) {
            if (capacity == 0) return; // nothing to keep it in, and the count stays 0
            const double old = ring.at(place);
            ring.at(place) = x;
            place = place + 1;
            if (place == ring.size()) place = 0;
            sum = sum + (x - old);
            squares = (x * x - old * old) + squares;
            count = count + 1;
            if (count > capacity) count = capacity;
        }

        double stdDev() const {
            if (count < 1) return std::sqrt(0.0);
            const double n = count;
            return std::sqrt(squares / n - sum * sum / (n * n));
        }
    };

    struct Result {
        M stdDev;
        double flag = 0.0;
    };

    int windowsSize = 200;
    double maxStdDev = 2.0;
    double flagThreshold = 4.0;
    double stepStdDevThreshold = 100.0;
    double stdDevIni = 40.0;
    bool resetFlag = true;

    double firstTime = 0.0;
    std::array<Window, 3> windows;
    std::array<double, 3> estimate{40.0, 40.0, 40.0};
    std::array<double, 3> firstSample{};
    int counter = 0;
    double rate = 200.0;
    double tolerance = 1.0;
    double settlingTime = 0.5;

    void resetWindows() {
        for (Window& window : windows)
            window.reset(windowsSize);
    }

    void push(const std::array<double, 3>& axes) {
        for (std::size_t i = 0; i < 3; ++i)
            windows[i].push(axes[i]);
    }

    static double length(const std::array<double, 3>& v) {
        return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    }

    /// Both samples of a step that has both; nothing if the step writes nothing.
    std::optional<Result> step(const M& signal, const M& bias, double t) {
        if (signal.size() < 3 || bias.size() < 3) return std::nullopt;
        const std::array<double, 3> axes{signal(0), signal(1), signal(2)};
        if (resetFlag) {
            tolerance = 1.0;
            counter = 0;
            estimate.fill(stdDevIni);
            resetWindows();
            resetFlag = false;
        }
        if (maxStdDev > tolerance) tolerance = tolerance + (maxStdDev - 1.0) / (rate * stepStdDevThreshold);
        if (counter == 0) {
            firstTime = t;
            firstSample = axes;
            counter = 1;
            return std::nullopt;
        }
        if (counter == 1) {
            rate = 1.0 / (t - firstTime);
            resetWindows();
            push(firstSample);
        }
        counter = counter + 1;
        push(axes);
        adopt(t);
        const std::array<double, 3> d{axes[0] - bias(0), axes[1] - bias(1), axes[2] - bias(2)};
        Result result;
        result.stdDev.resize(1, 3);
        result.stdDev << estimate[0], estimate[1], estimate[2];
        result.flag = length(estimate) * flagThreshold > length(d) ? 1.0 : 0.0;
        return result;
    }

    /// Takes the windows' deviations for the estimate if they are quiet enough and the sensor has settled.
    void adopt(double t) {
        std::array<double, 3> w{};
        for (std::size_t i = 0; i < 3; ++i) {
            w[i] = windows[i].stdDev();
            if (w[i] == 0.0) w[i] = 2.0 * estimate[i];
        }
        const bool quiet = tolerance * length(estimate) > length(w);
        const bool settled = t - firstTime - settlingTime >= -0.001;
        if (!quiet || !settled) return;
        estimate = w;
        tolerance = 1.0;
    }
};
