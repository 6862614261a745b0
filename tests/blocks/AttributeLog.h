// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/AbstractProperty.h"
#include "framework/core/Filter.h"

#include <string>
#include <vector>

namespace Support {

/// Writes down whose attributes a block says have changed.
class AttributeLog final : public Quillmere::Core::PropertyObserver {
public:
    /// `observedBlock` is not owned and must outlive the log.
    explicit AttributeLog(Quillmere::Core::Filter& observedBlock) : block(observedBlock) {
        for (Quillmere::Core::AbstractProperty* const property : block.getPropertyBag())
            property->addObserver(*this);
    }
    ~AttributeLog() override {
        for (Quillmere::Core::AbstractProperty* const property : block.getPropertyBag())
            property->removeObserver(*this);
    }
    AttributeLog(const AttributeLog&) = delete;
    AttributeLog& operator=(const AttributeLog&) = delete;

    void valueChanged(const Quillmere::Core::AbstractProperty&) override {}
    void attributesChanged(const Quillmere::Core::AbstractProperty& property) override {
        names.push_back(property.getName());
    }

    std::vector<std::string> names; ///< a setting's name for each change

private:
    Quillmere::Core::Filter& block;
};

} // namespace Support
