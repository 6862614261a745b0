// SPDX-License-Identifier: MIT
#include "host/report/SignalTap.h"

#include "framework/Quillmere.h"
#include "host/graph/BurstRoom.h"
#include "host/graph/ManualShelf.h"
#include "host/graph/UnitFinder.h"
#include "host/plugins/KnownTypes.h"
#include "host/report/SpectrumFinder.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {

/// The names that a sink gives the columns of a pin.
std::vector<std::string> columnNamesOf(const GraphDescription::Block& sink, const std::string& pin) {
    std::vector<std::string> names;
    for (const GraphDescription::Setting& setting : sink.settings) {
        if (setting.name != "columns") continue;
        const Value::Entry* const entry = setting.value.find(pin);
        if (entry == nullptr) continue;
        for (const Value& name : entry->value.items)
            names.push_back(name.text);
        if (entry->value.isScalar()) names.push_back(entry->value.text);
    }
    return names;
}

FollowerSet followersIn(const Graph& graph) {
    std::vector<Core::Filter*> blocks;
    for (const Graph::Node& node : graph.getNodes())
        blocks.push_back(node.block.get());
    return followersAmong(blocks);
}

bool getCarriesMatrices(const Core::AbstractOutputPin* output) {
    return output != nullptr && output->getDataTypeName() == Core::dataTypeName<Core::MatrixXd>();
}
} // namespace

SignalTap::SignalTap(Graph& graph, const std::vector<Core::AbstractOutputPin*>& watched)
    : Filter("report", true), followers(followersIn(graph)) {
    // A link within one layout is read in place.
    graph.getLayout().add(*this);
    std::size_t count = watched.size();
    for (const Sink* const sink : graph.getSinks())
        count += sink->getInputPins().size();
    const std::size_t most = SignalCurves::kMostPieces / std::max<std::size_t>(count, 1);
    for (const Graph::Node& node : graph.getNodes())
        if (node.sink != nullptr) addSink(node, most);
    for (Core::AbstractOutputPin* const pin : watched)
        add(pin->getManager()->getName() + "." + pin->getName(), true, *pin, kSamplesOfAStep, false, most);
    findUnits(graph);
}

void SignalTap::addSink(const Graph::Node& node, std::size_t mostPieces) {
    for (const Core::AbstractInputPin* const pin : node.sink->getInputPins()) {
        Core::AbstractOutputPin* const sender = pin->getConnectedOutput();
        if (!getCarriesMatrices(sender)) continue;
        Signal& signal = add(node.description->id + "." + pin->getName(), false, *sender,
                             pin->getBufferCapacity(), pin->getIsLifo(), mostPieces);
        signal.columns = columnNamesOf(*node.description, pin->getName());
    }
}

SignalTap::Signal& SignalTap::add(const std::string& name, bool isWatched, Core::AbstractOutputPin& output,
                                  std::uint32_t capacity, bool isNewestFirst, std::size_t mostPieces) {
    Signal& signal = signals.emplace_back(name, isWatched, this, mostPieces);
    signal.input.setIsBlocking(false);
    signal.input.setBufferCapacity(capacity);
    signal.input.setIsLifo(isNewestFirst);
    output.attach(signal.input, false);
    signal.isByStamp = getMakesTimes(&output) || followers.contains(output.getManager());
    return signal;
}

std::vector<const ReportSignal*> SignalTap::getSignals() const {
    std::vector<const ReportSignal*> all;
    for (const Signal& signal : signals)
        all.push_back(&signal);
    return all;
}

void SignalTap::findUnits(const Graph& graph) {
    ManualShelf manuals(graph.getCatalogue());
    UnitFinder finder(graph.getNodes(), manuals);
    SpectrumFinder spectra(graph.getNodes(), graph.getSourceRates(), manuals);
    for (Signal& signal : signals) {
        signal.unit = finder.unitAt(signal.input);
        signal.rowRate = spectra.rowRateAt(signal.input).value_or(0.0);
    }
}

/// A sink takes one sample a round from each link; of what is watched everything counts.
void SignalTap::look(double streamTime) {
    ++rounds;
    lastTime = streamTime;
    for (Signal& signal : signals) {
        while (signal.input.hasData()) {
            take(signal, streamTime);
            if (!signal.isWatched) break;
        }
    }
}

void SignalTap::take(Signal& signal, double streamTime) {
    const double time = signal.isByStamp ? signal.input.getTimeStamp() : streamTime;
    signal.curves.take(time, signal.input.take());
}

void SignalTap::lookAtRest() {
    for (Signal& signal : signals)
        while (signal.input.hasData())
            take(signal, lastTime);
}

} // namespace Quillmere::Host
