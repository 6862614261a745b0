// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Factory.h"

#include <new>

/// Makes blocks of class `T`, which tells its type name as `T::kTypeName`.
template <class T>
class FilterFactory final : public Quillmere::Core::AbstractFilterFactory {
public:
    using AbstractFilterFactory::AbstractFilterFactory;

    const char* getTypeName() const override { return T::kTypeName; }
    Quillmere::Core::Filter* create(const std::string& instanceName) override {
        return new (std::nothrow) T(instanceName);
    }
};
