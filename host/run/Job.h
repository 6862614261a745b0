// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/description/GraphDescription.h"
#include "host/graph/Graph.h"
#include "host/plugins/BlockCatalogue.h"
#include "host/run/RunLimit.h"
#include "host/run/RunObserver.h"
#include "host/run/RunOutcome.h"
#include "host/text/Complaint.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// How a graph is to be run, which some of what is wrong or doubtful depends on: offline by `Job::run`, live
/// by `LiveRun`, or nobody has said so yet, and what comes through pipes, once, is left to the run.
enum class RunMode { Offline, Live, Unsaid };

struct JobOptions {
    /// What the caller calls a limit, for messages that name it.
    struct LimitName {
        std::string name;
        std::string value = {}; ///< How a value is put behind it.
    };

    GraphChanges changes{};
    RunLimit limit{};        ///< For a graph without sources, which offline doesn't end without one.
    bool isStrict = false;   ///< Whether warnings count as complaints, also those that a run ends with.
    bool overwrites = false; ///< Whether results may replace files that no run has made.
    /// How many threads share the work of a run offline, above 0: one that runs the blocks, and others that
    /// write results and read recordings. What comes of it is the same.
    std::size_t threads = 1;
    bool isControlled = false; ///< Whether somebody can fire commands while it runs, as through a console.
    LimitName roundsName{.name = "limit.rounds"};
    LimitName secondsName{.name = "limit.seconds"};
    /// Ends a wait for whoever writes the begin of a recording through a pipe, before the run.
    std::stop_token stop{};
    /// Where the outcome is written as JSON when it is known, of a refused run too; `-` is standard output.
    /// It is a result file like every other. Empty: nowhere.
    std::string summary{};
    std::string summaryName = "summary"; ///< What the caller calls it, for messages.
    /// Looks on and makes something of it, as a `Report` does; null for nobody.
    std::shared_ptr<RunObserver> observer{};
    std::string observerName = "report"; ///< What the caller calls it, for messages.
};

/// One run of a graph, from its description to what came of it. A job owns all that the run needs, so it can
/// be moved, and nothing has to outlive it; it runs once.
///
///     Job job = Job::fromFile("calm.yaml", catalogue, {.changes = {.inputs = {{"wrist", "mine.csv"}}}});
///     const RunOutcome outcome = job.run();
class QUILLMERE_API Job {
public:
    /// Called now and then with how far a run has come. [run]
    using ProgressHandler = std::function<void(const RunProgress&)>;

    /// Builds the graph, with the changes, of blocks from `catalogue`, to which the plug-ins that the graph
    /// names are added for this job alone. What is wrong is kept for `check`; `reading` is what was
    /// complained of already. [setup]
    Job(const GraphDescription& description, BlockCatalogue catalogue, JobOptions options = {},
        Complaints reading = {});
    /// The same for a graph file. [setup]
    static Job fromFile(const std::string& path, BlockCatalogue catalogue, JobOptions options = {});

    Job(Job&& other) noexcept;
    Job& operator=(Job&& other) noexcept;
    ~Job();

    /// Everything that is wrong, limits included, and everything that is doubtful, all at once. Recordings
    /// are opened; nothing is touched that is written. The reference is good until the next call, and so is
    /// the graph. Raises `InterruptedException` when the options' stop is requested while it waits for who
    /// writes a pipe; then nothing more can be done with the job. [setup]
    const Complaints& check(RunMode mode = RunMode::Offline);

    /// Raises `GraphException` if there is anything that `check` complains of, and what `check` raises; the
    /// summary tells it, too. [setup]
    void require(RunMode mode);

    /// Runs the graph offline to its end, and gives back what it did, also when it failed midway or when a
    /// result couldn't be begun: nothing has run then. Raises `GraphException` if there is anything that
    /// `check` complains of. So nobody has to `check` first, but who wants to tell of warnings before the
    /// run. Ends midway when a stop is requested. Requires: not called before. [run]
    RunOutcome run(const std::stop_token& stop = {}, const ProgressHandler& onProgress = {});

    const GraphDescription& getDescription() const;
    const BlockCatalogue& getCatalogue() const;
    const JobOptions& getOptions() const;
    Graph& getGraph();
    const Graph& getGraph() const;

    /// The sources whose samples come through pipes, which a check for no mode leaves to the run. [setup]
    std::vector<std::string> getPipedSources() const;

    /// What `run` does before its first round, for who runs the graph otherwise: raises what it would, and
    /// begins the results. Gives back the outcome when one of them can't be begun. [setup]
    std::optional<RunOutcome> begin(RunMode mode, const std::stop_token& stop);
    /// An outcome of the run, completed by what the job knows of it, and written as its summary. Requires: it
    /// has begun, and this is its end. [any]
    RunOutcome completed(RunOutcome outcome);

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

} // namespace Quillmere::Host
