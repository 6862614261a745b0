// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/AbstractProperty.h"
#include "host/graph/Complaint.h"
#include "host/graph/Value.h"

namespace Quillmere::Host {

/// Writes a value from a graph file to a setting of a living block, in the setting's own type: an enumeration by its
/// label or its index, a matrix by nested lists, everything else by a plain scalar. What the setting doesn't take, for
/// its kind, its limits or because the block refuses it, is a complaint, and the setting keeps what it had.
void writeProperty(Core::AbstractProperty& property, const Value& value, Complaints& complaints);

} // namespace Quillmere::Host
