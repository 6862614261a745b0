// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/AbstractProperty.h"
#include "framework/core/Api.h"
#include "framework/core/CommandProperty.h"
#include "host/text/Complaint.h"
#include "host/description/Value.h"

#include <vector>

namespace Quillmere::Host {

/// Writes a value from a graph file to a setting of a living block, in the setting's own type: an enumeration
/// by its label or its index, a matrix by nested lists, everything else by a plain scalar. What the setting
/// doesn't take, for its kind, its limits or because the block refuses it, is a complaint, and the setting
/// keeps what it had.
void writeProperty(Core::AbstractProperty& property, const Value& value, Complaints& complaints);

/// The same, but what the setting itself refuses goes to the caller as it raises it.
void writePropertyOrRaise(Core::AbstractProperty& property, const Value& value, Complaints& complaints);

/// A setting of a living block and what it shall be.
struct PropertyWrite {
    Core::AbstractProperty* property;
    const Value* value;
};

/// Writes several settings in their order. One that is refused is tried again after the others, since a
/// setting may make another writable or move its limits; what is refused in the end is a complaint, and so is
/// what the block raises when it hears of a new value.
QUILLMERE_API void writeProperties(std::vector<PropertyWrite> writes, Complaints& complaints);

/// Fires a command of a living block; what the block raises is a complaint.
void fireCommand(Core::CommandProperty& command, const Place& where, Complaints& complaints);

} // namespace Quillmere::Host
