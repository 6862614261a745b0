// SPDX-License-Identifier: MIT
// A filter over a whole recording in memory: the block that takes many rows at once beside a bare loop over
// the same array, and its engine stepped row by row.
#include "benchmarks/design/PackedCascade.h"
#include "benchmarks/support/Pair.h"
#include "blocks/FilterButterworth.h"

#include <algorithm>
#include <string>

namespace {

constexpr double kGoal = 1.3;
constexpr double kCutOff = 0.1;
constexpr int kOrder = 4;
constexpr Eigen::Index kRows = 1000000;
constexpr int kLanes = 4;

/// Noise, with room behind for lanes that overhang.
const MatrixXd& table(Eigen::Index columns) {
    static const MatrixXd one = MatrixXd::Random(kRows + kLanes, 1);
    static const MatrixXd three = MatrixXd::Random(kRows + kLanes, 3);
    return columns == 1 ? one : three;
}

void bare(benchmark::State& run, Eigen::Index columns) {
    const MatrixXd& rows = table(columns);
    MatrixXd results = rows;
    const auto filter = [&](auto cascade) {
        for (auto _ : run) {
            cascade.run(rows.data(), results.data(), kRows, columns);
            benchmark::ClobberMemory();
        }
    };
    if (columns == 1)
        filter(Bench::PackedCascade<1, kOrder>(kCutOff, columns));
    else
        filter(Bench::PackedCascade<kLanes, kOrder>(kCutOff, columns));
}

/// As a caller does who has a recording as an array.
void ours(benchmark::State& run, Eigen::Index columns) {
    const MatrixXd& rows = table(columns);
    MatrixXd results = rows;
    FilterButterworth block("smooth");
    dynamic_cast<ValueProperty<int>&>(block.getProperty("Order")).setValue(kOrder);
    dynamic_cast<ValueProperty<double>&>(block.getProperty("RelativeCutOffFreq")).setValue(kCutOff);
    OutputPin<MatrixXd> sender("sender", nullptr);
    sender.attach(block.getInputPin("in"), false);
    sender.data.value = MatrixXd::Zero(1, columns);
    sender.send(0.0);
    block.process();
    RowStepper& stepper = block;
    for (auto _ : run) {
        for (Eigen::Index row = 0; row < kRows;) {
            const auto most = static_cast<Eigen::Index>(RowStepper::kMostRows);
            const Eigen::Index count = std::min(kRows - row, most);
            if (stepper.getRowWidth(columns) != columns) return run.SkipWithError("the block takes no rows");
            stepper.stepRows(rows.data() + row * columns, results.data() + row * columns,
                             static_cast<std::size_t>(count), columns);
            row += count;
        }
        benchmark::ClobberMemory();
    }
}

/// The engine alone, a sample a row.
void engine(benchmark::State& run, Eigen::Index columns) {
    const MatrixXd& rows = table(columns);
    MatrixXd results = rows;
    MatrixXd sample(1, columns);
    ButterworthComputer computer;
    computer.setParameters(kCutOff, kOrder);
    for (auto _ : run) {
        for (Eigen::Index row = 0; row < kRows; ++row) {
            Quillmere::Core::Private::copyElements(sample.data(), rows.data() + row * columns, columns);
            computer.step(sample);
            Quillmere::Core::Private::copyElements(results.data() + row * columns, computer.output().data(),
                                                   columns);
        }
        benchmark::ClobberMemory();
    }
}

void enter(Eigen::Index columns) {
    const std::string by = "order 4 over 1000000 rows of " + std::to_string(columns);
    Bench::enter({.name = by + ", many at once",
                  .bare = [=](benchmark::State& run) { bare(run, columns); },
                  .ours = [=](benchmark::State& run) { ours(run, columns); },
                  .goal = kGoal});
    Bench::enter({.name = by + ", to the engine row by row",
                  .bare = [=](benchmark::State& run) { engine(run, columns); },
                  .ours = [=](benchmark::State& run) { ours(run, columns); },
                  .goal = 1.0});
}

const Bench::Suite suite([] {
    enter(1);
    enter(3);
});

} // namespace
