// SPDX-License-Identifier: MIT
#include "host/recording/RecordingRows.h"

#include "host/ends/RecordingException.h"
#include "host/recording/ReadAhead.h"
#include "host/recording/TimeText.h"
#include "host/text/Complaint.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Quillmere::Host {

namespace {
constexpr std::size_t kFaultsTold = 5;
constexpr const char* kWithoutEnd = ", the last line, without its end";
} // namespace

RecordingRows::RecordingRows(std::unique_ptr<RecordingReader> recordingReader, RowPlan rowPlan)
    : reader(std::move(recordingReader)), plan(std::move(rowPlan)), values(plan.chosen.size()),
      hasSample(plan.pins.size()) {
    reader->select(plan.chosen);
    reader->setMissing(plan.missing);
}

void RecordingRows::setThread(std::shared_ptr<WorkThread> thread) {
    if (reader->getIsPiped()) return;
    reader = std::make_unique<ReadAhead>(std::move(reader), plan.chosen, plan.timeCell, std::move(thread));
}

RecordingRows::Row RecordingRows::take() {
    const RecordingReader::Row read = reader->takeRow(values.data());
    if (read == RecordingReader::Row::End) return Row::End;
    ++number;
    if (plan.onCutEnd != OnCutEnd::Keep && reader->getIsCut()) return endAtCut();
    // A row that is skipped takes its time all the same.
    time = plan.timeCell      ? values[*plan.timeCell]
           : plan.hasOwnTimes ? reader->getTime()
                              : static_cast<double>(number - 1) / plan.rate;
    const bool isFaulty = read == RecordingReader::Row::Faulty;
    isWhole = !isFaulty && !reader->getHasEmptyCells() && std::isfinite(time);
    if (!isWhole && !takeUnsound(isFaulty)) return Row::Skipped;
    if (account.rows++ == 0) firstTaken = number;
    lastTaken = number;
    account.missingCells += reader->getMissingCells();
    if (!getHasTimes()) return Row::Taken;
    watch.take(time, number, reader->getLine());
    if (account.rows == kRowsMeasured) watch.beginPart();
    return Row::Taken;
}

/// False when the row is to be skipped.
bool RecordingRows::takeUnsound(bool isFaulty) {
    // Texts are made of those faults that somebody reads: a recording may have as many bad rows as rows.
    const bool isTold = plan.onBadRow == OnBadRow::Error || account.firstFaults.size() < kFaultsTold;
    std::optional<Complaint> fault;
    if (isFaulty && isTold) fault = reader->getFault();
    bool isBad = isFaulty;
    bool canMend = reader->getHasAllCells();
    if (canMend && !getHasTime()) {
        canMend = false;
        if (!isBad && isTold) fault = getFaultOfTime();
        isBad = true;
    }
    if (canMend) {
        const std::optional<Hole> hole = mendHoles();
        if (hole && !isBad && isTold) fault = getFaultOf(*hole);
        isBad = isBad || hole;
    }
    if (!isBad) return true;
    if (plan.onBadRow == OnBadRow::Error) throw RecordingException(*fault);
    if (isTold) account.firstFaults.push_back(fault->getText());
    const bool isMended = canMend && plan.onBadRow == OnBadRow::Nan;
    ++(isMended ? account.mendedRows : account.skippedRows);
    return isMended;
}

Complaint RecordingRows::getFaultOfTime() const {
    if (plan.hasOwnTimes) return reader->getFaultOfCell(*reader->getTimeColumn(), "a time");
    return reader->getFaultOfCell(plan.chosen[*plan.timeCell], "a time in seconds");
}

Complaint RecordingRows::getFaultOf(const Hole& hole) const {
    return reader->getFaultOfCell(plan.chosen[hole.cell],
                                  hole.isOfAll ? "a number, since a frame has no holes"
                                               : "a number, or nothing in all columns of the pin '" +
                                                     plan.pins[hole.pin].name + "'");
}

bool RecordingRows::getHasTime() const {
    if (plan.hasOwnTimes) return std::isfinite(time);
    return !plan.timeCell || (std::isfinite(time) && !reader->getIsEmpty(*plan.timeCell));
}

/// Finds the pins that have no sample in this row, and empty cells that may not be, which become
/// not-a-number. Gives back the first of these, or nothing.
std::optional<RecordingRows::Hole> RecordingRows::mendHoles() {
    std::optional<Hole> found;
    const auto isEmpty = [&](std::size_t cell) { return reader->getIsEmpty(cell); };
    for (std::size_t i = 0; i < plan.pins.size(); ++i) {
        const RowPlan::Pin& pin = plan.pins[i];
        const auto first = std::find_if(pin.cells.begin(), pin.cells.end(), isEmpty);
        const bool hasNone = std::all_of(pin.cells.begin(), pin.cells.end(), isEmpty);
        hasSample[i] = !hasNone || plan.isFramed;
        if (first == pin.cells.end() || !hasSample[i]) continue;
        if (!found) found = Hole{.pin = i, .cell = *first, .isOfAll = hasNone};
        for (const std::size_t cell : pin.cells)
            if (isEmpty(cell)) values[cell] = std::numeric_limits<double>::quiet_NaN();
    }
    return found;
}

RecordingRows::Row RecordingRows::endAtCut() {
    if (plan.onCutEnd == OnCutEnd::Error)
        throw RecordingException({{reader->getPlace()},
                                  reader->getRowText() + kWithoutEnd,
                                  "a line end behind every row, or 'onCutEnd: keep' to take it, "
                                  "'onCutEnd: drop' to leave it out"});
    account.isCutEndDropped = true;
    account.firstFaults.push_back(reader->getPlace() + ": found " + reader->getRowText() + kWithoutEnd);
    return Row::Skipped;
}

SourceAccount RecordingRows::getAccount() const {
    SourceAccount told = account;
    told.isChangedMeanwhile = reader->getIsChanged();
    told.notes = reader->getNotes();
    if (const auto origin = reader->getOrigin()) told.origin = originText(*origin);
    if (getHasTimes())
        watch.tell(told);
    else if (account.rows > 0)
        tellTimesOfRate(told);
    return told;
}

/// Times that are counted have no steps but one.
void RecordingRows::tellTimesOfRate(SourceAccount& told) const {
    told.firstTime = static_cast<double>(firstTaken - 1) / plan.rate;
    told.lastTime = static_cast<double>(lastTaken - 1) / plan.rate;
    if (account.rows > 1) told.firstStep = told.medianStep = 1.0 / plan.rate;
}

} // namespace Quillmere::Host
