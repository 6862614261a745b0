// SPDX-License-Identifier: MIT
#pragma once

#include "framework/transport/InputPin.h"
#include "host/ends/Onlooker.h"
#include "host/graph/Graph.h"
#include "host/report/SpectrumFinder.h"
#include "host/recording/RecordingSink.h"
#include "host/recording/RowWatcher.h"
#include "host/report/ReportSignal.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace Quillmere::Host {

/// Gets the rows that a live run writes, where there are no rounds that all blocks share: each sink's on the
/// thread that writes them, at the times that they have in the result. Beside them it gets what is watched,
/// each on the thread of its layout.
class LiveTap final : public SignalGatherer {
public:
    /// Requires: the sinks' links are made, and they aren't open; both live until the run has ended, and
    /// there are such outputs. [setup]
    LiveTap(const Graph& graph, const std::vector<Core::AbstractOutputPin*>& watched);

    /// Requires: nothing runs, as of the rounds.
    std::vector<const ReportSignal*> getSignals() const override;
    std::uint64_t getRounds() const override;
    std::vector<Onlooker*> getOnlookers() override;

private:
    class OfSink final : public RowWatcher {
    public:
        OfSink(RecordingSink& sink, std::size_t mostPieces, SpectrumFinder& spectra);
        void takeRow(double time, const std::vector<const Core::MatrixXd*>& samples) override;

        std::deque<ReportSignal> signals; ///< One for each pin.
        std::uint64_t rows = 0;
    };

    /// Times are those of rows: of the rounds of its layout, or where these aren't its own, time stamps.
    class OfOutput final : public Onlooker {
    public:
        OfOutput(Core::AbstractOutputPin& output, std::size_t mostPieces);
        void process() override;
        const char* getTypeName() const override { return "report"; }
        void setStreamTime(double seconds) override { streamTime = seconds; }
        void setGathersByTime(bool flag) override { gathersByTime = flag; }

        ReportSignal signal;
        Core::InputPin<Core::MatrixXd> input;

    private:
        double streamTime = 0.0; ///< Seconds.
        bool gathersByTime = false;
    };

    std::deque<OfSink> sinks;     ///< Sinks point to them.
    std::deque<OfOutput> outputs; ///< They are linked.
};

} // namespace Quillmere::Host
