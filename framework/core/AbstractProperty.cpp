// SPDX-License-Identifier: MIT
#include "framework/core/AbstractProperty.h"

#include <algorithm>
#include <exception>

namespace Quillmere::Core {

void DefaultPropertyCatchAll::onUnknownVisitor(const AbstractProperty& property,
                                               Util::System::AbstractVisitor& visitor) {
    auto* const untyped = dynamic_cast<Util::System::Visitor<AbstractProperty, void, void, 1>*>(&visitor);
    if (untyped != nullptr) untyped->visit(property);
}

AbstractProperty::AbstractProperty(const std::string& name, PropertyBag* propertyBag)
    : NamedObject(name), bag(propertyBag) {
    if (bag != nullptr) bag->properties.push_back(this);
}

AbstractProperty::~AbstractProperty() {
    if (bag != nullptr) std::erase(bag->properties, this);
}

void AbstractProperty::accept(Util::System::AbstractVisitor& visitor) const {
    DefaultPropertyCatchAll::onUnknownVisitor(*this, visitor);
}

void AbstractProperty::addObserver(PropertyObserver& observer) {
    const PropertyLocker guard(*this);
    if (std::find(observers.begin(), observers.end(), &observer) == observers.end())
        observers.push_back(&observer);
}

void AbstractProperty::removeObserver(PropertyObserver& observer) {
    const PropertyLocker guard(*this);
    std::erase(observers, &observer);
}

void AbstractProperty::notifyAttributeChanged() const {
    const auto listening = observers; // an observer may take its leave meanwhile
    for (PropertyObserver* const observer : listening)
        observer->attributesChanged(*this);
}

AbstractProperty::ScopedChangeValueNotifier::ScopedChangeValueNotifier(
    const AbstractProperty* changedProperty, bool notify)
    : property(notify ? changedProperty : nullptr), exceptionsBefore(std::uncaught_exceptions()) {}

AbstractProperty::ScopedChangeValueNotifier::~ScopedChangeValueNotifier() noexcept(false) {
    if (property == nullptr || std::uncaught_exceptions() > exceptionsBefore) return;
    if (property->changeHandler != nullptr) (*property->changeHandler)();
    const auto listening = property->observers; // an observer may take its leave meanwhile
    for (PropertyObserver* const observer : listening)
        observer->valueChanged(*property);
}

} // namespace Quillmere::Core
