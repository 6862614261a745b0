// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/MemoryRecording.h"
#include "host/ends/MemoryResult.h"
#include "host/plugins/BlockCatalogue.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// Sources and sinks in the memory of the program that runs graphs:
///
///     MemoryEnds ends;
///     ends.addTo(catalogue); // the types MemorySource and MemorySink
///     ends.setRecording("wrist", {.pins = {{"accel", SampleSeries::ofRows(matrix)}}, .rate = 100.0});
///     // ... build and run a graph with {id: wrist, type: MemorySource} and {id: calm, type: MemorySink} ...
///     const TimedSamples result = ends.read("calm", "accel");
///
/// What it is given it keeps, and blocks keep what they use: it may be gone before the graphs are, or be
/// given other samples while one runs, which the next graph sends. [any, guarded]
class QUILLMERE_API MemoryEnds {
public:
    MemoryEnds();
    ~MemoryEnds();
    MemoryEnds(const MemoryEnds&) = delete;
    MemoryEnds& operator=(const MemoryEnds&) = delete;

    /// Registers the types `MemorySource` and `MemorySink`. Raises `PluginException` where they are there
    /// already.
    void addTo(BlockCatalogue& catalogue) const;

    /// What a `MemorySource` of that name sends, in every graph that is built from now on. What is wrong with
    /// it is complained of when a graph is built.
    void setRecording(const std::string& source, MemoryRecording recording);

    /// What has come to a pin of the `MemorySink` of that name in the run that began last, from the sample
    /// with the number `first` on, 0 being the pin's first; also while the run goes on. Raises
    /// `HostException` for a sink that hasn't begun and for a pin that it doesn't have.
    TimedSamples read(const std::string& sink, const std::string& pin, std::size_t first = 0) const;
    /// The pins of a sink, as its graph's connections have named them, and whether its run has ended well.
    /// Raise as `read`.
    std::vector<std::string> getPins(const std::string& sink) const;
    bool getIsComplete(const std::string& sink) const;

private:
    struct State;
    std::shared_ptr<MemoryResult> find(const std::string& sink) const;

    const std::shared_ptr<State> state; ///< The catalogue's makers and the sinks have it too.
};

} // namespace Quillmere::Host
