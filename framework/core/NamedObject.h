// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <string>
#include <utility>

namespace Quillmere::Core {

/// Holds a name, given once.
class QUILLMERE_API NamedObject {
public:
    explicit NamedObject(std::string name) : givenName(std::move(name)) {}
    NamedObject(const NamedObject&) = delete;
    NamedObject& operator=(const NamedObject&) = delete;

    /// [any]
    const std::string& getName() const { return givenName; }

protected:
    ~NamedObject() = default;

private:
    const std::string givenName;
};

} // namespace Quillmere::Core
