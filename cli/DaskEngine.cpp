// SPDX-License-Identifier: MIT
#include "cli/DaskEngine.h"

#include "cli/Commands.h"
#include "cli/UsageError.h"
#include "host/batch/EngineRun.h"
#include "host/description/GraphDescription.h"
#include "host/ends/FileEnd.h"
#include "host/graph/Graph.h"
#include "host/graph/GraphPlugins.h"
#include "host/text/Json.h"
#include "host/text/NearestName.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <utility>

namespace Cli {

using namespace Quillmere::Host;
namespace fs = std::filesystem;

namespace {

constexpr const char* kPythonVariable = "QUILLMERE_PYTHON";
constexpr const char* kPathVariable = "PYTHONPATH";
constexpr const char* kEngine = "velmarind._dask";
constexpr const char* kHasAll = "import importlib.util as u, sys; "
                                "sys.exit(not all(map(u.find_spec, ('velmarind', 'distributed'))))";

/// Where modules are looked for: beside this command, too, as in a build tree and in a wheel.
std::string modulePath() {
    const char* const said = std::getenv(kPathVariable);
    std::string path = said == nullptr ? "" : said;
    const fs::path own = fs::path(ownPath()).parent_path();
    std::error_code error;
    for (const fs::path& folder : {own / "../python", own / "../.."})
        if (fs::exists(folder / "velmarind/__init__.py", error))
            path.append(path.empty() ? "" : ":").append(folder.lexically_normal().string());
    return path;
}

/// Whether an interpreter has what the engine is made of.
bool getHasAll(const std::string& python, const std::string& modules) {
    const pid_t process = ::fork();
    if (process == 0) {
        ::setenv(kPathVariable, modules.c_str(), 1);
        ::execlp(python.c_str(), python.c_str(), "-c", kHasAll, nullptr);
        ::_exit(127);
    }
    int status = 0;
    while (process > 0 && ::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return process > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// Debian's own first: the first `python3` on the path may be one of another making.
std::string findPython(const std::string& modules) {
    std::vector<std::string> known{"/usr/bin/python3", "python3"};
    const char* const said = std::getenv(kPythonVariable);
    if (said != nullptr) known = {said};
    for (const std::string& python : known)
        if (getHasAll(python, modules)) return python;
    throw UsageError(
        {{"--engine"},
         "no Python with the packages velmarind and distributed (" + listOfNames(known) + ")",
         std::string("one, as Debian's with python3-distributed; ") + kPythonVariable + " names another"});
}

/// What the graph of a call needs, wherever it is run.
struct GraphNeeds {
    std::set<std::string> plugins;
    std::set<std::string> files; ///< Of sources, that no option of the call names.
};

void addNeeds(const BatchPlan::Entry& entry, GraphNeeds& needs) {
    GraphArguments arguments = argumentsOf(entry);
    BlockCatalogue catalogue = loadCatalogue(arguments.plugins);
    Complaints ignored; // those of the graph were told before
    const GraphDescription description = GraphDescription::fromFile(entry.words[1], ignored);
    loadPlugins(description, catalogue, ignored);
    std::error_code error;
    for (const std::string& plugin : arguments.plugins.plugins)
        needs.plugins.insert(fs::absolute(plugin, error).string());
    for (const GraphDescription::Plugin& plugin : description.plugins) {
        const fs::path file = fs::path(description.getFolder()) / plugin.path;
        if (fs::exists(file, error))
            needs.plugins.insert(fs::absolute(file, error).lexically_normal().string());
    }
    const Graph graph(description.with(changesOf(arguments), ignored), catalogue, ignored);
    for (const Graph::Node& node : graph.getNodes()) {
        const std::string begin = node.description->id + "=";
        const auto isIt = [&](const std::string& input) { return input.starts_with(begin); };
        const std::vector<std::string>& inputs = arguments.inputs;
        if (node.source == nullptr || node.file == nullptr) continue;
        if (std::any_of(inputs.begin(), inputs.end(), isIt)) continue;
        for (const FileEnd::File& file : node.file->getFiles())
            if (file.descriptor < 0) needs.files.insert(file.name);
    }
}

std::string inOneLine(std::string json) {
    std::replace(json.begin(), json.end(), '\n', ' '); // no text in it has one
    return json;
}

std::string settingsOf(const BatchPlan& plan, const std::vector<std::size_t>& recordings,
                       const DaskWishes& wishes) {
    GraphNeeds needs;
    std::set<std::string> graphs;
    for (const std::size_t recording : recordings)
        if (graphs.insert(plan.entries[recording].words[1]).second) addNeeds(plan.entries[recording], needs);
    return inOneLine(
        Json::object({{"scheduler", Json::text(wishes.scheduler)},
                      {"command", Json::text(ownPath())},
                      {"jobs", std::to_string(wishes.jobs)},
                      {"quiet", Json::flag(wishes.isQuiet)},
                      {"ship", Json::flag(!wishes.arrivals.empty())},
                      {"arrivals", Json::text(wishes.arrivals)},
                      {"plugins", Json::listOfTexts({needs.plugins.begin(), needs.plugins.end()})},
                      {"files", Json::listOfTexts({needs.files.begin(), needs.files.end()})}}));
}

} // namespace

int runAtDask(const BatchPlan& plan, const std::vector<std::size_t>& recordings, const BatchOptions& calls,
              const DaskWishes& wishes, BatchTally& tally, const std::stop_token& stop,
              const BatchProgressHandler& onProgress) {
    const std::string modules = modulePath();
    EngineOptions options{.program = {"/usr/bin/env", findPython(modules), "-m", kEngine}};
    options.environment = {{kPathVariable, modules}};
    options.settings = settingsOf(plan, recordings, wishes);
    options.arrivals = wishes.arrivals;
    EngineRun engine(plan, recordings, calls, options, tally);
    return engine.run(stop, onProgress);
}

} // namespace Cli
