// SPDX-License-Identifier: MIT
#pragma once

#include "host/live/LiveRun.h"
#include "python/extension/CallbackThread.h"
#include "python/extension/RunEnds.h"

#include <pybind11/pybind11.h>

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Python {

/// A live run with all that Python has of it. Requires of every operation: the interpreter's lock, which it
/// lets go wherever it may wait.
class LiveCore {
public:
    LiveCore(Quillmere::Host::Job job, const Quillmere::Host::LiveOptions& options,
             std::shared_ptr<RunEnds> runEnds);
    ~LiveCore();
    LiveCore(const LiveCore&) = delete;
    LiveCore& operator=(const LiveCore&) = delete;

    void start();
    Quillmere::Host::LiveRun& getRun() { return *run; }
    RunEnds& getEnds() { return *ends; }
    std::shared_ptr<Subscription> observe(const std::string& pattern, pybind11::object callback);
    void close(Subscription& subscription);
    /// Tells the run to end in order: no more is fed, and sources give no more when what was fed has gone its
    /// way, or when the time is over.
    void stop(std::optional<double> seconds);
    /// Waits in slices, between which who interrupts is heard; true when the run has ended.
    bool wait(std::optional<double> seconds);
    /// Ends it, in order if that is soon done, with all threads; nothing is told any more.
    void endForGood();

private:
    void closeAll();
    void endFeeds();
    bool waitForFeeds(std::chrono::milliseconds time);

    const std::shared_ptr<RunEnds> ends;
    std::unique_ptr<Quillmere::Host::LiveRun> run;
    std::vector<std::shared_ptr<Subscription>> subscriptions;
    std::shared_ptr<CallbackThread> callbacks; ///< Shared, since a callback may be what ends all else.
};

/// What Python has in hand: the run, which is this process's alone. A forked child has no part in its
/// threads, and is refused.
class LiveHandle {
public:
    LiveHandle(Quillmere::Host::Job job, const Quillmere::Host::LiveOptions& options,
               std::shared_ptr<RunEnds> ends);
    ~LiveHandle();
    LiveHandle(const LiveHandle&) = delete;
    LiveHandle& operator=(const LiveHandle&) = delete;

    /// Raises `velmarind.Error` in another process.
    LiveCore& get() const;
    const std::shared_ptr<LiveCore>& getShared() const {
        (void)get();
        return core;
    }

private:
    std::shared_ptr<LiveCore> core;
    const pid_t process;
};

/// Ends all live runs of this process, for the end of the interpreter.
void endAllLiveRuns();

} // namespace Python
