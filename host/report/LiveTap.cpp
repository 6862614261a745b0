// SPDX-License-Identifier: MIT
#include "host/report/LiveTap.h"

#include "framework/Quillmere.h"
#include "host/graph/BurstRoom.h"
#include "host/graph/UnitFinder.h"

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

namespace {
std::string addressOf(const Core::AbstractOutputPin& output) {
    return output.getManager()->getName() + "." + output.getName();
}
} // namespace

/// All that comes in a step has room: of what is watched everything counts.
LiveTap::OfOutput::OfOutput(Core::AbstractOutputPin& output, std::size_t mostPieces)
    : Onlooker("report"), signal(addressOf(output), SignalCurves(mostPieces)), input(signal.name, this) {
    signal.isWatched = true;
    input.setBufferCapacity(kSamplesOfAStep);
    output.attach(input, false);
}

void LiveTap::OfOutput::process() {
    while (input.hasData()) {
        const double time = gathersByTime ? input.getTimeStamp() : streamTime;
        signal.curves.take(time, input.take());
    }
}

LiveTap::LiveTap(const Graph& graph, const std::vector<Core::AbstractOutputPin*>& watched) {
    std::vector<RecordingSink*> written;
    std::size_t pins = watched.size();
    for (const Graph::Node& node : graph.getNodes()) {
        auto* const sink = dynamic_cast<RecordingSink*>(node.block.get());
        if (sink == nullptr) continue;
        written.push_back(sink);
        pins += sink->getInputPins().size();
    }
    ManualShelf manuals(graph.getCatalogue());
    SpectrumFinder spectra(graph.getNodes(), graph.getSourceRates(), manuals);
    const std::size_t most = SignalCurves::kMostPieces / std::max<std::size_t>(pins, 1);
    for (RecordingSink* const sink : written)
        sinks.emplace_back(*sink, most, spectra);
    UnitFinder units(graph.getNodes(), manuals);
    for (Core::AbstractOutputPin* const pin : watched) {
        OfOutput& output = outputs.emplace_back(*pin, most);
        output.signal.unit = units.unitAt(output.input);
        output.signal.rowRate = spectra.rowRateAt(output.input).value_or(0.0);
    }
}

std::vector<Onlooker*> LiveTap::getOnlookers() {
    std::vector<Onlooker*> all;
    for (OfOutput& output : outputs)
        all.push_back(&output);
    return all;
}

std::vector<const ReportSignal*> LiveTap::getSignals() const {
    std::vector<const ReportSignal*> all;
    for (const OfSink& sink : sinks)
        for (const ReportSignal& signal : sink.signals)
            all.push_back(&signal);
    for (const OfOutput& output : outputs)
        all.push_back(&output.signal);
    return all;
}

std::uint64_t LiveTap::getRounds() const {
    std::uint64_t most = 0;
    for (const OfSink& sink : sinks)
        most = std::max(most, sink.rows);
    return most;
}

} // namespace Quillmere::Host
