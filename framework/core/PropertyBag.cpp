// SPDX-License-Identifier: MIT
#include "framework/core/PropertyBag.h"

#include "framework/core/AbstractProperty.h"

#include <Poco/Exception.h>

namespace Quillmere::Core {

constinit const std::atomic<Synchronizer*> PropertyBag::kNoGate{nullptr};

AbstractProperty* PropertyBag::find(const std::string& propertyName) const {
    for (AbstractProperty* const property : properties)
        if (property->getName() == propertyName) return property;
    return nullptr;
}

AbstractProperty& PropertyBag::get(const std::string& propertyName) const {
    if (AbstractProperty* const property = find(propertyName)) return *property;
    std::string names;
    for (const AbstractProperty* const property : properties)
        names += (names.empty() ? "'" : ", '") + property->getName() + "'";
    throw Poco::NotFoundException("Block '" + (block != nullptr ? block->getName() : std::string()) +
                                  "' has no property '" + propertyName + "'; it has " +
                                  (names.empty() ? "none" : names));
}

PropertyBagOwner::~PropertyBagOwner() = default;

} // namespace Quillmere::Core
