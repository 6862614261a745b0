// SPDX-License-Identifier: MIT
#include "host/graph/Timeline.h"

#include "host/graph/PropertyWriter.h"

#include <deque>

namespace Quillmere::Host {

/// The block whose outputs a timeline sends values from. It stands in the layout of the blocks that get them,
/// so the links are plain ones; its step does nothing.
class Timeline::Sender final : public Core::Filter {
public:
    Sender() : Core::Filter("timeline", true) {}

    void process() override {}
    const char* getTypeName() const override { return "Timeline"; }

    Core::OutputPin<Core::MatrixXd>& addOutput(const std::string& name) {
        return outputs.emplace_back(name, this);
    }

private:
    std::deque<Core::OutputPin<Core::MatrixXd>> outputs; ///< Pins can't move.
};

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
    if (action.command != nullptr) fireCommand(*action.command, action.where, complaints);
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

Core::OutputPin<Core::MatrixXd>& Timeline::addOutput(const std::string& name) {
    if (sender == nullptr) sender = std::make_unique<Sender>();
    return sender->addOutput(name);
}

} // namespace Quillmere::Host
