// SPDX-License-Identifier: MIT
#include "host/report/SignalLevels.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

namespace Quillmere::Host {

namespace {
using Piece = Envelope::Piece;
using Columns = std::vector<SignalCurves::Column>;

constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t kFewBuckets = 2048;  // which a screen shows at once
constexpr std::size_t kManySamples = 8192; // which it doesn't
constexpr double kBetweenLevels = 8.0;     // a power of two, as the width of all pieces is
constexpr std::size_t kMostEmpty = 2;      // buckets for each that has something, before times are worth it

/// Whether every piece is at one time, so that nothing was put together.
bool getIsExact(const Columns& columns) {
    return std::all_of(columns.begin(), columns.end(), [](const SignalCurves::Column& column) {
        const auto& pieces = column.envelope.getPieces();
        return std::all_of(pieces.begin(), pieces.end(),
                           [](const Piece& piece) { return piece.firstTime == piece.lastTime; });
    });
}

std::size_t mostPiecesIn(const Columns& columns) {
    std::size_t most = 0;
    for (const SignalCurves::Column& column : columns)
        most = std::max(most, column.envelope.getPieces().size());
    return most;
}

/// Where values are put by their times, which are sorted. Pieces come in order, so each search begins where
/// the one before it ended.
class TimePlaces {
public:
    explicit TimePlaces(const std::vector<double>& sortedTimes) : times(sortedTimes) {}
    std::size_t find(double time) {
        while (next + 1 < times.size() && times[next] < time)
            ++next;
        return next;
    }

private:
    const std::vector<double>& times;
    std::size_t next = 0;
};

void sortOut(std::vector<double>& times) {
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
}

/// The times of all columns, and one in the middle of a way on which there was no number in any.
std::vector<double> timesOf(const Columns& columns) {
    std::vector<double> times;
    for (const SignalCurves::Column& column : columns) {
        const auto& pieces = column.envelope.getPieces();
        if (times.size() == pieces.size() &&
            std::equal(times.begin(), times.end(), pieces.begin(),
                       [](double time, const Piece& piece) { return time == piece.firstTime; }))
            continue; // as a rule all columns have the same
        for (const Piece& piece : pieces)
            times.push_back(piece.firstTime);
        sortOut(times);
    }
    std::vector<double> breaks;
    for (const SignalCurves::Column& column : columns) {
        const auto& pieces = column.envelope.getPieces();
        for (std::size_t i = 1; i < pieces.size(); ++i) {
            if (!pieces[i].isBroken) continue;
            const double middle = pieces[i - 1].lastTime / 2 + pieces[i].firstTime / 2;
            const auto next = std::upper_bound(times.begin(), times.end(), pieces[i - 1].lastTime);
            if (next != times.end() && *next == pieces[i].firstTime) breaks.push_back(middle);
        }
    }
    times.insert(times.end(), breaks.begin(), breaks.end());
    if (!breaks.empty()) sortOut(times);
    return times;
}

SignalLevel samplesOf(const Columns& columns) {
    SignalLevel level;
    level.times = timesOf(columns);
    level.count = level.times.size();
    level.low.assign(level.count * columns.size(), kNothing);
    bool hasEqualTimes = false;
    for (const SignalCurves::Column& column : columns)
        for (const Piece& piece : column.envelope.getPieces())
            hasEqualTimes = hasEqualTimes || piece.count > 1;
    if (hasEqualTimes) level.high = level.low;
    for (std::size_t c = 0; c < columns.size(); ++c) {
        TimePlaces places(level.times);
        for (const Piece& piece : columns[c].envelope.getPieces()) {
            const std::size_t place = c * level.count + places.find(piece.firstTime);
            level.low[place] = piece.smallest;
            if (hasEqualTimes) level.high[place] = piece.largest;
        }
    }
    return level;
}

/// The begins of all buckets of that width that have something in them.
std::vector<double> bucketsOf(const Columns& columns, double width) {
    std::vector<double> begins;
    for (const SignalCurves::Column& column : columns) {
        const std::size_t known = begins.size();
        for (const Piece& piece : column.envelope.getPieces()) {
            const double begin = std::floor(piece.firstTime / width) * width;
            if (begins.size() == known || begins.back() != begin) begins.push_back(begin);
        }
        if (known > 0) sortOut(begins);
    }
    return begins;
}

/// Requires: no piece is wider, so that none lies in two buckets.
SignalLevel bucketsAt(const Columns& columns, double width) {
    SignalLevel level;
    level.step = width;
    level.times = bucketsOf(columns, width);
    level.begin = level.times.front();
    const double all = (level.times.back() - level.begin) / width + 1.0;
    const bool isEven = all <= static_cast<double>(kMostEmpty * level.times.size());
    level.count = isEven ? static_cast<std::size_t>(all) : level.times.size();
    level.low.assign(level.count * columns.size(), kNothing);
    level.high = level.low;
    for (std::size_t c = 0; c < columns.size(); ++c) {
        TimePlaces places(level.times);
        for (const Piece& piece : columns[c].envelope.getPieces()) {
            const double begin = std::floor(piece.firstTime / width) * width;
            const std::size_t place =
                c * level.count +
                (isEven ? static_cast<std::size_t>((begin - level.begin) / width) : places.find(begin));
            // Comparisons with not-a-number are false: what is there first is taken.
            if (!(level.low[place] <= piece.smallest)) level.low[place] = piece.smallest;
            if (!(level.high[place] >= piece.largest)) level.high[place] = piece.largest;
        }
    }
    if (isEven) level.times.clear();
    return level;
}

/// Of the finest buckets: at least as wide as every piece, and as several samples.
double finestWidth(const SignalCurves& curves, bool isExact) {
    double width = 0.0;
    for (const SignalCurves::Column& column : curves.getColumns())
        width = std::max(width, column.envelope.getWidth());
    if (!isExact) return width;
    const double few = kBetweenLevels * curves.getPeriod();
    return std::max(width, few > 0.0 ? std::exp2(std::ceil(std::log2(few))) : width);
}
} // namespace

std::vector<SignalLevel> levelsOf(const SignalCurves& curves) {
    const Columns& columns = curves.getColumns();
    std::vector<SignalLevel> levels;
    if (mostPiecesIn(columns) == 0) return levels;
    const bool isExact = getIsExact(columns);
    if (isExact) levels.push_back(samplesOf(columns));
    double width = finestWidth(curves, isExact);
    if (!isExact) levels.push_back(bucketsAt(columns, width));
    const std::size_t enough = isExact ? kManySamples : kFewBuckets;
    if (levels.back().count > enough) {
        if (!isExact) width *= kBetweenLevels;
        for (;; width *= kBetweenLevels) {
            levels.push_back(bucketsAt(columns, width));
            if (levels.back().count <= kFewBuckets) break;
        }
    }
    std::reverse(levels.begin(), levels.end());
    return levels;
}

} // namespace Quillmere::Host
