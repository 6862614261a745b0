// SPDX-License-Identifier: MIT
#pragma once

#include "framework/properties/ValueProperty.h"

#include <memory>
#include <string>
#include <vector>

namespace Quillmere::Core {

/// A choice from a list of labels of type `L`; the value is the label's index, and so is its text form.
template <class L>
class QUILLMERE_API EnumProperty : public ValueProperty<unsigned> {
public:
    using LabelsHandler = Util::System::Callable<>;

    using ValueProperty<unsigned>::ValueProperty;
    ~EnumProperty() override = default;

    void accept(Util::System::AbstractVisitor& visitor) const override {
        if (!acceptTyped(*this, visitor)) DefaultPropertyCatchAll::onUnknownVisitor(*this, visitor);
    }

    /// Raises `Poco::RangeException` for an index without a label, any index being good while there are no
    /// labels; then as `ValueProperty`. The order differs from `RangeProperty` on purpose.
    void checkNewValue(const unsigned& newValue) override {
        checkIndex(newValue);
        ValueProperty<unsigned>::checkNewValue(newValue);
    }

    /// Appends a label. [setup]
    void addLabel(const L& label) {
        labels.push_back(label);
        labelsChanged();
    }
    /// In the order of their indices. [any]
    const std::vector<L>& getLabels() const { return labels; }

    /// Called after the list of labels changes; null for none. [setup]
    void setLabelsHandler(std::unique_ptr<LabelsHandler> handler) { labelsHandler = std::move(handler); }

protected:
    virtual void labelsChanged() {
        if (labelsHandler != nullptr) (*labelsHandler)();
        notifyAttributeChanged();
    }
    void checkIndex(unsigned index) const {
        if (!labels.empty() && index >= labels.size()) throw Poco::RangeException();
    }

private:
    std::vector<L> labels;
    std::unique_ptr<LabelsHandler> labelsHandler; ///< may be null
};

extern template class QUILLMERE_API EnumProperty<std::string>;

/// The same, typed by an enumeration `E` whose values are the indices.
template <class E, class L>
class EnumEnumProperty : public EnumProperty<L> {
public:
    using EnumHandler = Util::System::Callable<E>;

    using EnumProperty<L>::EnumProperty;

    /// Whether `newValue` may be stored, raising as `checkNewValue` does; then calls the handler with it.
    virtual void checkNewEnum(E newValue) {
        this->checkNewValue(static_cast<unsigned>(newValue));
        if (enumHandler != nullptr) (*enumHandler)(newValue);
    }

    /// Called with each value that `checkNewEnum` lets pass; null for none. [setup]
    void setEnumHandler(std::unique_ptr<EnumHandler> handler) { enumHandler = std::move(handler); }

private:
    std::unique_ptr<EnumHandler> enumHandler; ///< may be null
};

} // namespace Quillmere::Core
