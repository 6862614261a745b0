// SPDX-License-Identifier: MIT
#include "host/control/ControlConsole.h"

#include "host/text/Counted.h"
#include "host/text/NearestName.h"
#include "host/live/ControlException.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {
const std::vector<std::string> kRequests{"set",   "get",   "fire", "list", "watch",
                                         "stats", "state", "stop", "help"};

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// Takes the first word off `text`: up to a blank, or what double quotes enclose.
std::string takeWord(std::string_view& text) {
    text = trimmed(text);
    const bool isQuoted = !text.empty() && text.front() == '"';
    const std::size_t begin = isQuoted ? 1 : 0;
    const std::size_t end = std::min(text.find_first_of(isQuoted ? "\"" : " \t", begin), text.size());
    std::string word(text.substr(begin, end - begin));
    text = trimmed(text.substr(std::min(end + begin, text.size())));
    return word;
}

std::string requireWord(std::string_view& text, const std::string& form) {
    std::string word = takeWord(text);
    if (word.empty()) throw ControlException("found nothing behind it; expected '" + form + "'");
    return word;
}

void requireEnd(std::string_view text, const std::string& form) {
    if (!text.empty())
        throw ControlException("found '" + std::string(text) + "' behind it; expected '" + form + "'");
}

std::string nameOf(LiveRun::State state) {
    switch (state) {
    case LiveRun::State::Ready:
        return "ready";
    case LiveRun::State::Running:
        return "running";
    case LiveRun::State::Ending:
        return "ending";
    case LiveRun::State::Ended:
        return "ended";
    case LiveRun::State::Failed:
        break;
    }
    return "failed";
}

/// `smooth.Order = 4`, or the name alone of a command.
std::string lineOf(const SettingState& setting) {
    return setting.isCommand ? setting.name : setting.name + " = " + setting.value;
}

/// An answer is lines, so nothing within one may end it; nor turn a terminal's colours.
std::string asOneLine(std::string text) {
    for (char& c : text)
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = ' ';
    return text;
}

const std::vector<std::string> kHelp{
    "set BLOCK.SETTING VALUE  write a setting; values are written as in a graph file",
    "get BLOCK.SETTING        its value",
    "fire BLOCK.COMMAND       fire a command",
    "list [PATTERN]           settings and commands, as in: list smooth.*",
    "watch PATTERN            values now, and again whenever one changes",
    "stats                    what blocks and links have done so far",
    "state                    whether the run runs, and how far it is",
    "stop                     end the run; its results are whole"};
} // namespace

ControlConsole::ControlConsole(LiveRun& liveRun, Teller teller) : run(liveRun), tell(std::move(teller)) {}

ControlConsole::~ControlConsole() = default;

std::string ControlConsole::answer(std::string_view request) {
    std::string text;
    try {
        for (const std::string& line : execute(request))
            text += " " + asOneLine(line) + "\n";
    } catch (const std::exception& exception) {
        return "error: " + asOneLine(exception.what()) + "\n";
    }
    return text + "ok\n";
}

ControlConsole::Lines ControlConsole::execute(std::string_view request) {
    const std::string word = takeWord(request);
    if (word == "set") {
        const std::string name = requireWord(request, "set BLOCK.SETTING VALUE");
        if (request.empty())
            throw ControlException("found no value for '" + name + "'; expected 'set BLOCK.SETTING VALUE'");
        run.write(name, std::string(request));
        return {};
    }
    if (word == "get" || word == "fire") {
        const std::string form = word == "get" ? "get BLOCK.SETTING" : "fire BLOCK.COMMAND";
        const std::string name = requireWord(request, form);
        requireEnd(request, form);
        if (word == "get") return {run.read(name).value};
        run.fire(name);
        return {};
    }
    if (word == "list") return list(request);
    if (word == "watch") return watch(request);
    if (!word.empty()) requireEnd(request, word);
    if (word == "stats") return run.getStatistics().getText();
    if (word == "state")
        return {nameOf(run.getState()) + ", " + counted(run.getProgress().rows, "row") + ", " +
                counted(run.getProgress().rounds, "round")};
    if (word == "help") return kHelp;
    if (word == "stop") {
        run.stop();
        return {};
    }
    const std::string nearest = nearestName(word, kRequests);
    throw ControlException("found '" + word + "'; expected one of " + listOfNames(kRequests) +
                           (nearest.empty() ? "" : "; did you mean " + nearest + "?"));
}

ControlConsole::Lines ControlConsole::list(std::string_view pattern) const {
    const std::string wanted = takeWord(pattern);
    requireEnd(pattern, "list PATTERN");
    Lines lines;
    for (const SettingState& setting : run.list(wanted.empty() ? "*" : wanted)) {
        const std::string kind = setting.isCommand ? "command" : setting.expected;
        lines.push_back(lineOf(setting) + "  (" + kind +
                        (setting.isCommand || setting.isWritable ? ")" : ", not writable)"));
    }
    return lines;
}

ControlConsole::Lines ControlConsole::watch(std::string_view pattern) {
    const std::string wanted = requireWord(pattern, "watch PATTERN");
    requireEnd(pattern, "watch PATTERN");
    watches.push_back(
        run.observe(wanted, [this](const SettingState& setting) { tell(asOneLine(lineOf(setting))); }));
    Lines lines;
    for (const SettingState& setting : run.list(wanted))
        lines.push_back(lineOf(setting));
    return lines;
}

} // namespace Quillmere::Host
