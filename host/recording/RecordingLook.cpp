// SPDX-License-Identifier: MIT
#include "host/recording/RecordingLook.h"

#include "host/ends/RecordingException.h"
#include "host/recording/OtherClock.h"
#include "host/recording/RecordingForms.h"
#include "host/text/Counted.h"

#include <cmath>

namespace Quillmere::Host {

namespace {
constexpr double kTolerance = 0.05;               ///< What a sensor's rate may well be off by.
constexpr std::uint64_t kRowsBetweenLooks = 4096; ///< At the stop: about a millisecond.

/// The next row; a bad one, which the run will tell of, is the end, and `fault` says what is wrong with it.
RepairedRows::Row takeAhead(RepairedRows& rows, const std::stop_token& stop, std::string& fault) {
    try {
        RepairedRows::Row row = rows.take();
        for (std::uint64_t i = 1; row == RepairedRows::Row::Nothing; ++i) {
            if (i % kRowsBetweenLooks == 0 && stop.stop_requested()) throw InterruptedException();
            row = rows.take();
        }
        return row;
    } catch (const InterruptedException&) {
        throw;
    } catch (const RecordingException& exception) {
        fault = exception.what();
        return RepairedRows::Row::End;
    }
}

std::vector<RowsRate> measureRows(RepairedRows& ahead, const std::stop_token& stop, std::size_t pins) {
    std::vector<RowsRate> found(pins + 1);
    std::vector<RateMeter> meters(pins + 1);
    std::string reason;
    for (std::uint64_t i = 0; i < kRowsMeasured; ++i) {
        const RepairedRows::Row row = takeAhead(ahead, stop, reason);
        if (row == RepairedRows::Row::End) break;
        if (row != RepairedRows::Row::Taken) continue;
        for (std::size_t pin = 0; pin <= pins; ++pin) {
            const bool hasSample = pin == pins || ahead.getHasSample(pin);
            found[pin].isSparse = found[pin].isSparse || !hasSample;
            if (hasSample) meters[pin].take(ahead.getTime());
        }
    }
    if (reason.empty()) reason = "no two of its samples have times that grow";
    for (std::size_t pin = 0; pin <= pins; ++pin) {
        found[pin].rate = meters[pin].measure();
        found[pin].reason = reason;
    }
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
            if (takeAhead(ahead, settings.wishes.stop, fault) == RepairedRows::Row::End) break;
        found = ahead.getAccount();
        if (settings.clock.rate)
            found.otherClock = findOtherClock(path, *settings.clock.rate, most, settings.gatherWishes());
        if (settings.nominalRate) found.otherClock = findOtherRateOfTimes();
        found.otherUnit = findOtherUnitOfTime();
    } catch (const InterruptedException&) {
        throw;
    } catch (const RecordingException&) {
        // The file is gone.
    }
    return found;
}

std::vector<RowsRate> RecordingLook::measure(std::size_t pins) const {
    RowsRate none;
    none.reason = "it comes through a pipe";
    if (recording.getReader().getIsPiped()) return std::vector<RowsRate>(pins + 1, none);
    try {
        RepairedRows ahead = readAhead();
        return measureRows(ahead, settings.wishes.stop, pins);
    } catch (const InterruptedException&) {
        throw;
    } catch (const RecordingException& exception) {
        none.reason = exception.what();
        return std::vector<RowsRate>(pins + 1, none);
    }
}

/// By even times that tell another rate than the one that is stated beside them.
std::optional<SourceAccount::OtherClock> RecordingLook::findOtherRateOfTimes() const {
    const RowsRate measured = measure(0).front();
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
            std::string fault;
            const RepairedRows::Row row = takeAhead(ahead, settings.wishes.stop, fault);
            if (!fault.empty()) return;
            if (row == RepairedRows::Row::Taken) ++found;
            if (row != RepairedRows::Row::End) continue;
            const Complaint complaint{{},
                                      counted(found, "row") + " in " + path + " for a frame of " +
                                          std::to_string(settings.frameRows),
                                      "as many at least, or '" + block + "' sends nothing"};
            complaints.warn(settings.frameWhere, complaint.getText());
            return;
        }
    } catch (const InterruptedException&) {
        throw;
    } catch (const RecordingException&) {
        // A bad row, or a file that is gone: the run will tell of it.
    }
}

} // namespace Quillmere::Host
