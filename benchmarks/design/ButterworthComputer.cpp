// SPDX-License-Identifier: MIT
// A step of the computer beside the best loop we know over the same sections in plain code, its state packed
// as the machine likes it. The goals are those of a processor with AVX2; VELMARIND_KERNELS=plain shows the
// plain kernels.
#include "benchmarks/support/Pair.h"
#include "design/ButterworthComputer.h"
#include "design/ButterworthSections.h"

#include <algorithm>
#include <string>
#include <vector>

using Quillmere::Core::MatrixXd;

using namespace Design;

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

/// The cascade at rest, packed: a block of neighbouring elements, then a section, then its two delayed
/// values, a register or more wide each. Everything that can be is known to the compiler.
template <int lanes, int order>
class PackedCascade {
public:
    explicit PackedCascade(Eigen::Index elements)
        : blocks((elements + lanes - 1) / lanes),
          states(static_cast<std::size_t>(2 * kSections * blocks), Lanes::Zero()) {
        designButterworthSections(coefficients, kCutOff, order);
    }

    void step(const double* in, double* out) {
        Lanes* s = states.data();
        for (Eigen::Index block = 0; block < blocks; ++block, in += lanes, out += lanes) {
            Lanes u = Eigen::Map<const Lanes>(in);
            const double* c = coefficients.data();
            for (int k = 0; k < kSections; ++k, s += 2, ++c) {
                const Lanes s1 = s[0];
                const Lanes s2 = s[1];
                const Lanes w = u + c[kA1 * kSections] * s1 + c[kA2 * kSections] * s2;
                u = (c[kB1 * kSections] * s1 + w + c[kB2 * kSections] * s2) * c[kGain * kSections];
                s[1] = s1;
                s[0] = w;
            }
            Eigen::Map<Lanes> result(out);
            result = u;
        }
    }

private:
    static constexpr int kSections = (order + 1) / 2;
    using Lanes = Eigen::Array<double, lanes, 1>;
    MatrixXd coefficients;
    Eigen::Index blocks;
    std::vector<Lanes> states;
};

template <int lanes, int order>
void bare(benchmark::State& run, Eigen::Index elements) {
    const MatrixXd input = wave(elements + lanes);
    MatrixXd output = input;
    PackedCascade<lanes, order> cascade(elements);
    for (auto _ : run) {
        cascade.step(input.data(), output.data());
        benchmark::ClobberMemory();
    }
}

/// Whether the two do the same to the bit, from rest.
template <int lanes, int order>
bool agree(ButterworthComputer& computer, const MatrixXd& input) {
    computer.step(MatrixXd::Zero(input.rows(), input.cols()));
    PackedCascade<lanes, order> cascade(input.size());
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
