// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/HostBlock.h"
#include "host/graph/BlockDescription.h"
#include "host/graph/BlockPage.h"
#include "host/plugins/BlockCatalogue.h"
#include "host/text/Json.h"

#include <map>
#include <string>

/// What there is to use, for programs: what `quillmere blocks --json` prints.
namespace Quillmere::Host::Json {

/// What a setting holds; null for a command. A choice is the index of its label, a matrix a list of its rows.
QUILLMERE_API Text heldValue(const PropertyDescription::Held& held);

/// A setting with kind, value as its default, limits and labels.
QUILLMERE_API Text setting(const PropertyDescription& property);

/// A block of the catalogue as what it is, `block` or `hostBlock`.
QUILLMERE_API Text blockOf(const Core::Filter& living, const BlockCatalogue& catalogue,
                           const BlockPage* page = nullptr);

/// A block of a plug-in with pins and settings, and what its page says of each and of the whole; null for a
/// block without one.
QUILLMERE_API Text block(const BlockDescription& description, const std::string& plugin,
                         const BlockPage* page = nullptr);

/// A source or a sink: its settings aren't properties, and its pins may be those that a graph gives it.
/// `plugin` is empty for one of the host's own.
QUILLMERE_API Text hostBlock(const HostBlock& described, const std::string& plugin,
                             const BlockPage* page = nullptr);

/// The names of all types, with the plug-ins that they come from, and what their pages say they are for.
QUILLMERE_API Text blockTypes(const BlockCatalogue& catalogue,
                              const std::map<std::string, BlockPage>& pages = {});

/// The same with all that there is to tell of each block: what `block` and `hostBlock` do. Of one that can't
/// be created it tells why, as `failure`.
QUILLMERE_API Text blockManuals(const BlockCatalogue& catalogue,
                                const std::map<std::string, BlockPage>& pages);

} // namespace Quillmere::Host::Json
