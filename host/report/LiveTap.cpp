// SPDX-License-Identifier: MIT
#include "host/report/LiveTap.h"

#include <algorithm>

namespace Quillmere::Host {

LiveTap::OfSink::OfSink(RecordingSink& sink, std::size_t mostPieces, SpectrumFinder& spectra) {
    for (const TableWriter::Group& group : sink.getGroups()) {
        ReportSignal& signal =
            signals.emplace_back(sink.getName() + "." + group.name, SignalCurves(mostPieces));
        signal.unit = group.unit;
        signal.columns = group.columns;
        signal.rowRate = spectra.rowRateAt(*sink.getInputPins()[signals.size() - 1]).value_or(0.0);
    }
    sink.addWatcher(*this);
}

void LiveTap::OfSink::takeRow(double time, const std::vector<const Core::MatrixXd*>& samples) {
    ++rows;
    for (std::size_t pin = 0; pin < std::min(samples.size(), signals.size()); ++pin)
        if (samples[pin] != nullptr) signals[pin].curves.take(time, *samples[pin]);
}

LiveTap::LiveTap(const Graph& graph) {
    std::vector<RecordingSink*> written;
    std::size_t pins = 0;
    for (const Graph::Node& node : graph.getNodes()) {
        auto* const sink = dynamic_cast<RecordingSink*>(node.block.get());
        if (sink == nullptr) continue;
        written.push_back(sink);
        pins += sink->getInputPins().size();
    }
    ManualShelf manuals(graph.getCatalogue());
    SpectrumFinder spectra(graph.getNodes(), graph.getSourceRates(), manuals);
    for (RecordingSink* const sink : written)
        sinks.emplace_back(*sink, SignalCurves::kMostPieces / std::max<std::size_t>(pins, 1), spectra);
}

std::vector<const ReportSignal*> LiveTap::getSignals() const {
    std::vector<const ReportSignal*> all;
    for (const OfSink& sink : sinks)
        for (const ReportSignal& signal : sink.signals)
            all.push_back(&signal);
    return all;
}

std::uint64_t LiveTap::getRounds() const {
    std::uint64_t most = 0;
    for (const OfSink& sink : sinks)
        most = std::max(most, sink.rows);
    return most;
}

} // namespace Quillmere::Host
