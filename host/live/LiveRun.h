// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/live/ControlException.h"
#include "host/live/LiveSettings.h"
#include "host/live/LiveStatistics.h"
#include "host/live/LiveStructure.h"
#include "host/run/Job.h"

#include <chrono>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace Quillmere::Host {

struct LiveOptions {
    /// Stream time by real time: above 0, and infinite for as fast as it can. Pipes are never waited for
    /// longer than they take.
    double speed = 1.0;
    bool countsSteps = true; ///< Whether the statistics have steps and times; samples are counted always.
    std::optional<Overflow> overflow{}; ///< Of links between layouts that say nothing; see docs/live.md.
};

/// Runs a graph live: a thread for each of its layouts, recordings paced by their time stamps, pipes read as
/// they come, and everything that a graph has of settings, links and layouts open to change while it runs.
///
/// Every operation may be called by any thread, but not from a step, a handler or an observer; those that
/// change links or layouts wait for steps that are under way. What is refused is a `ControlException`.
class QUILLMERE_API LiveRun {
public:
    enum class State { Ready, Running, Ending, Ended, Failed };

    /// Without a limit the run of a graph without sources lasts until it is told to stop. Raises
    /// `GraphException` for a job that can't be run live.
    explicit LiveRun(Job job, const LiveOptions& options = {});
    /// Cuts a run that has not ended.
    ~LiveRun();
    LiveRun(const LiveRun&) = delete;
    LiveRun& operator=(const LiveRun&) = delete;

    /// Begins the results and then the run. When a stop is requested, it is interrupted. Where a result can't
    /// be begun the run has failed at once, and its outcome says that it hasn't begun. Requires: not called
    /// before.
    void start(const std::stop_token& stop = {});
    const Job& getJob() const;
    Job& getJob();
    /// Ends the run: sources give no more, what is in the links comes out, and the results are whole.
    void stop();
    /// Ends it at once, as a failure with this reason: the results stay under their partial names.
    void interrupt(const std::string& reason);
    State getState() const;
    RunProgress getProgress() const;

    /// Waits until the run has ended, all threads and results with it. Raises `RunException` when it failed.
    void wait();
    /// Waits so long at most; true when the run has ended.
    bool waitFor(std::chrono::milliseconds time);
    /// What the run has done, also when it failed. Requires: it has ended.
    const RunOutcome& getOutcome() const;

    LiveStatistics getStatistics();
    /// What may be read and turned while it runs, and what of its links, layouts and blocks may be changed.
    LiveSettings& getSettings();
    const LiveSettings& getSettings() const;
    LiveStructure& getStructure();

private:
    class Implementation;
    const std::unique_ptr<Implementation> implementation;
};

/// `ready`, `running` and so on, as users have it. [any]
QUILLMERE_API std::string nameOf(LiveRun::State state);

} // namespace Quillmere::Host
