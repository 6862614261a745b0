// SPDX-License-Identifier: MIT
#include "host/recording/TableWriter.h"

#include "host/text/Counted.h"
#include "host/ends/RecordingException.h"
#include "host/text/Complaint.h"

#include <algorithm>
#include <fstream>
#include <memory>
#include <utility>

namespace Quillmere::Host {

namespace {
using Core::MatrixXd;

/// Copies `count` cells, each with the comma in front of it, and returns where the next ones begin.
std::size_t copyCells(std::string& to, const std::string& row, std::size_t from, std::size_t count) {
    std::size_t end = from;
    for (std::size_t cell = 0; cell < count; ++cell)
        end = std::min(row.find(',', end + 1), row.size());
    to.append(row, from, end - from);
    return end;
}
} // namespace

std::string TableWriter::Group::getColumn(std::size_t element) const {
    const std::string column =
        columns.empty() ? name + "[" + std::to_string(element) + "]" : columns[element];
    return unit.empty() ? column : column + " [" + unit + "]";
}

TableWriter::TableWriter(const std::string& path, std::string name, std::vector<Group> list,
                         ResultOptions options, const std::stop_token& stop)
    : file(path, std::move(options), stop), writer(file), timeName(std::move(name)), groups(std::move(list)),
      cellsOfRow(groups.size()) {
    Widths known{.firstRow = 0, .columns = {}};
    for (const Group& group : groups)
        known.columns.push_back(group.columns.size());
    widths.push_back(std::move(known));
}

void TableWriter::writeRow(double time, const std::vector<const MatrixXd*>& samples) {
    Cells* cells = cellsOfRow.data();
    for (const MatrixXd* const sample : samples)
        *cells++ = sample == nullptr ? Cells()
                                     : Cells{sample->data(), static_cast<std::size_t>(sample->size()), true};
    writeCells(time, cellsOfRow);
}

void TableWriter::writeCells(double time, const std::vector<Cells>& cells) {
    if (!getFits(cells)) grow(cells);
    if (!hasBegun) begin();
    writer.writeNumber(time);
    const std::size_t* columns = widths.back().columns.data();
    for (const Cells& group : cells) {
        for (std::size_t i = 0; i < group.size; ++i)
            writer.writeNumber(group.values[i]);
        for (std::size_t i = group.size; i < *columns; ++i)
            writer.writeEmpty();
        ++columns;
    }
    writer.endRow();
}

/// Whether each group has as many columns as its sample has elements, as nearly always.
bool TableWriter::getFits(const std::vector<Cells>& cells) const {
    const std::size_t* columns = widths.back().columns.data();
    for (const Cells& group : cells) {
        if (group.isThere && group.size != *columns) return false;
        ++columns;
    }
    return true;
}

/// Widens the groups whose samples have more elements than there are columns so far.
void TableWriter::grow(const std::vector<Cells>& cells) {
    std::vector<std::size_t>* columns = &widths.back().columns;
    for (std::size_t group = 0; group < groups.size(); ++group) {
        if (!cells[group].isThere) continue;
        const std::size_t elements = cells[group].size;
        if (!groups[group].columns.empty()) requireNamedWidth(group, elements);
        if (elements <= (*columns)[group]) continue;
        if (hasBegun && file.getIsDirect()) requireKnownWidth(group, elements);
        if (widths.back().firstRow != writer.getRows()) {
            widths.push_back({.firstRow = writer.getRows(), .columns = *columns});
            columns = &widths.back().columns;
        }
        (*columns)[group] = elements;
    }
}

void TableWriter::requireNamedWidth(std::size_t group, std::size_t elements) const {
    const std::size_t names = groups[group].columns.size();
    if (elements == names) return;
    throw RecordingException(
        {{file.getPath() + ": '" + groups[group].name + "'"},
         "a sample of " + counted(elements, "element") + " for " + counted(names, "column name"),
         "as many names as elements"});
}

void TableWriter::requireKnownWidth(std::size_t group, std::size_t elements) const {
    const std::size_t known = widths.back().columns[group];
    throw RecordingException(
        {{file.getPath() + ": '" + groups[group].name + "'"},
         "a sample of " + counted(elements, "element") + " behind a header with " + std::to_string(known),
         "its column names, or a file"});
}

std::vector<std::string> TableWriter::header(const std::vector<std::size_t>& columns) const {
    std::vector<std::string> names{timeName};
    for (std::size_t group = 0; group < groups.size(); ++group)
        for (std::size_t i = 0; i < columns[group]; ++i)
            names.push_back(groups[group].getColumn(i));
    return names;
}

void TableWriter::begin() {
    if (file.getIsDirect())
        for (std::size_t& columns : widths.front().columns)
            columns = std::max(columns, std::size_t{1});
    writer.writeHeader(header(widths.back().columns));
    hasBegun = true;
}

void TableWriter::finish() {
    end();
    file.finish();
}

void TableWriter::complete() {
    finish();
    file.complete();
    isComplete = true;
}

void TableWriter::abandon() {
    finish();
}

void TableWriter::discard() {
    file.discard();
}

void TableWriter::end() {
    if (!isEnded) {
        isEnded = true;
        if (!hasBegun) begin();
        writer.flush();
    }
    if (isWidened || widths.size() == 1) return;
    isWidened = true;
    widenEarlyRows();
}

/// Copies the table under the final header, with the cells added that a row's groups had not yet when it was
/// written.
void TableWriter::widenEarlyRows() {
    const std::unique_ptr<ResultFile> to = file.beginCopy();
    try {
        copyWidened(*to);
        file.adopt(*to);
    } catch (...) {
        to->discard();
        throw;
    }
}

void TableWriter::copyWidened(ResultFile& to) const {
    constexpr std::size_t kEnough = std::size_t{1} << 18;
    CsvWriter head(to);
    head.writeHeader(header(widths.back().columns));
    head.flush();

    std::ifstream from(file.getPartialPath());
    std::string row;
    std::string wide;
    std::getline(from, row); // the header of the first widths
    std::size_t known = 0;
    for (std::uint64_t index = 0; std::getline(from, row); ++index) {
        while (known + 1 < widths.size() && widths[known + 1].firstRow <= index)
            ++known;
        std::size_t at = copyCells(wide, row, 0, 1);
        for (std::size_t group = 0; group < groups.size(); ++group) {
            const std::size_t has = widths[known].columns[group];
            at = copyCells(wide, row, at, has);
            wide.append(widths.back().columns[group] - has, ',');
        }
        wide += '\n';
        if (wide.size() < kEnough) continue;
        to.write(wide.data(), wide.size());
        wide.clear();
    }
    if (!from.eof())
        throw RecordingException(
            Complaint::sentence({file.getPartialPath()}, "cannot be read again", "what was written to it"));
    to.write(wide.data(), wide.size());
}

} // namespace Quillmere::Host
