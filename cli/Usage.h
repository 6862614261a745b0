// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

/// What is said to a call that can't be made sense of, beyond what the parser of arguments says.
namespace Cli {

/// What a user may name first, and the long options of a command, each with its dashes.
std::vector<std::string> commandNames(const CLI::App& program);
std::vector<std::string> longOptions(const CLI::App& command);

/// Raises `UsageError` for a call whose first word is no command, which it may guess. Options may stand before it.
void requireCommand(const CLI::App& program, const std::vector<std::string>& words);

/// Raises `UsageError` if the parser was left with an option that the command doesn't have. Requires: the parser has
/// refused the call.
void refuseUnknownOption(const CLI::App& program);

/// Prints what the program, or one of its commands, is for and takes. Raises `UsageError`.
void printHelp(const CLI::App& program, const std::string& command);

/// Prints a script for bash that completes commands and their options.
void printCompletion(const CLI::App& program);

} // namespace Cli
