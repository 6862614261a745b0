// SPDX-License-Identifier: MIT
// Batches that other machines run: what is left is found here, and what came of it is told here.
#include "cli/Commands.h"

#include "cli/BatchReport.h"
#include "cli/DaskEngine.h"
#include "cli/SideFile.h"
#include "cli/StopSignals.h"
#include "cli/UsageError.h"
#include "host/batch/BatchPlan.h"
#include "host/batch/BatchRun.h"
#include "host/batch/BatchTally.h"
#include "host/text/Counted.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <numeric>
#include <optional>
#include <system_error>

namespace Cli {

using namespace Quillmere::Host;
namespace fs = std::filesystem;

namespace {

constexpr const char* kPlanName = "plan.txt"; // in the folder of the results

/// A folder that goes when this does.
class PassingFolder {
public:
    explicit PassingFolder(const fs::path& parent) : path((parent / ".arrivals-XXXXXX").string()) {
        std::error_code error;
        fs::create_directories(parent, error);
        if (::mkdtemp(path.data()) == nullptr)
            throw UsageError({{"--ship"},
                              "no folder '" + printable(path, kLongestName) + "' that can be made",
                              "one for what workers send"});
    }
    ~PassingFolder() {
        std::error_code error;
        fs::remove_all(path, error);
    }
    PassingFolder(const PassingFolder&) = delete;
    PassingFolder& operator=(const PassingFolder&) = delete;

    const std::string& getPath() const { return path; }

private:
    std::string path;
};

/// Somebody may have edited the file: empty lines count, and the last one may lack its end.
std::size_t linesOf(const std::string& path, std::size_t entries) {
    std::ifstream file(path, std::ios::binary);
    const auto ends =
        std::count(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>(), '\n');
    return std::max(entries, static_cast<std::size_t>(ends));
}

} // namespace

/// Those that haven't been done, or have changed since; what is said of the others is taken over. This
/// machine has the results, and so it can tell.
std::vector<std::size_t> BatchCommand::findRest(const BatchPlan& entries, BatchOptions options,
                                                BatchTally& tally, const std::stop_token& stop) const {
    std::vector<std::size_t> rest(entries.entries.size());
    std::iota(rest.begin(), rest.end(), std::size_t{0});
    if (!resumes) return rest;
    options.words.insert(options.words.end(), {"--look", "--take-over"});
    BatchRun looking(entries, options);
    looking.run(stop, [](const BatchProgress&) {});
    const auto isKnown = [&](std::size_t i) {
        const BatchEnd& end = looking.getEnds()[i];
        const bool isLeft = end.state == BatchEnd::State::WouldRun || end.state == BatchEnd::State::Waiting;
        if (!isLeft) tally.take(i, end.state, end.text);
        return !isLeft;
    };
    rest.erase(std::remove_if(rest.begin(), rest.end(), isKnown), rest.end());
    return rest;
}

ExitCode BatchCommand::runOnDask(const BatchPlan& entries, const std::string& graphHash) const {
    const StopSignals signals;
    BatchProgressLine line(!isQuiet);
    BatchTally tally(entries.entries.size());
    BatchOptions calls = optionsOf(entries, graphHash);
    const std::vector<std::size_t> rest = findRest(entries, calls, tally, signals.getToken());
    if (!rest.empty() && !signals.getToken().stop_requested()) {
        calls.words = {"--quiet"};
        DaskWishes wishes{.scheduler = elsewhere.getScheduler(), .jobs = jobs, .isQuiet = isQuiet};
        std::optional<PassingFolder> arrivals;
        const fs::path first = entries.entries.front().folder;
        if (elsewhere.ships)
            wishes.arrivals = arrivals.emplace(out.empty() ? first.parent_path() : fs::path(out)).getPath();
        const int code = runAtDask(entries, rest, calls, wishes, tally, signals.getToken(),
                                   [&](const BatchProgress& progress) { line.show(progress); });
        line.clear();
        if (code == kNothingRun && tally.getProgress().getRun() == 0) return kNothingRun;
    }
    return tell(entries, tally, line.getSeconds());
}

ExitCode BatchCommand::runOnSlurm(const BatchPlan& entries, const std::string& graphHash) {
    BatchPlan left = entries;
    const bool isNew = !arguments.graph.empty();
    if (isNew && planFile.empty()) {
        checkBegin();
        planFile = (fs::path(out) / kPlanName).lexically_normal().string();
        std::error_code error;
        fs::create_directories(out, error);
        arguments.overwrites = true; // it is the batch's own
    }
    if (isNew && resumes) {
        const StopSignals signals;
        BatchTally tally(entries.entries.size());
        const std::vector<std::size_t> rest =
            findRest(entries, optionsOf(entries, graphHash), tally, signals.getToken());
        if (signals.getToken().stop_requested() || rest.empty()) return tell(entries, tally, 0.0);
        left.entries.clear();
        for (const std::size_t i : rest)
            left.entries.push_back(entries.entries[i]);
    }
    if (isNew) {
        const ExitCode code = writePlan(left);
        if (code != kDone) return code;
    }
    const std::string text = slurmText(elsewhere, planFile, linesOf(planFile, left.entries.size()));
    if (elsewhere.prints) {
        std::cout << text;
        return kDone;
    }
    const std::string script = planFile + ".sbatch";
    const ResultOptions options{.overwrites = true, .looksOwn = {}, .isOfGraph = false};
    if (!writeSideFile(script, options, text)) return kFailedMidway;
    submitToSlurm(script);
    if (!isQuiet)
        std::cout << counted(left.entries.size(), "recording") << " in " << planFile
                  << "; when they are done: quillmere batch --collect --out FOLDER" << std::endl;
    return kDone;
}

} // namespace Cli
