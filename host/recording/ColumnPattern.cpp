// SPDX-License-Identifier: MIT
#include "host/recording/ColumnPattern.h"

#include "host/description/Unit.h"
#include "host/ends/ColumnName.h"
#include "host/recording/UnitText.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <utility>

namespace Quillmere::Host {

namespace {

constexpr std::string_view kAxes = "wxyz";

char small(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

/// `acc x (g)` without its unit, `acc[x]` as it is.
std::string withoutUnit(const std::string& name) {
    return findUnit(unitOfName(name)) == nullptr ? name : nameWithoutUnit(name);
}

/// The one place in which the names differ, but for their units; nothing where there is none, or several.
std::optional<std::size_t> placeOfAxis(const std::vector<std::string>& names,
                                       const std::vector<std::size_t>& found) {
    const std::string first = withoutUnit(names[found.front()]);
    std::optional<std::size_t> place;
    for (const std::size_t one : found) {
        const std::string name = withoutUnit(names[one]);
        if (name.size() != first.size()) return std::nullopt;
        for (std::size_t i = 0; i < name.size(); ++i) {
            if (name[i] == first[i]) continue;
            if (place && *place != i) return std::nullopt;
            place = i;
        }
    }
    return place;
}

/// Sorts the columns of one pin of a result, `accel[0]` and so on; false when they are others.
bool sortCounted(const std::vector<std::string>& names, std::vector<std::size_t>& found) {
    std::vector<std::pair<std::size_t, std::size_t>> places; // of each its count and its place
    std::string pin;
    for (const std::size_t one : found) {
        const std::string name = withoutUnit(names[one]);
        const std::optional<CountedName> counted = countedNameOf(name);
        if (!counted || (!places.empty() && counted->pin != pin)) return false;
        pin = counted->pin;
        places.emplace_back(counted->count, one);
    }
    std::sort(places.begin(), places.end());
    std::transform(places.begin(), places.end(), found.begin(),
                   [](const auto& place) { return place.second; });
    return true;
}

} // namespace

bool getFitsPattern(std::string_view name, std::string_view pattern) {
    // Where the last star stands and how much of the name it covers: only that one need ever cover more.
    std::size_t star = std::string_view::npos;
    std::size_t covered = 0;
    std::size_t at = 0;
    std::size_t wanted = 0;
    while (at < name.size()) {
        if (wanted < pattern.size() && pattern[wanted] == '*') {
            star = wanted++;
            covered = at;
        } else if (wanted < pattern.size() && small(pattern[wanted]) == small(name[at])) {
            ++wanted;
            ++at;
        } else if (star != std::string_view::npos) {
            wanted = star + 1;
            at = ++covered;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', wanted) == std::string_view::npos;
}

std::vector<std::size_t> findByPattern(const std::vector<std::string>& names, std::string_view pattern) {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < names.size(); ++i)
        if (getFitsPattern(names[i], pattern)) found.push_back(i);
    if (found.size() <= 1) return found;
    if (sortCounted(names, found)) return found;
    if (found.size() > kAxes.size()) return {};
    const std::optional<std::size_t> place = placeOfAxis(names, found);
    if (!place) return {};
    const auto axisOf = [&](std::size_t one) { return kAxes.find(small(names[one][*place])); };
    std::sort(found.begin(), found.end(),
              [&](std::size_t left, std::size_t right) { return axisOf(left) < axisOf(right); });
    for (std::size_t i = 0; i < found.size(); ++i) {
        const bool isTwice = i > 0 && axisOf(found[i]) == axisOf(found[i - 1]);
        if (isTwice || axisOf(found[i]) == std::string_view::npos) return {};
    }
    return found;
}

std::vector<std::string> namesThatFit(const std::vector<std::string>& names, std::string_view pattern) {
    std::vector<std::string> fitting;
    std::copy_if(names.begin(), names.end(), std::back_inserter(fitting),
                 [&](const std::string& name) { return getFitsPattern(name, pattern); });
    return fitting;
}

} // namespace Quillmere::Host
