// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

/// The door of the shared object. The host calls these from one thread.
extern "C" {

/// Builds the plug-in and installs it with the host's `PluginManager`; a second start is harmless. [setup]
QUILLMERE_API void dllStartPlugin();

/// Uninstalls and deletes the plug-in, and its factories with it; without a start it does nothing. Requires:
/// the blocks that the factories made are gone. [setup]
QUILLMERE_API void dllStopPlugin();

/// The framework version that the plug-in was built for, in any state. [any]
QUILLMERE_API const char* dllGetQuillmereVersion();
}
