// SPDX-License-Identifier: MIT
#include "host/live/LiveSettings.h"

#include "framework/core/CommandProperty.h"
#include "host/graph/PropertyWriter.h"
#include "host/graph/RateSettings.h"
#include "host/live/ControlException.h"
#include "host/live/LiveGraph.h"
#include "host/description/ValueReader.h"
#include "host/description/ValueText.h"
#include "host/graph/BlockDescription.h"
#include "host/text/CaughtText.h"
#include "host/text/Complaint.h"

#include <Poco/Exception.h>

#include <fnmatch.h>

#include <algorithm>

namespace Quillmere::Host {

namespace {
/// More are a program's, which nobody reads one by one.
constexpr std::size_t kMostChanges = 1000;

SettingState stateOf(const Core::AbstractProperty& property, const std::string& name) {
    PropertyDescription description = describe(property);
    const bool isCommand = description.kind == PropertyDescription::Kind::Command;
    SettingState state{.name = name,
                       .value = valueText(description),
                       .expected = isCommand ? "" : expectedText(description),
                       .isCommand = isCommand,
                       .isWritable = description.isWritable,
                       .kind = description.kind,
                       .held = {}};
    state.held = std::move(description.value);
    return state;
}

/// Names may hold brackets, which a pattern reads as a set of letters.
bool matches(const std::string& pattern, const std::string& name) {
    return pattern == name || ::fnmatch(pattern.c_str(), name.c_str(), 0) == 0;
}

/// In the setting's own words.
[[noreturn]] void refuse(const std::string& name, const std::string& words) {
    Complaint complaint = Complaint::sentence({}, words, "what the setting takes");
    complaint.part = name;
    throw ControlException(words, {complaint});
}

template <class Action>
void withRefusalsTold(const std::string& name, Action action) {
    try {
        action();
    } catch (const Poco::Exception& exception) {
        refuse(name, messageOf(exception));
    } catch (const ControlException&) {
        throw;
    } catch (const std::exception& exception) {
        refuse(name, exception.what());
    }
}

void raise(const Complaints& complaints) {
    if (complaints.isEmpty()) return;
    Complaint first = complaints.getSorted().front();
    first.where = {}; // a request has no place
    throw ControlException(first);
}
} // namespace

SettingWatch::SettingWatch(std::vector<Core::AbstractProperty*> watched,
                           std::vector<std::string> watchedNames, Handler handler)
    : properties(std::move(watched)), names(std::move(watchedNames)), onChange(std::move(handler)) {
    for (Core::AbstractProperty* const property : properties)
        property->addObserver(*this);
}

SettingWatch::~SettingWatch() {
    for (Core::AbstractProperty* const property : properties)
        property->removeObserver(*this);
}

void SettingWatch::tell(const Core::AbstractProperty& property) const {
    const auto found = std::find(properties.begin(), properties.end(), &property);
    if (found == properties.end()) return;
    onChange(stateOf(property, names[static_cast<std::size_t>(found - properties.begin())]));
}

std::vector<SettingState> LiveSettings::list(const std::string& pattern) const {
    std::vector<SettingState> states;
    for (const Core::Filter* const block : graph.getBlocks().getAll())
        for (const Core::AbstractProperty* const property : block->getPropertyBag()) {
            const std::string name = block->getName() + "." + property->getName();
            if (matches(pattern, name)) states.push_back(stateOf(*property, name));
        }
    return states;
}

SettingState LiveSettings::read(const std::string& name) const {
    return stateOf(graph.getBlocks().getSetting(name).property, name);
}

void LiveSettings::write(const std::string& name, const std::string& text) {
    const LiveBlocks::Setting setting = graph.getBlocks().getSetting(name);
    Complaints complaints;
    auto value = readValueText(text, name, false, complaints);
    if (value && getAwaitsRate({&setting.property, &*value}))
        value = graph.withRate(setting, *value, complaints);
    {
        // No round begins between the write and the look at the time. The gate is the setting's, since its
        // block may move to another layout meanwhile: who holds one gate mustn't wait for another.
        const Core::Synchronizer::SubjectLocker still(setting.property);
        if (value)
            withRefusalsTold(name, [&] { writePropertyOrRaise(setting.property, *value, complaints); });
        if (value && complaints.isEmpty()) note(setting.block, name, value);
    }
    raise(complaints);
    graph.lookAgain(setting.block);
}

void LiveSettings::fire(const std::string& name) {
    const LiveBlocks::Setting setting = graph.getBlocks().getSetting(name);
    auto* const command = dynamic_cast<Core::CommandProperty*>(&setting.property);
    if (command == nullptr)
        throw ControlException({{}, "the setting '" + name + "'", "a command, which is fired, not set"});
    {
        const Core::Synchronizer::SubjectLocker still(setting.property); // as above
        withRefusalsTold(name, [&] { command->fire(); });
        note(setting.block, name, {});
    }
    graph.lookAgain(setting.block);
}

void LiveSettings::note(const Core::Filter& block, const std::string& name,
                        const std::optional<Value>& value) {
    const std::optional<double> time = graph.getTimeOf(block);
    const std::lock_guard lock(noting);
    if (changes.size() >= kMostChanges) {
        ++changesLeftOut;
        return;
    }
    RunOutcome::Change change;
    change.time = time;
    change.target = name;
    change.isCommand = !value;
    if (value) change.value = lineText(*value);
    changes.push_back(std::move(change));
}

void LiveSettings::tellChanges(RunOutcome& outcome) const {
    const std::lock_guard lock(noting);
    outcome.changes = changes;
    outcome.changesLeftOut = changesLeftOut;
}

std::unique_ptr<SettingWatch> LiveSettings::observe(const std::string& pattern,
                                                    SettingWatch::Handler handler) const {
    std::vector<Core::AbstractProperty*> properties;
    std::vector<std::string> names;
    for (Core::Filter* const block : graph.getBlocks().getAll())
        for (Core::AbstractProperty* const property : block->getPropertyBag()) {
            std::string name = block->getName() + "." + property->getName();
            if (!matches(pattern, name)) continue;
            properties.push_back(property);
            names.push_back(std::move(name));
        }
    if (properties.empty())
        throw ControlException({{}, "no setting that '" + pattern + "' matches", "one at least"});
    return std::make_unique<SettingWatch>(std::move(properties), std::move(names), std::move(handler));
}

} // namespace Quillmere::Host
