// SPDX-License-Identifier: MIT
#include "host/inspection/AxisGroups.h"

#include "host/recording/UnitText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>
#include <unordered_map>

namespace Quillmere::Host {

namespace {

constexpr std::string_view kAxes = "wxyz";
// Wider tables, and longer names, are no sensor's; looking at them would take long.
constexpr std::size_t kMostColumns = 10'000;
constexpr std::size_t kLongestName = 200;
constexpr std::size_t kNone = static_cast<std::size_t>(-1);

std::string inSmallLetters(std::string text) {
    for (char& letter : text)
        letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    return text;
}

bool isOfName(char letter) {
    return std::isalnum(static_cast<unsigned char>(letter)) != 0;
}

/// A name without its axis, its unit and what joined them.
std::string nameWithoutAxis(const std::string& name, std::size_t place) {
    const std::string left = nameWithoutUnit(name.substr(0, place) + name.substr(place + 1));
    const auto first = std::find_if(left.begin(), left.end(), isOfName);
    const auto last = std::find_if(left.rbegin(), left.rend(), isOfName).base();
    return first < last ? std::string(first, last) : std::string();
}

/// Columns whose names are alike but for the letter at one place.
struct Candidate {
    std::array<std::size_t, 4> columns{kNone, kNone, kNone, kNone}; ///< By `kAxes`.
    std::size_t place = 0;
    bool isTwice = false; ///< Two columns have the same axis.
};

using Candidates = std::unordered_map<std::string, Candidate>;

std::string keyOf(const std::string& small, std::size_t place) {
    std::string key = small;
    key[place] = '\0'; // which no name of a sensor has
    return key;
}

Candidates gather(const std::vector<RecordingReader::Column>& columns, std::size_t count) {
    Candidates candidates;
    for (std::size_t i = 0; i < count; ++i) {
        if (columns[i].kind != RecordingReader::Column::Kind::Number) continue;
        const std::string small = inSmallLetters(columns[i].name);
        if (small.size() > kLongestName) continue;
        for (std::size_t place = 0; place < small.size(); ++place) {
            const std::size_t axis = kAxes.find(small[place]);
            if (axis == std::string_view::npos) continue;
            Candidate& candidate = candidates[keyOf(small, place)];
            candidate.isTwice = candidate.isTwice || candidate.columns[axis] != kNone;
            candidate.columns[axis] = i;
            candidate.place = place;
        }
    }
    return candidates;
}

} // namespace

std::vector<AxisGroup> findAxisGroups(const std::vector<RecordingReader::Column>& columns) {
    const std::size_t count = std::min(columns.size(), kMostColumns);
    const Candidates candidates = gather(columns, count);
    std::vector<char> isTaken(columns.size(), 0);
    std::vector<AxisGroup> groups;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string small = inSmallLetters(columns[i].name);
        // The axis is the last of such letters in most names: `max_x`.
        for (std::size_t place = small.size(); place-- > 0 && small.size() <= kLongestName;) {
            if (small[place] != 'x' || isTaken[i] != 0) continue;
            const auto found = candidates.find(keyOf(small, place));
            if (found == candidates.end()) continue;
            const Candidate& candidate = found->second;
            AxisGroup group;
            for (const std::size_t column : candidate.columns)
                if (column != kNone && isTaken[column] == 0) group.columns.push_back(column);
            const bool hasAll = candidate.columns[2] != kNone && candidate.columns[3] != kNone;
            const std::size_t wanted = candidate.columns[0] == kNone ? 3 : 4;
            if (candidate.isTwice || !hasAll || group.columns.size() != wanted) continue;
            for (const std::size_t column : group.columns)
                isTaken[column] = 1;
            group.name = nameWithoutAxis(columns[i].name, place);
            groups.push_back(std::move(group));
        }
    }
    return groups;
}

} // namespace Quillmere::Host
