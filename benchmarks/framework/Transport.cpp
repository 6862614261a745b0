// SPDX-License-Identifier: MIT
// What a block's step costs beside its arithmetic: ten gain blocks in one layout, linked in a row by plain
// links, each polling, passing the gate for one setting, taking, multiplying and sending; beside ten virtual
// calls that multiply the same doubles. A block's share in instructions:
// benchmarks/framework/count_instructions.
#include "benchmarks/support/Pair.h"
#include "blocks/FilterGain.h"

#include <memory>
#include <string>
#include <vector>

using Quillmere::Core::LayoutManager;

namespace {

constexpr int kBlocks = 10;
constexpr double kGain = 1.0;

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

void ours(benchmark::State& run, Eigen::Index rows, Eigen::Index cols) {
    LayoutManager layout("layout");
    std::vector<std::unique_ptr<FilterGain>> blocks;
    for (int i = 0; i < kBlocks; ++i) {
        blocks.push_back(std::make_unique<FilterGain>("gain " + std::to_string(i)));
        layout.add(*blocks.back());
        if (i > 0)
            blocks[static_cast<std::size_t>(i - 1)]->getOutputPin("output").attach(
                blocks.back()->getInputPin("input"), false);
    }
    // A pin of the layout's own, so that the link into the row is a plain one, too.
    OutputPin<MatrixXd> source("source", blocks.front().get());
    source.attach(blocks.front()->getInputPin("input"), false);
    source.data.value = MatrixXd::Constant(rows, cols, 0.5);
    InputPin<MatrixXd> sink("sink", blocks.back().get());
    blocks.back()->getOutputPin("output").attach(sink, false);
    for (auto _ : run) {
        source.send(1.0);
        layout.runStep();
        benchmark::ClobberMemory();
    }
    if (!sink.hasData() || sink.take() != source.data.value)
        run.SkipWithError("the last block sent something else");
    sink.detachAll();
    source.detachAll();
}

void enter(Eigen::Index rows, Eigen::Index cols, double goal) {
    Bench::enter(
        {.name = std::to_string(kBlocks) + " gains, " + std::to_string(rows) + " by " + std::to_string(cols),
         .bare = [=](benchmark::State& run) { bare(run, rows * cols); },
         .ours = [=](benchmark::State& run) { ours(run, rows, cols); },
         .goal = goal});
}

const Bench::Suite suite([] {
    enter(1, 3, 3.5);
    enter(256, 1, 1.3);
});

} // namespace
