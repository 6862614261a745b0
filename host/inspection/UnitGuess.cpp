// SPDX-License-Identifier: MIT
#include "host/inspection/UnitGuess.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

namespace Quillmere::Host {

namespace {

enum class Kind { Turning, Magnetic, Other };

/// What stands for a kind of sensor in the names of columns.
Kind kindOf(std::string name) {
    for (char& letter : name)
        letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    const auto has = [&](std::string_view word) { return name.find(word) != std::string::npos; };
    if (has("gyr") || has("rot") || has("omega") || has("angular")) return Kind::Turning;
    return has("mag") || name == "m" ? Kind::Magnetic : Kind::Other;
}

struct Range {
    Kind kind;
    double from;
    double to;
    const char* unit;
};

/// Gravity is 9.78 to 9.83 m/s^2 anywhere; sensors are off by some percent, and people move. The field is 22
/// to 67 uT.
constexpr std::array kRanges{
    Range{Kind::Other, 9.3, 10.3, "m/s^2"},   Range{Kind::Other, 0.95, 1.05, "g"},
    Range{Kind::Other, 950.0, 1050.0, "mg"},  Range{Kind::Magnetic, 20.0, 70.0, "uT"},
    Range{Kind::Magnetic, 0.2, 0.7, "gauss"}, Range{Kind::Magnetic, 200.0, 700.0, "mgauss"},
};

} // namespace

std::string guessUnit(const std::string& name, double medianLength) {
    const Kind kind = kindOf(name);
    const auto found = std::find_if(kRanges.begin(), kRanges.end(), [&](const Range& range) {
        return range.kind == kind && medianLength >= range.from && medianLength <= range.to;
    });
    return found == kRanges.end() ? "" : found->unit;
}

} // namespace Quillmere::Host
