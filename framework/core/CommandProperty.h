// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/AbstractProperty.h"

namespace Quillmere::Core {

/// A setting without a value: it is fired, not set. As text it is empty; a write is refused as not writable.
class QUILLMERE_API CommandProperty : public AbstractProperty {
public:
    CommandProperty(const std::string& name, PropertyBag* propertyBag);
    ~CommandProperty() override;

    /// Calls the change handler in this thread, inside a guard; does nothing if none is bound. What the
    /// handler raises goes to the caller. [any, guarded]
    void fire();

    void accept(Util::System::AbstractVisitor& visitor) const override;
    bool getIsWritable() const override { return false; }
    bool getIsReadable() const override { return false; }
    void getValueAsString(std::string& out) const override { out.clear(); }
    void setValueFromString(const std::string& text) override;
    void setValueFromAny(const Poco::Any& value) override;
    Poco::Any getValueAsAny() const override { return {}; }
};

} // namespace Quillmere::Core
