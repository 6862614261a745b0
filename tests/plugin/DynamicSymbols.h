// SPDX-License-Identifier: MIT
#pragma once

#include <set>
#include <string>

/// The names that a shared object of this machine's format offers to others, read from its dynamic symbol
/// table.
std::set<std::string> exportedNames(const std::string& path);
