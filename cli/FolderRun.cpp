// SPDX-License-Identifier: MIT
#include "cli/FolderRun.h"

#include "cli/UsageError.h"
#include "host/batch/PeakMemory.h"
#include "host/batch/ShellWords.h"
#include "host/ends/RecordingException.h"
#include "host/graph/GraphPlugins.h"
#include "host/run/RunJson.h"
#include "host/text/CaughtText.h"
#include "host/text/Printable.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <utility>

namespace Cli {

using namespace Quillmere::Host;

namespace {

constexpr const char* kFolder = "--folder";

RunStatus::Pairs versionsOf(const BlockCatalogue& catalogue) {
    RunStatus::Pairs versions{{"quillmere", QUILLMERE_VERSION}};
    for (const std::string& type : catalogue.getTypeNames()) {
        const std::string plugin = catalogue.getPluginName(type);
        const auto isIt = [&](const auto& version) { return version.first == plugin; };
        if (std::none_of(versions.begin(), versions.end(), isIt))
            versions.emplace_back(plugin, catalogue.getPluginVersion(type));
    }
    return versions;
}

std::string hostName() {
    char name[256] = {};
    return ::gethostname(name, sizeof name - 1) == 0 ? name : "";
}

/// Rows that aren't as the recording has them.
std::uint64_t repairsOf(const SourceAccount& account) {
    const SourceAccount::TimeRepairs& times = account.repairs;
    return account.skippedRows + account.mendedRows + (account.isCutEndDropped ? 1u : 0u) +
           times.duplicates.count + times.backward.count + times.behindEnd.count + times.rowsFilled;
}

GraphDescription resolvedGraph(const GraphArguments& graph, BlockCatalogue& catalogue) {
    Complaints ignored; // the job tells them
    const GraphDescription read = GraphDescription::fromFile(graph.graph, ignored);
    loadPlugins(read, catalogue, ignored);
    return read.with(changesOf(graph), ignored).resolved(ignored);
}

} // namespace

CLI::Option* FolderArguments::enter(CLI::App& command) {
    CLI::Option* const path =
        command
            .add_option(kFolder, folder, "Put all results into FOLDER, with what came of it: status.json.")
            ->type_name("FOLDER")
            ->check([](const std::string& text) {
                return text.empty() ? Complaint{{}, "''", "the name of a folder"}.getText() : "";
            });
    command.add_option("--note", notes, "Keep a word on the recording in the status. Again for another.")
        ->type_name("NAME=TEXT")
        ->allow_extra_args(false)
        ->needs(path);
    CLI::Option* const again =
        command.add_flag("--resume", resumes, "Do nothing where FOLDER has what this run would give.")
            ->needs(path);
    command
        .add_flag("--keep-changed", keepsChanged,
                  "With --resume: nor where graph, recording, settings or versions have changed.")
        ->needs(again);
    // A batch asks for these.
    command.add_option("--graph-hash", graphHash, "Refuse another graph than that of this SHA-256.")
        ->needs(path)
        ->group("");
    command.add_flag("--take-over", takesOver, "With --look: take over what is said of one that is done.")
        ->needs(path)
        ->group("");
    command.add_option("--with-parent", parent, "End when this process, which has started it, is gone.")
        ->needs(path)
        ->group("");
    command.add_flag("--look", looks, "Only tell why it would have to run.")->needs(path)->group("");
    return path;
}

FolderRun::FolderRun(const FolderArguments& options, const GraphArguments& graph,
                     const std::vector<std::string>& others, BlockCatalogue& catalogue)
    : arguments(options), folder(options.folder, !options.looks) {
    if (!graph.outputs.empty())
        throw UsageError({{}, std::string("--output beside ") + kFolder, "one of them"});
    status.graph = graph.graph;
    status.graphHash = hashOfFile(graph.graph);
    if (!options.graphHash.empty()) checkGraph(options.graphHash);
    const GraphDescription resolved = resolvedGraph(graph, catalogue);
    outputs = outputsInto(options.folder, kFolder + (" " + printable(options.folder, kLongestName)), resolved,
                          catalogue);
    pipe = findPipe(resolved, catalogue);
    status.versions = versionsOf(catalogue);
    status.overrides = wordsOf(graph);
    status.overrides.insert(status.overrides.end(), others.begin(), others.end());
    std::vector<std::string> words{"quillmere", "run", graph.graph};
    words.insert(words.end(), status.overrides.begin(), status.overrides.end());
    if (graph.overwrites) words.emplace_back("--overwrite");
    words.insert(words.end(), {kFolder, options.folder});
    for (const std::string& note : options.notes)
        words.insert(words.end(), {"--note", note});
    status.command = shellLine(words);
    if (!graph.inputs.empty())
        status.recording = splitSetting(graph.inputs.front(), "--input", "block=FILE").second;
    takeNotes();
}

void FolderRun::takeNotes() {
    for (const std::string& note : arguments.notes) {
        auto pair = splitSetting(note, "--note", "NAME=TEXT");
        for (const auto& [name, text] : status.notes)
            if (name == pair.first)
                throw UsageError({{"--note"},
                                  "'" + printable(name, kLongestName) + "' a second time",
                                  "a name of its own for each"});
        status.notes.push_back(std::move(pair));
    }
}

/// Somebody may be working on the graph while a batch of hours runs.
void FolderRun::checkGraph(const std::string& hash) const {
    if (status.graphHash != hash)
        throw RecordingException(Complaint::sentence({status.graph}, "the graph has changed meanwhile",
                                                     "one graph for all",
                                                     Complaint::Form::SentenceAndWanted));
}

std::string FolderRun::findReason() const {
    const auto before = folder.findStatus();
    if (!before) return "it isn't done";
    if (!before->getIsDone()) return "it is " + before->state;
    if (!pipe.empty()) return "what comes through a pipe to '" + pipe + "' can't be compared";
    return arguments.keepsChanged ? "" : findChange(*before, status, folder.getPath());
}

void FolderRun::keep() {
    auto before = folder.findStatus();
    if (!before || !before->getIsDone() || arguments.keepsChanged) return;
    if (before->notes == status.notes && before->overrides == status.overrides) return;
    before->notes = status.notes;
    before->overrides = status.overrides;
    before->command = status.command;
    // One file may have got another name, which the options know.
    if (!status.recording.empty() && before->recording != status.recording) {
        for (RunStatus::Input& input : before->inputs)
            if (input.path == before->recording) input.path = status.recording;
        before->recording = status.recording;
    }
    writeStatus(folder.getPath(), *before);
}

void FolderRun::begin() {
    restartPeakMemory();
    status.began = timeText();
    start = std::chrono::steady_clock::now();
    status.host = hostName();
}

void FolderRun::takeFolder(const Job& job) {
    look(job);
    clear();
}

void FolderRun::clear() {
    std::vector<std::string> read{status.recording};
    for (const RunStatus::Input& input : status.inputs)
        read.push_back(input.path);
    folder.begin(read);
    isTaken = true;
}

void FolderRun::look(const Job& job) {
    checkGraph(hashOfFile(status.graph)); // the job has read it since
    for (const Graph::Node& node : job.getGraph().getNodes()) {
        if (node.source == nullptr || node.file == nullptr) continue;
        for (const FileEnd::File& file : node.file->getFiles()) {
            const auto facts = factsOf(file.name);
            if (file.descriptor >= 0 || !facts) continue;
            RunStatus::Input& input = status.inputs.emplace_back();
            input.source = node.description->id;
            input.path = file.name;
            input.facts = *facts;
            input.hash = hashOfFile(file.name);
        }
    }
    if (status.recording.empty() && !status.inputs.empty()) status.recording = status.inputs.front().path;
}

void FolderRun::take(const RunOutcome& outcome) {
    status.failure = outcome.failure;
    status.complaints = outcome.complaints;
    isInterrupted = outcome.isInterrupted;
    status.rows = outcome.progress.rows;
    status.warnings = outcome.doubts.size() + outcome.warnings.size();
    if (!outcome.recordings.empty()) status.rate = outcome.recordings.front().account.getMedianRate();
    for (const RunOutcome::Recording& recording : outcome.recordings)
        status.repairs += repairsOf(recording.account);
    for (const RunOutcome::Link& link : outcome.links)
        status.lost += link.lost;
    for (const RunOutcome::Result& result : outcome.results)
        if (result.isComplete && !result.path.empty())
            folder.addResult(status, result.id, std::filesystem::path(result.path).filename().string());
    status.outcome = Json::outcome(outcome);
}

void FolderRun::take(const std::exception& refusal) {
    status.failure = refusal.what();
    status.complaints = complaintsOf(refusal);
    isInterrupted = dynamic_cast<const InterruptedException*>(&refusal) != nullptr;
}

ExitCode FolderRun::end(ExitCode code, const std::vector<std::string>& files) {
    const bool isInBatch = !arguments.graphHash.empty();
    if (!isTaken && !isInBatch && folder.findStatus()) return code;
    if (!isTaken) clear();
    status.state = code == kDone   ? RunStatus::kDone
                   : isInterrupted ? RunStatus::kInterrupted
                                   : RunStatus::kFailed;
    if (code != kDone && status.failure.empty())
        status.failure = "what stands beside the results can't be made";
    for (const std::string& file : files)
        folder.addResult(status, {}, file);
    status.ended = timeText();
    status.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    status.peakMemory = getPeakMemory();
    try {
        writeStatus(folder.getPath(), status);
    } catch (const RecordingException& exception) {
        std::cerr << "quillmere: " << exception.what() << "\n";
        return code == kDone ? kFailedMidway : code;
    }
    return code;
}

} // namespace Cli
