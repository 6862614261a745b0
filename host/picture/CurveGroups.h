// SPDX-License-Identifier: MIT
#pragma once

#include "host/inspection/AxisGroups.h"
#include "host/picture/Curve.h"

#include <string>
#include <vector>

/// What of a table belongs together, by the names of its columns.
namespace Quillmere::Host {

/// `name` of `name[0]`, as a pin's columns are called; empty for other names. [any]
std::string pinOf(const std::string& name);

/// The groups of a table's columns that differ by their axis, of those that aren't taken yet. [any]
std::vector<AxisGroup> axisGroupsOf(const CurveTable& table, const std::vector<bool>& isTaken);

/// Which curves of a table are on or off. One axis of a vector may well rest at 0 or 1, three flags are
/// flags; an element of a pin that changes between them is one, too. [any]
std::vector<bool> levelsOf(const CurveTable& table);

} // namespace Quillmere::Host
