// SPDX-License-Identifier: MIT
// What a block's step costs beside its arithmetic: ten blocks in one layout, linked in a row by plain links.
// Gains, each polling, passing the gate for one setting, taking, multiplying and sending, beside ten virtual
// calls that multiply the same doubles; and filters beside ten steps of their engine. A block's share in
// instructions: benchmarks/framework/count_instructions.
#include "benchmarks/support/Pair.h"
#include "blocks/FilterButterworth.h"
#include "blocks/FilterGain.h"
#include "design/ButterworthComputer.h"

#include <memory>
#include <string>
#include <vector>

using Quillmere::Core::AbstractInputPin;
using Quillmere::Core::AbstractOutputPin;
using Quillmere::Core::LayoutManager;

namespace {

constexpr int kBlocks = 10;
constexpr double kGain = 1.0;
constexpr double kCutOff = 0.1;
constexpr int kOrder = 2;

class Stage {
public:
    virtual ~Stage() = default;
    virtual void step() = 0;
};

/// The arithmetic behind one virtual call.
class BareGain final : public Stage {
public:
    explicit BareGain(const std::vector<double>& source) : input(source), output(source.size()) {}

    void step() override {
        const double* const from = input.data();
        double* const to = output.data();
        const std::size_t size = output.size();
        for (std::size_t i = 0; i < size; ++i)
            to[i] = from[i] * gain;
    }

    const std::vector<double>& input;
    std::vector<double> output;
    double gain = kGain;
};

void bare(benchmark::State& run, Eigen::Index elements) {
    const std::vector<double> source(static_cast<std::size_t>(elements), 0.5);
    std::vector<std::unique_ptr<Stage>> stages;
    const std::vector<double>* last = &source;
    for (int i = 0; i < kBlocks; ++i) {
        auto stage = std::make_unique<BareGain>(*last);
        last = &stage->output;
        stages.push_back(std::move(stage));
    }
    for (auto _ : run) {
        for (const auto& stage : stages)
            stage->step();
        benchmark::ClobberMemory();
    }
}

void bareFilters(benchmark::State& run) {
    const MatrixXd source = MatrixXd::Constant(1, 3, 0.5);
    std::vector<std::unique_ptr<ButterworthComputer>> engines;
    for (int i = 0; i < kBlocks; ++i) {
        engines.push_back(std::make_unique<ButterworthComputer>());
        engines.back()->setParameters(kCutOff, kOrder);
    }
    for (auto _ : run) {
        const MatrixXd* sample = &source;
        for (const auto& engine : engines) {
            engine->step(*sample);
            sample = &engine->output();
        }
        benchmark::ClobberMemory();
    }
}

void setUp(FilterGain&) {}

void setUp(FilterButterworth& block) {
    dynamic_cast<RangeProperty<double>&>(block.getProperty("RelativeCutOffFreq")).setValue(kCutOff);
    dynamic_cast<RangeProperty<int>&>(block.getProperty("Order")).setValue(kOrder);
}

template <class Block>
void ours(benchmark::State& run, Eigen::Index rows, Eigen::Index cols) {
    LayoutManager layout("layout");
    std::vector<std::unique_ptr<Block>> blocks;
    // The main pins: a filter has another input behind its first.
    const auto in = [](Block& block) -> AbstractInputPin& { return *block.getInputPins().front(); };
    const auto out = [](Block& block) -> AbstractOutputPin& { return *block.getOutputPins().front(); };
    for (int i = 0; i < kBlocks; ++i) {
        blocks.push_back(std::make_unique<Block>("block " + std::to_string(i)));
        setUp(*blocks.back());
        layout.add(*blocks.back());
        if (i > 0) out(*blocks[static_cast<std::size_t>(i - 1)]).attach(in(*blocks.back()), false);
    }
    // A pin of the layout's own, so that the link into the row is a plain one, too.
    OutputPin<MatrixXd> source("source", blocks.front().get());
    source.attach(in(*blocks.front()), false);
    source.data.value = MatrixXd::Constant(rows, cols, 0.5);
    InputPin<MatrixXd> sink("sink", blocks.back().get());
    out(*blocks.back()).attach(sink, false);
    for (auto _ : run) {
        source.send(1.0);
        layout.runStep();
        benchmark::ClobberMemory();
    }
    // A gain of 1 and a filter at rest send what they get.
    if (!sink.hasData() || !sink.take().isApprox(source.data.value))
        run.SkipWithError("the last block sent something else");
    sink.detachAll();
    source.detachAll();
}

void enterGains(Eigen::Index rows, Eigen::Index cols, double goal) {
    Bench::enter(
        {.name = std::to_string(kBlocks) + " gains, " + std::to_string(rows) + " by " + std::to_string(cols),
         .bare = [=](benchmark::State& run) { bare(run, rows * cols); },
         .ours = [=](benchmark::State& run) { ours<FilterGain>(run, rows, cols); },
         .goal = goal});
}

const Bench::Suite suite([] {
    enterGains(1, 3, 3.5);
    enterGains(256, 1, 1.1);
    Bench::enter({.name = std::to_string(kBlocks) + " filters of order 2, 1 by 3, to their engine",
                  .bare = bareFilters,
                  .ours = [](benchmark::State& run) { ours<FilterButterworth>(run, 1, 3); },
                  .goal = 3.0});
});

} // namespace
