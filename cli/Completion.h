// SPDX-License-Identifier: MIT
#pragma once

namespace CLI {
class App;
} // namespace CLI

namespace Cli {

/// Prints a script for bash that completes commands, their options, graph files and block types.
void printCompletion(const CLI::App& program);

} // namespace Cli
