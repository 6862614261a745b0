// SPDX-License-Identifier: MIT
#include "tests/host/kit/RandomKnobs.h"

#include "host/live/ControlException.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <stdexcept>
#include <utility>

namespace Support {

using namespace Quillmere::Host;

namespace {
/// Turns after which somebody looks what settings there are: blocks are added meanwhile.
constexpr std::size_t kTurnsBetweenLooks = 500;
/// What a number is drawn from where nothing limits it.
constexpr std::pair<double, double> kUnlimited{-10.0, 10.0};

bool beginsWith(const std::string& text, const std::string& begin) {
    return text.compare(0, begin.size(), begin) == 0;
}

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/// Reads `... from 0 to 10`, `..., 0 or more` and `..., 0 or less`.
std::pair<double, double> limitsOf(const std::string& expected) {
    double least = 0.0;
    double most = 0.0;
    const std::size_t from = expected.find(" from ");
    if (from != std::string::npos &&
        std::sscanf(expected.c_str() + from, " from %lf to %lf", &least, &most) == 2)
        return {least, most};
    const std::size_t comma = expected.find(", ");
    if (comma == std::string::npos) return kUnlimited;
    const double limit = std::stod(expected.substr(comma + 2));
    return endsWith(expected, "more") ? std::pair{limit, limit + 10.0} : std::pair{limit - 10.0, limit};
}

std::string drawNumber(const std::string& expected, bool isWhole, Dice& dice) {
    auto [least, most] = limitsOf(expected);
    // Often near the lower limit: there blocks stay busy.
    if (dice.oneIn(2)) most = least + std::min(most - least, 10.0);
    if (isWhole) return std::to_string(static_cast<long long>(dice.between(least, most)));
    char text[64];
    std::snprintf(text, sizeof text, "%.6f", dice.between(least, most));
    return text;
}

std::string drawMatrix(Dice& dice) {
    const std::size_t rows = 1 + dice.below(3);
    const std::size_t columns = 1 + dice.below(3);
    std::string text;
    for (std::size_t row = 0; row < rows; ++row) {
        std::string cells;
        for (std::size_t column = 0; column < columns; ++column)
            cells += (column == 0 ? "" : ", ") + std::to_string(dice.between(-1.0, 1.0));
        text += (row == 0 ? "[[" : ", [") + cells + "]";
    }
    return text + "]";
}

/// Many settings take no more than their kind tells, so a value of it is refused only while nothing may be
/// written.
bool mayRefuseAny(const SettingState& setting) {
    return setting.expected == "a matrix";
}
} // namespace

std::string drawValue(const SettingState& setting, Dice& dice) {
    const std::string& expected = setting.expected;
    if (expected == "true or false") return dice.oneIn(2) ? "true" : "false";
    if (expected == "a matrix") return drawMatrix(dice);
    if (beginsWith(expected, "one of ")) {
        const std::size_t most = std::stoul(expected.substr(expected.rfind(' ')));
        return std::to_string(dice.below(most + 1));
    }
    if (beginsWith(expected, "a whole number")) return drawNumber(expected, true, dice);
    if (beginsWith(expected, "a number")) return drawNumber(expected, false, dice);
    throw std::runtime_error("no value can be drawn for '" + setting.name + "', which takes " + expected);
}

RandomKnobs::Counts& RandomKnobs::Counts::operator+=(const Counts& other) {
    reads += other.reads;
    writes += other.writes;
    fires += other.fires;
    refusals += other.refusals;
    changesSeen += other.changesSeen;
    return *this;
}

void RandomKnobs::turn() {
    if (settings.empty() || dice.oneIn(kTurnsBetweenLooks)) settings = run.getSettings().list();
    const SettingState& setting = dice.oneOf(settings);
    if (setting.isCommand) return fire(setting);
    switch (dice.below(8)) {
    case 0:
    case 1:
        run.getSettings().read(setting.name);
        ++counts.reads;
        return;
    case 2:
        return writeNonsense(setting);
    case 3:
        if (dice.oneIn(20)) return watch();
        [[fallthrough]];
    default:
        return write(setting);
    }
}

void RandomKnobs::write(const SettingState& setting) {
    const std::string value = drawValue(setting, dice);
    try {
        run.getSettings().write(setting.name, value);
        ++counts.writes;
    } catch (const ControlException& exception) {
        ++counts.refusals;
        if (!mayRefuseAny(setting) && !endsWith(exception.what(), "is not writable"))
            throw std::runtime_error("'" + setting.name + "' takes " + setting.expected + " and refused " +
                                     value + ": " + exception.what());
    }
}

void RandomKnobs::writeNonsense(const SettingState& setting) {
    try {
        run.getSettings().write(setting.name, "none of that kind");
    } catch (const ControlException&) {
        ++counts.refusals;
        return;
    }
    throw std::runtime_error("'" + setting.name + "' took nonsense");
}

void RandomKnobs::fire(const SettingState& setting) {
    run.getSettings().fire(setting.name);
    ++counts.fires;
}

/// Listens to a block for as long as a few turns take.
void RandomKnobs::watch() {
    std::atomic<std::uint64_t> changes{0};
    const std::string block = dice.oneOf(settings).name;
    const auto listening = run.getSettings().observe(block.substr(0, block.find('.')) + ".*",
                                                     [&](const SettingState&) { ++changes; });
    for (int i = 0; i < 10; ++i)
        if (const SettingState& setting = dice.oneOf(settings); !setting.isCommand) write(setting);
    counts.changesSeen += changes;
}

} // namespace Support
