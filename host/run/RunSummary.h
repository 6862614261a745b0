// SPDX-License-Identifier: MIT
#pragma once

#include "host/graph/Graph.h"
#include "host/plugins/BlockCatalogue.h"
#include "host/recording/ResultFile.h"
#include "host/run/RunOutcome.h"
#include "host/text/Complaint.h"

#include <memory>
#include <stop_token>
#include <string>

namespace Quillmere::Host {

/// The outcome of a run as a file for programs, in JSON: a result like every other. It replaces what a run of
/// ours has written, and nothing that the run reads or writes besides; it gets its name when it is whole.
class RunSummary {
public:
    /// `callersName` is what messages call the path that is wrong.
    RunSummary(std::string path, const std::string& callersName, bool overwrites);

    /// Complains of a path that can't be written, or that the run of `graph` has for something else; false
    /// if so. Touches nothing. [setup]
    bool check(const Graph& graph, const BlockCatalogue& catalogue, Complaints& complaints) const;

    /// Begins the file, so that what is wrong with it shows before the run. Raises `RecordingException`; of a
    /// pipe it waits for the reader, as long as no stop is requested. [setup]
    void open(const std::stop_token& stop);
    /// Writes the outcome, of a run that wasn't begun too, and completes the file. Raises
    /// `RecordingException`. Requires: not called before. [any]
    void write(const RunOutcome& outcome);
    /// Takes back what `open` did. [any]
    void discard();

private:
    ResultOptions options() const;

    const std::string path;
    const Place place;
    const bool overwrites;
    std::unique_ptr<ResultFile> file;
};

} // namespace Quillmere::Host
