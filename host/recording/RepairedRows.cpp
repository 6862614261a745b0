// SPDX-License-Identifier: MIT
#include "host/recording/RepairedRows.h"

#include "host/ends/RecordingException.h"

#include <cstdint>
#include <string>
#include <utility>

namespace Quillmere::Host {

namespace {

/// Seconds from what the recording's times count from. Times of day count from a time of day; one that lies
/// in front of that is the next day's.
std::optional<Complaint> resolve(const TimeRepairDate& date, const RecordingReader& reader, double& seconds) {
    constexpr double kNanoseconds = 1e9;
    const std::optional<std::int64_t> origin = reader.getOrigin();
    const std::string found = "'" + date.text + "'";
    const std::string times = "the times of " + reader.getPath();
    if (!origin) return Complaint(date.where, found, "seconds, since " + times + " count from no date");
    const bool isOfDay = *origin >= 0 && *origin < TimeRepairDate::kDay;
    if (isOfDay != date.getIsOfDay())
        return Complaint(date.where, found,
                         (isOfDay ? "a time of day, as " : "a date and a time, as ") + times + " are");
    const bool isOfNextDay = isOfDay && date.nanoseconds < *origin;
    seconds = static_cast<double>(date.nanoseconds + (isOfNextDay ? TimeRepairDate::kDay : 0) - *origin) /
              kNanoseconds;
    return std::nullopt;
}

} // namespace

std::optional<Complaint> resolveDates(TimeRepairPlan& plan, const RecordingReader& reader) {
    std::optional<Complaint> fault;
    if (plan.startDate) fault = resolve(*plan.startDate, reader, plan.start);
    if (plan.endDate && !fault) fault = resolve(*plan.endDate, reader, plan.end);
    // Which of two times of day is the later one, only what they count from tells.
    if (!fault && plan.startDate && plan.endDate && plan.start >= plan.end)
        fault =
            Complaint(plan.endDate->where,
                      "'end: " + plan.endDate->text + "' that isn't behind 'start: " + plan.startDate->text +
                          "' in " + reader.getPath(),
                      "a later one");
    return fault;
}

RepairedRows::RepairedRows(std::unique_ptr<RecordingReader> reader, RowPlan rowPlan,
                           TimeRepairPlan repairPlan)
    : rows(std::move(reader), std::move(rowPlan)), plan(std::move(repairPlan)), isRepairing(plan.getIsAny()) {
    std::size_t count = 0;
    for (const TimeRepairPlan::Pin& pin : plan.pins) {
        offsets.push_back(count);
        count += pin.size;
    }
    if (isRepairing) read.resize(plan.pins.size(), count);
}

RepairedRows::Row RepairedRows::take() {
    if (isRepairing && (mayHaveMore || getIsOver())) return takeNext();
    const RecordingRows::Row taken = rows.take();
    if (taken == RecordingRows::Row::Skipped) return Row::Skipped;
    if (!isRepairing) return taken == RecordingRows::Row::Taken ? Row::Taken : Row::End;
    if (!repair) begin(taken != RecordingRows::Row::End);
    if (taken == RecordingRows::Row::Taken) copyRow();
    if (auto fault = taken == RecordingRows::Row::Taken ? repair->take(read) : repair->finish()) {
        fault->where.file = getReader().getPlace();
        throw RecordingException(*fault);
    }
    mayHaveMore = true;
    const Row row = takeNext();
    return row == Row::Nothing && !repair->getIsEarly() ? Row::Skipped : row;
}

RepairedRows::Row RepairedRows::takeNext() {
    if (mayHaveMore) current = repair->next();
    mayHaveMore = mayHaveMore && current != nullptr;
    return mayHaveMore ? Row::Taken : getIsOver() ? Row::End : Row::Nothing;
}

/// What times count from may be known by the first row only; where there is none, nothing is to be cut.
void RepairedRows::begin(bool hasRow) {
    if (!hasRow) plan.startDate = plan.endDate = std::nullopt;
    if (const auto fault = resolveDates(plan, getReader())) throw RecordingException(*fault);
    repair.emplace(plan);
}

void RepairedRows::copyRow() {
    read.time = rows.getTime();
    read.row = rows.getNumber();
    read.line = getReader().getLine();
    for (std::size_t pin = 0; pin < plan.pins.size(); ++pin) {
        read.hasSample[pin] = static_cast<char>(rows.getHasSample(pin));
        for (std::size_t i = 0; i < plan.pins[pin].size; ++i) {
            read.values[offsets[pin] + i] = rows.getElement(pin, i);
            read.isMissing[offsets[pin] + i] = static_cast<char>(rows.getIsMissing(pin, i));
        }
    }
}

std::optional<SampleRate> RepairedRows::measureRate() const {
    if (plan.resampleRate || getPlan().rate > 0.0) return std::nullopt;
    return repair ? repair->measureRate() : rows.measureRate();
}

SourceAccount RepairedRows::getAccount() const {
    SourceAccount account = rows.getAccount();
    if (!repair) return account;
    const std::optional<double> counted = account.medianStep;
    repair->tell(account);
    const bool isCounted = !getPlan().timeCell && !getPlan().hasOwnTimes && !plan.resampleRate;
    if (isCounted && account.rows > 1) account.firstStep = account.medianStep = counted;
    return account;
}

} // namespace Quillmere::Host
