// SPDX-License-Identifier: MIT
#include "host/recording/RecordingSource.h"

#include "host/text/ShortestText.h"
#include "host/recording/RecordingFile.h"
#include "host/recording/RecordingForms.h"
#include "host/recording/RowPlanner.h"
#include "host/ends/RecordingException.h"
#include "host/ends/StandardStream.h"
#include "host/text/Counted.h"

#include <algorithm>
#include <utility>

namespace Quillmere::Host {

namespace {
/// Whether a longer frame is ever full is left to the run, since reading so far ahead takes time.
constexpr std::size_t kLongestFrameFilled = 100000;
/// Of rows that make no sample, as those in front of a start: about a millisecond.
constexpr std::uint64_t kRowsBetweenLooks = 4096;
} // namespace

RecordingSource::RecordingSource(const std::string& instanceName) : Source(instanceName, true) {}

RecordingSource::~RecordingSource() = default;

void RecordingSource::process() {
    if (!isReleased || !isReady) return;
    isReleased = isReady = false;
    if (settings.frameRows == 0) rows.add(1);
    std::size_t pin = 0;
    for (Output& output : outputs) {
        if (getIsToSend(output, pin)) {
            fill(output, pin);
            output.pin.send(getNextTimeStamp());
        }
        ++pin;
    }
}

/// Whether the row has a sample for a pin, whose times are its own as soon as one hasn't.
bool RecordingSource::getIsToSend(Output& output, std::size_t pin) {
    std::unique_ptr<TimeStampWatch>& times = output.times;
    const bool hasSample = recording->getHasSample(pin);
    if (!hasSample && times == nullptr) times = std::make_unique<TimeStampWatch>();
    if (times == nullptr) return hasSample;
    if (hasSample) times->take(getNextTimeStamp(), 0, 0);
    if (rows.get() == kRowsMeasured) times->beginPart();
    return hasSample;
}

std::string RecordingSource::getPurpose() const {
    return "Sends the rows of a recording, at their times: a table or what a device wrote.";
}

const std::vector<HostBlock::SettingDescription>& RecordingSource::getSettingDescriptions() const {
    static const std::vector<SettingDescription> descriptions = [] {
        std::vector<SettingDescription> all{{"file", "text", "", "the recording; - is standard input"}};
        for (SettingDescription& description : RecordingSettings::getDescriptions())
            all.push_back(std::move(description));
        return all;
    }();
    return descriptions;
}

void RecordingSource::configure(const GraphDescription::Block& description, const std::string& folder,
                                Complaints& complaints) {
    for (const GraphDescription::Setting& setting : description.settings) {
        if (setting.value.isMissing()) continue;
        if (setting.name == "file")
            takeFile(setting, folder, complaints);
        else if (!settings.take(setting, complaints))
            refuseSetting(setting, complaints);
    }
    requireFile(*this, description, complaints);
    settings.finish(getName(), description, complaints);
    for (const RecordingSettings::Pin& pin : settings.pins)
        outputs.emplace_back(pin.name, this);
}

void RecordingSource::fill(Output& output, std::size_t pin) {
    const std::size_t columns = settings.pins[pin].columns.size();
    Core::MatrixXd& sample = output.pin.data.value;
    Core::resizeSample(sample, static_cast<Eigen::Index>(settings.frameRows == 0 ? 1 : settings.frameRows),
                       static_cast<Eigen::Index>(columns));
    double* const to = sample.data();
    if (settings.frameRows > 0)
        std::copy(output.frame.begin(), output.frame.end(), to);
    else
        recording->copyElements(pin, to);
    const UnitPlan::Pin& unit = units.pins[pin];
    if (unit.getConverts()) unit.convert(to, static_cast<std::size_t>(sample.size()));
}

std::vector<std::string> RecordingSource::getColumnNames() const {
    if (recording != nullptr) return recording->getReader().getColumnNames();
    std::vector<std::string> names;
    for (const RecordingSettings::Pin& pin : settings.pins)
        for (const NamedColumn& column : pin.columns)
            names.push_back(column.name);
    return names;
}

std::optional<RecordedSource::Shape>
RecordingSource::getSampleShape(const Core::AbstractOutputPin& pin) const {
    const std::size_t found = findOutput(pin);
    if (found == outputs.size()) return std::nullopt;
    const std::vector<NamedColumn>& columns = settings.pins[found].columns;
    const auto isPattern = [](const NamedColumn& column) {
        return column.name.find('*') != std::string::npos;
    };
    // How many columns a pattern is, its file says.
    if (recording == nullptr && std::any_of(columns.begin(), columns.end(), isPattern)) return std::nullopt;
    if (settings.getAwaitsRate()) return std::nullopt;
    return Shape{std::max(settings.frameRows, std::size_t{1}), columns.size()};
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
    } catch (const InterruptedException&) {
        throw; // no fault of the recording's
    } catch (const RecordingException& exception) {
        complaints.add(getPathPlace(),
                       std::string("no recording that can be read (") + exception.what() + ")",
                       "a recording, such as a CSV file with a row of column names");
        return;
    }
    std::optional<RowPlan> plan = planRows(*reader, getPath(), getPathPlace(), settings, complaints);
    std::optional<UnitPlan> unitPlan;
    if (plan) unitPlan = planUnits(*reader, getPath(), settings, *plan, complaints);
    if (!unitPlan) return;
    units = std::move(*unitPlan);
    if (!settings.clock.rate && plan->rate > 0.0) settings.repairs.refuseRate(complaints);
    TimeRepairPlan repairPlan = planRepair();
    if (!reader->getIsPiped()) refuseDates(*plan, repairPlan, complaints);
    recording = std::make_unique<RepairedRows>(std::move(reader), std::move(*plan), std::move(repairPlan));
    if (!settleFrames(complaints)) return;
    if (settings.frameRows > 0 && settings.frameRows <= kLongestFrameFilled && !getComesByItself())
        look().warnOfShortFile(getName(), complaints);
}

std::unique_ptr<RecordingReader> RecordingSource::openReader() const {
    return openRecording(getPath(), settings.gatherWishes());
}

TimeRepairPlan RecordingSource::planRepair() const {
    std::vector<TimeRepairPlan::Pin> pins;
    for (const RecordingSettings::Pin& pin : settings.pins) {
        TimeRepairPlan::Pin& one = pins.emplace_back();
        one.name = pin.name;
        one.size = pin.columns.size();
    }
    return settings.repairs.getPlan(std::move(pins));
}

/// What a date counts from stands in the first row that is taken. Where there is none nothing is wrong with
/// it.
void RecordingSource::refuseDates(const RowPlan& plan, TimeRepairPlan repairPlan,
                                  Complaints& complaints) const {
    if (!repairPlan.startDate && !repairPlan.endDate) return;
    try {
        RecordingRows ahead(openReader(), plan);
        ahead.setStop(settings.wishes.stop);
        RecordingRows::Row row = ahead.take();
        while (row == RecordingRows::Row::Skipped)
            row = ahead.take();
        if (row == RecordingRows::Row::End) return;
        if (auto fault = resolveDates(repairPlan, ahead.getReader())) complaints.add(std::move(*fault));
    } catch (const InterruptedException&) {
        throw;
    } catch (const RecordingException&) {
        // A bad row, or a file that is gone: the run will tell of it.
    }
}

bool RecordingSource::getComesByItself() const {
    return recording == nullptr ? getIsPipe(getPath()) : recording->getReader().getIsPiped();
}

bool RecordingSource::prepare() {
    while (!isReady && readOn()) {
    }
    return isReady;
}

bool RecordingSource::getIsPrepared() {
    // Rows that have come are taken at once until one, or the last of a frame, makes a sample. Who sends rows
    // that don't count as fast as they are read doesn't keep the others from theirs.
    hasMore = false;
    for (std::uint64_t i = 0; !isReady && recording->getIsReady(); ++i) {
        if (recording->getIsAtEnd()) return true;
        if (i == kRowsBetweenLooks) {
            hasMore = true;
            return false;
        }
        readOn();
    }
    return isReady;
}

void RecordingSource::setStop(const std::stop_token& token) {
    stop = token;
    recording->setStop(token);
}

/// Goes on by one row; false at the end.
bool RecordingSource::readOn() {
    if (++rowsGone % kRowsBetweenLooks == 0 && stop.stop_requested()) throw InterruptedException();
    const RepairedRows::Row read = recording->take();
    if (read == RepairedRows::Row::Taken) isReady = settings.frameRows == 0 || takeRowIntoFrame();
    return read != RepairedRows::Row::End;
}

/// Adds the row that was read to the frame; true when the frame is full.
bool RecordingSource::takeRowIntoFrame() {
    rows.add(1);
    if (toSkip > 0) {
        --toSkip;
        return false;
    }
    if (gathered == settings.frameRows) { // full and sent: what the next frame shares with it moves up
        gathered = shared = settings.frameRows - std::min(settings.hop, settings.frameRows);
        for (std::size_t pin = 0; pin < outputs.size(); ++pin) {
            Output& output = outputs[pin];
            const auto kept = static_cast<std::ptrdiff_t>(gathered * settings.pins[pin].columns.size());
            output.frame.erase(output.frame.begin(), output.frame.end() - kept);
            output.missing.erase(output.missing.begin(), output.missing.end() - kept);
        }
    }
    for (std::size_t pin = 0; pin < outputs.size(); ++pin)
        for (std::size_t i = 0; i < settings.pins[pin].columns.size(); ++i) {
            outputs[pin].frame.push_back(recording->getElement(pin, i));
            outputs[pin].missing.push_back(recording->getIsMissing(pin, i) ? 1 : 0);
        }
    if (++gathered < settings.frameRows) return false;
    toSkip = settings.hop > settings.frameRows ? settings.hop - settings.frameRows : 0;
    return true;
}

std::vector<std::string> RecordingSource::getNotes() const {
    const std::size_t left = gathered < settings.frameRows ? gathered - shared : 0;
    if (left == 0) return {};
    return {std::to_string(left) + " of " + counted(rows.get(), "row") + (left == 1 ? " fills" : " fill") +
            " no frame of " + std::to_string(settings.frameRows) + ", at the end"};
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
    const std::vector<NamedColumn>& columns = settings.pins[found].columns;
    // The last row of a frame is the one that was read last.
    const std::size_t rowsBehind =
        settings.frameRows == 0 ? 0 : settings.frameRows - 1 - element / columns.size();
    return {rows.get() - rowsBehind, columns[element % columns.size()].name};
}

bool RecordingSource::getIsMissing(const Core::AbstractOutputPin& pin, std::size_t element) const {
    const std::size_t found = findOutput(pin);
    if (found == outputs.size()) return false;
    if (recording->getPlan().missing.empty() && !recording->getIsRepairing()) return false;
    if (settings.frameRows == 0) return recording->getIsMissing(found, element);
    return outputs[found].missing.at(element) != 0;
}

std::string RecordingSource::getUnit(const Core::AbstractOutputPin& pin) const {
    const std::size_t found = findOutput(pin);
    return found < units.pins.size() ? units.pins[found].unit : std::string();
}

SourceAccount RecordingSource::getAccount() const {
    if (recording == nullptr) return {};
    SourceAccount account = recording->getAccount();
    const double rate = recording->getPlan().rate;
    if (!settings.clock.rate && rate > 0.0)
        account.notes.push_back(shortestText(rate) + " rows a second, as the file states");
    account.notes.insert(account.notes.end(), units.notes.begin(), units.notes.end());
    for (std::string& note : settings.getNotes())
        account.notes.push_back(std::move(note));
    // Of a file it was told before the run.
    if (getComesByItself()) account.otherUnit = look().findOtherUnitOfTime();
    return account;
}

std::optional<SourceAccount> RecordingSource::lookAhead(std::uint64_t most) const {
    if (recording == nullptr || getComesByItself()) return std::nullopt;
    return look().account(most);
}

/// Rows a second, as the graph or the file states them.
std::optional<double> RecordingSource::getStatedRate() const {
    if (const auto stated = settings.getStatedRate(); stated || recording == nullptr) return stated;
    const double rate = recording->getPlan().rate;
    return rate > 0.0 ? std::optional(rate) : std::nullopt;
}

/// A pin that gets nothing from some rows, as a slow sensor beside a fast one, has a rate of its own.
std::optional<SampleRate> RecordingSource::getSampleRate(const Core::AbstractOutputPin& pin) const {
    if (recording == nullptr && !getIsRateSettled()) return std::nullopt;
    const double rowsASample = getRowsASample();
    auto stated = getStatedRate();
    if (stated) *stated /= rowsASample;
    if (stated && (settings.repairs.getResampleRate() || getComesByItself()))
        return SampleRate{.perSecond = *stated};
    if (recording == nullptr) return std::nullopt;
    const RowsRate& found = measureRows(findOutput(pin));
    if (stated && !found.isSparse) return SampleRate{.perSecond = *stated};
    std::optional<SampleRate> rate = found.rate;
    if (rate) rate->perSecond /= rowsASample;
    return rate;
}

/// Those of all pins in one reading, as a start may be far behind the first row; `pin` is one of them, or how
/// many there are for all rows.
const RowsRate& RecordingSource::measureRows(std::size_t pin) const {
    if (measured.empty()) measured = look().measure(outputs.size());
    return measured[pin];
}

/// Of what comes through a pipe nothing more is known than the graph states, unless it leaves it to the file.
bool RecordingSource::getIsRateSettled() const {
    return getComesByItself() && (getStatedRate() || !settings.clock.columns.empty());
}

std::string RecordingSource::getRateHindrance(const Core::AbstractOutputPin& pin) const {
    if (getComesByItself()) return "it comes through a pipe";
    return recording == nullptr ? "" : measureRows(findOutput(pin)).reason;
}

/// Makes rows of frames that are said in seconds; false, and a complaint, where nobody knows the rate.
bool RecordingSource::settleFrames(Complaints& complaints) {
    if (!settings.getAwaitsRate()) return true;
    std::optional<double> rate = getStatedRate();
    std::string reason;
    if (!rate) {
        const RowsRate& found = measureRows(outputs.size());
        const bool isSteady = found.rate && found.rate->getIsSteady();
        reason = found.rate && !isSteady ? "its rows come at no even rate" : found.reason;
        if (isSteady) rate = found.rate->perSecond;
    }
    if (rate)
        settings.settleFrames(*rate, complaints);
    else
        complaints.add(settings.frameWhere, "a frame in seconds of '" + getName() + "'",
                       "a number of rows, since the rate can't be known before the run (" + reason + "); '" +
                           getRateSetting() + ":' and rows a second would state it");
    return rate.has_value();
}

std::optional<SampleRate> RecordingSource::getRateSoFar(const Core::AbstractOutputPin& pin) const {
    const std::size_t output = findOutput(pin);
    if (recording == nullptr || output == outputs.size()) return std::nullopt;
    const std::unique_ptr<TimeStampWatch>& own = outputs[output].times;
    const bool isOwn = own != nullptr && !recording->getRepairPlan().resampleRate;
    std::optional<SampleRate> rate = isOwn ? own->measureRate() : recording->measureRate();
    if (rate) rate->perSecond /= getRowsASample();
    return rate;
}

std::vector<FileEnd::File> RecordingSource::getFiles() const {
    if (getPath().empty()) return {};
    return {{getPath(), getIsStandardStream(getPath()) ? STDIN_FILENO : -1}};
}

} // namespace Quillmere::Host
