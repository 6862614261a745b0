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

    /// Time and memory count from here.
    void begin();
    /// What is to be known before the run; then the folder is that of a run which hasn't ended. Raises
    /// `RecordingException` where somebody has changed the graph meanwhile. Requires: the recordings are
    /// open, and all that a run can be refused for has been looked at.
    void takeFolder(const Quillmere::Host::Job& job);
    /// What has come of it: the end of the run, or what it was refused for.
    void take(const Quillmere::Host::RunOutcome& outcome);
    void take(const std::exception& refusal);
    /// Writes the status; `files` are what the run has made beside the sinks' results. Gives back `code`, or
    /// that of a failure, with a message, where it can't be written. A refusal, as of a slip in an option,
    /// leaves what an earlier run has made as it is; not so in a batch, whose call is right, so that it is
    /// the recording which gives no result any more.
    ExitCode end(ExitCode code, const std::vector<std::string>& files);
    bool getIsInterrupted() const { return isInterrupted; }

private:
    void takeNotes();
    void look(const Quillmere::Host::Job& job);
    void clear();
    void checkGraph(const std::string& hash) const;

    const FolderArguments& arguments;
    Quillmere::Host::ResultFolder folder;
    Quillmere::Host::RunStatus status;
    std::vector<Quillmere::Host::GraphChanges::File> outputs;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    std::string pipe; ///< The source that reads one.
    bool isInterrupted = false;
    bool isTaken = false; ///< What an earlier run has made is gone.
};

} // namespace Cli
