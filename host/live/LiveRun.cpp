// SPDX-License-Identifier: MIT
#include "host/live/LiveRun.h"

#include "host/live/LiveDrive.h"
#include "host/live/LiveGraph.h"
#include "host/run/RunEnd.h"
#include "host/text/Complaint.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <latch>
#include <mutex>
#include <new>
#include <optional>
#include <system_error>
#include <thread>

namespace Quillmere::Host {

namespace {
/// Between two looks whether a run that is over has come to rest: soon at first, since most need no longer.
constexpr std::chrono::milliseconds kFirstLook{1};
constexpr std::chrono::milliseconds kLastLook{4};
/// A text so short that it needs no memory.
constexpr const char* kNoMemory = "out of memory";
} // namespace

class LiveRun::Implementation {
public:
    Implementation(Job runJob, const LiveOptions& options)
        : job(std::move(runJob)), graph(checkedGraph(job)),
          drive(options.speed, job.getOptions().limit, options.countsSteps, graph.getTimeline()),
          live(graph, drive, options.overflow), settings(live), structure(live, job.getCatalogue()) {}
    ~Implementation() {
        interrupter.reset();   // waits for one that is under way
        drive.cut("given up"); // nobody hears it
        if (supervisor.joinable()) supervisor.join();
    }

    void start(const std::stop_token& stop) {
        if (std::optional<RunOutcome> refused = job.begin(RunMode::Live, stop)) return endRefused(*refused);
        state = State::Running;
        interrupter.emplace(stop, [this] { drive.cut(interruptionFor("interrupted")); });
        // First who sees the run to its end: a layout that runs without it would run for ever.
        try {
            startSupervisor();
        } catch (...) {
            cutForWhatIsRaised();
            return endRun();
        }
        const StartEnd tellsSupervisor{hasStarted};
        try {
            if (RunObserver* const observer = job.getOptions().observer.get())
                live.setOnlookers(observer->getOnlookers());
            live.start();
        } catch (...) {
            cutForWhatIsRaised();
        }
    }

    RunProgress getProgress() const {
        RunProgress progress;
        progress.rounds = live.getRounds();
        for (const Source* const source : graph.getSources())
            progress.rows += source->getRows();
        return progress;
    }

    Job job;
    Graph& graph;
    LiveDrive drive;
    LiveGraph live;
    LiveSettings settings;
    LiveStructure structure;
    std::atomic<State> state{State::Ready};
    std::mutex ending;
    std::condition_variable hasEnded;
    std::string failure; ///< Under `ending`.
    RunOutcome outcome;  ///< Written once, before the state says that the run has ended.

private:
    static Graph& checkedGraph(Job& job) {
        job.require(RunMode::Live);
        return job.getGraph();
    }

    /// Nothing has run, and nothing is left to end.
    void endRefused(RunOutcome& refused) {
        const std::lock_guard lock(ending);
        outcome = std::move(refused);
        failure = outcome.failure;
        state = State::Failed;
        hasEnded.notify_all();
    }

    /// Counts down however the start ends: the supervisor waits for it.
    struct StartEnd {
        ~StartEnd() { latch.count_down(); }
        std::latch& latch;
    };

    void startSupervisor() {
        try {
            supervisor = std::thread([this] { supervise(); });
        } catch (const std::system_error& error) {
            throw RunException(Complaint::sentence({}, "no thread can be made: " + error.code().message(),
                                                   "room for one more thread"));
        }
    }

    /// Ends the run for what is being handled.
    void cutForWhatIsRaised() noexcept {
        try {
            throw;
        } catch (const std::bad_alloc&) {
            drive.cut(kNoMemory);
        } catch (const std::exception& exception) {
            cutFor(exception.what());
        } catch (...) {
            cutFor("something that is no std::exception");
        }
    }
    void cutFor(const char* reason) {
        try {
            drive.cut(reason);
        } catch (...) {
            drive.cut(kNoMemory); // for the reason even
        }
    }

    /// Sleeps as long as the run runs; then sees it to its end.
    void supervise() {
        hasStarted.wait(); // all layouts that there will be
        try {
            drive.waitForEnd();
            state = State::Ending;
            live.stir();
            waitForRest();
            finishBlocks();
        } catch (...) {
            cutForWhatIsRaised();
        }
        endRun();
    }

    void waitForRest() {
        for (auto look = kFirstLook; !drive.getIsCut() && !live.getIsAtRest();
             look = std::min(2 * look, kLastLook))
            std::this_thread::sleep_for(look);
    }

    void finishBlocks() {
        if (drive.getIsCut()) return;
        for (const Finisher& finisher : live.findFinishers()) {
            if (drive.getIsCut()) return;
            live.finish(finisher);
            waitForRest();
        }
    }

    /// Ends all threads but the caller's, and the results.
    void endRun() {
        if (drive.getIsCut())
            for (const Graph::Node& node : graph.getNodes())
                if (node.result != nullptr) node.result->giveUp();
        live.stop();
        drive.pipes.stop();
        std::string reason;
        try {
            reason = endResults();
        } catch (...) {
            reason = outcome.failure = kNoMemory;
        }
        const std::lock_guard lock(ending);
        failure.swap(reason);
        state = failure.empty() ? State::Ended : State::Failed;
        hasEnded.notify_all();
    }

    /// Ends the results and takes down what the run has done; gives back why it failed.
    std::string endResults() {
        RunEnding result = drive.getEnding();
        if (result.getIsWhole() && job.getOptions().isStrict)
            result = endingOf(live.getOutcome(getProgress(), {}).warnings);
        const RunEnding ofResults = live.endSinks(result.getIsWhole());
        if (result.getIsWhole()) result = ofResults;
        live.forgetOnlookers(); // who die when the job is completed
        RunOutcome done = live.getOutcome(getProgress(), result);
        settings.tellChanges(done);
        outcome = job.completed(std::move(done));
        return outcome.failure;
    }

    std::latch hasStarted{1};
    std::thread supervisor;
    std::optional<std::stop_callback<std::function<void()>>> interrupter;
};

LiveRun::LiveRun(Job job, const LiveOptions& options)
    : implementation(std::make_unique<Implementation>(std::move(job), options)) {}

LiveRun::~LiveRun() = default;

void LiveRun::start(const std::stop_token& stop) {
    implementation->start(stop);
}

const Job& LiveRun::getJob() const {
    return implementation->job;
}

Job& LiveRun::getJob() {
    return implementation->job;
}

void LiveRun::stop() {
    implementation->drive.end();
}

void LiveRun::interrupt(const std::string& reason) {
    implementation->drive.cut(interruptionFor(reason));
}

LiveRun::State LiveRun::getState() const {
    return implementation->state;
}

RunProgress LiveRun::getProgress() const {
    return implementation->getProgress();
}

const RunOutcome& LiveRun::getOutcome() const {
    return implementation->outcome;
}

void LiveRun::wait() {
    std::unique_lock lock(implementation->ending);
    implementation->hasEnded.wait(lock, [this] { return getState() >= State::Ended; });
    if (getState() == State::Failed)
        throw RunException(implementation->failure, implementation->outcome.complaints);
}

bool LiveRun::waitFor(std::chrono::milliseconds time) {
    std::unique_lock lock(implementation->ending);
    return implementation->hasEnded.wait_for(lock, time, [this] { return getState() >= State::Ended; });
}

LiveStatistics LiveRun::getStatistics() {
    return implementation->live.getStatistics();
}

LiveSettings& LiveRun::getSettings() {
    return implementation->settings;
}

const LiveSettings& LiveRun::getSettings() const {
    return implementation->settings;
}

LiveStructure& LiveRun::getStructure() {
    return implementation->structure;
}

std::string nameOf(LiveRun::State state) {
    switch (state) {
    case LiveRun::State::Ready:
        return "ready";
    case LiveRun::State::Running:
        return "running";
    case LiveRun::State::Ending:
        return "ending";
    case LiveRun::State::Ended:
        return "ended";
    case LiveRun::State::Failed:
        break;
    }
    return "failed";
}

} // namespace Quillmere::Host
