// SPDX-License-Identifier: MIT
#include "cli/Completion.h"

#include "cli/Usage.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <string>
#include <vector>

namespace Cli {

namespace {
constexpr const char* kBegin =
    "# Completes the words of quillmere in bash; files where it knows none. Printed by 'quillmere "
    "completion'.\n"
    "_quillmere() {\n"
    R"bash(    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
    local program=${COMP_WORDS[0]/#\~/$HOME} command= options= valued= kinds= words= word
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        [[ $word == -* ]] || { command=$word; break; }
    done
    COMPREPLY=()
    case $command in
)bash";

// An option's value is a file, or what nobody can guess.
constexpr const char* kEnd = R"bash(    esac
    [[ " $valued " == *" $previous "* ]] && return
    if [[ $current == -* ]]; then
        words=$options
    else
        [[ $kinds == *types* ]] && words+=" $("$program" blocks --names 2>/dev/null)"
        if [[ $kinds == *graphs* ]]; then
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(
                for word in yaml yml json; do compgen -f -X "!*.$word" -- "$current"; done
                compgen -d -- "$current")
        fi
    fi
    COMPREPLY+=($(compgen -W "$words" -- "$current"))
}
)bash"
                             "complete -o default -F _quillmere quillmere\n";

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

/// Behind these stands a value.
std::vector<std::string> valuedOptions(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* const option : command.get_options())
        if (option->get_type_size() > 0)
            for (const std::string& name : option->get_lnames())
                names.push_back("--" + name);
    return names;
}

/// What the words of a command are that are no options.
std::vector<std::string> kindsOf(const CLI::App& command) {
    std::vector<std::string> kinds;
    for (const CLI::Option* const option : command.get_options()) {
        const std::string name = option->get_single_name();
        if (name == "GRAPH" || name == "TARGET") kinds.emplace_back("graphs");
        if (name == "TYPE" || name == "TARGET") kinds.emplace_back("types");
    }
    return kinds;
}
} // namespace

void printCompletion(const CLI::App& program) {
    const std::string names = joined(commandNames(program));
    std::cout << kBegin;
    for (const std::string& name : commandNames(program)) {
        const CLI::App& command = *program.get_subcommand(name);
        std::cout << "    " << name << ") options='" << joined(longOptions(command)) << "' valued='"
                  << joined(valuedOptions(command)) << "' kinds='" << joined(kindsOf(command)) << "'"
                  << (name == "help" ? " words='" + names + "'" : "") << " ;;\n";
    }
    std::cout << "    '') options='" << joined(longOptions(program)) << "' words='" << names
              << "'; [[ $current ]] || words+=\" $options\" ;;\n"
              << kEnd;
}

} // namespace Cli
