// SPDX-License-Identifier: MIT
// What it costs to count: the same rows of blocks, stepped by the same loop, over the framework as it is and
// over one that is built from the same sources with tallies that do nothing (benchmarks/framework/uncounted).
// A step is counted by its loop, and a sample where it is sent and where it is taken: three additions, which
// even in a row of gains, whose steps are sixty instructions each, are all that is left to save; so that row
// is told without a goal.
#include "benchmarks/framework/CountedRow.h"
#include "benchmarks/support/Pair.h"

namespace QuillmereUncounted::Bench {
void gainRow(benchmark::State& run);
void filterRow(benchmark::State& run);
void lockedLink(benchmark::State& run);
std::uint64_t countOfOneSample();
} // namespace QuillmereUncounted::Bench

namespace {

namespace Counted = Quillmere::Bench;
namespace Uncounted = QuillmereUncounted::Bench;

/// That the two sides are what they are called.
void checked(benchmark::State& run, const Bench::Body& body) {
    if (Counted::countOfOneSample() != 1 || Uncounted::countOfOneSample() != 0)
        run.SkipWithError("the wrong side counts");
    body(run);
}

const Bench::Suite suite([] {
    const auto enter = [](const char* name, Bench::Body uncounted, Bench::Body counted, double goal) {
        Bench::enter({.name = name,
                      .bare = [=](benchmark::State& run) { checked(run, uncounted); },
                      .ours = [=](benchmark::State& run) { checked(run, counted); },
                      .goal = goal});
    };
    enter("10 filters of order 2", Uncounted::filterRow, Counted::filterRow, 1.02);
    enter("locked link", Uncounted::lockedLink, Counted::lockedLink, 1.02);
    enter("10 gains", Uncounted::gainRow, Counted::gainRow, 0.0);
});

} // namespace
