// SPDX-License-Identifier: MIT
#include "python/extension/BlockEngine.h"

#include "framework/core/StampClock.h"
#include "host/description/Quantity.h"
#include "host/ends/MemoryEnds.h"
#include "host/plugins/KnownTypes.h"
#include "host/text/CaughtText.h"
#include "host/text/Complaint.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <new>
#include <utility>

namespace Python {

using namespace Quillmere::Host;
using Quillmere::Core::CommandProperty;
using Quillmere::Core::MatrixXd;

namespace {
constexpr const char* kRateSource = "fs"; // what messages call whoever states the rate
constexpr const char* kRatePin = "rows";

/// It states a rate and nothing else: samples of two shapes, of which nobody can say what fits them.
MemoryRecording recordingOf(const std::optional<double>& rate) {
    MemoryRecording recording;
    recording.pins.emplace_back();
    recording.pins.back().name = kRatePin;
    recording.pins.back().samples = SampleSeries::ofSamples({MatrixXd::Zero(1, 1), MatrixXd::Zero(1, 2)});
    if (rate)
        recording.rate = rate;
    else
        recording.times = std::vector<double>{0.0, 0.0};
    return recording;
}

GraphDescription descriptionOf(const BlockOrder& order) {
    GraphDescription description;
    description.addBlock(kRateSource, "MemorySource");
    description.blocks.push_back(order.description);
    const std::string input = getTypeInfo(order.description.type).mainInput;
    if (!input.empty())
        description.connect(std::string(kRateSource) + "." + kRatePin, order.description.id + "." + input);
    return description;
}

/// A rate is all that a conversion needs beside the setting, and the general message can't say what states it
/// here.
void requireRate(const BlockOrder& order, Complaints& complaints) {
    if (order.rate) return;
    for (const auto& setting : order.description.settings)
        if (toQuantity(setting.value))
            complaints.add(setting.where,
                           setting.value.describe() + " for '" + setting.name + "' of '" +
                               order.description.id + "' (" + order.description.type + ") without fs",
                           "fs, the rows a second, or a number without a unit");
}

bool getIsNothing(const double* values, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        if (!std::isnan(values[i])) return false;
    return true;
}

using Sender = Quillmere::Core::OutputPin<MatrixXd>;

void put(Sender& sender, const SampleRows& rows, std::size_t index) {
    Quillmere::Core::resizeSample(sender.data.value, rows.rows, rows.columns);
    const Eigen::Index size = rows.rows * rows.columns;
    Quillmere::Core::Private::copyElements(sender.data.value.data(),
                                           rows.data + index * static_cast<std::size_t>(size), size);
}
} // namespace

SampleTimes SampleTimes::from(std::size_t index) const {
    SampleTimes rest = *this;
    if (rest.each != nullptr) rest.each += index;
    rest.passed += index;
    return rest;
}

std::unique_ptr<Graph> makeBlockGraph(const BlockOrder& order, std::vector<std::string>& warnings) {
    Complaints complaints;
    requireRate(order, complaints);
    complaints.raise();
    const MemoryEnds ends;
    BlockCatalogue catalogue = getCatalogue();
    ends.addTo(catalogue);
    const_cast<MemoryEnds&>(ends).setRecording(kRateSource, recordingOf(order.rate));
    auto graph = std::make_unique<Graph>(descriptionOf(order), catalogue, complaints);
    complaints.raise();
    graph->openRecordings(complaints);
    complaints.raise();
    for (const Warning& warning : complaints.getSortedWarnings())
        warnings.push_back(warning.text);
    return graph;
}

BlockEngine::BlockEngine(const BlockOrder& order) : graph(makeBlockGraph(order, warnings)) {
    block = graph->find(order.description.id)->block.get();
    graph->cutLoose(*block);
    const TypeInfo& info = getTypeInfo(order.description.type);
    if (!info.mainInput.empty()) mainSender = findSender(info.mainInput);
    if (!info.mainOutput.empty()) {
        mainCollector = &collectors.emplace_back(info.mainOutput);
        block->getOutputPin(info.mainOutput).attach(*mainCollector, false);
    }
    rowStepper = dynamic_cast<Quillmere::Core::RowStepper*>(block);
    const KnownType& known = getKnownType(order.description.type);
    needsClock = known.wallClockOutputs.front() != nullptr;
    for (const std::string& command : order.commands)
        dynamic_cast<CommandProperty&>(block->getProperty(command)).fire();
}

/// Pins go before the block that they are linked with.
BlockEngine::~BlockEngine() {
    senders.clear();
    collectors.clear();
}

Sender* BlockEngine::findSender(const std::string& input) {
    for (Sender& sender : senders)
        if (sender.getName() == input) return &sender;
    for (Quillmere::Core::AbstractInputPin* const pin : block->getInputPins()) {
        if (pin->getName() != input) continue;
        Sender& sender = senders.emplace_back(input, nullptr);
        sender.attach(*pin, false);
        return &sender;
    }
    return nullptr;
}

std::deque<Collector>& BlockEngine::listenToAll() {
    if (collectors.size() < block->getOutputPins().size())
        for (Quillmere::Core::AbstractOutputPin* const pin : block->getOutputPins()) {
            if (mainCollector != nullptr && pin->getName() == mainCollector->getName()) continue;
            Collector& collector = collectors.emplace_back(pin->getName());
            pin->attach(collector, false);
        }
    return collectors;
}

template <class BeforeStep>
void BlockEngine::drive(std::size_t steps, const SampleTimes& times, BeforeStep beforeStep) {
    std::optional<Quillmere::Core::StampClock::Lent> lent;
    if (needsClock) lent.emplace(&now);
    try {
        for (std::size_t i = 0; i < steps; ++i) {
            now = times.at(i);
            beforeStep(i);
            block->process();
        }
    } catch (...) {
        raiseStep();
    }
}

void BlockEngine::feed(const SampleRows& samples, const SampleTimes& times) {
    Sender& sender = *mainSender;
    Quillmere::Core::resizeSample(sender.data.value, samples.rows, samples.columns);
    double* const to = sender.data.value.data();
    const Eigen::Index size = samples.rows * samples.columns;
    const double* from = samples.data;
    const auto step = [&](std::size_t) {
        Quillmere::Core::Private::copyElements(to, from, size);
        from += size;
        sender.send(now);
    };
    const bool mayTakeRows = rowStepper != nullptr && !needsClock && samples.count > 1 && samples.rows == 1 &&
                             samples.columns > 0 && mainCollector != nullptr && mainCollector->isOn;
    if (!mayTakeRows) return drive(samples.count, times, step);
    for (std::size_t i = 0; i < samples.count;) {
        const std::size_t stepped = stepRows(samples, times, i);
        if (stepped == 0) drive(1, times.from(i), step);
        i += std::max<std::size_t>(stepped, 1);
        from = samples.data + i * static_cast<std::size_t>(size);
    }
}

/// As many rows as the block takes at once, from the `first` on; 0 where the next has to go by itself.
std::size_t BlockEngine::stepRows(const SampleRows& samples, const SampleTimes& times, std::size_t first) {
    const Eigen::Index width = rowStepper->getRowWidth(samples.columns);
    if (width == Quillmere::Core::RowStepper::kOneByOne) return 0;
    const std::size_t count = std::min(samples.count - first, Quillmere::Core::RowStepper::kMostRows);
    double* const results = mainCollector->samples.appendRows(count, width);
    rowStepper->stepRows(samples.data + first * static_cast<std::size_t>(samples.columns), results, count,
                         samples.columns);
    if (mainCollector->keepsTimes)
        for (std::size_t i = first; i < first + count; ++i)
            mainCollector->times.push_back(times.at(i));
    return count;
}

void BlockEngine::feed(const SampleRows& samples, const SampleTimes& times,
                       const std::vector<OtherInput>& others) {
    drive(samples.count, times, [&](std::size_t i) {
        for (const OtherInput& other : others) {
            if (!other.isEach && i > 0) continue;
            const auto size = static_cast<std::size_t>(other.rows.rows * other.rows.columns);
            if (getIsNothing(other.rows.data + i * size, size)) continue;
            put(*other.sender, other.rows, i);
            other.sender->send(now);
        }
        put(*mainSender, samples, i);
        mainSender->send(now);
    });
}

void BlockEngine::finish() {
    auto* const command = dynamic_cast<CommandProperty*>(block->getPropertyBag().find("Finish"));
    if (command == nullptr || mainSender == nullptr) return;
    drive(1, {.each = &now, .first = 0.0, .passed = 0, .rate = 0.0}, [&](std::size_t) { command->fire(); });
}

void BlockEngine::generate(std::size_t steps, const SampleTimes& times) {
    drive(steps, times, [](std::size_t) {});
}

/// What a step raises, with the block's name.
void BlockEngine::raiseStep() {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        throw HostException(Complaint::sentence({}, "block " + blockText(*block) + ": " + caughtText(),
                                                "a sample that the block takes"));
    }
}

} // namespace Python
