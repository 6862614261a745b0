// SPDX-License-Identifier: MIT
#include "host/recording/RecordingSource.h"

#include "host/graph/NearestName.h"
#include "host/recording/RecordingException.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Quillmere::Host {

namespace {
constexpr std::int64_t kLargestCount = std::numeric_limits<std::int32_t>::max();
} // namespace

RecordingSource::RecordingSource(const std::string& instanceName) : Source(instanceName, true) {}

RecordingSource::~RecordingSource() = default;

void RecordingSource::process() {
    if (!isReleased || !isReady) return;
    isReleased = isReady = false;
    for (Output& output : outputs) {
        if (!output.hasSample) continue;
        fill(output);
        output.pin.send(nextTimeStamp);
    }
}

void RecordingSource::fill(Output& output) const {
    const std::size_t columns = output.columns.size();
    Core::MatrixXd& sample = output.pin.data.value;
    Core::resizeSample(sample, static_cast<Eigen::Index>(frameRows == 0 ? 1 : frameRows),
                       static_cast<Eigen::Index>(columns));
    double* const to = sample.data();
    if (frameRows > 0)
        std::copy(output.frame.begin(), output.frame.end(), to);
    else
        for (std::size_t i = 0; i < columns; ++i)
            to[i] = row[output.cells[i]];
}

const std::vector<HostBlock::SettingDescription>& RecordingSource::getSettingDescriptions() const {
    static const std::vector<SettingDescription> descriptions{
        {"file", "text", "", "the CSV recording, with a row of column names first; - is standard input"},
        {"pins", "map", "", "for each output pin the list of its columns, as in {accel: [ax, ay, az]}"},
        {"time", "text", "by rate", "the column that holds the time in seconds"},
        {"rate", "number", "by time", "rows a second, for a recording without a time column"},
        {"frame", "whole number", "none", "rows that make one sample; without it each row is one"},
        {"hop", "whole number", "as frame", "rows from the begin of a frame to the begin of the next"}};
    return descriptions;
}

void RecordingSource::configure(const GraphDescription::Block& description, const std::string& folder,
                                Complaints& complaints) {
    for (const GraphDescription::Setting& setting : description.settings)
        if (!setting.value.isMissing()) takeSetting(setting, folder, complaints);
    requireFile(description, complaints);
    requireClock(description, complaints);
    const auto isPins = [](const GraphDescription::Setting& setting) { return setting.name == "pins"; };
    if (std::none_of(description.settings.begin(), description.settings.end(), isPins))
        complaints.add(description.where, "the RecordingSource '" + getName() + "' without pins",
                       "'pins:' and for each pin its columns, as in {accel: [ax, ay, az]}");
    if (hop != 0 && frameRows == 0)
        complaints.add(description.where, "a hop without a frame in '" + getName() + "'", "'frame:' too");
    if (hop == 0) hop = frameRows;
}

void RecordingSource::takeSetting(const GraphDescription::Setting& setting, const std::string& folder,
                                  Complaints& complaints) {
    const Value& value = setting.value;
    if (setting.name == "file") {
        takeFile(setting, folder, complaints);
    } else if (setting.name == "time") {
        if (const auto name = toText(value, complaints)) timeColumn = Column{*name, value.where};
    } else if (setting.name == "rate") {
        rate = toNumber(value, complaints);
        if (rate && !(*rate > 0.0 && std::isfinite(*rate)))
            complaints.add(value.where, value.describe(), "a rate above 0 rows a second");
    } else if (setting.name == "frame") {
        frameRows = static_cast<std::size_t>(takeCount(value, complaints).value_or(1));
    } else if (setting.name == "hop") {
        hop = static_cast<std::size_t>(takeCount(value, complaints).value_or(1));
    } else if (setting.name == "pins") {
        takePins(value, complaints);
    } else {
        refuseSetting(setting, complaints);
    }
}

std::optional<std::int64_t> RecordingSource::takeCount(const Value& value, Complaints& complaints) {
    const auto count = toWhole(value, complaints);
    if (!count || (*count >= 1 && *count <= kLargestCount)) return count;
    complaints.add(value.where, value.describe(), "a whole number from 1 to 2147483647");
    return std::nullopt;
}

void RecordingSource::takePins(const Value& value, Complaints& complaints) {
    if (value.kind != Value::Kind::Map || value.entries.empty()) {
        complaints.add(value.where, value.kind == Value::Kind::Map ? "no pins" : value.describe(),
                       "for each pin its columns, as in {accel: [ax, ay, az]}");
        return;
    }
    for (const Value::Entry& entry : value.entries) {
        if (entry.key.empty()) complaints.add(entry.where, "a pin without a name", "a name");
        takeColumns(entry.value, outputs.emplace_back(entry.key, this), complaints);
    }
}

void RecordingSource::takeColumns(const Value& value, Output& output, Complaints& complaints) {
    const std::string expected = "a list of columns, as in [ax, ay, az]";
    if (value.isScalar()) {
        output.columns.push_back({value.text, value.where});
        return;
    }
    if (value.kind != Value::Kind::List || value.items.empty()) {
        complaints.add(value.where, value.kind == Value::Kind::List ? "an empty list" : value.describe(),
                       expected);
        return;
    }
    for (const Value& item : value.items)
        if (const auto name = toText(item, complaints)) output.columns.push_back({*name, item.where});
}

void RecordingSource::requireClock(const GraphDescription::Block& description, Complaints& complaints) const {
    int clocks = 0;
    for (const GraphDescription::Setting& setting : description.settings)
        if (setting.name == "time" || setting.name == "rate") ++clocks;
    if (clocks == 1) return;
    complaints.add(description.where,
                   "the RecordingSource '" + getName() +
                       (clocks == 0 ? "' without a clock" : "' with two clocks"),
                   "either 'time:' and a column or 'rate:' and rows a second");
}

void RecordingSource::open(Complaints& complaints) {
    try {
        reader = std::make_unique<CsvReader>(getPath());
    } catch (const RecordingException& exception) {
        complaints.add(getPathPlace(),
                       std::string("no recording that can be read (") + exception.what() + ")",
                       "a CSV file with a row of column names");
        return;
    }
    // A column may stand in several pins; the reader gives it once.
    std::vector<std::size_t> chosen;
    const auto cellOf = [&](const Column& column) -> std::size_t {
        const std::optional<std::size_t> index = findColumn(column, complaints);
        if (!index) return 0;
        const auto known = std::find(chosen.begin(), chosen.end(), *index);
        if (known != chosen.end()) return static_cast<std::size_t>(known - chosen.begin());
        chosen.push_back(*index);
        return chosen.size() - 1;
    };
    for (Output& output : outputs)
        for (const Column& column : output.columns)
            output.cells.push_back(cellOf(column));
    if (timeColumn) timeCell = cellOf(*timeColumn);
    reader->select(chosen);
    timeIndex = chosen.empty() ? 0 : chosen[timeCell];
    row.assign(chosen.size(), 0.0);
    watch = std::make_unique<TimeStampWatch>();
}

std::optional<std::size_t> RecordingSource::findColumn(const Column& column, Complaints& complaints) const {
    const std::vector<std::string>& names = reader->getColumns();
    const auto found = std::find(names.begin(), names.end(), column.name);
    if (found == names.end()) {
        complaints.add(column.where, "the column '" + column.name + "'",
                       "one of " + getPath() + ": " + listOfNames(names), nearestName(column.name, names));
        return std::nullopt;
    }
    if (std::find(found + 1, names.end(), column.name) != names.end())
        complaints.add(column.where, "the column '" + column.name + "' twice in " + getPath(),
                       "a name that one column has");
    return static_cast<std::size_t>(found - names.begin());
}

bool RecordingSource::prepare() {
    if (!isReady) isReady = frameRows == 0 ? readRow() : gatherFrame();
    return isReady;
}

bool RecordingSource::readRow() {
    if (!reader->readRow(row.data())) return false;
    nextTimeStamp = readTimeStamp();
    rows.add(1);
    watch->take(nextTimeStamp, rows.get(), reader->getLine());
    if (reader->getHasEmptyCells())
        noteEmptyCells();
    else
        for (Output& output : outputs)
            output.hasSample = true;
    return true;
}

double RecordingSource::readTimeStamp() const {
    if (!timeColumn) return static_cast<double>(rows.get()) / *rate;
    const std::string expected = "a time in seconds";
    if (reader->getIsEmpty(timeCell)) reader->refuse(timeColumn->name, "", expected);
    const double time = row[timeCell];
    if (!std::isfinite(time)) reader->refuse(timeColumn->name, std::isnan(time) ? "nan" : "inf", expected);
    return time;
}

/// A pin without any cell has no sample in this row; one with some is a fault.
void RecordingSource::noteEmptyCells() {
    for (Output& output : outputs) {
        const auto isEmpty = [&](std::size_t cell) { return reader->getIsEmpty(cell); };
        const auto first = std::find_if(output.cells.begin(), output.cells.end(), isEmpty);
        output.hasSample = first == output.cells.end();
        if (output.hasSample) continue;
        const bool isWhole = std::all_of(output.cells.begin(), output.cells.end(), isEmpty);
        if (isWhole && frameRows == 0) continue;
        const std::string& name = output.columns[static_cast<std::size_t>(first - output.cells.begin())].name;
        reader->refuse(name, "",
                       isWhole
                           ? "a number, since a frame has no holes"
                           : "a number, or nothing in all columns of the pin '" + output.pin.getName() + "'");
    }
}

bool RecordingSource::getIsPrepared() {
    // The rows of a frame that have come are gathered at once; only the one that fills it, or the end, makes it ready.
    while (!isReady && reader->getIsRowReady()) {
        if (frameRows == 0 || reader->getIsAtEnd()) return true;
        if (readRow()) isReady = takeRowIntoFrame();
    }
    return isReady;
}

/// Reads rows until a frame is full; false when the recording ends before.
bool RecordingSource::gatherFrame() {
    while (readRow())
        if (takeRowIntoFrame()) return true;
    return false;
}

/// Adds the row that was read to the frame; true when the frame is full.
bool RecordingSource::takeRowIntoFrame() {
    if (toSkip > 0) {
        --toSkip;
        return false;
    }
    if (gathered == frameRows) { // full and sent: what the next frame shares with it moves up
        gathered = frameRows - std::min(hop, frameRows);
        for (Output& output : outputs)
            output.frame.erase(output.frame.begin(),
                               output.frame.end() -
                                   static_cast<std::ptrdiff_t>(gathered * output.columns.size()));
    }
    for (Output& output : outputs)
        addToFrame(output);
    if (++gathered < frameRows) return false;
    toSkip = hop > frameRows ? hop - frameRows : 0;
    return true;
}

void RecordingSource::addToFrame(Output& output) const {
    for (const std::size_t cell : output.cells)
        output.frame.push_back(row[cell]);
}

SourceAccount RecordingSource::getAccount() const {
    SourceAccount account;
    account.rows = rows.get();
    watch->tell(account);
    return account;
}

std::optional<SourceAccount> RecordingSource::lookAhead(std::uint64_t most) const {
    if (getIsPiped()) return std::nullopt;
    SourceAccount account;
    TimeStampWatch times;
    try {
        CsvReader ahead(getPath());
        if (timeColumn) ahead.select({timeIndex});
        double time = 0.0;
        while (account.rows < most && ahead.readRow(&time)) {
            ++account.rows;
            if (!timeColumn) time = static_cast<double>(account.rows - 1) / *rate;
            if (!std::isfinite(time)) break;
            times.take(time, account.rows, ahead.getLine());
        }
    } catch (const RecordingException&) {
        // The run will tell of it.
    }
    times.tell(account);
    return account;
}

} // namespace Quillmere::Host
