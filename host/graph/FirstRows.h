// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/text/Complaint.h"
#include "host/ends/SourceAccount.h"

#include <string>

namespace Quillmere::Host {

class Graph;

/// Warns of what the first rows of the recordings say about a graph before it runs: a `rate` that a column of
/// times contradicts, a column of times whose name has another unit than seconds, and a block that takes the
/// rate of rows from the first two, where their step isn't the usual one. Requires: the sources have been
/// opened, with complaints or without. [setup]
QUILLMERE_API void warnOfFirstRows(const Graph& graph, Complaints& complaints);

/// What is said of a column of times whose name has another unit than seconds. Requires: `account.otherUnit`.
std::string otherUnitText(const SourceAccount& account);

} // namespace Quillmere::Host
