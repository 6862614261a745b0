// SPDX-License-Identifier: MIT
#include "framework/core/AbstractOutputPin.h"

#include "framework/core/FlowManager.h"
#include "framework/core/Synchronizer.h"

#include <algorithm>

namespace Quillmere::Core {

AbstractOutputPin::AbstractOutputPin(const std::string& name, PinManager* const pinManager)
    : Pin(name, pinManager) {
    if (pinManager != nullptr) pinManager->outputs.push_back(this);
}

AbstractOutputPin::~AbstractOutputPin() {
    if (getManager() != nullptr) std::erase(getManager()->outputs, this);
}

std::uint64_t AbstractOutputPin::getSentCount() const {
    const Synchronizer::SubjectLocker<const Pin> guard(*this);
    return sent.get();
}

void AbstractOutputPin::notifyAttached(AbstractInputPin& input, bool& isSynchronous) {
    if (LinkListener* const listener = FlowManager::instance().getLinkListener())
        listener->linkAttached(*this, input, isSynchronous);
}

void AbstractOutputPin::notifyDetached(AbstractInputPin& input) {
    if (LinkListener* const listener = FlowManager::instance().getLinkListener())
        listener->linkDetached(*this, input);
}

} // namespace Quillmere::Core
