// SPDX-License-Identifier: MIT
#include "host/batch/BatchPlan.h"

#include "host/batch/ShellWords.h"
#include "host/text/Counted.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <utility>

namespace Quillmere::Host {

namespace fs = std::filesystem;

namespace {

constexpr const char* kCommand = "quillmere";

std::string inQuotes(const std::string& text) {
    std::string words = "'";
    words += printable(text, kLongestName);
    words += '\'';
    return words;
}

bool getIsUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = lengthOfCharacter(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

/// How the folder of a recording is called: its file, without what tells the form.
std::string idOf(const std::string& name) {
    fs::path path(name);
    if (path.extension() == ".gz") path.replace_extension();
    return path.replace_extension().string();
}

std::string filled(std::string text, const std::map<std::string, std::string>& places) {
    for (const auto& [name, value] : places)
        for (std::size_t at = text.find(name); at != std::string::npos;
             at = text.find(name, at + value.size()))
            text.replace(at, name.size(), value);
    return text;
}

std::map<std::string, std::string> placesOf(const std::string& path, const std::string& id) {
    const fs::path file(path);
    return {{"{path}", path},
            {"{folder}", file.has_parent_path() ? file.parent_path().string() : "."},
            {"{name}", file.filename().string()},
            {"{stem}", fs::path(id).filename().string()},
            {"{id}", id}};
}

/// What a row of the table adds to a call.
void addCells(const StudyTable& table, std::size_t row, BatchPlan::Entry& entry) {
    constexpr std::string_view kSetting = StudyTable::kSetting;
    for (std::size_t i = 0; i < table.getColumns().size(); ++i) {
        const std::string& column = table.getColumns()[i];
        const std::string& cell = table.getCells(row)[i];
        if (column.empty()) continue;
        // An empty cell leaves what the graph says.
        if (column.starts_with(kSetting) && !cell.empty()) {
            entry.settings.push_back(column.substr(kSetting.size()) + "=" + cell);
            entry.words.insert(entry.words.end(), {"--set", entry.settings.back()});
        }
        entry.words.insert(entry.words.end(), {"--note", column + "=" + cell});
    }
    entry.row = {.file = table.getFile(), .line = table.getLine(row), .column = 1};
}

/// A call is a line, of a plan and on its way to a worker.
void checkLines(const BatchPlan::Entry& entry, const std::string& graph, Complaints& complaints) {
    const auto hasEnd = [](const std::string& word) {
        return word.find_first_of("\n\r") != std::string::npos;
    };
    const auto word = std::find_if(entry.words.begin(), entry.words.end(), hasEnd);
    if (word != entry.words.end() && !hasEnd(entry.recording))
        complaints.add({graph}, inQuotes(*word) + " among the words of a call", "words of one line");
}

void findUnused(const StudyTable& table, const std::set<std::size_t>& used, PlanDoubts& doubts,
                Complaints& complaints) {
    const auto sets = [](const std::string& column) { return column.starts_with(StudyTable::kSetting); };
    const std::vector<std::string>& columns = table.getColumns();
    if (used.empty() && std::any_of(columns.begin(), columns.end(), sets))
        complaints.add({table.getFile()}, "no row of a recording, among " + counted(table.getRows(), "row"),
                       "one at least, since it sets properties");
    for (std::size_t row = 0; row < table.getRows(); ++row)
        if (!used.contains(row)) doubts.unused.push_back(table.getName(row));
}

} // namespace

std::string BatchPlan::Entry::getCommand() const {
    std::string command = kCommand;
    command += ' ';
    command += shellLine(words);
    return command;
}

std::string BatchPlan::toText() const {
    std::string text;
    for (const Entry& entry : entries)
        text += entry.getCommand() + "\n";
    return text;
}

BatchPlan BatchPlan::fromFile(const std::string& path, std::size_t first, std::size_t last,
                              Complaints& complaints) {
    BatchPlan plan;
    std::ifstream file(path, std::ios::binary);
    if (!file.is_open()) {
        complaints.add(Complaint::sentence({path}, std::string("cannot be opened: ") + std::strerror(errno),
                                           "a plan that can be read"));
        return plan;
    }
    std::string line;
    std::set<std::string> folders;
    for (std::size_t number = 1; number <= last && std::getline(file, line); ++number) {
        if (line.ends_with('\r')) line.pop_back(); // of an editor elsewhere
        if (number < first || line.empty()) continue;
        const auto words = splitShellLine(line);
        Entry entry;
        if (words && words->size() > 2 && words->front() == kCommand && (*words)[1] == "run")
            entry.words.assign(words->begin() + 1, words->end());
        for (std::size_t i = 0; i + 1 < entry.words.size(); ++i) {
            const std::string& value = entry.words[i + 1];
            if (entry.words[i] == "--folder") entry.folder = value;
            if (entry.words[i] == "--input" && entry.recording.empty())
                entry.recording = value.substr(value.find('=') + 1);
        }
        if (entry.folder.empty())
            complaints.add({path, static_cast<int>(number), 1}, inQuotes(line),
                           "quillmere run GRAPH ... --folder FOLDER");
        else if (!folders.insert(fs::path(entry.folder).lexically_normal().string()).second)
            complaints.add({path, static_cast<int>(number), 1},
                           "a second line for the folder " + inQuotes(entry.folder), "one");
        else
            plan.entries.push_back(std::move(entry));
    }
    if (plan.entries.empty() && complaints.isEmpty())
        complaints.add({path}, "no lines there", "one for each recording");
    return plan;
}

std::vector<std::string> getPlaceNames() {
    std::vector<std::string> names;
    for (const auto& [name, value] : placesOf({}, {}))
        names.push_back(name);
    return names;
}

BatchPlan makePlan(const FoundFiles& recordings, const PlanWishes& wishes, PlanDoubts& doubts,
                   Complaints& complaints) {
    BatchPlan plan;
    std::map<std::string, std::string> byFolder;
    std::set<std::size_t> used;
    for (const std::string& path : recordings.files) {
        const std::string name = recordings.nameBelowRoot(path);
        const std::string id = idOf(name);
        BatchPlan::Entry entry;
        entry.recording = path;
        entry.folder = (fs::path(wishes.out) / id).lexically_normal().string();
        if (path.find_first_of("\n\r") != std::string::npos || !getIsUtf8(path))
            complaints.add({wishes.graph}, "the recording " + inQuotes(path),
                           "a name in one line and in UTF-8, as a plan and a status have it");
        const auto [other, isNew] = byFolder.emplace(entry.folder, path);
        if (!isNew)
            complaints.add({entry.folder},
                           "two recordings for it, '" + other->second + "' and '" + path + "'",
                           "a name of its own for each, without its ending");
        entry.words = {"run", wishes.graph, "--input", wishes.source + "=" + path};
        const auto places = placesOf(path, id);
        for (const std::string& word : wishes.words)
            entry.words.push_back(filled(word, places));
        if (wishes.table != nullptr) {
            if (const auto row = wishes.table->findRow(path, name, complaints)) {
                used.insert(*row);
                addCells(*wishes.table, *row, entry);
            } else {
                doubts.withoutRow.push_back(path);
            }
        }
        entry.words.insert(entry.words.end(), {"--folder", entry.folder});
        checkLines(entry, wishes.graph, complaints);
        plan.entries.push_back(std::move(entry));
    }
    if (wishes.table != nullptr) findUnused(*wishes.table, used, doubts, complaints);
    return plan;
}

} // namespace Quillmere::Host
