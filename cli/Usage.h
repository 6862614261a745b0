// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
class ParseError;
} // namespace CLI

/// What is said to a call that can't be made sense of.
namespace Cli {

/// What a user may name first, and the long options of a command, each with its dashes.
std::vector<std::string> commandNames(const CLI::App& program);
std::vector<std::string> longOptions(const CLI::App& command);

/// Raises `UsageError` for a call whose first word is no command, which it may guess. Options may stand
/// before it.
void requireCommand(const CLI::App& program, const std::vector<std::string>& words);

/// Raises `UsageError` for a call that the parser has refused: what it says, in our own words.
[[noreturn]] void refuseCall(const CLI::App& program, const CLI::ParseError& error);

/// For an option that takes a whole number: what is wrong with a text, or nothing.
std::function<std::string(const std::string&)> wholeNumber(std::int64_t from, std::int64_t to);

/// Prints what the program, or one of its commands, is for and takes. Raises `UsageError`.
void printHelp(const CLI::App& program, const std::string& command);

} // namespace Cli
