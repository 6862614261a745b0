// SPDX-License-Identifier: MIT
#include "host/run/Job.h"

#include "host/ends/RecordingException.h"
#include "host/graph/BurstWarnings.h"
#include "host/graph/ClockWarnings.h"
#include "host/graph/GraphPlugins.h"
#include "host/graph/SettingRules.h"
#include "host/recording/WorkThread.h"
#include "host/response/DesignWarnings.h"
#include "host/run/OfflineRunner.h"
#include "host/run/RunReview.h"
#include "host/run/RunSummary.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>
#include <utility>

namespace Quillmere::Host {

namespace {
using Clock = std::chrono::steady_clock;

BlockCatalogue withPlugins(BlockCatalogue catalogue, const GraphDescription& description,
                           Complaints& complaints) {
    loadPlugins(description, catalogue, complaints);
    return catalogue;
}

void checkNumbers(const JobOptions& options, const Place& place, Complaints& complaints) {
    const RunLimit& limit = options.limit;
    if (limit.rounds == 0u)
        complaints.add(place, options.roundsName.name + " of 0 rounds", "a whole number above 0");
    if (limit.seconds && !(std::isfinite(*limit.seconds) && *limit.seconds > 0.0))
        complaints.add(place, options.secondsName.name + " that is no time", "finite seconds above 0");
}

/// Recordings end a run; a graph without one needs to be told when to end.
void checkLimit(const Graph& graph, const JobOptions& options, RunMode mode, Complaints& complaints) {
    if (!graph.getDescription().isUsable) return;
    const Place place{graph.getDescription().path, 1, 1};
    const bool isLimited = options.limit.getIsAny();
    const auto formOf = [](const JobOptions::LimitName& limit) {
        return limit.value.empty() ? limit.name : limit.name + " " + limit.value;
    };
    // Somebody ends a live run, sooner or later.
    if (graph.getSources().empty() && !isLimited && mode == RunMode::Offline)
        complaints.add(place, "a graph without a source",
                       formOf(options.secondsName) + " or " + formOf(options.roundsName) + " to end its run");
    if (!graph.getSources().empty() && isLimited)
        complaints.add(place,
                       (options.limit.rounds ? options.roundsName : options.secondsName).name +
                           " and a graph with a source",
                       "neither, since the run ends with the recording");
    checkNumbers(options, place, complaints);
}
} // namespace

class Job::Implementation {
public:
    Implementation(GraphDescription read, BlockCatalogue given, JobOptions jobOptions, Complaints heard)
        : options(std::move(jobOptions)), description(std::move(read)), reading(std::move(heard)),
          building(reading), catalogue(withPlugins(std::move(given), description, building)),
          graph(description, catalogue, building) {
        graph.requireDrive(building);
        if (options.overwrites) graph.allowOverwriting();
        if (!options.summary.empty())
            summary.emplace(options.summary, options.summaryName, options.overwrites);
    }

    const Complaints& check(RunMode mode);
    /// What the last check gathered. Nothing is checked again for the same mode: a live run has dealt the
    /// blocks out by then.
    const Complaints& checkOnce(RunMode mode) { return checked == mode ? all : check(mode); }
    bool getHasLeftPipes() const { return hasLeftPipes; }
    void require(RunMode mode);
    std::optional<RunOutcome> begin(const std::stop_token& stop);
    RunOutcome interrupted(const InterruptedException& exception);
    RunOutcome completed(RunOutcome outcome);
    void shareWork();

    const JobOptions options;
    const GraphDescription description;
    const Complaints reading; ///< What was complained of when the description was read.
    Complaints building;      ///< That and what building complained of.
    BlockCatalogue catalogue;
    Graph graph;

private:
    const Complaints& open(RunMode mode);
    RunEnding beginResults(const std::stop_token& stop);
    RunEnding beginObserver(const std::stop_token& stop);
    void checkObserver(RunMode mode);
    void endObserver(RunOutcome& outcome);
    void summarise(RunOutcome& outcome);
    Complaints refuse();

    std::optional<Complaints> opening; ///< What opening the recordings complained of; nothing before.
    Complaints all;                    ///< What the last check gathered, and for what.
    std::optional<RunMode> checked;
    bool hasLeftPipes = false; ///< When the recordings were opened.
    bool hasBegun = false;
    bool isObserved = false; ///< The observer has begun, and has to hear of the end.
    Clock::time_point start = Clock::now();
    std::optional<RunSummary> summary;
    bool isSummaryRefused = false; ///< There is something wrong with its name.
};

/// Recordings are opened once.
const Complaints& Job::Implementation::open(RunMode mode) {
    if (opening) return *opening;
    Complaints found;
    graph.setStopOfOpening(options.stop);
    graph.openSources(found, mode == RunMode::Unsaid ? Graph::Pipes::Leave : Graph::Pipes::Read);
    opening = std::move(found);
    hasLeftPipes = mode == RunMode::Unsaid;
    warnOfLostDigits(graph, catalogue, *opening);
    return *opening;
}

const Complaints& Job::Implementation::check(RunMode mode) {
    checked = mode;
    all = building;
    checkLimit(graph, options, mode, all);
    all.add(open(mode));
    if (mode == RunMode::Live)
        warnOfLiveWallClock(graph, all);
    else
        requireStreamClock(graph, all);
    if (!options.isControlled) warnOfIdleBlocks(graph, all);
    if (mode != RunMode::Offline && all.isEmpty()) warnOfBursts(graph, all);
    if (summary) isSummaryRefused = !summary->check(graph, catalogue, all);
    if (options.observer != nullptr) checkObserver(mode);
    return all;
}

void Job::Implementation::checkObserver(RunMode mode) {
    if (mode != RunMode::Live)
        options.observer->check(graph, catalogue, all);
    else if (!options.observer->checkLive(graph, catalogue, all))
        all.add({options.observerName}, "a live run, which has no rounds that all blocks share",
                "a run of recordings as fast as they can be read");
}

/// Who reads the summary hears of a run that isn't begun what its caller does.
void Job::Implementation::require(RunMode mode) {
    if (checkOnce(mode).getIsRefusal(options.isStrict)) refuse().raise(options.isStrict);
}

/// What is complained of, with what the summary adds that can't be written.
Complaints Job::Implementation::refuse() {
    Complaints complaints = all;
    if (!summary || isSummaryRefused) return complaints;
    RunEnding ending;
    try {
        complaints.raise(options.isStrict);
    } catch (const GraphException& exception) {
        ending.failure = exception.what();
        ending.complaints = exception.getComplaints();
    }
    RunOutcome outcome = refusedBy(graph, ending);
    outcome.doubts = all.getSortedWarnings();
    try {
        summary->write(outcome);
    } catch (const RecordingException& exception) {
        complaints.add({options.summaryName}, std::string("no summary (") + exception.what() + ")",
                       "a place where it can be written");
    }
    return complaints;
}

std::optional<RunOutcome> Job::Implementation::begin(const std::stop_token& stop) {
    if (hasBegun) throw RunException(Complaint{{}, "a job that has run", "a new one for each run", {}});
    hasBegun = true;
    start = Clock::now();
    graph.setStop(stop);
    const RunEnding ending = beginResults(stop);
    if (ending.getIsWhole()) return std::nullopt;
    return completed(refusedBy(graph, ending));
}

/// What can't be begun is a failure of a run that hasn't begun either.
RunEnding Job::Implementation::beginObserver(const std::stop_token& stop) {
    if (options.observer == nullptr) return {};
    try {
        options.observer->begin(graph, stop);
        isObserved = true;
    } catch (const InterruptedException& exception) {
        return interruptionFor(exception.what());
    } catch (const RecordingException& exception) {
        RunEnding ending;
        ending.failure = exception.what();
        ending.complaints = exception.getComplaints();
        return ending;
    }
    return {};
}

/// The summary first: what it can't tell of is better not begun.
RunEnding Job::Implementation::beginResults(const std::stop_token& stop) {
    try {
        if (summary) summary->open(stop);
    } catch (const InterruptedException& exception) {
        summary.reset();
        return interruptionFor(exception.what());
    } catch (const RecordingException& exception) {
        summary.reset();
        RunEnding ending;
        ending.failure = exception.what();
        ending.complaints = exception.getComplaints();
        return ending;
    }
    try {
        const RunEnding ofObserver = beginObserver(stop);
        return ofObserver.getIsWhole() ? beginSinks(graph.getSinks()) : ofObserver;
    } catch (...) { // no memory to say why
        if (summary) summary->discard();
        if (isObserved) options.observer->discard();
        throw;
    }
}

/// The outcome of a run that somebody ends before its recordings are open.
RunOutcome Job::Implementation::interrupted(const InterruptedException& exception) {
    Complaints told;
    if (summary && !summary->check(graph, catalogue, told)) summary.reset();
    RunOutcome outcome = completed(refusedBy(graph, interruptionFor(exception.what())));
    summary.reset();
    return outcome;
}

RunOutcome Job::Implementation::completed(RunOutcome outcome) {
    outcome.doubts = all.getSortedWarnings();
    outcome.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    if (isObserved) endObserver(outcome);
    if (summary) summarise(outcome);
    return outcome;
}

/// Threads for what can be done beside the blocks; more than there are files would have nothing to do.
void Job::Implementation::shareWork() {
    std::vector<FileEnd*> ends;
    for (const Graph::Node& node : graph.getNodes())
        if (node.file != nullptr) ends.push_back(node.file);
    std::vector<std::shared_ptr<WorkThread>> threads(
        std::min(std::max<std::size_t>(options.threads, 1) - 1, ends.size()));
    for (std::shared_ptr<WorkThread>& thread : threads)
        thread = std::make_shared<WorkThread>();
    for (std::size_t i = 0; i < ends.size() && !threads.empty(); ++i)
        ends[i]->setThread(threads[i % threads.size()]);
}

namespace {
/// What can't be written beside the results makes a failure of a run that was whole, whose results have their
/// names.
void noteFailure(const RecordingException& exception, const std::string& name, RunOutcome& outcome) {
    if (!outcome.getIsWhole()) {
        // Put together part by part: GCC 12 takes the parts of a temporary for uninitialized.
        Warning& warning = outcome.warnings.emplace_back();
        warning.where.file = name;
        warning.text = exception.what();
        return;
    }
    outcome.failure = exception.what();
    outcome.complaints = exception.getComplaints();
}
} // namespace

void Job::Implementation::endObserver(RunOutcome& outcome) {
    isObserved = false;
    if (!outcome.hasBegun) return options.observer->discard();
    try {
        options.observer->complete(outcome);
    } catch (const RecordingException& exception) {
        noteFailure(exception, options.observerName, outcome);
    }
}

void Job::Implementation::summarise(RunOutcome& outcome) {
    try {
        summary->write(outcome);
    } catch (const RecordingException& exception) {
        noteFailure(exception, options.summaryName, outcome);
    }
}

Job::Job(const GraphDescription& description, BlockCatalogue catalogue, JobOptions options,
         Complaints reading) {
    GraphDescription changed = description.with(options.changes, reading);
    implementation = std::make_unique<Implementation>(std::move(changed), std::move(catalogue),
                                                      std::move(options), std::move(reading));
}

Job::Job(Job&& other) noexcept = default;
Job& Job::operator=(Job&& other) noexcept = default;
Job::~Job() = default;

Job Job::fromFile(const std::string& path, BlockCatalogue catalogue, JobOptions options) {
    Complaints complaints;
    const GraphDescription description = GraphDescription::fromFile(path, complaints);
    return Job(description, std::move(catalogue), std::move(options), std::move(complaints));
}

const Complaints& Job::check(RunMode mode) {
    // Recordings can be opened once, so a graph whose pipes were left is built anew.
    if (mode != RunMode::Unsaid && implementation->getHasLeftPipes())
        implementation =
            std::make_unique<Implementation>(implementation->description, implementation->catalogue,
                                             implementation->options, implementation->reading);
    return implementation->checkOnce(mode);
}

RunOutcome Job::run(const std::stop_token& stop, const ProgressHandler& onProgress) {
    if (std::optional<RunOutcome> refused = begin(RunMode::Offline, stop)) return *refused;
    const JobOptions& options = implementation->options;
    implementation->shareWork();
    OfflineRunner runner(implementation->graph, options.limit, options.isStrict, options.observer.get());
    return implementation->completed(runner.run(stop, onProgress));
}

void Job::require(RunMode mode) {
    try {
        check(mode);
    } catch (const InterruptedException& exception) {
        implementation->interrupted(exception);
        throw;
    }
    implementation->require(mode);
}

std::optional<RunOutcome> Job::begin(RunMode mode, const std::stop_token& stop) {
    try {
        check(mode);
    } catch (const InterruptedException& exception) {
        return implementation->interrupted(exception);
    }
    implementation->require(mode);
    return implementation->begin(stop);
}

std::vector<std::string> Job::getPipedSources() const {
    std::vector<std::string> sources;
    for (const Graph::Node& node : implementation->graph.getNodes())
        if (getComesByItself(node.waking)) sources.push_back(node.description->id);
    return sources;
}

RunOutcome Job::completed(RunOutcome outcome) {
    return implementation->completed(std::move(outcome));
}

const GraphDescription& Job::getDescription() const {
    return implementation->graph.getDescription();
}

const BlockCatalogue& Job::getCatalogue() const {
    return implementation->catalogue;
}

const JobOptions& Job::getOptions() const {
    return implementation->options;
}

Graph& Job::getGraph() {
    return implementation->graph;
}

const Graph& Job::getGraph() const {
    return implementation->graph;
}

} // namespace Quillmere::Host
