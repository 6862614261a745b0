// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Filter.h"
#include "framework/transport/InputPin.h"
#include "host/graph/Followers.h"
#include "host/graph/Graph.h"
#include "host/report/ReportSignal.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// Gets what sinks get, and what watched outputs send: a block beside those of a graph, with a link of its
/// own beside each link that it is about. It has the same buffer, so that what came late comes late here too.
class SignalTap final : public Core::Filter, public SignalGatherer {
public:
    struct Signal : ReportSignal {
        Signal(std::string signalName, bool watched, Core::PinManager* owner, std::size_t mostPieces)
            : ReportSignal(std::move(signalName), SignalCurves(mostPieces)), input(name, owner) {
            isWatched = watched;
        }

        Core::InputPin<Core::MatrixXd> input;
        /// Whether its times are its own and not the rounds', as behind a block that makes times.
        bool isByStamp = false;
    };

    /// Requires: there are such outputs, and the sources of the graph are open. [setup]
    SignalTap(Graph& graph, const std::vector<Core::AbstractOutputPin*>& watched);

    /// Takes what has come in a round, or what is left behind the last one. [run]
    void look(double streamTime) override;
    void lookAtRest() override;
    void process() override {}
    const char* getTypeName() const override { return "SignalTap"; }

    std::vector<const ReportSignal*> getSignals() const override;
    std::uint64_t getRounds() const override { return rounds; }

private:
    void addSink(const Graph::Node& node, std::size_t mostPieces);
    Signal& add(const std::string& name, bool isWatched, Core::AbstractOutputPin& output,
                std::uint32_t capacity, bool isNewestFirst, std::size_t mostPieces);
    void findUnits(const Graph& graph);
    static void take(Signal& signal, double streamTime);

    const FollowerSet followers;
    std::deque<Signal> signals; ///< Pins can't move.
    std::uint64_t rounds = 0;
    double lastTime = 0.0; ///< Seconds.
};

} // namespace Quillmere::Host
