// SPDX-License-Identifier: MIT
#include "framework/core/AbstractInputPin.h"

#include "framework/core/Synchronizer.h"

#include <Poco/Exception.h>

#include <algorithm>

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
    const Synchronizer::SubjectLocker<Pin> guard(*this);
    bufferCapacity = capacity;
    rebuildStrategy();
}

void AbstractInputPin::setIsLifo(bool flag) {
    const Synchronizer::SubjectLocker<Pin> guard(*this);
    isLifo = flag;
    rebuildStrategy();
}

} // namespace Quillmere::Core
