// SPDX-License-Identifier: MIT
// What the frequency tracker costs beside the same arithmetic on plain arrays, its order known to the
// compiler; and its block beside that and the five samples that go out.
#include "benchmarks/estimation/Links.h"
#include "benchmarks/support/Pair.h"
#include "blocks/FilterWFLC.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kSignalLength = 1024;
constexpr double kGoal = 1.15;

/// A tremor of 5 Hz at 100 samples a second, with a second harmonic.
std::vector<double> tremor() {
    std::vector<double> x(kSignalLength);
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double t = 0.01 * static_cast<double>(i);
        x[i] = std::sin(31.4 * t) + 0.3 * std::sin(62.8 * t);
    }
    return x;
}

/// The tracker's step with everything but the signal known to the compiler.
template <std::size_t N>
struct PlainTracker {
    double phase = 0.0;
    double bias = 0.0;
    double estimate = 0.0;
    double error = 0.0;
    double frequency = 0.125663706144;
    double mu = 0.02;
    double mu0 = 0.001;
    double muB = 0.001;
    std::array<double, 2 * N> w{};
    std::array<double, 2 * N> x{};

    void step(double sample) {
        phase += frequency;
        for (std::size_t k = 0; k < N; ++k)
            ::sincos(static_cast<double>(k + 1) * phase, &x[k], &x[N + k]);
        double sum = 0.0;
        for (std::size_t i = 0; i < 2 * N; ++i)
            sum += w[i] * x[i];
        estimate = sum;
        error = sample - sum - bias;
        bias += 2.0 * muB * error;
        double slope = 0.0;
        for (std::size_t k = 0; k < N; ++k)
            slope += static_cast<double>(k + 1) * (x[N + k] * w[k] - x[k] * w[N + k]);
        frequency += 2.0 * mu0 * error * slope;
        const double pull = 2.0 * mu * error;
        for (std::size_t i = 0; i < 2 * N; ++i)
            w[i] += pull * x[i];
    }
};

template <std::size_t N>
void plainTracker(benchmark::State& state) {
    const std::vector<double> x = tremor();
    PlainTracker<N> tracker;
    benchmark::DoNotOptimize(&tracker);
    std::size_t i = 0;
    for (auto _ : state) {
        tracker.step(x[i++ % kSignalLength]);
        benchmark::ClobberMemory();
    }
}

template <std::size_t N>
void tracker(benchmark::State& state) {
    const std::vector<double> x = tremor();
    WFLCEstimator estimator(static_cast<std::int32_t>(N), 0.02, 0.001, 0.001, 0.125663706144, 0.0, 0.0, 0.0);
    PlainTracker<N> plain;
    for (const double sample : x) {
        estimator.step(sample);
        plain.step(sample);
    }
    if (estimator.getEstimate() != plain.estimate) state.SkipWithError("the two trackers differ");
    estimator.reset();
    benchmark::DoNotOptimize(&estimator);
    std::size_t i = 0;
    for (auto _ : state) {
        estimator.step(x[i++ % kSignalLength]);
        benchmark::ClobberMemory();
    }
}

template <std::size_t N>
void plainTrackerAndSends(benchmark::State& state) {
    const std::vector<double> x = tremor();
    PlainTracker<N> tracker;
    Bench::Outputs out(5);
    for (std::size_t i = 0; i < 3; ++i)
        resizeSample(out.value(i), 1, 1);
    resizeSample(out.value(3), 1, 2 * N);
    resizeSample(out.value(4), 1, 2 * N - 2);
    std::size_t i = 0;
    for (auto _ : state) {
        tracker.step(x[i++ % kSignalLength]);
        out.value(0)(0) = tracker.estimate;
        out.value(1)(0) = tracker.error;
        out.value(2)(0) = tracker.frequency;
        std::copy(tracker.w.begin(), tracker.w.end(), out.value(3).data());
        double* const harmonics = out.value(4).data();
        std::copy_n(tracker.w.begin() + 1, N - 1, harmonics);
        std::copy_n(tracker.w.begin() + N + 1, N - 1, harmonics + N - 1);
        out.send(1.0);
        benchmark::ClobberMemory();
    }
}

template <std::size_t N>
void trackerBlock(benchmark::State& state) {
    const std::vector<double> x = tremor();
    FilterWFLC block("tracker");
    Bench::set<RangeProperty<int>>(block, "Order", static_cast<int>(N));
    Bench::set<RangeProperty<double>>(block, "Mu", 0.02);
    const Bench::Readers readers(block);
    InputPin<MatrixXd>& in = Bench::input(block, "Input");
    Bench::Sample sample;
    resizeSample(sample.value, 1, 1);
    std::size_t i = 0;
    for (auto _ : state) {
        sample.value(0) = x[i++ % kSignalLength];
        in.receive(sample);
        block.process();
        benchmark::ClobberMemory();
    }
}

template <std::size_t N>
void enterTracker() {
    const std::string order = std::to_string(N);
    Bench::enter({"tracker/order " + order, plainTracker<N>, tracker<N>, kGoal});
    Bench::enter({"tracker block/order " + order, plainTrackerAndSends<N>, trackerBlock<N>, kGoal});
    Bench::enter({"tracker block to its engine/order " + order, tracker<N>, trackerBlock<N>});
}

const Bench::Suite suite([] {
    enterTracker<1>();
    enterTracker<3>();
    enterTracker<10>();
});

} // namespace
