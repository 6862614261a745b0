// SPDX-License-Identifier: MIT
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

/// What a hot path costs, told as a ratio: each of ours is entered beside a bare loop that does the same
/// arithmetic and nothing else, and both run in one process. A program is one topic and looks like this:
///
///     const Bench::Suite suite([] {
///         Bench::enter({.name = "gain/1x3", .bare = bareGain, .ours = gain, .goal = 3.5});
///     });
///
/// with bodies as Google Benchmark writes them (`for (auto _ : state) ...`). Build it with
/// `velmarind_benchmark(NAME LIBRARIES libs... SOURCES files...)`; the preset `release` makes
/// `build/release/bin/bench_NAME` and registers its `--quick` run as a test.
///
/// The bodies run in repetitions, randomly interleaved, so that a busy neighbour or a cooling processor hits
/// both sides alike. The closing table holds the medians of the time of one iteration (see `Time`), their
/// ratio, the goal, and `ok` or `MISSED`. Track the ratio; the nanoseconds belong to one machine on one day.
///
/// Options, beside all of Google Benchmark's own (`--benchmark_filter`, `--benchmark_out`,
/// `--benchmark_format=json`, in which case the table goes to the standard error output):
///   --quick     one short repetition: proves that every body runs, measures nothing
///   --enforce   a missed goal makes the exit status 1; without it only a body that reports an error does,
///               since on a busy machine a ratio is a hint
namespace Bench {

using Body = std::function<void(benchmark::State&)>;

/// What is measured of an iteration: the processor time of the thread that runs the body, or, for what
/// several threads do together, the time that passes, or what the body itself measures and tells by
/// `state.SetIterationTime(seconds)`.
enum class Time { OfProcessor, OfWall, OfBody };

struct Pair {
    std::string name;
    Body bare;         ///< The arithmetic alone, written as well as we can.
    Body ours;         ///< The same work through our code, on the same input.
    double goal = 0.0; ///< Ours takes at most this many times the bare loop; 0 when nothing is promised.
    Time time = Time::OfProcessor;
};

/// Enters a pair. Names are unique within a program. Requires: called while a `Suite` is made. [setup]
void enter(Pair pair);

/// Enters something that has no bare counterpart; the table notes its time and no ratio. [setup]
void note(std::string name, Body ours);

/// Fills the program's list before `main` runs, which lives in this kit.
struct Suite {
    explicit Suite(void (*fill)()) { fill(); }
};

} // namespace Bench
