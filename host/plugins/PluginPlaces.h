// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/plugins/BlockCatalogue.h"
#include "host/plugins/PluginLibrary.h"

#include <array>
#include <string>

namespace Quillmere::Host {

/// The file names of this project's own plug-ins, in the order in which the command loads them.
inline constexpr std::array<const char*, 2> kOwnPluginFiles{kOwnPluginFile, "libVelmarindEveryday.so"};

/// Where one of them lies when the program at `program` runs from its build tree or from an installed one;
/// empty when it isn't there.
QUILLMERE_API std::string findPluginBeside(const std::string& program, const std::string& file);

/// The file of the plug-in `name`, as in `VelmarindEveryday`: that of one which `catalogue` has, else one
/// that lies beside those or beside the host's library, where this project's plug-ins lie. Empty when it is
/// nowhere there.
QUILLMERE_API std::string findPluginFile(const std::string& name, const BlockCatalogue& catalogue);

} // namespace Quillmere::Host
