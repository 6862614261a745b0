// SPDX-License-Identifier: MIT
#include "cli/Usage.h"

#include "cli/UsageError.h"
#include "host/text/Complaint.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <iostream>

namespace Cli {

namespace {
using Quillmere::Host::Complaint;
using Quillmere::Host::kLongestName;
using Quillmere::Host::listOfNames;
using Quillmere::Host::nearestName;
using Quillmere::Host::printable;

bool looksLikeAGraph(const std::string& word) {
    const std::string extension = std::filesystem::path(word).extension().string();
    std::error_code error;
    return extension == ".yaml" || extension == ".yml" || extension == ".json" ||
           std::filesystem::exists(word, error);
}

/// Null when there is none of that name.
const CLI::App* findCommand(const CLI::App& program, const std::string& name) {
    const auto named =
        program.get_subcommands([&](const CLI::App* command) { return command->get_name() == name; });
    return named.empty() ? nullptr : named.front();
}

[[noreturn]] void refuseCommand(const CLI::App& program, const std::string& word) {
    const std::vector<std::string> names = commandNames(program);
    Complaint complaint = Complaint::unknown({}, "the command '" + word + "'", word, names);
    if (complaint.suggestion.empty() && looksLikeAGraph(word))
        complaint.suggestion = "'quillmere run " + word + "'";
    throw UsageError(complaint);
}
} // namespace

std::vector<std::string> commandNames(const CLI::App& program) {
    std::vector<std::string> names;
    for (const CLI::App* const command : program.get_subcommands([](const CLI::App*) { return true; }))
        if (!command->get_group().empty())
            names.push_back(command->get_name()); // what is hidden has no group
    return names;
}

std::vector<std::string> longOptions(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* const option : command.get_options())
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    return names;
}

void requireCommand(const CLI::App& program, const std::vector<std::string>& words) {
    const auto isWord = [](const std::string& word) { return !word.starts_with("-"); };
    if (words.empty())
        throw UsageError(
            {{},
             "no command",
             "one of " + listOfNames(commandNames(program)) + " ('quillmere help' tells what they do)"});
    const auto first = std::find_if(words.begin(), words.end(), isWord);
    if (first != words.end() && findCommand(program, *first) == nullptr) refuseCommand(program, *first);
}

namespace {
/// What was wrong with the words of a command. `whole` is how the command is called.
UsageError refusalOf(const CLI::ParseError& error, const CLI::App& command, const std::string& whole) {
    const std::string text = error.what();
    const std::string first = text.substr(0, text.find_first_of(" :"));
    const std::string last = text.substr(text.rfind(' ') + 1);
    switch (static_cast<CLI::ExitCodes>(error.get_exit_code())) {
    case CLI::ExitCodes::RequiredError:
        return UsageError({{}, "no " + first, "one, as '" + whole + " --help' tells"});
    case CLI::ExitCodes::ExcludesError:
        return UsageError({{}, last + " beside " + first, "one of them"});
    case CLI::ExitCodes::RequiresError:
        return UsageError({{}, first + " without " + last, "both, or neither"});
    case CLI::ExitCodes::ArgumentMismatch: {
        if (!text.ends_with(" missing")) return UsageError({{}, first + " more than once", "it once"});
        const CLI::Option* const option = command.get_option_no_throw(first);
        return UsageError({{},
                           first + " without a value",
                           first + (option == nullptr ? "" : " " + option->get_type_name())});
    }
    case CLI::ExitCodes::ConversionError: { // values are checked before: it is a flag's
        const std::string flag = text.substr(std::min(text.find(": ") + 2, text.size()));
        return UsageError({{}, printable(flag, kLongestName), flag.substr(0, flag.find(' ')) + " alone"});
    }
    default:
        // Our own checks have the house's form.
        return UsageError(text, {Complaint::sentence({}, text, "a call as '" + whole + " --help' tells")});
    }
}
} // namespace

void refuseCall(const CLI::App& program, const CLI::ParseError& error) {
    const std::vector<CLI::App*> named = program.get_subcommands();
    const CLI::App& command = named.empty() ? program : *named.front();
    const std::string whole = named.empty() ? "quillmere" : "quillmere " + command.get_name();
    const std::vector<std::string> left = command.remaining();
    const auto option =
        std::find_if(left.begin(), left.end(), [](const std::string& word) { return word.starts_with("-"); });
    if (option != left.end()) {
        const std::string name = option->substr(0, option->find('='));
        throw UsageError({{},
                          "the option '" + printable(name, kLongestName) + "'",
                          "one that '" + whole + " --help' lists",
                          nearestName(name, longOptions(command))});
    }
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError) && !left.empty())
        throw UsageError({{},
                          "'" + printable(left.front(), kLongestName) + "' behind what was complete",
                          "no more than '" + whole + " --help' lists"});
    throw refusalOf(error, command, whole);
}

std::function<std::string(const std::string&)> wholeNumber(std::int64_t from, std::int64_t to) {
    return [from, to](const std::string& text) -> std::string {
        std::int64_t number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        const bool isWhole = error == std::errc() && end == text.data() + text.size();
        if (isWhole && number >= from && number <= to) return {};
        return Complaint{{},
                         "'" + printable(text, kLongestName) + "'",
                         "a whole number from " + std::to_string(from) + " to " + std::to_string(to)}
            .getText();
    };
}

void printHelp(const CLI::App& program, const std::string& command) {
    if (command.empty()) {
        // Its own help would hand over to the command that was named, which is 'help'.
        std::cout << program.get_formatter()->make_help(&program, program.get_name(),
                                                        CLI::AppFormatMode::Normal);
        return;
    }
    const CLI::App* const known = findCommand(program, command);
    if (known == nullptr) refuseCommand(program, command);
    std::cout << known->help(program.get_name());
}

} // namespace Cli
