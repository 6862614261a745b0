// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/NamedObject.h"
#include "framework/core/PropertyBag.h"
#include "framework/core/Synchronizer.h"
#include "framework/util/Functor.h"
#include "framework/util/Visitor.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include <Poco/Any.h>

namespace Quillmere::Core {

class AbstractProperty;

/// What becomes of a visitor that doesn't know a setting's type: it is offered the untyped setting.
struct QUILLMERE_API DefaultPropertyCatchAll {
    static void onUnknownVisitor(const AbstractProperty& property, Util::System::AbstractVisitor& visitor);
};

/// Hears of changes of settings, in the writer's thread and under its guard.
class QUILLMERE_API PropertyObserver {
public:
    virtual ~PropertyObserver() = default;
    /// The value has changed, and the block's own handler has run. [any, guarded]
    virtual void valueChanged(const AbstractProperty& property) = 0;
    /// Something else has changed: writability, labels. [any, guarded]
    virtual void attributesChanged(const AbstractProperty& property) = 0;
};

/// A named setting of a block.
class QUILLMERE_API AbstractProperty
    : public Util::System::AbstractVisitable<void, void, DefaultPropertyCatchAll, 1>,
      public NamedObject {
public:
    class ScopedChangeValueNotifier;

    /// Enters the setting in `propertyBag`, which is not owned and may be null.
    AbstractProperty(const std::string& name, PropertyBag* propertyBag);
    ~AbstractProperty() override;

    /// Shows the setting to `visitor`: here as an untyped one. [any]
    void accept(Util::System::AbstractVisitor& visitor) const override;

    /// Flags, read without a guard. [any]
    virtual bool getIsWritable() const = 0;
    virtual bool getIsReadable() const = 0;
    /// Writes the value's text form to `out`. Raises `Poco::DataFormatException` if it has none. [any,
    /// guarded]
    virtual void getValueAsString(std::string& out) const = 0;
    /// Writes the value that `text` gives. Raises `Poco::DataFormatException` for a text that gives none, and
    /// what a write of a value raises. [any, guarded]
    virtual void setValueFromString(const std::string& text) = 0;
    /// Writes the value behind the `const T*` that `value` holds. Raises `Poco::BadCastException` if it holds
    /// anything else, and what a write of a value raises. [any, guarded]
    virtual void setValueFromAny(const Poco::Any& value) = 0;
    /// A `const T*` to the live value: later changes show, and it must not outlive the setting. [any]
    virtual Poco::Any getValueAsAny() const = 0;

    /// The gate of the block that owns the bag, may be null. [any]
    Synchronizer* getSynchronizer() const { return bag != nullptr ? bag->getSynchronizer() : nullptr; }

    /// Whether this thread is known to have that gate, as a block's steps have it; the answer costs two loads
    /// and a compare. [any]
    bool getIsGateOwn() const {
        const Synchronizer* const gate = usualGate->load(std::memory_order_acquire);
        return gate != nullptr && gate->getIsOwn();
    }

    /// Binds what is called after a real change, or when a command fires; replaces what was bound. `object`
    /// is not owned and must outlive the setting. [any, guarded]
    template <class Object, class MemberFunction>
    void setChangeHandler(Object* object, MemberFunction memberFunction) {
        using Handler = Util::System::MemFunHandler<Util::System::Functor<void, Util::System::NullType>,
                                                    Object*, MemberFunction>;
        const Synchronizer::SubjectLocker<const AbstractProperty> guard(*this);
        const Handler handler(object, memberFunction);
        changeHandler = handler.clone();
    }

    /// `observer` is not owned; adding it twice or removing one that isn't there does nothing. [any, guarded]
    void addObserver(PropertyObserver& observer);
    void removeObserver(PropertyObserver& observer);

protected:
    /// Whether anyone wants to hear of a change, the change handler included.
    bool hasObservers() const { return changeHandler != nullptr || !observers.empty(); }
    void notifyAttributeChanged() const;

    std::unique_ptr<Util::System::FunctorImpl<void, Util::System::NullType>> changeHandler; ///< may be null

private:
    void tellObservers(void (PropertyObserver::*message)(const AbstractProperty&)) const;

    PropertyBag* const bag;
    const std::atomic<Synchronizer*>* const usualGate; ///< the block's
    std::vector<PropertyObserver*> observers;          ///< changed under the guard
};

/// Stands around the store of a new value: tells of the change when it ends, unless the store failed. What a
/// handler raises leaves its destructor and goes to the writer.
class QUILLMERE_API AbstractProperty::ScopedChangeValueNotifier {
public:
    ScopedChangeValueNotifier(const AbstractProperty* changedProperty, bool notify);
    ~ScopedChangeValueNotifier() noexcept(false);
    ScopedChangeValueNotifier(const ScopedChangeValueNotifier&) = delete;
    ScopedChangeValueNotifier& operator=(const ScopedChangeValueNotifier&) = delete;

private:
    const AbstractProperty* const property; ///< null when there is nothing to tell
    const int exceptionsBefore;
};

/// Guards a setting for the time of one access.
using PropertyLocker = Synchronizer::SubjectLocker<const AbstractProperty>;

} // namespace Quillmere::Core
