// SPDX-License-Identifier: MIT
#include "host/recording/RecordingReader.h"

#include <algorithm>

namespace Quillmere::Host {

RecordingReader::~RecordingReader() = default;

std::vector<std::string> RecordingReader::getColumnNames() const {
    std::vector<std::string> names;
    names.reserve(columns.size());
    for (const Column& column : columns)
        names.push_back(column.name);
    return names;
}

std::optional<std::size_t> RecordingReader::getTimeColumn() const {
    if (timeColumn) return timeColumn;
    const auto found = std::find_if(columns.begin(), columns.end(), [](const Column& column) {
        return column.kind == Column::Kind::Time && (column.unit.empty() || column.unit == "s");
    });
    if (found == columns.end()) return std::nullopt;
    return static_cast<std::size_t>(found - columns.begin());
}

void RecordingReader::select(const std::vector<std::size_t>& chosen) {
    targets.assign(columns.size(), kPassedOver);
    for (std::size_t i = 0; i < chosen.size(); ++i)
        targets.at(chosen[i]) = i;
    empty.assign(chosen.size(), 0);
    isMissing.assign(chosen.size(), 0);
    emptyCells = missingCells = 0;
}

void RecordingReader::beginRow() {
    if (emptyCells > 0) std::fill(empty.begin(), empty.end(), char{0});
    if (missingCells > 0) std::fill(isMissing.begin(), isMissing.end(), char{0});
    emptyCells = missingCells = 0;
    hasAllCells = true;
}

void RecordingReader::noteEmpty(std::size_t index) {
    empty[index] = 1;
    ++emptyCells;
}

void RecordingReader::noteMissing(std::size_t index) {
    isMissing[index] = 1;
    ++missingCells;
}

} // namespace Quillmere::Host
