// SPDX-License-Identifier: MIT
#pragma once

#include "host/graph/BlockDescription.h"
#include "host/graph/BlockPage.h"
#include "host/plugins/BlockCatalogue.h"

#include <mutex>
#include <optional>
#include <string>

namespace Python {

/// What a block type is before it is set.
struct TypeInfo {
    Quillmere::Host::BlockDescription described; ///< Of a new block.
    std::optional<Quillmere::Host::BlockPage> page;
    std::string mainInput;  ///< Empty for a block without inputs.
    std::string mainOutput; ///< `out`, or the first; empty for a block without outputs.
};

/// The block types of this process: the host's, and those of the plug-ins that lie beside the host's library.
/// Raises what loading them raises. [setup]
const Quillmere::Host::BlockCatalogue& getCatalogue();
/// Adds those of a plug-in. [setup]
void loadPlugin(const std::string& path);

/// Of a type of a plug-in. Raises `HostException` for one that there isn't, or that is a source or a sink.
/// [setup]
const TypeInfo& getTypeInfo(const std::string& type);

/// One thread at a time builds and ends graphs and loads plug-ins. Whoever takes it must not wait for the
/// interpreter's lock as long as it is held.
std::mutex& getSetupMutex();

} // namespace Python
