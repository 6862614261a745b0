// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/description/GraphDescription.h"
#include "host/plugins/BlockCatalogue.h"
#include "host/response/FrequencyResponse.h"

#include <string>

namespace Quillmere::Host {

/// Makes a block of a graph, as it is set there before the run, for `measureResponse`. What is said in hertz
/// and seconds becomes numbers first, for which the graph's recordings are opened, once; pipes are left
/// alone.
///
/// Raises `GraphException` for what is wrong with the graph, and `ResponseException` for a block that it
/// doesn't have and for a rate that only a pipe could tell. Requires: `catalogue` outlives what is made, and
/// has the plug-ins that the graph names. [setup]
QUILLMERE_API BlockMaker makerOfGraphBlock(const GraphDescription& description,
                                           const BlockCatalogue& catalogue, const std::string& id);

} // namespace Quillmere::Host
