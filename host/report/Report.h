// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/run/RunObserver.h"

#include <memory>
#include <string>
#include <vector>

namespace Quillmere::Core {
class AbstractOutputPin;
}

namespace Quillmere::Host {

class ResultFile;
class SignalGatherer;

struct ReportOptions {
    std::string path{};                 ///< Where it goes; `-` is standard output.
    std::vector<std::string> watched{}; ///< Outputs as `block.pin`, beside what comes to sinks.
    bool overwrites = false;            ///< Whether it may replace a file that no run has made.
    std::string program{};              ///< The version of the program that makes it.
    std::string pathName = "report";    ///< What the caller calls the path, for messages,
    std::string watchName = "watch";    ///< and what he calls a watched output.
};

/// A run as a page for a browser: its graph, every signal that came to a sink or is watched, what was
/// repaired and lost, and what it was made with. It is a result file like every other, and whole when it has
/// its name.
class QUILLMERE_API Report final : public RunObserver {
public:
    explicit Report(ReportOptions reportOptions);
    ~Report() override;

    void check(const Graph& graph, const BlockCatalogue& catalogue, Complaints& complaints) override;
    /// Of a live run it shows the rows of results, and what is watched.
    bool checkLive(const Graph& graph, const BlockCatalogue& catalogue, Complaints& complaints) override;
    void begin(Graph& graph, const std::stop_token& stop) override;
    std::vector<Onlooker*> getOnlookers() override;
    void look(double streamTime) override;
    void complete(const RunOutcome& outcome) override;
    void discard() override;

private:
    bool checkFile(const Graph& graph, const BlockCatalogue& catalogue, Complaints& complaints) const;
    void findWatched(const Graph& graph, const std::string& address, Complaints& complaints);

    const ReportOptions options;
    std::vector<Core::AbstractOutputPin*> watched; ///< Of the graph that was checked last.
    std::unique_ptr<ResultFile> file;
    bool isOfLiveRun = false; ///< The graph was checked for one last.
    std::unique_ptr<SignalGatherer> signals;
    std::string graphJson; ///< Of the graph as the run began.
    std::string versionsJson;
    std::string graphName;
};

} // namespace Quillmere::Host
