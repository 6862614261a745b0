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
    : NamedObject(name), bag(propertyBag),
      usualGate(propertyBag != nullptr ? propertyBag->findGate() : &PropertyBag::kNoGate) {
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
    const PropertyLocker guard(*this);
    tellObservers(&PropertyObserver::attributesChanged);
}

void AbstractProperty::tellObservers(void (PropertyObserver::*message)(const AbstractProperty&)) const {
    // An observer may take its leave meanwhile, and another one's.
    const auto listening = observers;
    for (PropertyObserver* const observer : listening)
        if (std::find(observers.begin(), observers.end(), observer) != observers.end())
            (observer->*message)(*this);
}

AbstractProperty::ScopedChangeValueNotifier::ScopedChangeValueNotifier(
    const AbstractProperty* changedProperty, bool notify)
    : property(notify ? changedProperty : nullptr), exceptionsBefore(std::uncaught_exceptions()) {}

AbstractProperty::ScopedChangeValueNotifier::~ScopedChangeValueNotifier() noexcept(false) {
    if (property == nullptr || std::uncaught_exceptions() > exceptionsBefore) return;
    if (property->changeHandler != nullptr) (*property->changeHandler)();
    property->tellObservers(&PropertyObserver::valueChanged);
}

} // namespace Quillmere::Core
