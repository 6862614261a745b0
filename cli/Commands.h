// SPDX-License-Identifier: MIT
#pragma once

#include "cli/BatchEngines.h"
#include "cli/GraphArguments.h"
#include "cli/PlotArguments.h"
#include "host/batch/BatchPlan.h"
#include "host/plugins/BlockCatalogue.h"
#include "host/response/FrequencyResponse.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <iosfwd>
#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace Quillmere::Host {
class BatchTally;
class Job;
class RunObserver;
struct BatchOptions;
struct Inspection;
struct InspectionSettings;
struct JobOptions;
struct PlottedRecording;
struct RunOutcome;
struct RunStatus;
} // namespace Quillmere::Host

/// The commands of `quillmere`: each enters its options and gives back what main calls when the command is
/// named.
namespace Cli {

class FolderRun;
class ProgressLine;

/// The last word of a program without memory.
inline constexpr const char* kOutOfMemory = "quillmere: out of memory\n";

/// What a batch starts; nobody else does.
inline constexpr const char* kWorkerCommand = "batch-worker";

/// What a call of the program ends with.
enum ExitCode : int {
    kDone = 0,
    kFailedMidway = 1, ///< Results stay under their partial names.
    kNothingRun = 2,   ///< Wrong usage, graph or input; no result was touched.
};

class Command {
public:
    virtual ~Command() = default;
    virtual ExitCode run() = 0;
};

class BlocksCommand final : public Command {
public:
    explicit BlocksCommand(CLI::App& command);
    ExitCode run() override;

private:
    void showType(const Quillmere::Host::BlockCatalogue& catalogue) const;

    PluginArguments plugins;
    std::string type; ///< Empty for all.
    bool asJson = false;
    bool asNames = false;
};

class CheckCommand final : public Command {
public:
    explicit CheckCommand(CLI::App& command);
    ExitCode run() override;

private:
    GraphArguments arguments;
    bool asJson = false;
};

class InspectCommand final : public Command {
public:
    explicit InspectCommand(CLI::App& command);
    ExitCode run() override;

private:
    void checkFiles() const;
    ExitCode writeFiles(const Quillmere::Host::Inspection& found,
                        const Quillmere::Host::InspectionSettings& said) const;

    std::string file;
    std::vector<std::string> settings;
    std::string profile; ///< Where the properties of a source are written; empty for nowhere.
    std::string graph;   ///< The same of a graph.
    bool asJson = false;
    bool overwrites = false;
};

class PlotCommand final : public Command {
public:
    explicit PlotCommand(CLI::App& command);
    ExitCode run() override;

private:
    struct Opened;

    void checkOutput();
    void keepInputs() const;
    bool getIsInput(const std::string& name) const;
    void checkPage() const;
    bool open(const Quillmere::Host::InspectionSettings& said, const Quillmere::Host::CurveWishes& wishes,
              std::deque<Opened>& opened) const;
    ExitCode draw(std::vector<Quillmere::Host::CurveTable> tables,
                  const std::vector<Quillmere::Host::PlottedRecording>& recordings,
                  const Quillmere::Host::PictureWishes& wishes) const;

    std::vector<std::string> files;
    std::string output;
    std::string page;
    PlotArguments arguments;
    std::vector<std::string> settings;
    bool isText = false;
    bool overwrites = false;
};

class ResponseCommand final : public Command {
public:
    explicit ResponseCommand(CLI::App& command);
    ExitCode run() override;

private:
    Quillmere::Host::FrequencyResponse measureType(const Quillmere::Host::BlockCatalogue& catalogue) const;
    Quillmere::Host::FrequencyResponse measureGraph(Quillmere::Host::BlockCatalogue& catalogue) const;
    std::string title() const;

    std::string target; ///< A block type, or a graph file when `block` is given.
    std::string block;
    std::vector<std::string> settings;
    std::vector<std::string> parameters;
    Quillmere::Host::ResponseSettings measurement;
    std::string picture;
    bool overwrites = false;
    PluginArguments plugins;
};

/// Where a run of one recording of many puts what it makes.
struct FolderArguments {
    std::string folder; ///< Empty for nowhere: results go where the graph says.
    std::vector<std::string> notes;
    bool resumes = false;
    bool keepsChanged = false;
    bool looks = false;
    bool takesOver = false; ///< With `looks`: what is said of a recording that is done.
    int parent = 0;         ///< The process with which the run ends; 0 for none.
    std::string graphHash;  ///< The graph's SHA-256 when the batch began; empty for a run by itself.
    /// Gives back the option of the folder. Nobody looks for one by its name: the library can't raise there
    /// that memory is short.
    CLI::Option* enter(CLI::App& command);
};

class RunCommand final : public Command {
public:
    explicit RunCommand(CLI::App& command);
    ExitCode run() override;
    /// Leaves a copy of the catalogue that a run has used there: plug-ins stay started for the next.
    void keepCatalogue(std::optional<Quillmere::Host::BlockCatalogue>& place) { kept = &place; }
    /// Whether nothing has run, since an earlier run has done it.
    bool getIsDoneBefore() const { return isDoneBefore; }
    /// Whether somebody has ended the run.
    bool getIsInterrupted() const { return isInterrupted; }
    /// Whether it only tells why it would run.
    bool getLooks() const { return inFolder.looks; }

private:
    void followParent() const;
    ExitCode runInFolder(Quillmere::Host::BlockCatalogue catalogue);
    ExitCode runGraph(Quillmere::Host::BlockCatalogue catalogue, FolderRun* record);
    std::vector<std::string> resultOptions() const;
    std::vector<std::string> placeInFolder();
    Quillmere::Host::JobOptions jobOptions() const;
    std::shared_ptr<Quillmere::Host::RunObserver> observer() const;
    ExitCode runAndTell(Quillmere::Host::Job job, std::chrono::steady_clock::time_point start,
                        FolderRun* record, const std::stop_token& stop) const;
    bool showsProgress() const;
    Quillmere::Host::RunOutcome runOffline(Quillmere::Host::Job& job, ProgressLine& progress,
                                           const std::stop_token& stop) const;
    Quillmere::Host::RunOutcome runLive(Quillmere::Host::Job job, ProgressLine& progress, std::ostream& told,
                                        const std::stop_token& stop) const;

    GraphArguments arguments;
    std::size_t threads = 1;
    std::optional<std::uint64_t> steps; ///< Rounds.
    std::optional<double> duration;     ///< Seconds of stream time.
    std::string speed = "1";
    std::optional<std::string> control;
    std::string summary;              ///< Where the outcome is written as JSON; empty for nowhere.
    std::string report;               ///< Where the page for a browser goes; the same.
    std::vector<std::string> watched; ///< Outputs that the page shows besides.
    std::string picture;              ///< Where the results are drawn; the same.
    FolderArguments inFolder;
    std::optional<Quillmere::Host::BlockCatalogue>* kept = nullptr;
    bool isDoneBefore = false;
    bool isInterrupted = false;
    bool isLive = false;
    bool isQuiet = false;
    bool printsStatistics = false;
};

/// Runs a graph over many recordings, each in a process and a folder of its own.
class BatchCommand final : public Command {
public:
    explicit BatchCommand(CLI::App& command);
    ExitCode run() override;

private:
    void enterRecordings(CLI::App& command);
    void enterRules(CLI::App& command);
    void enterResults(CLI::App& command);
    void checkOptions() const;
    Quillmere::Host::BatchPlan plan() const;
    Quillmere::Host::BatchPlan planOfGraph() const;
    void checkEntries(const Quillmere::Host::BatchPlan& plan,
                      const Quillmere::Host::GraphDescription& description,
                      const Quillmere::Host::BlockCatalogue& catalogue) const;
    void checkEntry(const Quillmere::Host::BatchPlan::Entry& entry,
                    const Quillmere::Host::GraphDescription& description,
                    const Quillmere::Host::BlockCatalogue& catalogue) const;
    void checkPlaces() const;
    void checkPlanAlone() const;
    std::vector<std::string> leftOut() const;
    void checkBegin() const;
    std::string sourceOf(const Quillmere::Host::BlockCatalogue& catalogue) const;
    std::vector<std::string> wordsForEach() const;
    ExitCode writePlan(const Quillmere::Host::BatchPlan& plan) const;
    ExitCode runOnSlurm(const Quillmere::Host::BatchPlan& plan, const std::string& graphHash);
    ExitCode runOnDask(const Quillmere::Host::BatchPlan& plan, const std::string& graphHash) const;
    Quillmere::Host::BatchOptions optionsOf(const Quillmere::Host::BatchPlan& plan,
                                            const std::string& graphHash) const;
    std::vector<std::size_t> findRest(const Quillmere::Host::BatchPlan& plan,
                                      Quillmere::Host::BatchOptions options,
                                      Quillmere::Host::BatchTally& tally, const std::stop_token& stop) const;
    ExitCode runPlan(const Quillmere::Host::BatchPlan& plan, const std::string& graphHash) const;
    ExitCode tell(const Quillmere::Host::BatchPlan& plan, const Quillmere::Host::BatchTally& batch,
                  double seconds) const;
    ExitCode writeSummary(const std::vector<std::string>& folders,
                          const std::map<std::string, Quillmere::Host::RunStatus>& told) const;

    GraphArguments arguments; ///< `inputs` are of sources besides the one that reads the recording.
    std::vector<std::string> patterns;
    std::string out;
    std::string source;
    std::string table;
    std::string planFile;
    std::string lines; ///< `FIRST-LAST` of the plan.
    std::string report;
    std::vector<std::string> watched;
    std::string picture;
    std::vector<std::string> statistics;
    EngineArguments elsewhere;
    std::size_t jobs = 0; ///< 0 for as many as there are cores.
    bool resumes = false;
    bool keepsChanged = false;
    bool isDry = false;
    bool collects = false;
    bool isQuiet = false;
};

/// What a batch starts: runs calls of `run`, which come through standard input, one after the other.
class BatchWorkerCommand final : public Command {
public:
    explicit BatchWorkerCommand(CLI::App&) {}
    ExitCode run() override;

private:
    std::string runLine(const std::string& line);

    std::optional<Quillmere::Host::BlockCatalogue> catalogue; ///< Of the last run: its plug-ins stay.
};

/// Asks a run that listens at a `--control` path.
class CtlCommand final : public Command {
public:
    explicit CtlCommand(CLI::App& command);
    ExitCode run() override;

private:
    static std::string requestOf(const std::vector<std::string>& words);

    const CLI::App& application; ///< Which keeps the request.
    std::string path;
    int timeout = 30; ///< Seconds.
};

} // namespace Cli
