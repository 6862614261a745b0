// SPDX-License-Identifier: MIT
#include "host/batch/BatchRun.h"

#include "host/batch/RunStatus.h"
#include "host/batch/ShellWords.h"
#include "host/ends/RecordingException.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <system_error>
#include <utility>

namespace Quillmere::Host {

namespace {

constexpr std::chrono::milliseconds kBetweenLooks{100};
constexpr const char* kOwnName = "quillmere: ";

/// What a command has said, without its name and its last line's end.
std::string saidIn(std::string printed) {
    while (printed.ends_with('\n'))
        printed.pop_back();
    if (printed.starts_with(kOwnName)) printed.erase(0, std::char_traits<char>::length(kOwnName));
    return printed;
}

std::string statusIn(const std::string& folder) {
    return folder + "/" + RunStatus::kFileName;
}

bool getIsDoneSince(const std::string& time, const std::string& folder) {
    const auto status = readStatus(statusIn(folder));
    return status && status->getIsDone() && status->began >= time;
}

} // namespace

BatchRun::BatchRun(const BatchPlan& entries, BatchOptions given)
    : plan(entries), options(std::move(given)), ends(plan.entries.size()), begins(plan.entries.size()) {
    progress.all = plan.entries.size();
}

void BatchRun::run(const std::stop_token& stop, const ProgressHandler& onProgress) {
    WorkerPool pool(options.worker, options.jobs);
    std::size_t next = 0;
    bool isStopped = false;
    while (pool.getBusy() > 0 || (next < plan.entries.size() && !isStopped)) {
        while (!isStopped && !stop.stop_requested() && pool.getHasRoom() && next < plan.entries.size()) {
            if (!start(next, pool)) break;
            ++next;
        }
        progress.running = pool.getBusy();
        onProgress(progress);
        if (stop.stop_requested() && !std::exchange(isStopped, true)) pool.interrupt();
        for (const WorkerPool::Ended& ended : pool.wait(kBetweenLooks))
            take(ended, isStopped || stop.stop_requested());
    }
    progress.running = 0;
    onProgress(progress);
}

std::string BatchRun::lineOf(std::size_t task) const {
    std::vector<std::string> words = plan.entries[task].words;
    words.insert(words.end(), options.words.begin(), options.words.end());
    const auto graph = words.size() > 1 ? options.graphs.find(words[1]) : options.graphs.end();
    if (graph != options.graphs.end() && !graph->second.empty())
        words.insert(words.end(), {"--graph-hash", graph->second});
    return shellLine(words);
}

/// False where it has to wait for a worker: there can't be as many as were asked for.
bool BatchRun::start(std::size_t task, WorkerPool& pool) {
    begins[task] = timeText();
    try {
        pool.start(task, lineOf(task));
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
    ends[task].state = BatchEnd::State::Failed;
    ends[task].text = reason;
    ++progress.failed;
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
    BatchEnd& end = ends[ended.task];
    end.text = saidIn(ended.printed);
    end.state = stateOf(ended, isStopped);
    if (end.state == State::Failed && !ended.crash.empty()) {
        end.text = ended.crash + (end.text.empty() ? "" : ": " + end.text);
        tellCrash(ended, end.text);
    }
    if (end.state == State::Done || end.state == State::Kept) ++progress.done;
    if (end.state == State::Kept) ++progress.kept;
    if (end.state == State::Failed) ++progress.failed;
    if (end.state == State::Interrupted) ++progress.interrupted;
}

/// The process that would have written the status is gone. Where a status is, it hadn't begun: a run takes
/// that of an earlier one away first.
void BatchRun::tellCrash(const WorkerPool::Ended& ended, const std::string& text) const {
    const BatchPlan::Entry& entry = plan.entries[ended.task];
    if (readStatus(statusIn(entry.folder))) return;
    RunStatus status;
    status.state = RunStatus::kCrashed;
    status.failure = text;
    status.recording = entry.recording;
    status.command = entry.getCommand();
    status.began = begins[ended.task];
    status.ended = timeText();
    try {
        std::error_code error;
        std::filesystem::create_directories(entry.folder, error);
        writeStatus(entry.folder, status);
    } catch (const RecordingException&) {
        // A folder without a status isn't done either.
    }
}

} // namespace Quillmere::Host
