// SPDX-License-Identifier: MIT
#include "host/recording/RecordingLook.h"

#include "host/ends/RecordingException.h"
#include "host/recording/OtherClock.h"
#include "host/recording/RecordingForms.h"
#include "host/text/Counted.h"

#include <cmath>

namespace Quillmere::Host {

namespace {
constexpr double kTolerance = 0.05; ///< What a sensor's rate may well be off by.

/// The next row; a bad one, which the run will tell of, is the end, and `fault` says what is wrong with it.
RepairedRows::Row takeAhead(RepairedRows& rows, std::string& fault) {
    try {
        RepairedRows::Row row = rows.take();
        while (row == RepairedRows::Row::Nothing)
            row = rows.take();
        return row;
    } catch (const RecordingException& exception) {
        fault = exception.what();
        return RepairedRows::Row::End;
    }
}

RowsRate measureRows(RepairedRows& ahead, std::optional<std::size_t> pin) {
    RowsRate found;
    RateMeter meter;
    for (std::uint64_t i = 0; i < kRowsMeasured; ++i) {
        const RepairedRows::Row row = takeAhead(ahead, found.reason);
        if (row == RepairedRows::Row::End) break;
        if (row != RepairedRows::Row::Taken) continue;
        const bool hasSample = !pin || ahead.getHasSample(*pin);
        found.isSparse = found.isSparse || !hasSample;
        if (hasSample) meter.take(ahead.getTime());
    }
    found.rate = meter.measure();
    if (found.reason.empty()) found.reason = "no two of its samples have times that grow";
    return found;
}
} // namespace

RepairedRows RecordingLook::readAhead() const {
    return RepairedRows(openRecording(path, settings.gatherWishes()), recording.getPlan(),
                        recording.getRepairPlan());
}

SourceAccount RecordingLook::account(std::uint64_t most) const {
    SourceAccount found;
    try {
        RepairedRows ahead = readAhead();
        std::string fault;
        for (std::uint64_t i = 0; i < most; ++i)
            if (takeAhead(ahead, fault) == RepairedRows::Row::End) break;
        found = ahead.getAccount();
        if (settings.clock.rate)
            found.otherClock = findOtherClock(path, *settings.clock.rate, most, settings.gatherWishes());
        if (settings.nominalRate) found.otherClock = findOtherRateOfTimes();
        found.otherUnit = findOtherUnitOfTime();
    } catch (const RecordingException&) {
        // The file is gone.
    }
    return found;
}

RowsRate RecordingLook::measure(std::optional<std::size_t> pin) const {
    RowsRate found;
    if (recording.getReader().getIsPiped()) {
        found.reason = "it comes through a pipe";
        return found;
    }
    try {
        RepairedRows ahead = readAhead();
        return measureRows(ahead, pin);
    } catch (const RecordingException& exception) {
        found.reason = exception.what();
        return found;
    }
}

/// By even times that tell another rate than the one that is stated beside them.
std::optional<SourceAccount::OtherClock> RecordingLook::findOtherRateOfTimes() const {
    const RowsRate measured = measure(std::nullopt);
    if (!measured.rate || !measured.rate->getIsSteady()) return std::nullopt;
    const double rate = measured.rate->perSecond;
    if (std::abs(rate - *settings.nominalRate) <= kTolerance * rate) return std::nullopt;
    return SourceAccount::OtherClock{{}, rate};
}

std::optional<SourceAccount::OtherUnit> RecordingLook::findOtherUnitOfTime() const {
    if (settings.clock.columns.empty() || recording.getPlan().hasOwnTimes || settings.wishes.getHasTimeForm())
        return std::nullopt;
    const std::string& name = settings.clock.columns.front().name;
    if (auto found = findOtherUnit(name)) return found;
    // In a row of units under the name.
    for (const RecordingReader::Column& column : recording.getReader().getColumns()) {
        if (column.name != name || column.unit.empty()) continue;
        auto found = findOtherUnit(name + " [" + column.unit + "]");
        if (found) found->column = name;
        return found;
    }
    return std::nullopt;
}

void RecordingLook::warnOfShortFile(const std::string& block, Complaints& complaints) const {
    try {
        RepairedRows ahead = readAhead();
        std::size_t found = 0;
        while (found < settings.frameRows) {
            const RepairedRows::Row row = ahead.take();
            if (row == RepairedRows::Row::Taken) ++found;
            if (row != RepairedRows::Row::End) continue;
            const Complaint complaint{{},
                                      counted(found, "row") + " in " + path + " for a frame of " +
                                          std::to_string(settings.frameRows),
                                      "as many at least, or '" + block + "' sends nothing"};
            complaints.warn(settings.frameWhere, complaint.getText());
            return;
        }
    } catch (const RecordingException&) {
        // A bad row, or a file that is gone: the run will tell of it.
    }
}

} // namespace Quillmere::Host
