// SPDX-License-Identifier: MIT
#include "framework/core/CommandProperty.h"

#include <Poco/Exception.h>

namespace Quillmere::Core {

CommandProperty::CommandProperty(const std::string& name, PropertyBag* propertyBag)
    : AbstractProperty(name, propertyBag) {}

CommandProperty::~CommandProperty() = default;

void CommandProperty::fire() {
    const PropertyLocker guard(*this);
    if (changeHandler != nullptr) (*changeHandler)();
}

void CommandProperty::accept(Util::System::AbstractVisitor& visitor) const {
    if (!acceptTyped(*this, visitor)) DefaultPropertyCatchAll::onUnknownVisitor(*this, visitor);
}

void CommandProperty::setValueFromString(const std::string&) {
    throw Poco::NoPermissionException("Property '" + getName() + "' is not writable");
}

void CommandProperty::setValueFromAny(const Poco::Any&) {
    throw Poco::NoPermissionException("Property '" + getName() + "' is not writable");
}

} // namespace Quillmere::Core
