// SPDX-License-Identifier: MIT
#include "host/recording/DataChoice.h"

#include "host/ends/RecordingException.h"
#include "host/text/Complaint.h"
#include "host/text/Counted.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {

constexpr std::size_t kMostColumns = 1'000'000; // their names are held in memory

std::string quotedPath(const std::string& path) {
    return "'" + printable(path, kLongestName) + "'";
}

/// As somebody may have written it who thinks of files.
std::string plainPath(const std::string& path) {
    const std::size_t begin = std::min(path.find_first_not_of('/'), path.size());
    return path.substr(begin);
}

const DataEntry* findEntry(const std::vector<DataEntry>& entries, const std::string& path) {
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&](const DataEntry& entry) { return entry.path == plainPath(path); });
    return found == entries.end() ? nullptr : &*found;
}

std::vector<std::string> pathsThatFit(const std::vector<DataEntry>& entries) {
    std::vector<std::string> paths;
    for (const DataEntry& entry : entries)
        if (entry.unfit.empty() && entry.rows > 1) paths.push_back(entry.path);
    return paths;
}

void requireFit(const std::string& file, const DataEntry& entry, const std::vector<DataEntry>& entries) {
    if (!entry.unfit.empty())
        throw UnclearRecording(
            {{file + ": " + printable(entry.path, kLongestName)},
             entry.unfit,
             "rows of numbers; in this file that is " + listOfNames(pathsThatFit(entries))});
    if (entry.width > kMostColumns)
        throw UnclearRecording({{file + ": " + printable(entry.path, kLongestName)},
                                "more than a million columns",
                                "a table whose rows are points of time"});
}

const DataEntry& theOnlyOne(const std::string& file, const std::vector<DataEntry>& entries,
                            const DataWish& wish) {
    const DataEntry* found = nullptr;
    std::vector<std::string> paths = pathsThatFit(entries);
    std::erase(paths, plainPath(wish.time));
    if (paths.size() == 1) found = findEntry(entries, paths.front());
    if (found != nullptr) return *found;
    throw UnclearRecording(
        paths.empty()
            ? Complaint({file}, "nothing that has rows of numbers",
                        "a variable whose rows are points of time")
            : Complaint({file}, std::to_string(paths.size()) + " variables that may be the recording",
                        "'data:' and one of " + listOfNames(paths)));
}

} // namespace

const DataEntry& chooseData(const std::string& file, const std::vector<DataEntry>& entries,
                            const DataWish& wish) {
    const DataEntry* const found =
        wish.data.empty() ? &theOnlyOne(file, entries, wish) : findEntry(entries, wish.data);
    if (found == nullptr)
        throw UnclearRecording(Complaint::unknown({file}, "no data " + quotedPath(wish.data), wish.data,
                                                  pathsThatFit(entries), "one of ",
                                                  "a file that has rows of numbers"));
    requireFit(file, *found, entries);
    return *found;
}

const DataEntry* chooseTimes(const std::string& file, const std::vector<DataEntry>& entries,
                             const DataEntry& data, const std::vector<RecordingReader::Column>& columns,
                             const DataWish& wish) {
    const auto isNamed = [&](const RecordingReader::Column& column) { return column.name == wish.time; };
    if (wish.time.empty() || std::any_of(columns.begin(), columns.end(), isNamed)) return nullptr;
    const DataEntry* found = findEntry(entries, folderOf(data.path) + plainPath(wish.time));
    if (found == nullptr) found = findEntry(entries, wish.time);
    if (found == nullptr) {
        std::vector<std::string> known;
        for (const RecordingReader::Column& column : columns)
            known.push_back(column.name);
        for (const DataEntry& entry : entries)
            if (entry.unfit.empty() && entry.width == 1 && entry.rows == data.rows && &entry != &data)
                known.push_back(entry.path);
        throw UnclearRecording(
            Complaint::unknown({file}, "no times " + quotedPath(wish.time), wish.time, known));
    }
    requireFit(file, *found, entries);
    if (found->width != 1 || found->rows != data.rows)
        throw UnclearRecording(
            {{file + ": " + printable(found->path, kLongestName)},
             counted(found->rows, "row") + " of " + counted(found->width, "column"),
             "one column of times, " + counted(data.rows, "row") + " as " + quotedPath(data.path) + " has"});
    return found;
}

std::vector<RecordingReader::Column> numberedColumns(std::size_t count) {
    std::vector<RecordingReader::Column> columns(count);
    for (std::size_t i = 0; i < count; ++i)
        columns[i].name = std::to_string(i + 1);
    return columns;
}

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

} // namespace Quillmere::Host
