// SPDX-License-Identifier: MIT
#include "benchmarks/support/Pair.h"
#include "blocks/FilterFFT.h"
#include "spectral/FFTPack.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

// A spectrum block, from one sample sent to one sample received, against a copy of the sample and its
// transform. What the block adds is amplitudes, a root and a division each, and the road of a sample.

namespace {

std::vector<double> input(int n) {
    std::vector<double> x(static_cast<std::size_t>(n));
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = std::sin(1.3 * static_cast<double>(i)) + 0.1;
    return x;
}

void bare(benchmark::State& state, int n) {
    const std::vector<double> x = input(n);
    std::vector<double> data(x.size());
    FFTPack pack;
    pack.setSize(n);
    for (auto _ : state) {
        std::copy(x.begin(), x.end(), data.begin());
        pack.forwardTransform(data.data());
        benchmark::ClobberMemory();
    }
}

void ours(benchmark::State& state, int n) {
    const std::vector<double> x = input(n);
    OutputPin<MatrixXd> sender("sender", nullptr);
    FilterFFT block("spectrum");
    InputPin<MatrixXd> receiver("receiver", nullptr);
    // Plain links, as within a layout.
    sender.attach(block.getInputPin("in"), false);
    block.getOutputPin("out").attach(receiver, false);
    dynamic_cast<ValueProperty<bool>&>(block.getProperty("Pause")).setValue(false);
    sender.data.value = Eigen::Map<const MatrixXd>(x.data(), n, 1);
    for (auto _ : state) {
        sender.send(0.0);
        block.process();
        if (!receiver.hasData()) return state.SkipWithError("nothing was sent");
        benchmark::DoNotOptimize(receiver.take().data());
        benchmark::ClobberMemory();
    }
}

const Bench::Suite suite([] {
    for (const int n : {64, 100, 256, 1000, 1024, 4096})
        Bench::enter({.name = "spectrum block/" + std::to_string(n),
                      .bare = [=](benchmark::State& state) { bare(state, n); },
                      .ours = [=](benchmark::State& state) { ours(state, n); },
                      .goal = 1.4});
});

} // namespace
