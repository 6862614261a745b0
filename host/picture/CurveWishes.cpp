// SPDX-License-Identifier: MIT
#include "host/picture/CurveWishes.h"

#include "host/recording/ColumnPattern.h"
#include "host/recording/RepairSettings.h"
#include "host/recording/UnitText.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <system_error>

namespace Quillmere::Host {

namespace {

/// What an axis tells: an hour or a minute, and behind each colon two digits of what it has sixty of.
struct Elapsed {
    double seconds = 0.0;
    int colons = 0;
};

/// Of `1:30`, `0:01:30` or `12:05.25`; nothing of another text.
std::optional<Elapsed> elapsedOf(std::string_view text) {
    Elapsed elapsed;
    for (int part = 0; part < 3; ++part) {
        const std::size_t colon = text.find(':');
        const std::string_view digits = text.substr(0, colon);
        const bool isLast = colon == std::string_view::npos;
        const std::string_view whole = digits.substr(0, isLast ? digits.find('.') : digits.size());
        double number = 0.0;
        const auto [end, error] =
            std::from_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed);
        if (error != std::errc() || end != digits.data() + digits.size() || std::signbit(number)) return {};
        if (part > 0 && (whole.size() != 2 || number >= 60.0)) return {};
        if (part == 0 &&
            (isLast || whole.size() != digits.size() || digits.find('.') != std::string_view::npos))
            return {};
        elapsed.seconds = elapsed.seconds * 60.0 + number;
        elapsed.colons = part;
        if (isLast) return elapsed;
        text.remove_prefix(colon + 1);
    }
    return {};
}

bool getIsOfDay(std::int64_t moment) {
    return moment >= 0 && moment < TimeRepairDate::kDay;
}

/// Whether a text of that form counts from the first time, where times count from there.
bool getIsElapsed(const Elapsed& elapsed, std::optional<std::int64_t> origin) {
    return !origin || (elapsed.colons == 1 && !getIsOfDay(*origin));
}

/// A time of day, of the day at which times begin; what lies in front of that is the next day's.
void setDay(std::optional<TimeRepairDate>& date, std::int64_t origin) {
    if (!date || !date->getIsOfDay() || getIsOfDay(origin)) return;
    const std::int64_t intoDay =
        (origin % TimeRepairDate::kDay + TimeRepairDate::kDay) % TimeRepairDate::kDay;
    const bool isOfNextDay = date->nanoseconds < intoDay;
    date->nanoseconds += origin - intoDay + (isOfNextDay ? TimeRepairDate::kDay : 0);
}

} // namespace

bool getMeansColumn(std::string_view wish, const std::string& column) {
    const std::string bare = nameWithoutUnit(column);
    if (wish == column || wish == bare) return true;
    if (wish.find('*') == std::string_view::npos) return false;
    return getFitsPattern(column, wish) || getFitsPattern(bare, wish);
}

void CurveWishes::takeCut(const GraphDescription::Setting& setting, Complaints& complaints) {
    cuts.push_back(setting);
    const bool isElapsed = setting.value.isScalar() && elapsedOf(setting.value.text);
    if (!isElapsed) RepairSettings().take(setting, complaints);
}

void CurveWishes::finish(Complaints& complaints) const {
    constexpr std::int64_t kSomeDate = 1000 * TimeRepairDate::kDay;
    Complaints none;
    getCut(std::nullopt, none);
    for (const std::int64_t origin : {std::int64_t{0}, kSomeDate}) {
        Complaints own;
        getCut(origin, own);
        if (own.isEmpty()) return;
    }
    complaints.add(none);
}

TimeRepairPlan CurveWishes::getCut(std::optional<std::int64_t> origin, Complaints& complaints) const {
    RepairSettings cut;
    Complaints own; // of single ones, which were complained of when they were taken
    for (GraphDescription::Setting setting : cuts) {
        const auto elapsed = setting.value.isScalar() ? elapsedOf(setting.value.text) : std::nullopt;
        if (elapsed && getIsElapsed(*elapsed, origin)) {
            const Place where = setting.value.where;
            setting.value = valueOf(elapsed->seconds);
            setting.value.where = where;
        }
        cut.take(setting, elapsed ? complaints : own);
    }
    cut.finish({}, complaints);
    TimeRepairPlan plan = cut.getPlan({});
    if (origin) {
        setDay(plan.startDate, *origin);
        setDay(plan.endDate, *origin);
    }
    return plan;
}

} // namespace Quillmere::Host
