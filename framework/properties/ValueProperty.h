// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/AbstractProperty.h"
#include "framework/properties/TextConversion.h"
#include "framework/transport/MatrixXd.h"

#include <atomic>
#include <memory>
#include <string>

#include <Poco/Any.h>
#include <Poco/Exception.h>

namespace Quillmere::Core {

namespace Private {
template <class T>
bool differs(const T& a, const T& b) {
    return a != b;
}
QUILLMERE_API bool differs(const MatrixXd& a, const MatrixXd& b);

template <class T>
void store(T& to, const T& from) {
    to = from;
}
inline void store(MatrixXd& to, const MatrixXd& from) {
    copySample(to, from);
}
} // namespace Private

/// A setting that holds a value of type `T`. Every write takes one road, `setValue`, and every access is
/// guarded.
template <class T>
class QUILLMERE_API ValueProperty : public AbstractProperty {
public:
    using Validator = Util::System::FunctorImpl<void, Util::System::Seq<const T&>>;

    /// Readable, writable, with an empty value that the block's constructor overwrites with the default.
    ValueProperty(const std::string& name, PropertyBag* propertyBag) : AbstractProperty(name, propertyBag) {}
    ~ValueProperty() override = default;

    void accept(Util::System::AbstractVisitor& visitor) const override {
        if (!acceptTyped(*this, visitor)) DefaultPropertyCatchAll::onUnknownVisitor(*this, visitor);
    }
    bool getIsWritable() const override { return isWritable; }
    bool getIsReadable() const override { return isReadable; }

    void getValueAsString(std::string& out) const override {
        const PropertyLocker guard(*this);
        Private::valueToText(value, out);
    }
    void setValueFromString(const std::string& text) override {
        T parsed{};
        Private::textToValue(text, parsed);
        setValue(parsed);
    }
    void setValueFromAny(const Poco::Any& any) override {
        const T* const pointer = pointerIn(any);
        if (pointer == nullptr)
            throw Poco::BadCastException("RefAnyCast: Failed to convert between const Any types");
        setValue(*pointer);
    }
    Poco::Any getValueAsAny() const override { return static_cast<const T*>(&value); }

    /// Whether `newValue` may be stored. Raises `Poco::NoPermissionException` for a setting that isn't
    /// writable, and what the validator raises. [any, guarded]
    virtual void checkNewValue(const T& newValue) {
        checkIsWritable();
        if (validator != nullptr) (*validator)(newValue);
    }

    /// Checks and stores `newValue`; a real change is told to the change handler and the observers, in this
    /// thread. What they raise goes to the caller, with the value stored; what the checks raise leaves the
    /// old value. [any, guarded]
    void setValue(const T& newValue) {
        const PropertyLocker guard(*this);
        checkNewValue(newValue);
        const bool notify = hasObservers() && Private::differs(newValue, value);
        const ScopedChangeValueNotifier notifier(this, notify);
        Private::store(value, newValue);
    }
    /// A copy. [any, guarded]
    T getValue() const {
        if (getIsGateOwn()) return value; // what a block's step reads, in a few instructions
        return getValueUnderGuard();
    }

    /// Observers hear of either, changed or not. [any]
    void setIsReadable(bool flag) {
        isReadable = flag;
        notifyAttributeChanged();
    }
    void setIsWritable(bool flag) {
        isWritable = flag;
        notifyAttributeChanged();
    }

    /// Binds what gets each new value before it is stored and may refuse it by raising; replaces what was
    /// bound. `object` is not owned and must outlive the setting. [any, guarded]
    template <class Object, class MemberFunction>
    void setValidator(Object* object, MemberFunction memberFunction) {
        using Shape = Util::System::Functor<void, Util::System::Seq<const T&>>;
        const PropertyLocker guard(*this);
        const Util::System::MemFunHandler<Shape, Object*, MemberFunction> handler(object, memberFunction);
        validator = handler.clone();
    }

protected:
    [[gnu::noinline]] T getValueUnderGuard() const {
        const PropertyLocker guard(*this);
        return value;
    }

    void checkIsWritable() const {
        if (!isWritable) throw Poco::NoPermissionException("Property '" + getName() + "' is not writable");
    }

    /// Null for anything else. Out of line: seen together with a caller's `Any` of another type, GCC warns of
    /// the bytes that it would read had the test of the type not failed.
    [[gnu::noinline]] static const T* pointerIn(const Poco::Any& any) {
        const T* const* const held = Poco::AnyCast<const T*>(&any);
        return held != nullptr ? *held : nullptr;
    }

    T value{};
    // Read without a guard, also while another thread writes them.
    std::atomic<bool> isReadable{true};
    std::atomic<bool> isWritable{true};
    std::unique_ptr<Validator> validator; ///< may be null
};

extern template class QUILLMERE_API ValueProperty<bool>;
extern template class QUILLMERE_API ValueProperty<int>;
extern template class QUILLMERE_API ValueProperty<unsigned>;
extern template class QUILLMERE_API ValueProperty<double>;
extern template class QUILLMERE_API ValueProperty<MatrixXd>;

} // namespace Quillmere::Core
