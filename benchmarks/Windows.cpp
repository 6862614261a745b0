// SPDX-License-Identifier: MIT
#include "benchmarks/support/Pair.h"
#include "blocks/FilterBlackmanWindow.h"
#include "blocks/FilterHammingWindow.h"
#include "blocks/FilterHanningWindow.h"

#include <cmath>
#include <string>
#include <vector>

// A window block, from one sample sent to one sample received, against a loop that computes the same cosines
// for half the window and multiplies both halves by them. A window of 16 is noted without a goal: sending a
// sample and taking it costs as much as its nine cosines.

namespace {

constexpr double kTwoPi = 6.283185307179586;

std::vector<double> input(int length) {
    std::vector<double> x(static_cast<std::size_t>(length));
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = 1.0 + 0.001 * static_cast<double>(i);
    return x;
}

template <class Coefficient>
void bare(benchmark::State& state, int length, Coefficient coefficient) {
    const std::vector<double> x = input(length);
    std::vector<double> y(x.size());
    for (auto _ : state) {
        const double step = kTwoPi / (length - 1);
        const double* const from = x.data();
        double* const to = y.data();
        for (int i = 0; i <= length / 2; ++i) {
            const double weight = coefficient(i, step);
            to[i] = from[i] * weight;
            to[length - 1 - i] = from[length - 1 - i] * weight;
        }
        benchmark::DoNotOptimize(to);
        benchmark::ClobberMemory();
    }
}

template <class Block>
void ours(benchmark::State& state, int length) {
    const std::vector<double> x = input(length);
    OutputPin<MatrixXd> sender("sender", nullptr);
    Block block("window");
    InputPin<MatrixXd> receiver("receiver", nullptr);
    sender.attach(block.getInputPin("input"), true);
    block.getOutputPin("output").attach(receiver, true);
    sender.data.value = Eigen::Map<const MatrixXd>(x.data(), length, 1);
    for (auto _ : state) {
        sender.send(0.0);
        block.process();
        if (!receiver.hasData()) return state.SkipWithError("nothing was sent");
        benchmark::DoNotOptimize(receiver.take().data());
        benchmark::ClobberMemory();
    }
}

template <class Block, class Coefficient>
void enterAll(const std::string& name, Coefficient coefficient) {
    for (const int length : {16, 64, 256, 1024})
        Bench::enter({.name = name + "/" + std::to_string(length),
                      .bare = [=](benchmark::State& state) { bare(state, length, coefficient); },
                      .ours = [=](benchmark::State& state) { ours<Block>(state, length); },
                      .goal = length < 64 ? 0.0 : 1.3});
}

const Bench::Suite suite([] {
    enterAll<FilterBlackmanWindow>("blackman", [](int i, double s) {
        return 0.42 - 0.5 * std::cos(i * s) + 0.08 * std::cos(2.0 * s * i);
    });
    enterAll<FilterHammingWindow>("hamming", [](int i, double s) { return 0.54 - 0.46 * std::cos(i * s); });
    enterAll<FilterHanningWindow>("hanning", [](int i, double s) { return 0.5 - 0.5 * std::cos(i * s); });
});

} // namespace
