// SPDX-License-Identifier: MIT
#include "host/picture/Ticks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace Quillmere::Host {

namespace {

/// From here on seconds alone are hard to read.
constexpr double kLongInSeconds = 150.0;
constexpr double kLongInMinutes = 2.0 * 3600.0;
constexpr double kLongInHours = 2.0 * 86400.0;
constexpr std::array kClockSteps{1.0,   2.0,    5.0,    10.0,   15.0,   30.0,    60.0,    120.0,   300.0,
                                 600.0, 1200.0, 1800.0, 3600.0, 7200.0, 10800.0, 21600.0, 43200.0, 86400.0};

std::string formatted(const char* format, int digits, double number) {
    char text[64];
    std::snprintf(text, sizeof text, format, digits, number);
    return text;
}

/// The smallest step of 1, 2 or 5 times a power of ten that has at most so many ticks in a range.
double roundStep(double range, std::size_t most) {
    const double least = range / static_cast<double>(most);
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * power >= least * (1.0 - 1e-9)) return factor * power;
    return 10.0 * power;
}

/// Multiples of the step between two numbers.
std::vector<double> multiples(double low, double high, double step) {
    // What is a multiple but for rounding is one.
    const double first = std::ceil(low / step - 1e-6);
    const double last = std::floor(high / step + 1e-6);
    std::vector<double> values;
    for (double i = first; i <= last && values.size() < 1000; ++i)
        values.push_back(i == 0.0 ? 0.0 : i * step); // no -0
    return values;
}

/// The next smaller one of 1, 2 or 5 times a power of ten.
double smallerStep(double step) {
    return roundStep(step, 3);
}

/// Two at least, where numbers so close together can be told apart: one alone tells no scale.
std::vector<double> roundNumbers(double low, double high, double& step) {
    std::vector<double> values = multiples(low, high, step);
    for (int i = 0; i < 4 && values.size() < 2; ++i) {
        step = smallerStep(step);
        values = multiples(low, high, step);
    }
    return values;
}

std::vector<std::string> labelsOf(const std::vector<double>& values, double step, double largest) {
    if (largest >= 1e6 || largest < 1e-4) return telling(values, 6, 1e-3 * step);
    const int digits = std::clamp(static_cast<int>(std::ceil(-std::log10(step) - 1e-9)), 0, 20);
    std::vector<std::string> labels;
    for (const double value : values)
        labels.push_back(formatted("%.*f", digits, value));
    return labels;
}

/// What their labels don't tell apart is one.
std::vector<AxisTick> ticksAt(const std::vector<double>& values, double step, double largest) {
    const std::vector<std::string> labels = labelsOf(values, step, largest);
    std::vector<AxisTick> ticks;
    for (std::size_t i = 0; i < values.size(); ++i)
        if (ticks.empty() || ticks.back().label != labels[i]) ticks.push_back({values[i], labels[i]});
    return ticks;
}

/// `1:05` of 65 and 60, `2:30` of 9000 and 3600: what is whole, and what of the next smaller unit is left.
std::string clockLabel(double seconds, double unit) {
    const auto parts = static_cast<std::int64_t>(std::llround(std::fabs(seconds) / (unit / 60.0)));
    char text[48];
    std::snprintf(text, sizeof text, "%s%lld:%02lld", seconds < 0.0 && parts > 0 ? "-" : "",
                  static_cast<long long>(parts / 60), static_cast<long long>(parts % 60));
    return text;
}

std::vector<std::string> inDigits(const std::vector<double>& values, int digits) {
    std::vector<std::string> texts;
    for (const double value : values)
        texts.push_back(formatted("%.*g", digits, value));
    return texts;
}

} // namespace

std::vector<std::string> telling(const std::vector<double>& values, int fewest, double error) {
    constexpr int kAll = 17;       // tell any two doubles apart
    constexpr int kUnnoticed = 15; // show no rounding
    const auto getTells = [&](const std::vector<std::string>& texts) {
        return std::equal(texts.begin(), texts.end(), values.begin(),
                          [&](const std::string& text, double value) {
                              return std::fabs(std::strtod(text.c_str(), nullptr) - value) <= error;
                          });
    };
    int digits = fewest;
    while (digits < kAll && !getTells(inDigits(values, digits)))
        ++digits;
    const bool isLarge = std::any_of(values.begin(), values.end(), [&](double value) {
        return std::fabs(value) >= std::pow(10.0, digits);
    });
    // Many digits are compared more easily without a power of ten.
    return inDigits(values, isLarge && digits > fewest && digits < kUnnoticed ? kUnnoticed : digits);
}

std::vector<AxisTick> numberTicks(double low, double high, std::size_t most) {
    double step = roundStep(high - low, most);
    if (!std::isnormal(step)) return {};
    const std::vector<double> values = roundNumbers(low, high, step);
    return ticksAt(values, step, std::max(std::fabs(low), std::fabs(high)));
}

std::vector<AxisTick> ticksApart(double low, double high, double step) {
    return ticksAt(multiples(low, high, step), step, std::max(std::fabs(low), std::fabs(high)));
}

TimeTicks timeTicks(double from, double to, std::size_t most) {
    const double range = to - from;
    const double longest = std::max(std::fabs(from), std::fabs(to));
    TimeTicks result;
    if (range < 10.0 || longest <= kLongInSeconds || longest > 1e8) {
        result.ticks = numberTicks(from, to, most);
        result.form = "seconds";
        return result;
    }
    if (longest > kLongInHours) {
        for (AxisTick& tick : numberTicks(from / 86400.0, to / 86400.0, most))
            result.ticks.push_back({tick.value * 86400.0, tick.label});
        result.form = "days";
        return result;
    }
    auto found = std::find_if(kClockSteps.begin(), kClockSteps.end() - 1, [&](double candidate) {
        return range / candidate <= static_cast<double>(most);
    });
    while (found != kClockSteps.begin() && multiples(from, to, *found).size() < 2)
        --found;
    const double step = *found;
    // Hours where minutes would be many, unless seconds count.
    const double unit = longest > kLongInMinutes && step >= 60.0 ? 3600.0 : 60.0;
    for (const double value : multiples(from, to, step))
        result.ticks.push_back({value, clockLabel(value, unit)});
    result.form = unit == 60.0 ? "minutes:seconds" : "hours:minutes";
    return result;
}

} // namespace Quillmere::Host
