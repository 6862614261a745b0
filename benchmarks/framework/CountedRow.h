// SPDX-License-Identifier: MIT
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>

/// Everything here is built twice: as it is, and as `QuillmereUncounted`, over a framework that counts
/// nothing.
namespace Quillmere::Bench {

/// Ten blocks of a kind in a row in one layout, fed with a 1-by-3 sample a pass.
void gainRow(benchmark::State& run);
void filterRow(benchmark::State& run);

/// One sample from layout to layout over a locked link, by one thread.
void lockedLink(benchmark::State& run);

/// What a pin counts of one sample: 1, or 0 where nothing is counted.
std::uint64_t countOfOneSample();

} // namespace Quillmere::Bench
