// SPDX-License-Identifier: MIT
#include "host/graph/Timeline.h"

#include "host/graph/PropertyWriter.h"
#include "host/graph/TimelineSender.h"
#include "host/text/CaughtText.h"

#include <Poco/Exception.h>

namespace Quillmere::Host {

Timeline::Timeline() = default;

Timeline::~Timeline() = default;

void Timeline::applyDue(double time) {
    Complaints complaints;
    while (next < actions.size() && time >= actions[next].at)
        apply(actions[next++], time, complaints);
    complaints.raise();
}

void Timeline::apply(const Action& action, double time, Complaints& complaints) {
    if (action.property != nullptr) writeProperty(*action.property, action.value, complaints);
    if (action.command != nullptr) fire(*action.command, action.where, complaints);
    if (action.output == nullptr) return;
    const Core::Synchronizer::SubjectLocker<Core::Pin> guard(*action.output); // links may change meanwhile
    Core::copySample(action.output->data.value, action.sample);
    action.output->send(time);
}

Core::Filter* Timeline::getSender() {
    return sender.get();
}

const Core::Filter* Timeline::getSender() const {
    return sender.get();
}

void Timeline::fire(Core::CommandProperty& command, const Place& where, Complaints& complaints) {
    const auto refuse = [&](const std::string& reason) {
        complaints.add(where, "the command '" + command.getName() + "' refused (" + reason + ")",
                       "a command that the block takes");
    };
    try {
        command.fire();
    } catch (const Poco::Exception& exception) {
        refuse(messageOf(exception));
    } catch (const std::exception& exception) {
        refuse(exception.what());
    }
}

} // namespace Quillmere::Host
