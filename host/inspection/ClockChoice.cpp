// SPDX-License-Identifier: MIT
#include "host/inspection/ClockChoice.h"

#include "host/recording/ColumnFinder.h"
#include "host/recording/ColumnUnits.h"

namespace Quillmere::Host {

namespace {

std::optional<std::size_t> findTimeColumn(const RecordingReader& reader, const InspectionSettings& settings) {
    if (reader.getHasOwnTimes() || settings.wishes.time.empty()) return reader.getTimeColumn();
    const std::vector<std::string> names = reader.getColumnNames();
    const ColumnFinder finder(reader.getPath(), names);
    Complaints complaints;
    const auto found = finder.find(settings.wishes.time.front(), {"--set time"}, complaints);
    complaints.raise();
    return found;
}

} // namespace

ClockChoice chooseClock(const RecordingReader& reader, const InspectionSettings& settings) {
    ClockChoice choice;
    choice.rate = settings.clock.rate ? settings.clock.rate : reader.getRate();
    if (settings.clock.rate) {
        choice.kind = ClockChoice::Kind::SaidRate;
    } else if ((choice.column = findTimeColumn(reader, settings))) {
        choice.kind = ClockChoice::Kind::Column;
    } else if (reader.getRate()) {
        choice.kind = ClockChoice::Kind::FilesRate;
    }
    return choice;
}

std::vector<std::string> statedUnits(const RecordingReader& reader, const InspectionSettings& settings,
                                     const ClockChoice& clock) {
    std::vector<std::string> units;
    for (const RecordingReader::Column& column : reader.getColumns())
        units.push_back(column.unit);
    if (settings.units.empty()) return units;
    Complaints complaints;
    const std::vector<ColumnUnit> said =
        findUnits(reader.getColumns(), settings.units, reader.getPath(), complaints);
    for (std::size_t i = 0; i < said.size(); ++i) {
        if (clock.column == i)
            refuseUnitOfTime(reader.getColumns()[i].name, settings.units, complaints);
        else
            units[i] = said[i].text;
    }
    complaints.raise();
    return units;
}

} // namespace Quillmere::Host
