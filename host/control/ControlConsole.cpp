// SPDX-License-Identifier: MIT
#include "host/control/ControlConsole.h"

#include "host/text/Counted.h"
#include "host/text/NearestName.h"
#include "host/live/ControlException.h"
#include "host/live/SettingJson.h"
#include "host/text/Complaint.h"

#include <algorithm>
#include <sstream>

namespace Quillmere::Host {

namespace {
constexpr std::string_view kAsJson = "--json";

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

/// What stands behind the word of a request.
class Words {
public:
    Words(std::string_view behindWord, const char* requestForm) : text(behindWord), form(requestForm) {}

    /// The next word; empty where there is none.
    std::string take() { return takeWord(text); }
    std::string require() {
        std::string word = take();
        if (word.empty()) throw ControlException({{}, "nothing behind it", quotedForm()});
        return word;
    }
    /// All that is left.
    std::string requireRest(const std::string& name) const {
        if (text.empty()) throw ControlException({{}, "no value for '" + name + "'", quotedForm()});
        return std::string(text);
    }
    void requireEnd() const {
        if (!text.empty())
            throw ControlException({{}, "'" + std::string(text) + "' behind it", quotedForm()});
    }
    bool getIs(std::string_view word) const { return text == word; }
    /// Whether the next word is this one, and then it is taken.
    bool takeIf(std::string_view word) {
        std::string_view behind = text;
        if (trimmed(text).starts_with('"') || takeWord(behind) != word) return false;
        text = behind;
        return true;
    }
    std::string requireLast() {
        std::string word = require();
        requireEnd();
        return word;
    }

private:
    std::string quotedForm() const { return "'" + std::string(form) + "'"; }

    std::string_view text;
    const char* const form;
};

/// `smooth.Order = 4`, or the name alone of a command.
std::string lineOf(const SettingState& setting) {
    return setting.isCommand ? setting.name : setting.name + " = " + setting.value;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// An answer is lines, so nothing within one may end it; nor turn a terminal's colours.
std::string asOneLine(std::string text) {
    for (char& c : text)
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = ' ';
    return text;
}

} // namespace

/// What a request does with the words behind it; gives back the lines of its answer.
struct ControlConsole::Handlers {
    using Handler = Lines (*)(ControlConsole&, Words&);
    struct Row {
        ControlRequest request;
        Handler handler;
    };
    static const std::vector<Row>& getTable();

    static Lines set(ControlConsole& self, Words& words) {
        const std::string name = words.require();
        self.run.getSettings().write(name, words.requireRest(name));
        return {};
    }
    static Lines get(ControlConsole& self, Words& words) {
        return {self.run.getSettings().read(words.requireLast()).value};
    }
    static Lines fire(ControlConsole& self, Words& words) {
        self.run.getSettings().fire(words.requireLast());
        return {};
    }
    static Lines list(ControlConsole& self, Words& words) {
        const bool isFirst = words.takeIf(kAsJson);
        const std::string pattern = words.take();
        const bool asJson = isFirst || words.takeIf(kAsJson);
        words.requireEnd();
        const auto settings = self.run.getSettings().list(pattern.empty() ? "*" : pattern);
        if (asJson) return linesOf(Json::settingStates(settings));
        Lines lines;
        for (const SettingState& setting : settings) {
            const std::string kind = setting.isCommand ? "command" : setting.expected;
            lines.push_back(lineOf(setting) + "  (" + kind +
                            (setting.isCommand || setting.isWritable ? ")" : ", not writable)"));
        }
        return lines;
    }
    static Lines watch(ControlConsole& self, Words& words) {
        const std::string pattern = words.requireLast();
        self.watches.push_back(self.run.getSettings().observe(
            pattern, [&self](const SettingState& setting) { self.tell(asOneLine(lineOf(setting))); }));
        Lines lines;
        for (const SettingState& setting : self.run.getSettings().list(pattern))
            lines.push_back(lineOf(setting));
        return lines;
    }
    static Lines stats(ControlConsole& self, Words& words) {
        if (words.getIs(kAsJson)) return linesOf(self.run.getStatistics().getJson());
        words.requireEnd();
        return self.run.getStatistics().getText();
    }
    static Lines state(ControlConsole& self, Words& words) {
        words.requireEnd();
        const RunProgress progress = self.run.getProgress();
        return {nameOf(self.run.getState()) + ", " + counted(progress.rows, "row") + ", " +
                counted(progress.rounds, "round")};
    }
    static Lines stop(ControlConsole& self, Words& words) {
        words.requireEnd();
        self.run.stop();
        return {};
    }
    static Lines help(ControlConsole&, Words& words) {
        words.requireEnd();
        return getHelp();
    }
};

/// The one place that knows them all. docs/live.md lists them too, and a test compares.
const std::vector<ControlConsole::Handlers::Row>& ControlConsole::Handlers::getTable() {
    static const std::vector<Row> table{
        {{"set", "set BLOCK.SETTING VALUE", "write a setting; values are written as in a graph file"}, set},
        {{"get", "get BLOCK.SETTING", "its value"}, get},
        {{"fire", "fire BLOCK.COMMAND", "fire a command"}, fire},
        {{"list", "list [PATTERN] [--json]", "settings and commands, as in: list smooth.*"}, list},
        {{"watch", "watch PATTERN", "values now, and again whenever one changes", true}, watch},
        {{"stats", "stats [--json]", "what blocks and links have done so far"}, stats},
        {{"state", "state", "whether the run runs, and how far it is"}, state},
        {{"stop", "stop", "end the run; its results are whole"}, stop},
        {{"help", "help", "these"}, help},
    };
    return table;
}

const std::vector<ControlRequest>& ControlConsole::getRequests() {
    static const std::vector<ControlRequest> requests = [] {
        std::vector<ControlRequest> all;
        for (const Handlers::Row& row : Handlers::getTable())
            all.push_back(row.request);
        return all;
    }();
    return requests;
}

ControlConsole::Lines ControlConsole::getHelp() {
    std::size_t width = 0;
    for (const ControlRequest& request : getRequests())
        width = std::max(width, std::string_view(request.form).size());
    Lines lines;
    for (const ControlRequest& request : getRequests()) {
        const std::string form = request.form;
        lines.push_back(form + std::string(width - form.size() + 2, ' ') + request.help);
    }
    return lines;
}

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
    std::vector<std::string> known;
    for (const Handlers::Row& row : Handlers::getTable()) {
        if (word == row.request.word) {
            Words words(request, row.request.form);
            return row.handler(*this, words);
        }
        known.emplace_back(row.request.word);
    }
    throw ControlException(Complaint::unknown({}, "'" + word + "'", word, known));
}

} // namespace Quillmere::Host
