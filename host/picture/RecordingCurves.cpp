// SPDX-License-Identifier: MIT
#include "host/picture/RecordingCurves.h"

#include "host/ends/RecordingException.h"
#include "host/recording/RepairedRows.h"
#include "host/recording/TimeText.h"
#include "host/recording/UnitText.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <utility>

namespace Quillmere::Host {

namespace {

using Kind = RecordingReader::Column::Kind;
using Row = RecordingReader::Row;

constexpr std::uint64_t kRowsBetweenLooks = 4096;
constexpr std::size_t kFewPieces = 256; // by which a course can still be seen

/// The name without the unit that is told beside it.
std::string shownName(const std::string& name, const std::string& unit) {
    const std::string bare = nameWithoutUnit(name);
    return unit.empty() || bare.empty() ? name : bare;
}

} // namespace

RecordingCurves::RecordingCurves(RecordingReader& recording, const InspectionSettings& settings,
                                 const CurveWishes& curveWishes)
    : reader(recording), wishes(curveWishes), clock(chooseClock(reader, settings)),
      units(statedUnits(reader, settings, clock)) {
    reader.setMissing(settings.wishes.missing);
    table.name = std::filesystem::path(reader.getPath()).filename().string();
    choose();
}

/// Curves are values from 0 on, and what stands in place of the times comes behind them.
void RecordingCurves::choose() {
    const std::vector<RecordingReader::Column>& columns = reader.getColumns();
    std::optional<std::size_t> across;
    for (std::size_t i = 0; i < columns.size() && !wishes.across.empty(); ++i)
        if (!across && getMeansColumn(wishes.across, columns[i].name)) across = i;
    std::vector<std::size_t> drawn;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].kind != Kind::Number || (clock.column == i && !across)) continue;
        names.push_back(columns[i].name);
        const bool isWished =
            std::any_of(wishes.columns.begin(), wishes.columns.end(),
                        [&](const std::string& wish) { return getMeansColumn(wish, columns[i].name); });
        if (across != i && (wishes.columns.empty() || isWished)) drawn.push_back(i);
    }
    if (drawn.size() > kMostColumns) {
        table.columnsLeftOut = drawn.size() - kMostColumns;
        drawn.resize(kMostColumns);
    }
    const bool isOfPicture = wishes.mostPieces == 0;
    const std::size_t ofPicture = mostPiecesOf(drawn.size());
    const std::size_t pieces =
        isOfPicture ? ofPicture
                    : std::max(wishes.mostPieces / std::max<std::size_t>(drawn.size(), 1), kFewPieces);
    // A path grows to twice as many points, each of which has two numbers, as a piece has.
    const std::size_t points = isOfPicture ? 8 * pieces : std::min(pieces / 2, 8 * ofPicture);
    for (const std::size_t column : drawn) {
        chosen.push_back(column);
        table.curves.emplace_back(shownName(columns[column].name, units[column]), units[column], pieces,
                                  points);
        scales.push_back(1.0);
        for (const CurveWishes::Scale& scale : wishes.scales) {
            if (!getMeansColumn(scale.column, columns[column].name)) continue;
            scales.back() = scale.factor;
            table.curves.back().unit = scale.unit;
        }
    }
    const auto time = across ? across : clock.column;
    if (across) {
        isAcross = true;
        table.clock = columns[*across].name;
    } else if (clock.kind == ClockChoice::Kind::None) {
        table.clock = "row";
    }
    if (time && (isAcross || !reader.getHasOwnTimes())) {
        const auto known = std::find(chosen.begin(), chosen.end(), *time);
        timeValue = static_cast<std::size_t>(known - chosen.begin());
        if (known == chosen.end()) chosen.push_back(*time);
    }
    values.assign(std::max<std::size_t>(1, chosen.size()), 0.0);
    reader.select(chosen);
}

/// Of the row that was read last; nothing of one that doesn't count.
std::optional<double> RecordingCurves::getTime() const {
    if (!reader.getHasAllCells()) return std::nullopt;
    double time = static_cast<double>(rowsRead - 1);
    if (timeValue) {
        if (reader.getIsEmpty(*timeValue)) return std::nullopt;
        time = values[*timeValue];
    } else if (clock.kind == ClockChoice::Kind::Column) {
        time = reader.getTime();
    } else if (clock.rate) {
        time /= *clock.rate;
    }
    if (!std::isfinite(time)) return std::nullopt;
    return time;
}

void RecordingCurves::takeRow(double time) {
    ++table.rows;
    if (time < latest) ++table.rowsBack;
    latest = std::max(latest, time);
    const bool hasHoles = reader.getHasEmptyCells();
    for (std::size_t i = 0; i < table.curves.size(); ++i) {
        if (hasHoles && reader.getIsEmpty(i)) continue;
        const double value = values[i] * scales[i];
        table.curves[i].envelope.take(time, value);
        if (std::isfinite(value)) table.curves[i].sum += value;
        if (isAcross) table.curves[i].path.take(time, value);
    }
}

/// What goes on along the axis all the time is a curve as any other.
void RecordingCurves::finishPaths() {
    for (Curve& curve : table.curves)
        if (table.rowsBack == 0) curve.path.clear();
    if (isAcross) table.rowsBack = 0;
}

TimeRepairPlan RecordingCurves::cutBy() const {
    Complaints complaints;
    TimeRepairPlan cut = wishes.getCut(reader.getOrigin(), complaints);
    if (!complaints.isEmpty()) throw RecordingException(complaints.getSorted().front());
    if (const auto fault = resolveDates(cut, reader)) throw RecordingException(*fault);
    return cut;
}

CurveTable RecordingCurves::read(const std::stop_token& stop,
                                 const std::function<void(const InspectionProgress&)>& tell) {
    reader.setStop(stop);
    TimeRepairPlan cut; // nothing, until the first row tells what times count from
    std::size_t behindEnd = 0;
    for (Row row = reader.takeRow(values.data()); row != Row::End; row = reader.takeRow(values.data())) {
        if (++rowsRead == 1) cut = cutBy();
        const std::optional<double> time = getTime();
        if (!time) ++table.rowsWithoutTime;
        if (time && *time >= cut.start && *time < cut.end) takeRow(*time);
        // As a source does it: a single stamp far ahead doesn't end the reading.
        behindEnd = time && *time >= cut.end && !isAcross ? behindEnd + 1 : 0;
        if (behindEnd > 1) break;
        if (rowsRead % kRowsBetweenLooks != 0) continue;
        if (stop.stop_requested()) throw InterruptedException();
        if (tell) tell({rowsRead, reader.getBytesRead(), reader.getSize()});
    }
    finishPaths();
    const std::optional<std::int64_t> origin = reader.getOrigin();
    if (origin && rowsRead > 0 && table.clock == "s") table.origin = originText(*origin);
    return std::move(table);
}

} // namespace Quillmere::Host
