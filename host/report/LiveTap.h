// SPDX-License-Identifier: MIT
#pragma once

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
/// thread that writes them, at the times that they have in the result.
class LiveTap final : public SignalGatherer {
public:
    /// Requires: the sinks' links are made, and they aren't open; both live until the run has ended. [setup]
    explicit LiveTap(const Graph& graph);

    /// Requires: nothing runs, as of the rounds.
    std::vector<const ReportSignal*> getSignals() const override;
    std::uint64_t getRounds() const override;

private:
    class OfSink final : public RowWatcher {
    public:
        OfSink(RecordingSink& sink, std::size_t mostPieces, SpectrumFinder& spectra);
        void takeRow(double time, const std::vector<const Core::MatrixXd*>& samples) override;

        std::deque<ReportSignal> signals; ///< One for each pin.
        std::uint64_t rows = 0;
    };

    std::deque<OfSink> sinks; ///< Sinks point to them.
};

} // namespace Quillmere::Host
