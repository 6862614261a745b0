// SPDX-License-Identifier: MIT
#include "host/batch/BatchRun.h"

#include "host/batch/RunStatus.h"
#include "host/batch/ShellWords.h"

#include <chrono>
#include <csignal>
#include <system_error>
#include <utility>

namespace Quillmere::Host {

namespace {

constexpr std::chrono::milliseconds kBetweenLooks{100};

std::string statusIn(const std::string& folder) {
    return folder + "/" + RunStatus::kFileName;
}

bool getIsDoneSince(const std::string& time, const std::string& folder) {
    const auto status = readStatus(statusIn(folder));
    return status && status->getIsDone() && status->began >= time;
}

} // namespace

std::string callOf(const BatchPlan::Entry& entry, const BatchOptions& options) {
    std::vector<std::string> words = entry.words;
    words.insert(words.end(), options.words.begin(), options.words.end());
    const auto graph = words.size() > 1 ? options.graphs.find(words[1]) : options.graphs.end();
    if (graph != options.graphs.end() && !graph->second.empty())
        words.insert(words.end(), {"--graph-hash", graph->second});
    return shellLine(words);
}

BatchRun::BatchRun(const BatchPlan& entries, BatchOptions given)
    : plan(entries), options(std::move(given)), tally(plan.entries.size()), begins(plan.entries.size()) {}

void BatchRun::run(const std::stop_token& stop, const BatchProgressHandler& onProgress) {
    WorkerPool pool(options.worker, options.jobs);
    std::size_t next = 0;
    bool isStopped = false;
    while (pool.getBusy() > 0 || (next < plan.entries.size() && !isStopped)) {
        while (!isStopped && !stop.stop_requested() && pool.getHasRoom() && next < plan.entries.size()) {
            if (!start(next, pool)) break;
            ++next;
        }
        tally.setRunning(pool.getBusy());
        onProgress(tally.getProgress());
        if (stop.stop_requested() && !std::exchange(isStopped, true)) pool.interrupt();
        for (const WorkerPool::Ended& ended : pool.wait(kBetweenLooks))
            take(ended, isStopped || stop.stop_requested());
    }
    tally.setRunning(0);
    onProgress(tally.getProgress());
}

/// False where it has to wait for a worker: there can't be as many as were asked for.
bool BatchRun::start(std::size_t task, WorkerPool& pool) {
    begins[task] = timeText();
    try {
        pool.start(task, callOf(plan.entries[task], options));
    } catch (const std::system_error& exception) {
        if (pool.getBusy() == 0 && task == 0) throw;
        if (pool.getBusy() == 0) return failToStart(task, exception.what());
        pool.goOnWith(pool.getBusy());
        return false;
    }
    return true;
}

/// What was done before is to be told, with what couldn't be.
bool BatchRun::failToStart(std::size_t task, const std::string& reason) {
    tally.take(task, BatchEnd::State::Failed, reason);
    return true;
}

BatchEnd::State BatchRun::stateOf(const WorkerPool::Ended& ended, bool isStopped) const {
    using State = BatchEnd::State;
    const bool isTold = ended.signal == SIGINT || ended.signal == SIGTERM || ended.signal == SIGHUP;
    if (ended.answer == WorkerAnswer::kInterrupted || (isStopped && isTold)) return State::Interrupted;
    if (!ended.crash.empty()) { // it may have been over, but for the answer
        const bool isOver = getIsDoneSince(begins[ended.task], plan.entries[ended.task].folder);
        return isOver ? State::Done : State::Failed;
    }
    if (ended.answer == WorkerAnswer::kDone) return State::Done;
    if (ended.answer == WorkerAnswer::kKept) return State::Kept;
    return ended.answer == WorkerAnswer::kWouldRun ? State::WouldRun : State::Failed;
}

void BatchRun::take(const WorkerPool::Ended& ended, bool isStopped) {
    using State = BatchEnd::State;
    std::string text = saidIn(ended.printed);
    const State state = stateOf(ended, isStopped);
    if (state == State::Failed && !ended.crash.empty()) {
        text = ended.crash + (text.empty() ? "" : ": " + text);
        tellCrash(plan.entries[ended.task], begins[ended.task], text);
    }
    tally.take(ended.task, state, std::move(text));
}

} // namespace Quillmere::Host
