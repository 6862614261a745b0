// SPDX-License-Identifier: MIT
#include "framework/core/AbstractInputPin.h"

#include "framework/core/AbstractOutputPin.h"
#include "framework/core/Synchronizer.h"

#include <Poco/Exception.h>

#include <algorithm>
#include <utility>

namespace Quillmere::Core {

AbstractInputPin::AbstractInputPin(const std::string& name, PinManager* const pinManager)
    : Pin(name, pinManager) {
    if (pinManager != nullptr) pinManager->inputs.push_back(this);
}

AbstractInputPin::~AbstractInputPin() {
    if (getManager() != nullptr) std::erase(getManager()->inputs, this);
}

void AbstractInputPin::setBufferCapacity(std::uint32_t capacity) {
    if (capacity == 0)
        throw Poco::InvalidArgumentException("Input pin '" + getName() +
                                             "' must keep at least one sample, got 0");
    withBothEndsHeld([&] { rebuildWith(bufferCapacity, capacity); });
}

void AbstractInputPin::setIsLifo(bool flag) {
    withBothEndsHeld([&] { rebuildWith(isLifo, flag); });
}

template <class Field>
void AbstractInputPin::rebuildWith(Field& field, Field next) {
    std::swap(field, next);
    try {
        rebuildStrategy();
    } catch (...) {
        field = next;
        throw;
    }
}

LinkCounts AbstractInputPin::getCounts() {
    LinkCounts counts;
    withBothEndsHeld([&] {
        counts = {getReceivedCount(), taken.get(), countWaiting != nullptr ? countWaiting(*this) : 0};
    });
    return counts;
}

std::uint64_t AbstractInputPin::getTakenCount() const {
    const Synchronizer::SubjectLocker<const Pin> guard(*this);
    return taken.get();
}

void AbstractInputPin::countFrom(const AbstractOutputPin* next) {
    receivedBefore = getReceivedCount();
    sentBefore = next != nullptr ? next->getSentCount() : 0;
}

std::uint64_t AbstractInputPin::getReceivedCount() const {
    const AbstractOutputPin* const sender = getConnectedOutput();
    return receivedBefore + (sender != nullptr ? sender->getSentCount() - sentBefore : 0);
}

template <class Action>
void AbstractInputPin::withBothEndsHeld(Action action) {
    const auto gateOf = [](const Pin* pin) { return pin != nullptr ? pin->getSynchronizer() : nullptr; };
    for (;;) {
        Synchronizer* ownGate = nullptr;
        Synchronizer* sendersGate = nullptr;
        const AbstractOutputPin* sender = nullptr;
        {
            // a link doesn't change under the gate of one end
            const Synchronizer::SubjectLocker<Pin> guard(*this);
            ownGate = getSynchronizer();
            sender = getConnectedOutput();
            sendersGate = gateOf(sender);
        }
        const Synchronizer::DisablerLocker guard(ownGate, sendersGate);
        if (getSynchronizer() != ownGate || getConnectedOutput() != sender || gateOf(sender) != sendersGate)
            continue;
        action();
        return;
    }
}

} // namespace Quillmere::Core
