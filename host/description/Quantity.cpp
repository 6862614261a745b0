// SPDX-License-Identifier: MIT
#include "host/description/Quantity.h"

#include "host/text/ShortestText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

namespace Quillmere::Host {

namespace {
struct Unit {
    std::string_view name;
    Quantity::Kind kind;
    double numerator; ///< So many hertz or seconds are `denominator` of the unit: both are exact.
    double denominator;
};

constexpr std::array<Unit, 9> kUnits{{{"Hz", Quantity::Kind::Frequency, 1.0, 1.0},
                                      {"kHz", Quantity::Kind::Frequency, 1000.0, 1.0},
                                      {"mHz", Quantity::Kind::Frequency, 1.0, 1000.0},
                                      {"s", Quantity::Kind::Time, 1.0, 1.0},
                                      {"ms", Quantity::Kind::Time, 1.0, 1000.0},
                                      {"us", Quantity::Kind::Time, 1.0, 1e6},
                                      {"ns", Quantity::Kind::Time, 1.0, 1e9},
                                      {"min", Quantity::Kind::Time, 60.0, 1.0},
                                      {"h", Quantity::Kind::Time, 3600.0, 1.0}}};

struct Parts {
    double number;
    std::string_view unit;
};

/// The number that a text begins with, and the letters behind it.
std::optional<Parts> split(const Value& value) {
    if (!value.isScalar()) return std::nullopt;
    std::string_view text = value.text;
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    double number = 0.0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || !std::isfinite(number)) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return Parts{number, text};
}

std::string lowered(std::string_view text) {
    std::string low(text);
    for (char& c : low)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return low;
}
} // namespace

std::optional<Quantity> toQuantity(const Value& value) {
    const auto parts = split(value);
    if (!parts) return std::nullopt;
    const auto unit = std::find_if(kUnits.begin(), kUnits.end(),
                                   [&](const Unit& known) { return known.name == parts->unit; });
    if (unit == kUnits.end()) return std::nullopt;
    return Quantity{unit->kind, parts->number * unit->numerator / unit->denominator,
                    unit->numerator == unit->denominator};
}

std::optional<double> toNumberOf(Quantity::Kind kind, const Value& value, Complaints& complaints) {
    const auto quantity = toQuantity(value);
    if (!quantity) return toNumber(value, complaints);
    if (quantity->kind == kind) return quantity->number;
    complaints.add(value.where, value.describe(),
                   kind == Quantity::Kind::Time ? "a time, as 0.2 s" : "a frequency, as 50 Hz");
    return std::nullopt;
}

namespace {
/// `5.0 Hz` for `5,0 Hz`.
std::string withPoint(const Value& value) {
    const std::size_t comma = value.text.find(',');
    if (!value.isScalar() || comma == std::string::npos) return {};
    Value pointed = value;
    pointed.text[comma] = '.';
    return toQuantity(pointed) ? pointed.text : "";
}
} // namespace

std::string withNearestUnit(const Value& value) {
    if (std::string pointed = withPoint(value); !pointed.empty()) return pointed;
    const auto parts = split(value);
    if (!parts || parts->unit.empty()) return {};
    if (parts->unit == "MHz") return shortestText(1000.0 * parts->number) + " kHz"; // mega is not milli
    if (parts->unit.front() == 'M') return {};
    const auto with = [&](std::string_view unit) {
        return value.text.substr(0, value.text.size() - parts->unit.size()).append(unit);
    };
    const std::string written = lowered(parts->unit);
    for (const Unit& unit : kUnits)
        if (written == lowered(unit.name) && parts->unit != unit.name) return with(unit.name);
    if (written == "hertz") return with("Hz");
    if (written == "sec" || written == "second" || written == "seconds") return with("s");
    if (written == "msec") return with("ms");
    return {};
}

} // namespace Quillmere::Host
