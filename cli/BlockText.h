// SPDX-License-Identifier: MIT
#pragma once

#include "host/ends/HostBlock.h"
#include "host/graph/BlockDescription.h"
#include "host/graph/BlockPage.h"
#include "host/plugins/BlockCatalogue.h"

#include <map>
#include <string>

/// What there is to use, for people: what `quillmere blocks` prints.
namespace Cli {

using BlockPages = std::map<std::string, Quillmere::Host::BlockPage>;

/// All types with what each is for, by category, the categories in the order of letters; then those that are
/// in none, by their plug-ins, and those of the host.
std::string listText(const Quillmere::Host::BlockCatalogue& catalogue, const BlockPages& pages);

/// A block with pins and settings, as far as it tells itself.
std::string plainText(const Quillmere::Host::BlockDescription& block, const std::string& origin);

/// A block as its page tells of it. `pages` are those of the types that it is related to.
std::string pageText(const Quillmere::Host::BlockDescription& block, const std::string& origin,
                     const Quillmere::Host::BlockPage& page, const BlockPages& pages);

/// A source or a sink, of the host or of a plug-in. `page` is empty for one without a page.
std::string endText(const Quillmere::Host::HostBlock& block, const std::string& origin,
                    const Quillmere::Host::BlockPage& page, const BlockPages& pages);

} // namespace Cli
