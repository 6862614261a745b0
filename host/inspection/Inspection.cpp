// SPDX-License-Identifier: MIT
#include "host/inspection/Inspection.h"

#include "host/ends/RecordingException.h"
#include "host/ends/TimeStampWatch.h"
#include "host/inspection/ClockChoice.h"
#include "host/inspection/LogHistogram.h"
#include "host/inspection/UnitGuess.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Quillmere::Host {

namespace {

using Row = RecordingReader::Row;
using Kind = RecordingReader::Column::Kind;

constexpr std::size_t kFaultsTold = 5;
constexpr std::size_t kPicturesMade = 1000; // each takes more memory than all else of its column
constexpr std::uint64_t kRowsBetweenLooks = 4096;
constexpr std::size_t kNoCell = static_cast<std::size_t>(-1);

/// The times of the rows and the steps between them.
class Steps {
public:
    void take(double time, std::uint64_t row, std::uint64_t line) {
        watch.take(time, row, line);
        if (rows++ < kRowsMeasured) meter.take(time);
        if (rows > 1) {
            sizes.take(time - last);
            longest = std::max(longest, time - last);
        }
        last = time;
    }

    void tell(Inspection& told) const {
        watch.tell(told.times);
        told.shortStep = sizes.getPercentile(0.05);
        told.middleStep = sizes.getPercentile(0.5);
        told.longStep = sizes.getPercentile(0.95);
        if (longest > 0.0) told.longestStep = longest;
        told.measuredRate = meter.measure();
    }

private:
    TimeStampWatch watch;
    RateMeter meter;
    LogHistogram sizes;
    std::uint64_t rows = 0;
    double last = 0.0;
    double longest = 0.0; ///< Seconds.
};

/// Three axes whose unit isn't stated.
struct Lengths {
    std::size_t group = 0;
    std::vector<std::size_t> cells;
    LogHistogram sizes;
};

class Inspector {
public:
    Inspector(RecordingReader& theReader, const InspectionSettings& theSettings)
        : reader(theReader), settings(theSettings) {
        told.path = reader.getPath();
        told.form = reader.getForm();
        findClock();
        chooseCells();
        chooseGroups();
        reader.select(chosen);
        reader.setMissing(settings.wishes.missing);
    }

    Inspection run(const std::stop_token& stop, const std::function<void(const InspectionProgress&)>& tell) {
        reader.setStop(stop);
        std::uint64_t read = 0;
        for (Row row = take(); row != Row::End; row = take()) {
            takeRow(row);
            if (++read % kRowsBetweenLooks != 0) continue;
            if (stop.stop_requested()) throw InterruptedException();
            if (tell) tell({read, reader.getBytesRead(), reader.getSize()});
        }
        finish();
        return std::move(told);
    }

private:
    Row take() { return reader.takeRow(values.data()); }

    void findClock() {
        const ClockChoice clock = chooseClock(reader, settings);
        const std::vector<std::string> units = statedUnits(reader, settings, clock);
        told.columns.resize(reader.getColumns().size());
        for (std::size_t i = 0; i < told.columns.size(); ++i) {
            told.columns[i].described = reader.getColumns()[i];
            told.columns[i].described.unit = units[i];
        }
        told.clock = clock.kind;
        told.statedRate = clock.rate;
        if (!clock.column) return;
        told.columns[*clock.column].isTime = true;
        timeColumn = *clock.column;
    }

    /// Everything that holds numbers. What makes a time that the reader tells is no number.
    void chooseCells() {
        cells.assign(told.columns.size(), kNoCell);
        for (std::size_t i = 0; i < told.columns.size(); ++i) {
            Inspection::Column& column = told.columns[i];
            const bool isOwnTime =
                reader.getHasOwnTimes() && (column.isTime || column.described.kind == Kind::Time);
            column.isRead = !isOwnTime && (column.isTime || column.described.kind != Kind::Other);
            if (!column.isRead) continue;
            cells[i] = chosen.size();
            chosen.push_back(i);
            watches.emplace_back(chosen.size() <= kPicturesMade);
        }
        values.assign(std::max<std::size_t>(1, chosen.size()), 0.0);
    }

    void chooseGroups() {
        std::vector<RecordingReader::Column> candidates = reader.getColumns();
        for (std::size_t i = 0; i < candidates.size(); ++i)
            if (told.columns[i].isTime || !told.columns[i].isRead) candidates[i].kind = Kind::Other;
        for (AxisGroup& axes : findAxisGroups(candidates)) {
            const bool isStated = std::any_of(axes.columns.begin(), axes.columns.end(), [&](std::size_t i) {
                return !told.columns[i].described.unit.empty();
            });
            if (axes.columns.size() == 3 && !isStated) {
                Lengths& vector = lengths.emplace_back();
                vector.group = told.groups.size();
                for (const std::size_t column : axes.columns)
                    vector.cells.push_back(cells[column]);
            }
            told.groups.emplace_back().axes = std::move(axes);
        }
    }

    void takeRow(Row read) {
        ++number;
        const double time = told.clock != Inspection::Clock::Column ? static_cast<double>(number)
                            : reader.getHasOwnTimes()               ? reader.getTime()
                                                                    : values[cells[timeColumn]];
        const bool isTimed = told.clock != Inspection::Clock::Column || getHasTime(time);
        if (!reader.getHasAllCells() || !isTimed) {
            ++told.badRows;
            noteFault(read, isTimed);
            return;
        }
        if (read == Row::Faulty) {
            ++told.mendedRows;
            noteFault(read, true);
        }
        ++told.rows;
        if (told.clock == Inspection::Clock::Column) steps.take(time, number, reader.getLine());
        if (reader.getHasEmptyCells() || reader.getMissingCells() > 0) takeHoles();
        for (std::size_t i = 0; i < watches.size(); ++i)
            watches[i].take(values[i]);
        for (Lengths& vector : lengths)
            vector.sizes.take(
                std::hypot(values[vector.cells[0]], values[vector.cells[1]], values[vector.cells[2]]));
    }

    bool getHasTime(double time) const {
        if (!std::isfinite(time)) return false;
        return reader.getHasOwnTimes() || !reader.getIsEmpty(cells[timeColumn]);
    }

    /// Empty cells leave their values as they were, so they are made not-a-number here.
    void takeHoles() {
        for (std::size_t i = 0; i < chosen.size(); ++i) {
            if (reader.getIsMissing(i)) ++told.columns[chosen[i]].missingCells;
            if (!reader.getIsEmpty(i)) continue;
            ++told.columns[chosen[i]].emptyCells;
            values[i] = std::numeric_limits<double>::quiet_NaN();
        }
        if (!reader.getHasEmptyCells()) return;
        for (Inspection::Group& group : told.groups) {
            const auto isEmpty = [&](std::size_t column) { return reader.getIsEmpty(cells[column]); };
            const std::vector<std::size_t>& axes = group.axes.columns;
            const auto empty = std::count_if(axes.begin(), axes.end(), isEmpty);
            if (empty > 0 && empty < static_cast<std::ptrdiff_t>(axes.size())) group.hasHoles = true;
        }
    }

    void noteFault(Row read, bool isTimed) {
        if (told.firstFaults.size() >= kFaultsTold) return;
        const bool isOfTime = read != Row::Faulty && !isTimed;
        const Complaint fault = isOfTime ? reader.getFaultOfCell(timeColumn, "a time") : reader.getFault();
        told.firstFaults.push_back(fault.getText());
    }

    void finish() {
        told.notes = reader.getNotes();
        told.isChangedMeanwhile = reader.getIsChanged();
        if (told.clock == Inspection::Clock::Column) {
            steps.tell(told);
        } else if (told.clock != Inspection::Clock::None && told.rows > 0) {
            told.times.lastTime = static_cast<double>(number - 1) / *told.statedRate;
        }
        told.times.rows = told.rows;
        for (std::size_t i = 0; i < chosen.size(); ++i)
            finishColumn(told.columns[chosen[i]], watches[i]);
        for (const Lengths& vector : lengths) {
            Inspection::Group& group = told.groups[vector.group];
            group.medianLength = vector.sizes.getPercentile(0.5);
            if (group.medianLength) group.guessedUnit = guessUnit(group.axes.name, *group.medianLength);
        }
    }

    static void finishColumn(Inspection::Column& column, const ColumnWatch& watch) {
        column.numbers = watch.getNumbers();
        column.oddCells = watch.getRowsWithout() - column.emptyCells - column.missingCells;
        column.smallest = watch.getSmallest();
        column.largest = watch.getLargest();
        column.isConstant = watch.getIsConstant();
        column.rowsClippedBelow = watch.getIsClippedBelow() ? watch.getRowsAtSmallest() : 0;
        column.rowsClippedAbove = watch.getIsClippedAbove() ? watch.getRowsAtLargest() : 0;
        column.picture = watch.getPicture();
    }

    RecordingReader& reader;
    const InspectionSettings& settings;
    Inspection told;
    std::vector<std::size_t> chosen; ///< Columns that are read.
    std::vector<std::size_t> cells;  ///< For each column its place among them, or `kNoCell`.
    std::size_t timeColumn = 0;
    std::vector<double> values;
    std::vector<ColumnWatch> watches;
    std::vector<Lengths> lengths;
    Steps steps;
    std::uint64_t number = 0; ///< Rows read, bad ones too.
};

} // namespace

Inspection inspect(RecordingReader& reader, const InspectionSettings& settings, const std::stop_token& stop,
                   const std::function<void(const InspectionProgress&)>& tell) {
    return Inspector(reader, settings).run(stop, tell);
}

} // namespace Quillmere::Host
