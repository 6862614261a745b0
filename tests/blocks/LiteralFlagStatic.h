// SPDX-License-Identifier: MIT
#pragma once

#include "framework/transport/MatrixXd.h"

#include <cmath>
#include <optional>
#include <vector>

/// The stillness flag once more, rule by rule and with no thought for speed: what `FilterFlagStatic` is compared with.
struct LiteralFlagStatic {
    using M = Quillmere::Core::MatrixXd;

    struct Window {
        int count = 0;
        int capacity = 0;
        std::vector<double> ring;
        unsigned index = 0;
        double sum = 0, squares = 0;

        void reset(int size) {
            capacity = size;
            count = 0;
            index = 0;
            sum = 0;
            squares = 0;
            ring.clear();
            ring.resize(static_cast<std::size_t>(size), 0.0);
        }
        void push(double x) {
            if (capacity == 0) return;
            const double old = ring.at(index);
            ring.at(index) = x;
            index = index + 1;
            if (index == static_cast<unsigned>(capacity)) index = 0;
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
        double flag;
    };

    int windowsSize = 200;
    double maxStdDev = 2.0, flagThreshold = 4.0, stepStdDevThreshold = 100.0, stdDevIni = 40.0;

    double firstTimeStamp = 0;
    Window windows[3];
    M estimate, firstSample;
    int counter = 0;
    double sampleRate = 200.0, factor = 1.0;
    bool resetFlag = true;

    void resetWindows() {
        for (Window& window : windows)
            window.reset(windowsSize);
    }

    static double length(const M& v) { return std::sqrt(v(0) * v(0) + v(1) * v(1) + v(2) * v(2)); }

    std::optional<Result> step(const M& signal, const M& bias, double t) {
        if (signal.size() < 3 || bias.size() < 3) return std::nullopt;
        if (resetFlag) {
            factor = 1.0;
            counter = 0;
            estimate.resize(1, 3);
            estimate.setConstant(stdDevIni);
            firstSample.resize(1, 3);
            resetWindows();
            resetFlag = false;
        }
        if (maxStdDev > factor) factor = factor + (maxStdDev - 1.0) / (sampleRate * stepStdDevThreshold);
        if (counter == 0) {
            firstTimeStamp = t;
            firstSample = signal;
            counter = 1;
            return std::nullopt;
        }
        if (counter == 1) {
            sampleRate = 1.0 / (t - firstTimeStamp);
            resetWindows();
            for (int i = 0; i < 3; ++i)
                windows[i].push(firstSample(i));
        }
        counter = counter + 1;
        for (int i = 0; i < 3; ++i)
            windows[i].push(signal(i));
        M w(1, 3);
        for (int i = 0; i < 3; ++i) {
            w(i) = windows[i].stdDev();
            if (w(i) == 0.0) w(i) = 2 * estimate(i);
        }
        if (factor * length(estimate) > length(w) && t - firstTimeStamp - 0.5 >= -0.001) {
            estimate = w;
            factor = 1.0;
        }
        M d(1, 3);
        for (int i = 0; i < 3; ++i)
            d(i) = signal(i) - bias(i);
        const double flag = length(estimate) * flagThreshold > length(d) ? 1.0 : 0.0;
        return Result{estimate, flag};
    }
};
