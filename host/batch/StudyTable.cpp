// SPDX-License-Identifier: MIT
#include "host/batch/StudyTable.h"

#include "host/text/Counted.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <utility>

namespace Quillmere::Host {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kPath = "path";
/// What a column of ids may be called.
constexpr std::array<std::string_view, 5> kIds{"id", "participant_id", "participant", "subject", "recording"};

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

/// The sign that parts the most cells of the names.
char separatorOf(std::string_view line) {
    char best = ',';
    for (const char sign : {',', '\t', ';'})
        if (std::count(line.begin(), line.end(), sign) > std::count(line.begin(), line.end(), best))
            best = sign;
    return best;
}

/// Without blanks at both ends.
std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

/// A cell in one line, since it becomes a word of a command.
std::string cellOf(const std::string& text) {
    std::string cell = trimmed(text);
    std::replace_if(
        cell.begin(), cell.end(), [](char letter) { return letter == '\n' || letter == '\r'; }, ' ');
    return cell;
}

/// A column's name; `Set:` is `set:`.
std::string columnOf(const std::string& text) {
    const std::string name = cellOf(text);
    constexpr std::string_view kSetting = StudyTable::kSetting;
    const std::string begin = name.substr(0, kSetting.size());
    return lowered(begin) == kSetting ? std::string(kSetting) + trimmed(name.substr(begin.size())) : name;
}

std::string inQuotes(const std::string& text) {
    std::string words = "'";
    words += printable(text, kLongestName);
    words += '\'';
    return words;
}

struct Cells {
    std::vector<std::string> texts{std::string()};
    bool isOpen = false; ///< The last one's quote isn't closed.
};

/// A quote opens at a cell's begin only: elsewhere it is a letter, as for inches.
Cells cellsOf(std::string_view line, char separator) {
    Cells cells;
    bool isAtBegin = true;
    for (std::size_t at = 0; at < line.size(); ++at) {
        const char letter = line[at];
        const bool isQuote = letter == '"';
        if (isQuote && cells.isOpen && at + 1 < line.size() && line[at + 1] == '"') {
            cells.texts.back() += line[++at];
        } else if (isQuote && (cells.isOpen || isAtBegin)) {
            cells.isOpen = !cells.isOpen;
            isAtBegin = false;
        } else if (letter == separator && !cells.isOpen) {
            cells.texts.emplace_back();
            isAtBegin = true;
        } else {
            cells.texts.back() += letter;
            isAtBegin = isAtBegin && letter == ' ';
        }
    }
    return cells;
}

/// Bytes beyond ASCII are parts of letters.
bool getIsWord(char letter) {
    const auto byte = static_cast<unsigned char>(letter);
    return byte >= 0x80 || std::isalnum(byte) != 0;
}

std::string withoutEndings(const std::string& name) {
    fs::path path(name);
    if (path.extension() == ".gz") path.replace_extension();
    return path.replace_extension().string();
}

} // namespace

std::vector<std::string> tableCells(std::string_view line, char separator) {
    return std::move(cellsOf(line, separator).texts);
}

std::string tableCell(const std::string& text) {
    if (text.find_first_of(",\"\n\r") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char letter : text)
        quoted += letter == '"' ? "\"\"" : std::string(1, letter == '\n' || letter == '\r' ? ' ' : letter);
    return quoted + '"';
}

StudyTable::StudyTable(const std::string& path, Complaints& complaints) : file(path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream.is_open()) {
        complaints.add(Complaint::sentence({path}, std::string("cannot be opened: ") + std::strerror(errno),
                                           "a table that can be read"));
        return;
    }
    std::string line;
    for (int number = 1; std::getline(stream, line); ++number) {
        const int first = number;
        if (first == 1 && line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);
        if (first == 1) separator = separatorOf(line);
        // A cell between quotes may go over several lines.
        for (std::string next; cellsOf(line, separator).isOpen && std::getline(stream, next); ++number)
            line += "\n" + next;
        if (cellsOf(line, separator).isOpen)
            complaints.add({path, first, 1}, "a quote that isn't closed", "another one");
        if (line.ends_with('\r')) line.pop_back();
        if (first == 1 && !takeHeader(line, complaints)) return;
        if (first > 1 && !line.empty()) takeRow(line, first, complaints);
    }
    if (columns.empty() && rows.empty() && complaints.isEmpty())
        complaints.add({path, 1, 1}, "nothing", "a row of names, one of which is path or id");
}

bool StudyTable::takeHeader(const std::string& line, Complaints& complaints) {
    std::vector<std::string> names = tableCells(line, separator);
    std::transform(names.begin(), names.end(), names.begin(), columnOf);
    const auto isName = [](const std::string& name) {
        return lowered(name) == kPath || std::find(kIds.begin(), kIds.end(), lowered(name)) != kIds.end();
    };
    const auto named = std::find_if(names.begin(), names.end(), isName);
    if (named == names.end()) {
        complaints.add({file, 1, 1}, "no column that names recordings",
                       "one called path, id or participant_id");
        return false;
    }
    namesPaths = lowered(*named) == kPath;
    nameColumn = static_cast<std::size_t>(named - names.begin());
    checkNames(names, complaints);
    names.erase(named);
    columns = std::move(names);
    return true;
}

void StudyTable::checkNames(const std::vector<std::string>& names, Complaints& complaints) const {
    std::set<std::string> known;
    for (const std::string& name : names) {
        std::string found = "the column ";
        found += inQuotes(name);
        if (!name.empty() && !known.insert(name).second)
            complaints.add({file, 1, 1}, std::string("a second time ").append(found),
                           "a name of its own for each column");
        if (name.find('=') != std::string::npos) complaints.add({file, 1, 1}, found, "a name without =");
        if (name.starts_with(kSetting) && name.find('.') == std::string::npos)
            complaints.add({file, 1, 1}, found, "set:BLOCK.PROPERTY");
    }
}

void StudyTable::takeRow(const std::string& line, int number, Complaints& complaints) {
    std::vector<std::string> cells = tableCells(line, separator);
    std::transform(cells.begin(), cells.end(), cells.begin(), cellOf);
    // Programs leave such rows behind the last one.
    if (std::all_of(cells.begin(), cells.end(), [](const std::string& cell) { return cell.empty(); })) return;
    if (cells.size() != columns.size() + 1) {
        complaints.add({file, number, 1}, counted(cells.size(), "cell"),
                       std::to_string(columns.size() + 1) + ", as there are names");
        return;
    }
    Row& row = rows.emplace_back();
    row.line = number;
    row.name = cells[nameColumn];
    byName[namesPaths ? fs::path(row.name).lexically_normal().string() : row.name].push_back(rows.size() - 1);
    cells.erase(cells.begin() + static_cast<std::ptrdiff_t>(nameColumn));
    for (std::size_t i = 0; i < cells.size(); ++i)
        if (columns[i].empty() && !cells[i].empty())
            complaints.add({file, number, 1}, inQuotes(cells[i]) + " in a column without a name",
                           "a name in line 1");
    row.cells = std::move(cells);
}

/// What a row may call a recording.
std::vector<std::string> StudyTable::namesOf(const std::string& path, const std::string& name) const {
    const fs::path whole(withoutEndings(name));
    if (namesPaths) return {path, name, withoutEndings(path), whole.string()};
    std::vector<std::string> names{whole.string()};
    for (const fs::path& folder : whole.parent_path())
        names.push_back(folder.string());
    const std::string stem = whole.filename().string();
    for (std::size_t i = 1; i <= stem.size(); ++i)
        if (i == stem.size() || !getIsWord(stem[i])) names.push_back(stem.substr(0, i));
    return names;
}

std::optional<std::size_t> StudyTable::findRow(const std::string& path, const std::string& name,
                                               Complaints& complaints) const {
    std::set<std::size_t> found;
    for (const std::string& one : namesOf(path, name))
        if (const auto named = byName.find(one); named != byName.end())
            found.insert(named->second.begin(), named->second.end());
    // A part of a study is found as the whole is: by folders above those that all recordings have in common.
    fs::path above = fs::path(path).lexically_normal();
    for (const fs::path& part : fs::path(name)) {
        if (!part.empty()) above = above.parent_path();
    }
    for (; found.empty() && !namesPaths && above.has_relative_path(); above = above.parent_path())
        if (const auto named = byName.find(above.filename().string()); named != byName.end())
            found.insert(named->second.begin(), named->second.end());
    if (found.empty()) return std::nullopt;
    if (found.size() > 1)
        complaints.add({file, rows[*found.rbegin()].line, 1},
                       "a second row for '" + path + "', beside that in line " +
                           std::to_string(rows[*found.begin()].line),
                       "one row for each recording");
    return *found.begin();
}

} // namespace Quillmere::Host
