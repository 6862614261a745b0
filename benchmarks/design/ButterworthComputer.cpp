// SPDX-License-Identifier: MIT
// A step of the computer beside the best loop we know over the same sections in plain code, its state packed
// as the machine likes it. The goals are those of a processor with AVX2; VELMARIND_KERNELS=plain shows the
// plain kernels.
#include "benchmarks/design/PackedCascade.h"
#include "benchmarks/support/Pair.h"
#include "design/ButterworthComputer.h"

#include <algorithm>
#include <string>

using Bench::PackedCascade;
using Quillmere::Core::MatrixXd;

namespace {

constexpr double kCutOff = 0.1;
/// Small samples don't fill a register, and a call costs as much as a section there.
constexpr double kGoalOfSmall = 1.15;
constexpr double kGoalOfNine = 0.95;
constexpr double kGoalOfLarge = 0.55;

/// A sample that changes from element to element, with room behind for lanes that overhang.
MatrixXd wave(Eigen::Index elements) {
    MatrixXd values(1, elements);
    for (Eigen::Index i = 0; i < elements; ++i)
        values(0, i) = static_cast<double>(i % 7) - 3.0;
    return values;
}

template <int lanes, int order>
void bare(benchmark::State& run, Eigen::Index elements) {
    const MatrixXd input = wave(elements + lanes);
    MatrixXd output = input;
    PackedCascade<lanes, order> cascade(kCutOff, elements);
    for (auto _ : run) {
        cascade.step(input.data(), output.data());
        benchmark::ClobberMemory();
    }
}

/// Whether the two do the same to the bit, from rest.
template <int lanes, int order>
bool agree(ButterworthComputer& computer, const MatrixXd& input) {
    computer.step(MatrixXd::Zero(input.rows(), input.cols()));
    PackedCascade<lanes, order> cascade(kCutOff, input.size());
    const MatrixXd padded = wave(input.size() + lanes);
    MatrixXd output = padded;
    for (int i = 0; i < 20; ++i) {
        computer.step(input);
        cascade.step(padded.data(), output.data());
    }
    return std::equal(input.data(), input.data() + input.size(), padded.data()) &&
           std::equal(output.data(), output.data() + input.size(), computer.output().data());
}

template <int lanes, int order>
void ours(benchmark::State& run, Eigen::Index elements) {
    const MatrixXd input = wave(elements);
    ButterworthComputer computer;
    computer.setParameters(kCutOff, order);
    if (!agree<lanes, order>(computer, input)) run.SkipWithError("the two loops differ");
    for (auto _ : run) {
        computer.step(input);
        benchmark::ClobberMemory();
    }
}

/// `lanes` is what served the bare loop best at this size.
template <int lanes, int order>
void enter(Eigen::Index elements, double goal) {
    Bench::enter({.name = "order " + std::to_string(order) + ", " + std::to_string(elements) + " elements",
                  .bare = [=](benchmark::State& run) { bare<lanes, order>(run, elements); },
                  .ours = [=](benchmark::State& run) { ours<lanes, order>(run, elements); },
                  .goal = goal});
}

template <int order>
void enterOrder() {
    enter<1, order>(1, kGoalOfSmall);
    enter<4, order>(3, kGoalOfSmall);
    enter<10, order>(9, kGoalOfNine);
    enter<8, order>(64, kGoalOfLarge);
    enter<8, order>(1024, kGoalOfLarge);
}

const Bench::Suite suite([] {
    enterOrder<2>();
    enterOrder<4>();
    enterOrder<10>();
});

} // namespace
