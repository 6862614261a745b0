// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <utility>

namespace Quillmere::Core {

/// The version of a component, as its text.
class ComponentVersion {
public:
    explicit ComponentVersion(std::string versionText) : text(std::move(versionText)) {}
    const std::string& toString() const { return text; }
    bool operator==(const ComponentVersion&) const = default;

private:
    std::string text;
};

} // namespace Quillmere::Core
