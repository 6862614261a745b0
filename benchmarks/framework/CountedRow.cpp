// SPDX-License-Identifier: MIT
#include "benchmarks/framework/CountedRow.h"

#include "blocks/FilterButterworth.h"
#include "blocks/FilterGain.h"

#include <memory>
#include <string>
#include <vector>

using Quillmere::Core::LayoutManager;

namespace Quillmere::Bench {

namespace {
constexpr int kBlocks = 10;

/// What a loop that counts does beside stepping.
struct CountingPass {
    bool begin() const { return true; }
    void step(Filter& filter) const {
        filter.process();
        filter.stepTally.steps.add(1);
    }
    void end() const {}
};

template <class Block>
void row(benchmark::State& run, const char* inputName, const char* outputName) {
    LayoutManager layout("layout");
    std::vector<std::unique_ptr<Block>> blocks;
    for (int i = 0; i < kBlocks; ++i) {
        blocks.push_back(std::make_unique<Block>("block " + std::to_string(i)));
        layout.add(*blocks.back());
        if (i > 0)
            blocks[static_cast<std::size_t>(i - 1)]
                ->getOutputPin(outputName)
                .attach(blocks.back()->getInputPin(inputName), false);
    }
    // Pins of the layout's own, so that the links at both ends are plain ones, too.
    OutputPin<MatrixXd> source("source", blocks.front().get());
    source.attach(blocks.front()->getInputPin(inputName), false);
    source.data.value = MatrixXd::Constant(1, 3, 0.5);
    InputPin<MatrixXd> sink("sink", blocks.back().get());
    blocks.back()->getOutputPin(outputName).attach(sink, false);
    CountingPass pass;
    double sent = 0.0;
    for (auto _ : run) {
        source.send(++sent);
        layout.runPass(pass);
        if (!sink.hasData()) run.SkipWithError("nothing came out");
        benchmark::DoNotOptimize(sink.take().data());
    }
    if (sink.getTimeStamp() != sent) run.SkipWithError("another sample came out than was sent");
    sink.detachAll();
    source.detachAll();
}
} // namespace

void gainRow(benchmark::State& run) {
    row<FilterGain>(run, "input", "output");
}

void filterRow(benchmark::State& run) {
    row<FilterButterworth>(run, "in", "out");
}

void lockedLink(benchmark::State& run) {
    LayoutManager left("left");
    LayoutManager right("right");
    FilterGain sender("sender");
    FilterGain reader("reader");
    left.add(sender);
    right.add(reader);
    OutputPin<MatrixXd> out("out", &sender);
    InputPin<MatrixXd> in("in", &reader);
    out.attach(in, false);
    out.data.value = MatrixXd::Constant(1, 3, 0.5);
    double sent = 0.0;
    for (auto _ : run) {
        out.send(++sent);
        if (!in.hasData()) run.SkipWithError("nothing came out");
        benchmark::DoNotOptimize(in.take().data());
    }
    if (in.getTimeStamp() != sent) run.SkipWithError("another sample came out than was sent");
}

std::uint64_t countOfOneSample() {
    OutputPin<MatrixXd> out("out", nullptr);
    out.send(1.0);
    return out.getSentCount();
}

} // namespace Quillmere::Bench
