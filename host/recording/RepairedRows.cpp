// SPDX-License-Identifier: MIT
#include "host/recording/RepairedRows.h"

#include "host/ends/RecordingException.h"

#include <cstdint>
#include <string>
#include <utility>

namespace Quillmere::Host {

namespace {

/// Seconds from what the recording's times count from. Times of day count from a time of day.
std::optional<Complaint> resolve(const TimeRepairDate& date, const RecordingReader& reader, double& seconds) {
    constexpr std::int64_t kDay = 86'400'000'000'000; // nanoseconds
    constexpr double kNanoseconds = 1e9;
    const auto isOfDay = [](std::int64_t moment) { return moment >= 0 && moment < kDay; };
    const std::optional<std::int64_t> origin = reader.getOrigin();
    const std::string found = "'" + date.text + "'";
    const std::string times = "the times of " + reader.getPath();
    if (!origin) return Complaint(date.where, found, "seconds, since " + times + " count from no date");
    if (isOfDay(*origin) != isOfDay(date.nanoseconds))
        return Complaint(date.where, found,
                         (isOfDay(*origin) ? "a time of day, as " : "a date and a time, as ") + times +
                             " are");
    seconds = static_cast<double>(date.nanoseconds - *origin) / kNanoseconds;
    return std::nullopt;
}

} // namespace

std::optional<Complaint> resolveDates(TimeRepairPlan& plan, const RecordingReader& reader) {
    std::optional<Complaint> fault;
    if (plan.startDate) fault = resolve(*plan.startDate, reader, plan.start);
    if (plan.endDate && !fault) fault = resolve(*plan.endDate, reader, plan.end);
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
    if (!repair) begin();
    if (taken == RecordingRows::Row::End) {
        repair->finish();
    } else {
        copyRow();
        if (auto fault = repair->take(read)) {
            fault->where.file = getReader().getPlace();
            throw RecordingException(*fault);
        }
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

/// What times count from may be known by the first row only.
void RepairedRows::begin() {
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
