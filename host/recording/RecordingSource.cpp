// SPDX-License-Identifier: MIT
#include "host/recording/RecordingSource.h"

#include "host/text/Counted.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"
#include "host/text/ShortestText.h"
#include "host/recording/ColumnFinder.h"
#include "host/recording/ColumnPattern.h"
#include "host/recording/OtherClock.h"
#include "host/recording/ReadingSettings.h"
#include "host/recording/RecordingFile.h"
#include "host/recording/RecordingForms.h"
#include "host/ends/RecordingException.h"
#include "host/ends/StandardStream.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_map>

namespace Quillmere::Host {

namespace {
constexpr std::int64_t kLargestCount = std::numeric_limits<std::int32_t>::max();
/// Whether a longer frame is ever full is left to the run, since reading so far ahead takes time.
constexpr std::size_t kLongestFrameFilled = 100000;
} // namespace

RecordingSource::RecordingSource(const std::string& instanceName) : Source(instanceName, true) {}

RecordingSource::~RecordingSource() = default;

void RecordingSource::process() {
    if (!isReleased || !isReady) return;
    isReleased = isReady = false;
    if (frameRows == 0) rows.add(1);
    for (std::size_t pin = 0; pin < outputs.size(); ++pin) {
        if (!recording->getHasSample(pin)) continue;
        fill(pin);
        outputs[pin].pin.send(getNextTimeStamp());
    }
}

void RecordingSource::fill(std::size_t pin) {
    Output& output = outputs[pin];
    const std::size_t columns = output.columns.size();
    Core::MatrixXd& sample = output.pin.data.value;
    Core::resizeSample(sample, static_cast<Eigen::Index>(frameRows == 0 ? 1 : frameRows),
                       static_cast<Eigen::Index>(columns));
    double* const to = sample.data();
    if (frameRows > 0)
        std::copy(output.frame.begin(), output.frame.end(), to);
    else
        for (std::size_t i = 0; i < columns; ++i)
            to[i] = recording->getElement(pin, i);
}

const std::vector<HostBlock::SettingDescription>& RecordingSource::getSettingDescriptions() const {
    static const std::vector<SettingDescription> descriptions = [] {
        std::vector<SettingDescription> all{
            {"file", "text", "", "the recording; - is standard input"},
            {"data", "text", "the one",
             "the path of a variable in a MAT or HDF5 file, as in imu/LowerBack/Acc"},
            {"pins", "map", "",
             "for each output pin the list of its columns, as in {accel: [ax, ay, az]}, or a pattern: "
             "{accel: acc*}"},
            {"time", "text or list", "as the file looks",
             "the column, or the path of the variable, that holds the time in seconds, or [date, time]"},
            {"rate", "number", "by time", "rows a second, for a recording without a time column"},
            {"frame", "whole number", "none", "rows that make one sample; without it each row is one"},
            {"hop", "whole number", "as frame", "rows from the begin of a frame to the begin of the next"},
            {"onBadRow", "error, skip or nan", "error",
             "what a row with a bad cell does: it ends the run, is passed over, or has nan there"},
            {"missing", "list", "none", "texts of cells that stand for nan, as in [NA, \"\"]"},
            {"onCutEnd", "keep, error or drop", "keep",
             "what a last line without its end does: it is a row as any other, ends the run, or is left "
             "out"}};
        for (SettingDescription& description : getReadingSettings())
            all.push_back(std::move(description));
        return all;
    }();
    return descriptions;
}

void RecordingSource::configure(const GraphDescription::Block& description, const std::string& folder,
                                Complaints& complaints) {
    for (const GraphDescription::Setting& setting : description.settings)
        if (!setting.value.isMissing()) takeSetting(setting, folder, complaints);
    requireFile(*this, description, complaints);
    refuseTwoClocks(description, complaints);
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
    } else if (setting.name == "data") {
        wishes.data = toText(value, complaints).value_or("");
    } else if (setting.name == "time") {
        takeTime(value, complaints);
    } else if (setting.name == "rate") {
        rate = toNumber(value, complaints);
        if (rate && !(*rate > 0.0 && std::isfinite(*rate)))
            complaints.add(value.where, value.describe(), "a rate above 0 rows a second");
    } else if (setting.name == "frame") {
        frameWhere = value.where;
        frameRows = static_cast<std::size_t>(takeCount(value, complaints).value_or(1));
    } else if (setting.name == "hop") {
        hop = static_cast<std::size_t>(takeCount(value, complaints).value_or(1));
    } else if (setting.name == "pins") {
        takePins(value, complaints);
    } else if (setting.name == "onBadRow") {
        plan.onBadRow = static_cast<OnBadRow>(takeChoice(value, {"error", "skip", "nan"}, complaints));
    } else if (setting.name == "missing") {
        takeMissing(value, complaints);
    } else if (setting.name == "onCutEnd") {
        plan.onCutEnd = static_cast<OnCutEnd>(takeChoice(value, {"keep", "error", "drop"}, complaints));
    } else if (!takeReadingSetting(setting, wishes, complaints)) {
        refuseSetting(setting, complaints);
    }
}

void RecordingSource::takeTime(const Value& value, Complaints& complaints) {
    timeColumns.clear();
    if (value.kind != Value::Kind::List) {
        if (const auto name = toText(value, complaints)) timeColumns.push_back({*name, value.where});
        return;
    }
    for (const Value& item : value.items)
        if (const auto name = toText(item, complaints)) timeColumns.push_back({*name, item.where});
    if (value.items.empty() || value.items.size() > 2)
        complaints.add(value.where, value.describe(),
                       "a column, or two with the date and the time: [date, time]");
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

void RecordingSource::takeMissing(const Value& value, Complaints& complaints) {
    if (value.kind == Value::Kind::Map || value.kind == Value::Kind::Null) {
        complaints.add(value.where, value.describe(), "a list of texts, as in [NA, \"\"]");
        return;
    }
    const std::vector<Value> texts = value.isScalar() ? std::vector<Value>{value} : value.items;
    for (const Value& text : texts)
        if (const auto word = toText(text, complaints)) plan.missing.push_back(*word);
}

/// Of none it is the file that may have one.
void RecordingSource::refuseTwoClocks(const GraphDescription::Block& description,
                                      Complaints& complaints) const {
    std::vector<std::string> ofFile;
    std::size_t ofCaller = 0;
    for (const GraphDescription::Setting& setting : description.settings) {
        if (setting.name != "time" && setting.name != "rate") continue;
        if (setting.origin == GraphDescription::Setting::Origin::File)
            ofFile.push_back(setting.name);
        else
            ++ofCaller;
    }
    const std::size_t clocks = ofFile.size() + ofCaller;
    if (clocks < 2) return;
    const std::string wayOut =
        ofFile.size() == 1 && ofCaller == 1
            ? "; '--set " + getName() + "." + ofFile.front() + "=null' takes the graph's away"
            : "";
    complaints.add(description.where, "the RecordingSource '" + getName() + "' with two clocks",
                   "either 'time:' and a column or 'rate:' and rows a second" + wayOut);
}

std::vector<std::string> RecordingSource::getColumnNames() const {
    if (recording != nullptr) return recording->getReader().getColumnNames();
    std::vector<std::string> names;
    for (const Output& output : outputs)
        for (const Column& column : output.columns)
            names.push_back(column.name);
    return names;
}

std::optional<RecordedSource::Shape>
RecordingSource::getSampleShape(const Core::AbstractOutputPin& pin) const {
    const std::size_t found = findOutput(pin);
    if (found == outputs.size()) return std::nullopt;
    const std::vector<Column>& columns = outputs[found].columns;
    const auto isPattern = [](const Column& column) { return column.name.find('*') != std::string::npos; };
    // How many columns a pattern is, its file says.
    if (recording == nullptr && std::any_of(columns.begin(), columns.end(), isPattern)) return std::nullopt;
    return Shape{std::max(frameRows, std::size_t{1}), columns.size()};
}

void RecordingSource::open(Complaints& complaints) {
    std::unique_ptr<RecordingReader> reader;
    try {
        reader = openReader();
    } catch (const UnclearRecording& exception) {
        for (const Complaint& complaint : exception.getComplaints())
            complaints.add(getPathPlace(), complaint.found + " in " + complaint.where.file,
                           complaint.expected, complaint.suggestion);
        return;
    } catch (const RecordingException& exception) {
        complaints.add(getPathPlace(),
                       std::string("no recording that can be read (") + exception.what() + ")",
                       "a CSV file with a row of column names");
        return;
    }
    if (!unfoldPatterns(reader->getColumnNames(), complaints)) return;
    if (!planCells(*reader, complaints) || !planTimes(*reader, complaints)) return;
    recording = std::make_unique<RecordingRows>(std::move(reader), plan);
    if (frameRows > 0 && frameRows <= kLongestFrameFilled && !getComesByItself()) warnOfShortFile(complaints);
}

ReadingWishes RecordingSource::gatherWishes() const {
    ReadingWishes all = wishes;
    all.findsTimes = timeColumns.empty() && !rate;
    all.missing = plan.missing;
    for (const Column& column : timeColumns)
        all.time.push_back(column.name);
    all.names = all.time;
    for (const Output& output : outputs)
        for (const Column& column : output.columns)
            all.names.push_back(column.name);
    return all;
}

std::unique_ptr<RecordingReader> RecordingSource::openReader() const {
    return openRecording(getPath(), gatherWishes());
}

/// Puts the columns that fit a pattern in its place; false when they have no order. A column of that very
/// name is no pattern.
bool RecordingSource::unfoldPatterns(const std::vector<std::string>& names, Complaints& complaints) {
    bool hasAll = true;
    for (Output& output : outputs) {
        std::vector<Column> columns;
        for (const Column& column : output.columns) {
            const bool isPattern = column.name.find('*') != std::string::npos &&
                                   std::find(names.begin(), names.end(), column.name) == names.end();
            const auto found = isPattern ? findByPattern(names, column.name) : std::vector<std::size_t>();
            for (const std::size_t one : found)
                columns.push_back({names[one], column.where});
            if (!found.empty()) continue;
            columns.push_back(column);
            if (!isPattern) continue;
            const std::vector<std::string> fitting = namesThatFit(names, column.name);
            if (fitting.empty()) continue; // planCells complains of it as of any name
            hasAll = false;
            complaints.add(column.where,
                           "'" + printable(column.name, kLongestName) + "', which is " +
                               listOfNames(fitting) + " in " + getPath(),
                           "a pattern for one column, or for columns whose names differ by their axis alone: "
                           "x, y and z, or w, x, y and z");
        }
        output.columns = std::move(columns);
    }
    return hasAll;
}

bool RecordingSource::getComesByItself() const {
    return recording == nullptr ? getIsPipe(getPath()) : recording->getReader().getIsPiped();
}

/// Of a file that ends before the first frame is full.
void RecordingSource::warnOfShortFile(Complaints& complaints) const {
    try {
        RecordingRows ahead(openReader(), recording->getPlan());
        std::size_t found = 0;
        while (found < frameRows) {
            const RecordingRows::Row row = ahead.take();
            if (row == RecordingRows::Row::Taken) ++found;
            if (row != RecordingRows::Row::End) continue;
            const Complaint complaint{{},
                                      counted(found, "row") + " in " + getPath() + " for a frame of " +
                                          std::to_string(frameRows),
                                      "as many at least, or '" + getName() + "' sends nothing"};
            complaints.warn(frameWhere, complaint.getText());
            return;
        }
    } catch (const RecordingException&) {
        // A bad row, or a file that is gone: the run will tell of it.
    }
}

/// A column may stand in several pins; the reader gives it once. False when one isn't there.
bool RecordingSource::planCells(const RecordingReader& reader, Complaints& complaints) {
    const std::vector<std::string> names = reader.getColumnNames();
    const ColumnFinder finder(getPath(), names);
    std::unordered_map<std::size_t, std::size_t> cells; // of each column that is chosen
    bool hasAll = true;
    const auto cellOf = [&](const Column& column) -> std::size_t {
        const std::optional<std::size_t> index = finder.find(column.name, column.where, complaints);
        hasAll = hasAll && index;
        if (!index) return 0;
        const auto [cell, isNew] = cells.try_emplace(*index, plan.chosen.size());
        if (isNew) plan.chosen.push_back(*index);
        return cell->second;
    };
    for (const Output& output : outputs) {
        plan.pins.push_back({output.pin.getName(), {}});
        for (const Column& column : output.columns)
            plan.pins.back().cells.push_back(cellOf(column));
    }
    plan.hasOwnTimes = reader.getHasOwnTimes();
    for (const Column& column : timeColumns) {
        if (plan.hasOwnTimes)
            finder.find(column.name, column.where, complaints);
        else
            plan.timeCell = cellOf(column);
    }
    if (timeColumns.empty() && reader.getTimeColumn() && !plan.hasOwnTimes && !rate) {
        const std::size_t index = *reader.getTimeColumn();
        const auto [cell, isNew] = cells.try_emplace(index, plan.chosen.size());
        if (isNew) plan.chosen.push_back(index);
        plan.timeCell = cell->second;
    }
    plan.rate = rate.value_or(0.0);
    plan.isFramed = frameRows > 0;
    return hasAll;
}

/// Where nobody says when rows were taken, the file has to.
bool RecordingSource::planTimes(const RecordingReader& reader, Complaints& complaints) {
    if (rate || plan.timeCell || plan.hasOwnTimes) return true;
    if (reader.getRate()) {
        plan.rate = *reader.getRate();
        isRateOfFile = true;
        return true;
    }
    complaints.add(getPathPlace(), "no column of times in " + getPath() + ", and no rate",
                   "'time:' and a column, or 'rate:' and rows a second");
    return false;
}

bool RecordingSource::prepare() {
    while (!isReady && readOn()) {
    }
    return isReady;
}

bool RecordingSource::getIsPrepared() {
    // Rows that have come are taken at once until one, or the last of a frame, makes a sample.
    while (!isReady && recording->getIsReady()) {
        if (recording->getReader().getIsAtEnd()) return true;
        readOn();
    }
    return isReady;
}

/// Reads one row; false at the end.
bool RecordingSource::readOn() {
    const RecordingRows::Row read = recording->take();
    if (read == RecordingRows::Row::Taken) isReady = frameRows == 0 || takeRowIntoFrame();
    return read != RecordingRows::Row::End;
}

/// Adds the row that was read to the frame; true when the frame is full.
bool RecordingSource::takeRowIntoFrame() {
    rows.add(1);
    if (toSkip > 0) {
        --toSkip;
        return false;
    }
    if (gathered == frameRows) { // full and sent: what the next frame shares with it moves up
        gathered = frameRows - std::min(hop, frameRows);
        for (Output& output : outputs) {
            const auto kept = static_cast<std::ptrdiff_t>(gathered * output.columns.size());
            output.frame.erase(output.frame.begin(), output.frame.end() - kept);
            output.missing.erase(output.missing.begin(), output.missing.end() - kept);
        }
    }
    for (std::size_t pin = 0; pin < outputs.size(); ++pin)
        for (std::size_t i = 0; i < outputs[pin].columns.size(); ++i) {
            outputs[pin].frame.push_back(recording->getElement(pin, i));
            outputs[pin].missing.push_back(recording->getIsMissing(pin, i) ? 1 : 0);
        }
    if (++gathered < frameRows) return false;
    toSkip = hop > frameRows ? hop - frameRows : 0;
    return true;
}

/// Its place, or how many there are when it is another block's.
std::size_t RecordingSource::findOutput(const Core::AbstractOutputPin& pin) const {
    const auto found = std::find_if(outputs.begin(), outputs.end(),
                                    [&](const Output& output) { return &output.pin == &pin; });
    return static_cast<std::size_t>(found - outputs.begin());
}

RecordedSource::Cell RecordingSource::getCell(const Core::AbstractOutputPin& pin, std::size_t element) const {
    const std::size_t found = findOutput(pin);
    if (found == outputs.size()) return {};
    const std::vector<Column>& columns = outputs[found].columns;
    // The last row of a frame is the one that was read last.
    const std::size_t rowsBehind = frameRows == 0 ? 0 : frameRows - 1 - element / columns.size();
    return {rows.get() - rowsBehind, columns[element % columns.size()].name};
}

bool RecordingSource::getIsMissing(const Core::AbstractOutputPin& pin, std::size_t element) const {
    const std::size_t found = findOutput(pin);
    if (found == outputs.size() || plan.missing.empty()) return false;
    if (frameRows == 0) return recording->getIsMissing(found, element);
    return outputs[found].missing.at(element) != 0;
}

SourceAccount RecordingSource::getAccount() const {
    if (recording == nullptr) return {};
    SourceAccount account = recording->getAccount();
    if (isRateOfFile) account.notes.push_back(shortestText(plan.rate) + " rows a second, as the file states");
    // Of a file it was told before the run.
    if (getComesByItself()) account.otherUnit = findOtherUnitOfTime();
    return account;
}

/// Of numbers that are taken for seconds since the graph says so.
std::optional<SourceAccount::OtherUnit> RecordingSource::findOtherUnitOfTime() const {
    if (timeColumns.empty() || plan.hasOwnTimes || wishes.getHasTimeForm()) return std::nullopt;
    const std::string& name = timeColumns.front().name;
    if (auto found = findOtherUnit(name)) return found;
    // In a row of units under the name.
    for (const RecordingReader::Column& column : recording->getReader().getColumns()) {
        if (column.name != name || column.unit.empty()) continue;
        auto found = findOtherUnit(name + " [" + column.unit + "]");
        if (found) found->column = name;
        return found;
    }
    return std::nullopt;
}

namespace {
/// The next row of a look ahead; a bad one, which the run will tell of, is the end of it.
RecordingRows::Row takeAhead(RecordingRows& rows) {
    try {
        return rows.take();
    } catch (const RecordingException&) {
        return RecordingRows::Row::End;
    }
}
} // namespace

std::optional<SourceAccount> RecordingSource::lookAhead(std::uint64_t most) const {
    if (recording == nullptr || getComesByItself()) return std::nullopt;
    SourceAccount account;
    try {
        RecordingRows ahead(openReader(), recording->getPlan());
        for (std::uint64_t i = 0; i < most; ++i)
            if (takeAhead(ahead) == RecordingRows::Row::End) break;
        account = ahead.getAccount();
        if (rate) account.otherClock = findOtherClock(getPath(), *rate, most, gatherWishes());
        account.otherUnit = findOtherUnitOfTime();
    } catch (const RecordingException&) {
        // The file is gone.
    }
    return account;
}

/// A pin that gets nothing from some rows, as a slow sensor beside a fast one, has a rate of its own.
std::optional<SampleRate> RecordingSource::getSampleRate(const Core::AbstractOutputPin& pin) const {
    if (recording == nullptr) return std::nullopt;
    const double rowsASample = static_cast<double>(std::max<std::size_t>(hop, 1));
    const auto stated =
        plan.rate > 0.0 ? std::optional(SampleRate{.perSecond = plan.rate / rowsASample}) : std::nullopt;
    if (getComesByItself()) return stated;
    RateMeter meter;
    bool isSparse = false;
    try {
        RecordingRows ahead(openReader(), recording->getPlan());
        const std::size_t output = findOutput(pin);
        for (std::uint64_t i = 0; i < kRowsMeasured; ++i) {
            const RecordingRows::Row row = takeAhead(ahead);
            if (row == RecordingRows::Row::End) break;
            if (row != RecordingRows::Row::Taken) continue;
            isSparse = isSparse || !ahead.getHasSample(output);
            if (ahead.getHasSample(output)) meter.take(ahead.getTime());
        }
    } catch (const RecordingException&) {
        return std::nullopt; // the file is gone
    }
    if (stated && !isSparse) return stated;
    std::optional<SampleRate> measured = meter.measure();
    if (measured) measured->perSecond /= rowsASample;
    return measured;
}

std::vector<FileEnd::File> RecordingSource::getFiles() const {
    if (getPath().empty()) return {};
    return {{getPath(), getIsStandardStream(getPath()) ? STDIN_FILENO : -1}};
}

} // namespace Quillmere::Host
