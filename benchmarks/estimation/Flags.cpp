// SPDX-License-Identifier: MIT
// What the stillness flag costs with a long window beside a short one, and the saturation flags beside the
// same comparisons on plain arrays.
#include "benchmarks/estimation/Links.h"
#include "benchmarks/support/Pair.h"
#include "blocks/FilterFlagStatic.h"
#include "blocks/FilterSaturationDetector.h"
#include "blocks/FilterSmartSaturationDetector.h"
#include "framework/core/LayoutManager.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace {

constexpr Eigen::Index kSide = 64;
constexpr std::size_t kElements = kSide * kSide;
constexpr std::size_t kSamples = 16;

/// Stillness over a window that has filled up.
template <int kWindow>
void flagStatic(benchmark::State& state) {
    FilterFlagStatic block("flag");
    Bench::set<RangeProperty<int>>(block, "Windows Size", kWindow);
    const Bench::Readers readers(block);
    InputPin<MatrixXd>& signalPin = Bench::input(block, "3g");
    InputPin<MatrixXd>& biasPin = Bench::input(block, "3bias");
    Bench::Sample signal{.value = MatrixXd::Ones(1, 3)};
    const Bench::Sample bias{.value = MatrixXd::Zero(1, 3)};
    const auto step = [&] {
        signal.timeStamp += 0.01;
        signal.value(0) = -signal.value(0);
        signalPin.receive(signal);
        biasPin.receive(bias);
        block.process();
    };
    for (int i = 0; i < 2 * kWindow; ++i)
        step();
    for (auto _ : state)
        step();
}

/// Samples whose elements rest at a rail for a while, each at another time.
std::vector<Bench::Sample> clipped() {
    std::vector<Bench::Sample> samples(kSamples);
    for (std::size_t n = 0; n < kSamples; ++n) {
        resizeSample(samples[n].value, kSide, kSide);
        for (Eigen::Index i = 0; i < samples[n].value.size(); ++i) {
            const double wave =
                2000.0 * std::sin(0.4 * static_cast<double>(n) + 0.37 * static_cast<double>(i));
            samples[n].value(i) = std::clamp(wave, -1500.0, 1500.0);
        }
    }
    return samples;
}

/// The plain flag's comparisons, with the thresholds in hand.
void bareComparison(benchmark::State& state) {
    const std::vector<Bench::Sample> samples = clipped();
    std::vector<double> out(kElements);
    double low = -1024.0;
    double high = 1024.0;
    std::size_t n = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(low);
        benchmark::DoNotOptimize(high);
        const double* const x = samples[n++ % kSamples].value.data();
        double* const to = out.data();
        for (std::size_t i = 0; i < kElements; ++i)
            to[i] = !(x[i] < high) ? 1.0 : !(x[i] > low) ? 1.0 : 0.0;
        benchmark::ClobberMemory();
    }
}

/// The smart flag's comparisons with the settings in hand, the counts as integers.
void bareSmartComparison(benchmark::State& state) {
    const std::vector<Bench::Sample> samples = clipped();
    std::vector<double> out(kElements);
    std::vector<double> anchor(kElements);
    std::vector<std::int32_t> count(kElements);
    double low = -1024.0;
    double high = 1024.0;
    double tolerance = 0.0;
    std::int32_t wanted = 3;
    std::size_t n = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(low);
        benchmark::DoNotOptimize(high);
        benchmark::DoNotOptimize(tolerance);
        benchmark::DoNotOptimize(wanted);
        const double* const x = samples[n++ % kSamples].value.data();
        double* const to = out.data();
        double* const a = anchor.data();
        std::int32_t* const c = count.data();
        for (std::size_t i = 0; i < kElements; ++i) {
            const bool follows =
                ((x[i] <= low) | (x[i] >= high)) & (x[i] >= a[i] - tolerance) & (x[i] <= a[i] + tolerance);
            c[i] = follows ? c[i] + 1 : 0;
            to[i] = (follows & (c[i] + 1 >= wanted)) ? 1.0 : 0.0;
            a[i] = follows ? a[i] : x[i];
        }
        benchmark::ClobberMemory();
    }
}

template <class Step>
void feed(benchmark::State& state, Filter& block, Step step) {
    const std::vector<Bench::Sample> samples = clipped();
    const Bench::Readers readers(block);
    InputPin<MatrixXd>& in = Bench::input(block, "in");
    std::size_t n = 0;
    for (auto _ : state) {
        in.receive(samples[n++ % kSamples]);
        step();
        benchmark::ClobberMemory();
    }
}

void smartFlag(benchmark::State& state) {
    FilterSmartSaturationDetector block("saturation");
    feed(state, block, [&] { block.process(); });
}

/// Outside of a layout a guard has nothing to take.
void plainFlagAlone(benchmark::State& state) {
    FilterSaturationDetector block("saturation");
    Bench::set<RangeProperty<double>>(block, "Threshold Low", -1024.0);
    Bench::set<RangeProperty<double>>(block, "Threshold High", 1024.0);
    feed(state, block, [&] { block.process(); });
}

/// Inside a layout each read of a setting passes the layout's gate: 1 or 2 of them for each of 4096 elements.
void plainFlagInALayout(benchmark::State& state) {
    Quillmere::Core::LayoutManager layout("layout");
    FilterSaturationDetector block("saturation");
    Bench::set<RangeProperty<double>>(block, "Threshold Low", -1024.0);
    Bench::set<RangeProperty<double>>(block, "Threshold High", 1024.0);
    layout.add(block);
    feed(state, block, [&] { layout.runStep(); });
    layout.remove(block);
}

const Bench::Suite suite([] {
    Bench::enter({"stillness/window of 10000 beside 100", flagStatic<100>, flagStatic<10000>, 1.1});
    Bench::enter({"smart saturation/64x64", bareSmartComparison, smartFlag, 1.5});
    Bench::enter({"smart saturation/64x64 beside the plain comparison", bareComparison, smartFlag, 0.0});
    Bench::enter({"saturation/64x64, no layout", bareComparison, plainFlagAlone, 0.0});
    Bench::enter({"saturation/64x64, in a layout", bareComparison, plainFlagInALayout, 0.0});
});

} // namespace
