// SPDX-License-Identifier: MIT
#include "host/batch/BatchSummary.h"

#include "host/batch/StudyTable.h"
#include "host/recording/NumberText.h"
#include "host/text/Printable.h"
#include "host/text/ShortestText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>

namespace Quillmere::Host {

namespace fs = std::filesystem;

namespace {

constexpr const char* kOwnColumns[] = {"folder",         "recording", "state",   "failure", "seconds",
                                       "rows",           "rate",      "repairs", "lost",    "warnings",
                                       "peak_memory_mb", "host",      "began"};
constexpr const char* kUnreadable = "unreadable";
constexpr const char* kSummarySink = "summary";
constexpr double kMegabyte = 1024.0 * 1024.0;

double meanOf(const std::vector<double>& values) {
    double sum = 0.0;
    for (const double value : values)
        sum += value;
    return sum / static_cast<double>(values.size());
}

double spreadOf(const std::vector<double>& values) {
    const double mean = meanOf(values);
    double sum = 0.0;
    for (const double value : values)
        sum += (value - mean) * (value - mean);
    return std::sqrt(sum / static_cast<double>(values.size() - 1));
}

double percentileOf(const std::vector<double>& values, double percent) {
    const double place = percent / 100.0 * static_cast<double>(values.size() - 1);
    const auto below = static_cast<std::size_t>(place);
    const std::size_t above = std::min(below + 1, values.size() - 1);
    return values[below] + (place - static_cast<double>(below)) * (values[above] - values[below]);
}

std::vector<double> sortedFinite(const std::vector<double>& values) {
    std::vector<double> finite;
    std::copy_if(values.begin(), values.end(), std::back_inserter(finite),
                 [](double value) { return std::isfinite(value); });
    std::sort(finite.begin(), finite.end());
    return finite;
}

std::string numberText(double value) {
    return std::isfinite(value) ? shortestText(value) : "";
}

/// A table that grows by columns as rows name them.
class GrowingTable {
public:
    explicit GrowingTable(std::size_t rowCount) : rows(rowCount) {
        for (const char* const column : kOwnColumns)
            add(column);
    }

    void set(std::size_t row, const std::string& column, std::string text) {
        const std::size_t place = add(column);
        std::vector<std::string>& cells = rows[row];
        if (cells.size() <= place) cells.resize(place + 1);
        cells[place] = std::move(text);
    }

    std::string getText() const {
        std::string text = lineOf(names);
        for (const std::vector<std::string>& row : rows)
            text += lineOf(row);
        return text;
    }

private:
    std::size_t add(const std::string& column) {
        const auto [place, isNew] = places.emplace(column, names.size());
        if (isNew) names.push_back(column);
        return place->second;
    }

    std::string lineOf(const std::vector<std::string>& cells) const {
        std::string line;
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (i > 0) line += ',';
            if (i < cells.size()) line += tableCell(cells[i]);
        }
        line += '\n';
        return line;
    }

    std::map<std::string, std::size_t> places;
    std::vector<std::string> names;
    std::vector<std::vector<std::string>> rows;
};

void setOwn(GrowingTable& table, std::size_t row, const std::string& folder, const RunStatus& status) {
    const std::string memory =
        status.peakMemory == 0
            ? ""
            : std::to_string(std::lround(static_cast<double>(status.peakMemory) / kMegabyte));
    const std::string cells[] = {folder,
                                 status.recording,
                                 status.state,
                                 status.failure,
                                 shortestText(status.seconds),
                                 std::to_string(status.rows),
                                 status.rate ? shortestText(*status.rate) : "",
                                 std::to_string(status.repairs),
                                 std::to_string(status.lost),
                                 std::to_string(status.warnings),
                                 memory,
                                 status.host,
                                 status.began};
    static_assert(std::size(kOwnColumns) == std::size(cells));
    for (std::size_t i = 0; i < std::size(cells); ++i)
        table.set(row, kOwnColumns[i], cells[i]);
}

/// A name that is a column of ours gets something in front.
std::string nameOfNote(const std::string& note) {
    const bool isOwn =
        std::find(std::begin(kOwnColumns), std::end(kOwnColumns), note) != std::end(kOwnColumns);
    return isOwn ? "table." + note : note;
}

void setValues(GrowingTable& table, std::size_t row, const std::string& sink, const ResultTable& result,
               const std::vector<ColumnStatistic>& statistics) {
    for (const ResultTable::Column& column : result.columns) {
        const std::string name = sink + "." + column.name;
        if (sink == kSummarySink) {
            table.set(row, name, column.values.empty() ? "" : numberText(column.values.back()));
            continue;
        }
        const std::vector<double> values = sortedFinite(column.values);
        for (const ColumnStatistic& statistic : statistics)
            table.set(row, name + "." + statistic.name,
                      values.empty() ? "" : numberText(statistic.measure(values)));
    }
}

using Statuses = std::vector<std::pair<std::string, RunStatus>>; // by folder

/// Nothing where no run has come to its end.
std::optional<RunStatus> statusOf(const std::string& folder, const std::map<std::string, RunStatus>& told) {
    const std::string path = folder + "/" + RunStatus::kFileName;
    auto status = readStatus(path);
    std::error_code error;
    const auto known = told.find(folder);
    if (status && (known == told.end() || status->began >= known->second.began)) return status;
    if (known != told.end()) return known->second;
    if (!fs::exists(path, error)) return std::nullopt;
    status.emplace();
    status->state = kUnreadable;
    status->failure = std::string(RunStatus::kFileName) + " can't be read";
    return status;
}

/// Whoever goes on with the table would count it twice.
void warnOfRepeated(const Statuses& statuses, const std::string& out, Complaints& doubts) {
    std::map<std::string, std::string> known;
    for (const auto& [folder, status] : statuses) {
        if (status.recording.empty()) continue;
        std::error_code error;
        const std::string place = fs::absolute(status.recording, error).lexically_normal().string();
        const auto [other, isNew] = known.emplace(place, folder);
        if (!isNew)
            doubts.warn({(fs::path(out) / kSummaryName).string()},
                        "'" + printable(status.recording, kLongestName) + "' has two rows, of the folders '" +
                            printable(other->second, kLongestName) + "' and '" +
                            printable(folder, kLongestName) + "'; take one of them away");
    }
}

} // namespace

std::vector<std::string> getStatisticNames() {
    return {"mean", "median", "std", "min", "max", "count", "p5", "p95"};
}

std::optional<ColumnStatistic> findStatistic(const std::string& name) {
    using Values = std::vector<double>;
    if (name == "mean") return ColumnStatistic{name, meanOf};
    if (name == "std") return ColumnStatistic{name, spreadOf};
    if (name == "min") return ColumnStatistic{name, [](const Values& values) { return values.front(); }};
    if (name == "max") return ColumnStatistic{name, [](const Values& values) { return values.back(); }};
    if (name == "count")
        return ColumnStatistic{name, [](const Values& values) { return static_cast<double>(values.size()); }};
    double percent = 50.0;
    if (name != "median") {
        if (name.size() < 2 || name.front() != 'p') return std::nullopt;
        const auto [end, error] = std::from_chars(name.data() + 1, name.data() + name.size(), percent);
        if (error != std::errc() || end != name.data() + name.size()) return std::nullopt;
        if (!(percent >= 0.0 && percent <= 100.0)) return std::nullopt;
    }
    return ColumnStatistic{name, [percent](const Values& values) { return percentileOf(values, percent); }};
}

ResultTable readResult(const std::string& path) {
    ResultTable table;
    std::ifstream file(path, std::ios::binary);
    std::string line;
    if (!std::getline(file, line)) return table;
    const std::vector<std::string> names = tableCells(line, ',');
    for (std::size_t i = 1; i < names.size(); ++i)
        table.columns.emplace_back().name = names[i];
    while (std::getline(file, line)) {
        const char* at = line.data();
        const char* const end = at + line.size();
        for (std::size_t i = 0; i < names.size(); ++i) {
            double value = std::numeric_limits<double>::quiet_NaN();
            const auto read = textToNumber(at, end, value);
            if (i > 0) table.columns[i - 1].values.push_back(value);
            at = std::find(read.ec == std::errc() ? read.ptr : at, end, ',');
            if (at != end) ++at;
        }
    }
    return table;
}

std::vector<std::string> findResultFolders(const std::string& folder) {
    std::vector<std::string> folders;
    std::error_code error;
    for (fs::recursive_directory_iterator at(folder, fs::directory_options::skip_permission_denied, error),
         end;
         !error && at != end; at.increment(error))
        if (at->path().filename() == RunStatus::kFileName)
            folders.push_back(at->path().parent_path().lexically_normal().string());
    std::sort(folders.begin(), folders.end());
    return folders;
}

std::string summaryTable(const std::vector<std::string>& folders, const std::string& out,
                         const std::vector<ColumnStatistic>& statistics, Complaints& doubts,
                         const std::map<std::string, RunStatus>& told) {
    Statuses statuses;
    for (const std::string& folder : folders)
        if (auto status = statusOf(folder, told)) statuses.emplace_back(folder, std::move(*status));
    warnOfRepeated(statuses, out, doubts);
    GrowingTable table(statuses.size());
    for (std::size_t row = 0; row < statuses.size(); ++row) {
        const auto& [folder, status] = statuses[row];
        setOwn(table, row, fs::path(folder).lexically_relative(out).string(), status);
        for (const auto& [name, text] : status.notes)
            table.set(row, nameOfNote(name), text);
    }
    for (std::size_t row = 0; row < statuses.size(); ++row) {
        const auto& [folder, status] = statuses[row];
        for (const RunStatus::Result& result : status.results)
            if (!result.sink.empty() && (!statistics.empty() || result.sink == kSummarySink))
                setValues(table, row, result.sink, readResult(folder + "/" + result.path), statistics);
    }
    return table.getText();
}

} // namespace Quillmere::Host
