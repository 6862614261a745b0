// SPDX-License-Identifier: MIT
#pragma once

#include "host/description/Value.h"
#include "host/graph/BlockDescription.h"

#include <pybind11/pybind11.h>

#include <string>
#include <utility>
#include <vector>

namespace Python {

/// What a caller gives for a setting, as a graph file would have it: a text as it stands there, flags,
/// numbers, arrays, and lists and maps of them. Raises `velmarind.Error` for everything else, which `what`
/// names.
Quillmere::Host::Value toValue(pybind11::handle given, const std::string& what);

/// The same of a mapping, in its order; none for None.
std::vector<std::pair<std::string, Quillmere::Host::Value>> toValues(pybind11::handle mapping,
                                                                     const std::string& what);

/// A value in one line, as an option has it.
std::string flowText(const Quillmere::Host::Value& value);

/// What a setting holds: a choice as its label.
pybind11::object heldOf(const Quillmere::Host::PropertyDescription& property);

/// JSON as Python's own dicts and lists.
pybind11::object fromJson(const std::string& text);

/// A text that need not be UTF-8.
pybind11::str textOf(const std::string& text);

} // namespace Python
