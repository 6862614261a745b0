// SPDX-License-Identifier: MIT
#include "host/recording/TimeSniffer.h"

#include "host/ends/RecordingException.h"
#include "host/recording/ColumnPattern.h"
#include "host/recording/CsvCells.h"
#include "host/recording/CsvSplit.h"
#include "host/recording/TimeNames.h"
#include "host/recording/UnitText.h"
#include "host/text/Complaint.h"
#include "host/text/Printable.h"
#include "host/text/ShortestText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <set>

namespace Quillmere::Host {

namespace {

using Column = RecordingReader::Column;

/// Of the usual rates of movement sensors, rows a second.
constexpr double kSlowest = 2.0;
constexpr double kFastest = 5000.0;
/// Seconds since 1970 in 2001 and in 2096: what is between in some unit is a date in that unit.
constexpr double kEarliest = 1e9;
constexpr double kLatest = 4e9;

struct Unit {
    const char* word;
    const char* plural;
    double perSecond;
};
constexpr std::array kUnits{Unit{"s", "seconds", 1.0}, Unit{"ms", "milliseconds", 1e3},
                            Unit{"us", "microseconds", 1e6}, Unit{"ns", "nanoseconds", 1e9}};

class TimeSniffing {
public:
    TimeSniffing(const TimeEvidence& allEvidence, const ReadingWishes& allWishes)
        : evidence(allEvidence), wishes(allWishes) {}

    TimePlan get() {
        if (!wishes.time.empty())
            plan.columns = findNamed();
        else if (wishes.findsTimes)
            plan.columns = findColumns();
        if (plan.columns.empty()) return {};
        gather();
        const bool isNamed = !wishes.time.empty();
        const bool isTime = plan.columns.size() > 1 || kind == CellKind::Time;
        if (isNamed && !isTime && !wishes.getHasTimeForm()) return plan; // as they stand
        if (isTime)
            planText();
        else
            planNumbers();
        if (wishes.start) plan.start = wishes.start;
        plan.isSpread = wishes.isSpread.value_or(getIsRepeating());
        if (plan.isSpread && !wishes.isSpread) note("the rows of each whole second spread evenly over it");
        plan.isPlain = !plan.isText && plan.perSecond == 1.0 && !plan.isRelative && !plan.start &&
                       plan.counterBits == 0 && !plan.isSpread;
        return plan;
    }

private:
    std::vector<std::size_t> findNamed() const {
        std::vector<std::size_t> found;
        for (const std::string& name : wishes.time) {
            const auto hasName = [&](const Column& column) { return column.name == name; };
            const auto hasLabel = [&](const Column& column) { return nameWithoutUnit(column.name) == name; };
            auto column = std::find_if(evidence.columns.begin(), evidence.columns.end(), hasName);
            if (column == evidence.columns.end())
                column = std::find_if(evidence.columns.begin(), evidence.columns.end(), hasLabel);
            if (column == evidence.columns.end()) return {}; // the source complains of it
            found.push_back(static_cast<std::size_t>(column - evidence.columns.begin()));
        }
        return found;
    }

    std::vector<std::size_t> findColumns() const {
        const RecordingProfile* const profile = evidence.profile;
        if (profile != nullptr && !profile->hasTimes) return {};
        if (profile != nullptr)
            for (const std::string_view pattern : profile->times)
                for (std::size_t i = 0; i < evidence.columns.size() && !pattern.empty(); ++i)
                    if (getFitsPattern(evidence.columns[i].name, pattern)) return {i};
        const auto date = findPlain("date");
        const auto time = findPlain("time");
        if (date && time && kindOf(*date) == CellKind::Time && kindOf(*time) == CellKind::Time)
            return {*date, *time};
        for (const TimeName& name : timeNames())
            if (const auto found = findPlain(name.word); found && (!name.isUnclear || getMeansTime(*found)))
                return {*found};
        // Without names a table has times where it has a column of them.
        for (std::size_t i = 0; i < evidence.columns.size() && !evidence.dialect.hasHeader; ++i)
            if (kindOf(i) == CellKind::Time) return {i};
        return {};
    }

    std::optional<std::size_t> findPlain(std::string_view name) const {
        for (std::size_t i = 0; i < evidence.columns.size(); ++i)
            if (plainTimeName(evidence.columns[i].name) == name) return i;
        return std::nullopt;
    }

    /// Whether more than its name tells that a column holds times.
    bool getMeansTime(std::size_t column) const {
        const Column& named = evidence.columns[column];
        return kindOf(column) == CellKind::Time || unitsPerSecond(named.unit) ||
               getNamesUnitOfTime(named.name);
    }

    /// Of most cells of a column, as far as any holds something.
    CellKind kindOf(std::size_t column) const {
        std::size_t times = 0;
        std::size_t numbers = 0;
        for (const auto& row : evidence.rows) {
            if (column >= row.size()) continue;
            const CellKind one = cellKindOf(row[column], evidence.dialect.decimal, wishes);
            times += one == CellKind::Time ? 1 : 0;
            numbers += one == CellKind::Number ? 1 : 0;
        }
        return times > numbers ? CellKind::Time : numbers > 0 ? CellKind::Number : CellKind::Empty;
    }

    void gather() {
        kind = kindOf(plan.columns.front());
        for (const auto& row : evidence.rows) {
            std::string text;
            for (const std::size_t column : plan.columns) {
                if (column >= row.size()) continue;
                if (!text.empty()) text += ' ';
                text += plainText(row[column]);
            }
            if (!text.empty()) texts.push_back(std::move(text));
        }
    }

    const Column& getColumn() const { return evidence.columns[plan.columns.front()]; }
    std::string getColumnText() const {
        return "the column '" + printable(getColumn().name, kLongestName) + "'";
    }
    void note(const std::string& text) { plan.notes.push_back(getColumnText() + ": " + text); }

    void planText() {
        plan.isText = true;
        plan.perSecond = 1e9;
        plan.isRelative = true;
        plan.order = wishes.dateOrder ? *wishes.dateOrder : findOrder();
        if (wishes.counterBits) plan.counterBits = 0; // dates don't wrap
        for (const std::string& text : texts)
            if (const auto tick = nanosecondsOf(text, plan.order)) ticks.push_back({*tick, 0.0});
    }

    /// Day or month first, of dates with the year behind.
    DateOrder findOrder() const {
        if (std::none_of(texts.begin(), texts.end(), getIsYearLast)) return DateOrder::YearFirst;
        for (const std::string& line : evidence.dialect.preamble) {
            constexpr std::string_view kFormat = "date format ";
            const std::size_t at = line.find(kFormat);
            if (at == std::string::npos || at + kFormat.size() >= line.size()) continue;
            const char first = line[at + kFormat.size()];
            if (first == 'M' || first == 'd')
                return first == 'M' ? DateOrder::MonthFirst : DateOrder::DayFirst;
        }
        for (const std::string& text : texts)
            if (const auto order = dateOrderOf(text)) return *order;
        throw UnclearRecording({{evidence.path + ": " + getColumnText().substr(4)},
                                "\"" + printable(texts.front(), 40) + "\", of which both may be the month",
                                "'timeFormat: dmy' with the day first, or 'timeFormat: mdy' with the month"});
    }

    void planNumbers() {
        for (const std::string& text : texts)
            if (const auto tick = tickOfNumber(trimmed(text), evidence.dialect.decimal))
                ticks.push_back(*tick);
        plan.perSecond = findUnit();
        const bool isDate = !ticks.empty() && ticks.front().getValue() / plan.perSecond >= kEarliest &&
                            ticks.front().getValue() / plan.perSecond <= kLatest;
        plan.isRelative = isDate && wishes.time.empty();
        const int bits = evidence.profile != nullptr ? evidence.profile->counterBits : 0;
        plan.counterBits = wishes.counterBits.value_or(bits > 0 ? bits : getMayWrap() ? 32 : 0);
    }

    /// Whole numbers of a fine unit that 32 bits hold, as microcontrollers count them.
    bool getMayWrap() const {
        return wishes.time.empty() && plan.perSecond > 1.0 && !ticks.empty() &&
               std::all_of(ticks.begin(), ticks.end(), [](const Tick& tick) {
                   return tick.fraction == 0.0 && tick.whole >= 0 && tick.whole < (std::int64_t{1} << 32);
               });
    }

    double findUnit() {
        if (wishes.perSecond) return *wishes.perSecond;
        if (!wishes.time.empty()) return 1.0;
        refuseMultiple();
        if (const auto stated = unitsPerSecond(getColumn().unit)) return *stated;
        for (const std::string& word : wordsOfName(getColumn().name))
            if (word.size() > 1 || word == "s")
                if (const auto stated = unitsPerSecond(word)) return *stated;
        if (evidence.profile != nullptr && evidence.profile->perSecond > 0.0)
            return evidence.profile->perSecond;
        return guessUnit();
    }

    /// `Time (10ms)` counts steps of ten: neither milliseconds nor any other unit that can be stated.
    void refuseMultiple() const {
        const Column& column = getColumn();
        const auto multiple = multipleOfUnit(column.unit.empty() ? column.name : "[" + column.unit + "]");
        if (!multiple) return;
        throw UnclearRecording(
            {{evidence.path + ": " + getColumnText().substr(4)},
             "the unit '" + printable(multiple->text, kLongestName) + "', which is several of one",
             "'timeUnit:' and s, ms, us or ns, or 'rate:' and rows a second"});
    }

    /// By the size of the numbers, of a column that doesn't say its unit.
    double guessUnit() {
        const std::optional<double> step = getMedianStep();
        if (!step) return 1.0;
        std::vector<Unit> likely;
        for (const Unit& unit : kUnits) {
            const double first = ticks.front().getValue() / unit.perSecond;
            if (first >= kEarliest && first <= kLatest) return told(unit);
            const double rate = unit.perSecond / *step;
            const bool isSeconds = unit.perSecond == 1.0;
            if (rate >= kSlowest && (rate <= kFastest || isSeconds)) likely.push_back(unit);
        }
        // A column of whole numbers that grow by one may count rows.
        const bool isCount = *step == 1.0;
        if (likely.size() == 1 && !isCount) return told(likely.front());
        std::string found = "steps of " + shortestText(*step) + " without a unit";
        if (isCount) found += ", which may count rows";
        throw UnclearRecording({{evidence.path + ": " + getColumnText().substr(4)},
                                found,
                                "'timeUnit:' and s, ms, us or ns, or 'rate:' and rows a second"});
    }

    double told(const Unit& unit) {
        if (unit.perSecond != 1.0)
            note(std::string("taken for ") + unit.plural + ", by the size of its numbers");
        return unit.perSecond;
    }

    std::optional<double> getMedianStep() const {
        std::vector<double> steps;
        for (std::size_t i = 1; i < ticks.size(); ++i)
            if (const double step = ticks[i].since(ticks[i - 1]); step > 0.0) steps.push_back(step);
        if (steps.empty()) return std::nullopt;
        const auto middle = steps.begin() + static_cast<std::ptrdiff_t>(steps.size() / 2);
        std::nth_element(steps.begin(), middle, steps.end());
        return *middle;
    }

    /// Whole seconds only, and the most of them several times.
    bool getIsRepeating() const {
        if (ticks.size() < 4 || (!plan.isText && plan.perSecond != 1.0)) return false;
        if (!wishes.time.empty() && !plan.isText) return false; // seconds as they stand
        std::size_t repeats = 0;
        for (std::size_t i = 0; i < ticks.size(); ++i) {
            if (ticks[i].fraction != 0.0 || (plan.isText && ticks[i].whole % 1'000'000'000 != 0))
                return false;
            if (i > 0 && ticks[i].whole == ticks[i - 1].whole) ++repeats;
            if (i > 0 && ticks[i].whole < ticks[i - 1].whole) return false;
        }
        return 2 * repeats >= ticks.size();
    }

    const TimeEvidence& evidence;
    const ReadingWishes& wishes;
    TimePlan plan;
    CellKind kind = CellKind::Empty;
    std::vector<std::string> texts; ///< Of the column, or of both, row by row.
    std::vector<Tick> ticks;        ///< Of those that are times.
};

/// How `Fs`, the usual sign, stands in a line in small letters; `FS` is a sensor's full scale.
constexpr const char* kSampleFrequency = "{fs}";

/// In small letters, where `Fs` or `fs` stands alone with its sign.
std::string smallLine(const std::string& line) {
    std::string small;
    const auto isLetterAt = [&](std::size_t at) {
        return at < line.size() && std::isalnum(static_cast<unsigned char>(line[at])) != 0;
    };
    for (std::size_t i = 0; i < line.size(); ++i) {
        const bool isSign = (line.compare(i, 2, "Fs") == 0 || line.compare(i, 2, "fs") == 0) &&
                            (i == 0 || !isLetterAt(i - 1)) && !isLetterAt(i + 2);
        if (isSign)
            small += kSampleFrequency;
        else
            small += static_cast<char>(std::tolower(static_cast<unsigned char>(line[i])));
        i += isSign ? 1 : 0;
    }
    return small;
}

struct RateUnit {
    std::string_view word;
    double perSecond;
};
/// The longer ones first.
constexpr std::array kRateUnits{
    RateUnit{"khz", 1e3},       RateUnit{"hz", 1.0},     RateUnit{"samples per second", 1.0},
    RateUnit{"samples/s", 1.0}, RateUnit{"rows/s", 1.0}, RateUnit{"sps", 1.0}};

/// So many a second; nothing for what begins with no such unit.
std::optional<double> rateUnitAt(std::string_view text) {
    for (const RateUnit& unit : kRateUnits)
        if (text.starts_with(unit.word)) return unit.perSecond;
    return std::nullopt;
}

/// Whether a line in small letters tells how often rows come, and not of a filter, a heart or a metronome.
bool getTellsRate(const std::string& line) {
    const auto has = [&](const char* word) { return line.find(word) != std::string::npos; };
    constexpr std::array kRates{"rate", "sampl", "frequency", kSampleFrequency};
    constexpr std::array kOthers{"cut",   "filter", "pass", "band", "notch",
                                 "mains", "heart",  "baud", "bit",  "metronome"};
    return std::any_of(kRates.begin(), kRates.end(), has) &&
           std::none_of(kOthers.begin(), kOthers.end(), has);
}

/// Of a text that begins with a number, the number, `0` where it can't be read, and its length. A comma in it
/// is a decimal comma.
std::pair<double, std::size_t> numberAt(std::string_view text) {
    std::string digits(text.substr(0, text.find_first_not_of("0123456789.,")));
    while (!digits.empty() && (digits.back() == ',' || digits.back() == '.'))
        digits.pop_back();
    const std::size_t length = digits.size();
    std::replace(digits.begin(), digits.end(), ',', '.');
    double value = 0.0;
    const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    const bool isWhole = error == std::errc() && stop == digits.data() + digits.size();
    return {isWhole ? value : 0.0, length};
}

/// The rate in a line that tells one, a number in front of `Hz` or its like or alone behind its key; nothing
/// where there are several. `at 30 Hz` is that of a file of ActiGraph's, which tells of its filter in the
/// same line.
std::optional<double> rateOf(const std::string& line) {
    const std::string small = smallLine(line);
    const bool isActiGraph = small.find("actigraph") != std::string::npos;
    if (!isActiGraph && !getTellsRate(small)) return std::nullopt;
    std::set<double> rates;
    for (std::size_t at = 0; (at = small.find_first_of("0123456789", at)) != std::string::npos;) {
        const auto [value, length] = numberAt(std::string_view(small).substr(at));
        const std::size_t unit = std::min(small.find_first_not_of(" \t", at + length), small.size());
        const std::optional<double> perSecond = rateUnitAt(std::string_view(small).substr(unit));
        const bool isAlone = small.find_first_not_of("\",;\t ", unit) == std::string::npos;
        const bool isNamed =
            isActiGraph ? at >= 3 && small.compare(at - 3, 3, "at ") == 0 : perSecond || isAlone;
        if (isNamed && (perSecond || !isActiGraph)) rates.insert(value * perSecond.value_or(1.0));
        at += std::max<std::size_t>(length, 1);
    }
    const bool isOne = rates.size() == 1 && *rates.begin() > 0.0 && std::isfinite(*rates.begin());
    return isOne ? std::optional(*rates.begin()) : std::nullopt;
}

} // namespace

TimePlan findTimes(const TimeEvidence& evidence, const ReadingWishes& wishes) {
    return TimeSniffing(evidence, wishes).get();
}

std::optional<double> statedRate(const std::vector<std::string>& preamble) {
    std::set<double> rates;
    for (const std::string& line : preamble)
        if (const auto rate = rateOf(line)) rates.insert(*rate);
    return rates.size() == 1 ? std::optional(*rates.begin()) : std::nullopt;
}

} // namespace Quillmere::Host
