// SPDX-License-Identifier: MIT
// The filter whose cut-off may move: its step beside the same recursion over packed states, and its step with
// a cut-off that moves at every sample, all of them met before, beside its own steady step.
#include "benchmarks/support/Pair.h"
#include "design/ButterworthComputer_v2.h"
#include "design/ButterworthSections.h"

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

using Quillmere::Core::MatrixXd;

using namespace Design;

namespace {

constexpr double kCutOff = 0.1;
constexpr std::size_t kMoves = 4096; // a power of two, so that coming round again costs nothing

MatrixXd wave(Eigen::Index elements) {
    MatrixXd values(1, elements);
    for (Eigen::Index i = 0; i < elements; ++i)
        values(0, i) = static_cast<double>(i % 7) - 3.0;
    return values;
}

/// The recursion over arrays: the best that the machine can do with these sums.
class PackedRecursion {
public:
    explicit PackedRecursion(const MatrixXd& start)
        : before(start.data(), start.data() + start.size()), result(before) {
        MatrixXd c;
        designButterworthSections(c, kCutOff, 1);
        a1 = c(kA1, 0);
        gain = c(kGain, 0);
    }

    void step(const double* in, double* out) {
        double* const x = before.data();
        double* const y = result.data();
        const std::size_t count = before.size();
        for (std::size_t i = 0; i < count; ++i) {
            const double u = in[i];
            const double r = a1 * y[i] + gain * (x[i] + u);
            y[i] = r;
            x[i] = u;
            out[i] = r;
        }
    }

private:
    std::vector<double> before;
    std::vector<double> result;
    double a1 = 0.0;
    double gain = 0.0;
};

void bareStep(benchmark::State& run, Eigen::Index elements) {
    const MatrixXd input = wave(elements);
    MatrixXd output = input;
    PackedRecursion recursion(MatrixXd::Zero(1, elements));
    for (auto _ : run) {
        recursion.step(input.data(), output.data());
        benchmark::ClobberMemory();
    }
}

/// Whether the two do the same to the bit, from rest.
bool agree(ButterworthComputer_v2& computer, const MatrixXd& input) {
    const MatrixXd rest = MatrixXd::Zero(input.rows(), input.cols());
    PackedRecursion recursion(rest);
    MatrixXd output = rest;
    computer.step(rest);
    recursion.step(rest.data(), output.data());
    for (int i = 0; i < 20; ++i) {
        computer.step(input);
        recursion.step(input.data(), output.data());
    }
    return output == computer.output();
}

void step(benchmark::State& run, Eigen::Index elements) {
    const MatrixXd input = wave(elements);
    ButterworthComputer_v2 computer;
    computer.setParameters(kCutOff, 1);
    if (!agree(computer, input)) run.SkipWithError("the two loops differ");
    for (auto _ : run) {
        computer.step(input);
        benchmark::ClobberMemory();
    }
}

/// As many cut-offs as a slowly turning quantity may visit, in no order that a processor could learn soon.
std::vector<double> visitedCutOffs() {
    std::vector<double> cutOffs;
    std::mt19937 random(1);
    for (std::size_t i = 0; i < kMoves; ++i)
        cutOffs.push_back(0.01 * (1 + static_cast<double>(random() % 32)));
    return cutOffs;
}

void movingStep(benchmark::State& run, Eigen::Index elements) {
    const MatrixXd input = wave(elements);
    const std::vector<double> cutOffs = visitedCutOffs();
    ButterworthComputer_v2 computer;
    computer.setParameters(kCutOff, 1, true, true);
    computer.step(input);
    for (const double cutOff : cutOffs)
        computer.setCutOff(cutOff, false, true);
    std::size_t next = 0;
    for (auto _ : run) {
        computer.setCutOff(cutOffs[next++ % kMoves], false, true);
        computer.step(input);
        benchmark::ClobberMemory();
    }
}

const Bench::Suite suite([] {
    for (const int elements : {1, 3, 64, 1024})
        Bench::enter({.name = "first order, " + std::to_string(elements) + " elements",
                      .bare = [=](benchmark::State& run) { bareStep(run, elements); },
                      .ours = [=](benchmark::State& run) { step(run, elements); },
                      .goal = elements < 64 ? 0.0 : 1.0});
    Bench::enter({.name = "cached moving cut-off over steady, 64 elements",
                  .bare = [](benchmark::State& run) { step(run, 64); },
                  .ours = [](benchmark::State& run) { movingStep(run, 64); },
                  .goal = 1.5}); // a steady step that is faster leaves the move a larger share
});

} // namespace
