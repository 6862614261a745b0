// SPDX-License-Identifier: MIT
#pragma once

namespace Quillmere::Core {

/// The version of the framework. A host runs plug-ins that were built for the same one.
inline constexpr const char* kFrameworkVersion = "0.10.0";

} // namespace Quillmere::Core
