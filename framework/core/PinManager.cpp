// SPDX-License-Identifier: MIT
#include "framework/core/PinManager.h"

#include "framework/core/AbstractInputPin.h"
#include "framework/core/AbstractOutputPin.h"
#include "framework/core/LayoutManager.h"

#include <Poco/Exception.h>

namespace Quillmere::Core {

namespace {
template <class SomePin>
SomePin& findPin(const std::vector<SomePin*>& pins, const std::string& pinName, const std::string& blockName,
                 const char* kind) {
    for (SomePin* const pin : pins)
        if (pin->getName() == pinName) return *pin;
    std::string names;
    for (SomePin* const pin : pins)
        names += (names.empty() ? "'" : ", '") + pin->getName() + "'";
    throw Poco::NotFoundException("Block '" + blockName + "' has no " + kind + " pin '" + pinName +
                                  "'; it has " + (names.empty() ? "none" : names));
}
} // namespace

PinManager::PinManager(const std::string& name) : NamedObject(name) {}
PinManager::~PinManager() = default;

AbstractInputPin& PinManager::getInputPin(const std::string& pinName) const {
    return findPin(inputs, pinName, getName(), "input");
}

AbstractOutputPin& PinManager::getOutputPin(const std::string& pinName) const {
    return findPin(outputs, pinName, getName(), "output");
}

void PinManager::storeManager(LayoutManager* layout) {
    manager.store(layout, std::memory_order_release);
    Synchronizer* const gate = layout != nullptr ? &layout->getSynchronizer() : nullptr;
    synchronizer.store(gate, std::memory_order_release);
    gateOfSettings.store(getSynchronizer() == gate ? gate : nullptr, std::memory_order_release);
}

} // namespace Quillmere::Core
