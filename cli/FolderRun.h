// SPDX-License-Identifier: MIT
#pragma once

#include "cli/Commands.h"
#include "host/batch/ResultFolder.h"
#include "host/batch/RunStatus.h"
#include "host/description/GraphChanges.h"
#include "host/plugins/BlockCatalogue.h"
#include "host/run/Job.h"
#include "host/run/RunOutcome.h"

#include <chrono>
#include <exception>
#include <string>
#include <vector>

namespace Cli {

/// A run whose results go into a folder of their own, with a status: one recording of many.
class FolderRun {
public:
    /// `options` change what comes out, besides those of the graph; `catalogue` gets the plug-ins that the
    /// graph names. Raises `RecordingException` and `UsageError`.
    FolderRun(const FolderArguments& folder, const GraphArguments& graph,
              const std::vector<std::string>& options, Quillmere::Host::BlockCatalogue& catalogue);

    /// Why it has to run, as far as an earlier one is asked for; empty when that has done it.
    std::string findReason() const;
    /// Where the results go.
    const std::vector<Quillmere::Host::GraphChanges::File>& getOutputs() const { return outputs; }

    /// What is said of the recording may be another than it was; its results are the same. Requires: there
    /// was no reason to run.
    void keep();

    /// From now on the folder is that of a run which hasn't ended.
    void begin();
    /// What is to be known before the run. Raises `RecordingException` where somebody has changed the graph
    /// meanwhile. Requires: the recordings are open.
    void look(const Quillmere::Host::Job& job);
    /// What has come of it: the end of the run, or what it was refused for.
    void take(const Quillmere::Host::RunOutcome& outcome);
    void take(const std::exception& refusal);
    /// Writes the status; `files` are what the run has made beside the sinks' results. Gives back `code`, or
    /// that of a failure, with a message, where it can't be written.
    ExitCode end(ExitCode code, const std::vector<std::string>& files);
    bool getIsInterrupted() const { return isInterrupted; }

private:
    void takeNotes();
    void checkGraph(const std::string& hash) const;

    const FolderArguments& arguments;
    Quillmere::Host::ResultFolder folder;
    Quillmere::Host::RunStatus status;
    std::vector<Quillmere::Host::GraphChanges::File> outputs;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    bool isInterrupted = false;
};

} // namespace Cli
