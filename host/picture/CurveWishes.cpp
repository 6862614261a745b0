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

/// Seconds of `1:30`, `0:01:30` or `12:05.25`: an hour or a minute, and behind each colon two digits of what
/// it has sixty of; nothing of another text.
std::optional<double> elapsedOf(std::string_view text) {
    double seconds = 0.0;
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
        seconds = seconds * 60.0 + number;
        if (isLast) return seconds;
        text.remove_prefix(colon + 1);
    }
    return {};
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
    getCut(false, complaints);
}

TimeRepairPlan CurveWishes::getCut(bool countsFromDate, Complaints& complaints) const {
    RepairSettings cut;
    Complaints own; // of single ones, which were complained of when they were taken
    for (GraphDescription::Setting setting : cuts) {
        const auto elapsed = setting.value.isScalar() ? elapsedOf(setting.value.text) : std::nullopt;
        if (elapsed && !countsFromDate) {
            const Place where = setting.value.where;
            setting.value = valueOf(*elapsed);
            setting.value.where = where;
        }
        cut.take(setting, elapsed ? complaints : own);
    }
    cut.finish({}, complaints);
    return cut.getPlan({});
}

} // namespace Quillmere::Host
