// SPDX-License-Identifier: MIT
#pragma once

#include "host/live/LiveSettings.h"
#include "host/text/Json.h"

#include <vector>

/// The settings of a running graph, for programs.
namespace Quillmere::Host::Json {

/// Its `name`, `kind`, `value` of the type that it has, `text` as a graph file would give it, `expected`, and
/// whether it is `writable`. What a choice holds is the index of its label, which is its text. A command has
/// no value, no text and nothing to be written: null.
QUILLMERE_API Text settingState(const SettingState& state);

/// An object of `settings`.
QUILLMERE_API Text settingStates(const std::vector<SettingState>& states);

} // namespace Quillmere::Host::Json
