// SPDX-License-Identifier: MIT
#include "host/recording/OtherClock.h"

#include "host/recording/RecordingForms.h"
#include "host/ends/TimeStampWatch.h"
#include "host/recording/TimeNames.h"
#include "host/recording/UnitText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <limits>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

namespace {

constexpr double kTolerance = 0.02;                 // a sensor's nominal rate is seldom off by as much
constexpr std::uint64_t kFewest = 3;                // rows, for two steps
constexpr std::array kUnits{1.0, 1e-3, 1e-6, 1e-9}; // seconds

/// `Time (s)`, `time_stamp`, `t` and the like. A capital T may well be a temperature.
bool isNameOfTime(const std::string& name) {
    std::string word;
    for (const char c : name.substr(0, name.find_first_of("([")))
        if (c != ' ' && c != '_' && c != '-')
            word += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    const auto names = timeNames();
    return name == "t" || std::any_of(names.begin(), names.end(), [&](const TimeName& known) {
               return known.isClock && known.word == word;
           });
}

/// Rows a second by one column: of the possible units the one that comes nearest to `rate`, and nothing when
/// they agree or the column tells no time.
std::optional<double> otherRate(const SourceAccount& account, double rate) {
    const bool goesOn = account.backward.count == 0 && account.equal.count == 0;
    if (account.rows < kFewest || !goesOn || !account.medianStep) return std::nullopt;
    // Time stamps in whole milliseconds have a median step beside the mean one.
    const double meanStep = account.getLength() / static_cast<double>(account.rows - 1);
    double nearest = std::numeric_limits<double>::infinity();
    double found = 0.0;
    for (const double unit : kUnits)
        for (const double step : {*account.medianStep, meanStep}) {
            const double distance = std::abs(std::log(step * unit * rate));
            if (distance < nearest) {
                nearest = distance;
                found = 1.0 / (step * unit);
            }
        }
    return nearest > std::log1p(kTolerance) ? std::optional(found) : std::nullopt;
}

SourceAccount readTimes(RecordingReader& reader, std::size_t column, std::uint64_t rows) {
    reader.select({column});
    SourceAccount account;
    TimeStampWatch watch;
    double time = 0.0;
    while (account.rows < rows && reader.takeRow(&time) == RecordingReader::Row::Sound && std::isfinite(time))
        watch.take(time, ++account.rows, reader.getLine());
    watch.tell(account);
    return account;
}

struct Unit {
    const char* name;
    double seconds;
    std::array<std::string_view, 5> words;
};

constexpr std::array kOtherUnits{
    Unit{"milliseconds", 1e-3, {"ms", "msec", "millis", "millisecond", "milliseconds"}},
    Unit{"microseconds", 1e-6, {"us", "usec", "micros", "microsecond", "microseconds"}},
    Unit{"nanoseconds", 1e-9, {"ns", "nsec", "nanos", "nanosecond", "nanoseconds"}},
    Unit{"minutes", 60.0, {"min", "mins", "minute", "minutes", ""}},
    Unit{"hours", 3600.0, {"hr", "hrs", "hour", "hours", ""}},
};

} // namespace

std::optional<SourceAccount::OtherUnit> findOtherUnit(const std::string& column) {
    if (const auto multiple = multipleOfUnit(column))
        return SourceAccount::OtherUnit{column, multiple->text, multiple->seconds};
    std::vector<std::string> words = wordsOfName(column);
    // A lone letter is a unit where it stands as one.
    if (unitOfName(column) == "h") words.emplace_back("hours");
    for (const Unit& unit : kOtherUnits)
        if (std::find_first_of(words.begin(), words.end(), unit.words.begin(), unit.words.end()) !=
            words.end())
            return SourceAccount::OtherUnit{column, unit.name, unit.seconds};
    return std::nullopt;
}

std::optional<SourceAccount::OtherClock> findOtherClock(const std::string& path, double rate,
                                                        std::uint64_t rows, const ReadingWishes& wishes) {
    const std::vector<std::string> columns = openRecording(path, wishes)->getColumnNames();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!isNameOfTime(columns[i])) continue;
        if (const auto found = otherRate(readTimes(*openRecording(path, wishes), i, rows), rate))
            return SourceAccount::OtherClock{columns[i], *found};
    }
    return std::nullopt;
}

} // namespace Quillmere::Host
