// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/BatchReport.h"
#include "cli/SideFile.h"
#include "cli/StopSignals.h"
#include "cli/UsageError.h"
#include "host/batch/BatchPlan.h"
#include "host/batch/BatchRun.h"
#include "host/batch/BatchSummary.h"
#include "host/batch/FileHash.h"
#include "host/text/Counted.h"
#include "host/text/Printable.h"

#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <map>
#include <set>

namespace Cli {

using namespace Quillmere::Host;

namespace {

std::size_t coreCount() {
    cpu_set_t cores;
    const int count = ::sched_getaffinity(0, sizeof cores, &cores) == 0 ? CPU_COUNT(&cores) : 1;
    return static_cast<std::size_t>(std::max(1, count));
}

/// Each worker takes two files here.
void raiseFileLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == limit.rlim_max) return;
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit); // as many as there may be, then
}

ResultOptions summaryOptions(bool overwrites) {
    return {.overwrites = overwrites,
            .looksOwn = [](std::string_view text) { return text.starts_with(kSummaryBegin); },
            .isOfGraph = false};
}

/// What is known of failures by folder, for those whose status is of an earlier batch, or couldn't be
/// written.
std::map<std::string, RunStatus> failuresOf(const BatchPlan& entries, const BatchTally& batch) {
    std::map<std::string, RunStatus> failures;
    for (std::size_t i = 0; i < entries.entries.size(); ++i) {
        const BatchEnd& end = batch.getEnds()[i];
        if (end.state != BatchEnd::State::Failed) continue;
        failures[entries.entries[i].folder] =
            failedStatus(entries.entries[i], batch.getBegan(), failureIn(end.text));
    }
    return failures;
}

/// Why a recording would run, without the name of its folder.
std::string reasonOf(const BatchPlan::Entry& entry, const BatchEnd& end) {
    const std::string reason = failureIn(end.text);
    const std::string folder = entry.folder + ": ";
    return reason.starts_with(folder) ? reason.substr(folder.size()) : reason;
}

/// The calls of those that would run.
ExitCode printLook(const BatchPlan& entries, const BatchTally& looked) {
    std::size_t count = 0;
    std::size_t left = 0;
    for (std::size_t i = 0; i < entries.entries.size(); ++i) {
        const BatchEnd& end = looked.getEnds()[i];
        if (end.state == BatchEnd::State::Waiting || end.state == BatchEnd::State::Interrupted) ++left;
        if (end.state != BatchEnd::State::WouldRun && end.state != BatchEnd::State::Failed) continue;
        std::cout << entries.entries[i].getCommand() << "  # " << reasonOf(entries.entries[i], end) << "\n";
        ++count;
    }
    std::cerr << counted(entries.entries.size(), "recording") << ", " << count << " to run\n";
    if (left == 0) return kDone;
    std::cerr << "quillmere: interrupted; " << counted(left, "recording") << " not looked at\n";
    return kFailedMidway;
}

} // namespace

/// What makes every recording fail, or the summary of them, is refused before the first.
void BatchCommand::checkBegin() const {
    if (out.empty()) return;
    namespace fs = std::filesystem;
    std::error_code error;
    fs::path there = fs::absolute(out, error).lexically_normal();
    while (!fs::exists(fs::symlink_status(there, error)) && there.has_relative_path())
        there = there.parent_path();
    std::string name = "'";
    name += printable(there.string(), kLongestName);
    name += '\'';
    if (!fs::is_directory(there, error))
        throw UsageError({{"--out"}, std::string("the file ").append(name), "a folder"});
    if (::access(there.c_str(), W_OK | X_OK) != 0)
        throw UsageError({{"--out"},
                          std::string("the folder ").append(name).append(", which can't be written"),
                          "one that can"});
    const std::string summary = (fs::path(out) / kSummaryName).string();
    if (fs::exists(summary, error)) checkSideFile("--out", summary, summaryOptions(arguments.overwrites));
}

/// As this machine runs them.
BatchOptions BatchCommand::optionsOf(const BatchPlan& entries, const std::string& graphHash) const {
    const bool isOurs = elsewhere.engine.empty();
    BatchOptions options{.worker = {ownPath(), kWorkerCommand},
                         .jobs = jobs == 0 || !isOurs ? coreCount() : jobs};
    options.words.emplace_back("--quiet");
    if (resumes) options.words.emplace_back("--resume");
    if (keepsChanged) options.words.emplace_back("--keep-changed");
    for (const BatchPlan::Entry& entry : entries.entries) {
        const std::string& graph = entry.words[1];
        if (!options.graphs.contains(graph))
            options.graphs[graph] = graph == arguments.graph ? graphHash : hashOfFile(graph);
    }
    return options;
}

ExitCode BatchCommand::runPlan(const BatchPlan& entries, const std::string& graphHash) const {
    raiseFileLimit();
    const StopSignals signals;
    BatchOptions options = optionsOf(entries, graphHash);
    if (isDry) options.words.emplace_back("--look");
    BatchRun batch(entries, options);
    BatchProgressLine line(!isQuiet);
    batch.run(signals.getToken(), [&](const BatchProgress& progress) { line.show(progress); });
    line.clear();
    return isDry ? printLook(entries, batch.getTally()) : tell(entries, batch.getTally(), line.getSeconds());
}

ExitCode BatchCommand::tell(const BatchPlan& entries, const BatchTally& batch, double seconds) const {
    const BatchProgress& progress = batch.getProgress();
    const std::size_t left = progress.all - progress.done - progress.failed;
    if (!isQuiet) {
        char time[32];
        std::snprintf(time, sizeof time, "%.1f", seconds);
        std::cout << counted(progress.all, "recording") << ": " << progress.done << " done";
        if (progress.kept > 0) std::cout << " (" << progress.kept << " before)";
        std::cout << ", " << progress.failed << " failed";
        if (left > 0) std::cout << ", " << left << " left";
        std::cout << " (in " << time << " s)" << std::endl;
    }
    printFailures(entries, batch);
    if (left > 0) std::cerr << "quillmere: interrupted; the same with --resume does the rest\n";
    // Those of earlier batches stay in the table: this one may be over a part of the study.
    const std::vector<std::string> found = out.empty() ? std::vector<std::string>() : findResultFolders(out);
    std::set<std::string> folders(found.begin(), found.end());
    for (const BatchPlan::Entry& entry : entries.entries)
        folders.insert(entry.folder);
    const ExitCode code =
        out.empty() ? kDone : writeSummary({folders.begin(), folders.end()}, failuresOf(entries, batch));
    return progress.failed == 0 && left == 0 ? code : kFailedMidway;
}

ExitCode BatchCommand::writeSummary(const std::vector<std::string>& folders,
                                    const std::map<std::string, RunStatus>& told) const {
    std::vector<ColumnStatistic> wanted;
    for (const std::string& name : statistics)
        wanted.push_back(*findStatistic(name));
    const ResultOptions options = summaryOptions(arguments.overwrites);
    const std::string path = (std::filesystem::path(out) / kSummaryName).string();
    const std::string root = std::filesystem::path(out).lexically_normal().string();
    Complaints doubts;
    const std::string text = summaryTable(folders, root, wanted, doubts, told);
    printDoubts(doubts);
    return writeSideFile(path, options, text) ? kDone : kFailedMidway;
}

} // namespace Cli
