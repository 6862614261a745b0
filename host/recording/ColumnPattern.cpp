// SPDX-License-Identifier: MIT
#include "host/recording/ColumnPattern.h"

#include <algorithm>
#include <cctype>

namespace Quillmere::Host {

namespace {

constexpr std::string_view kAxes = "wxyz";

char small(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

/// The one place in which the names differ; the length of the first where there is none.
std::size_t placeOfAxis(const std::vector<std::string>& names, const std::vector<std::size_t>& found) {
    const std::string& first = names[found.front()];
    std::size_t place = first.size();
    for (const std::size_t one : found) {
        const std::string& name = names[one];
        if (name.size() != first.size()) return first.size();
        for (std::size_t i = 0; i < name.size(); ++i) {
            if (name[i] == first[i]) continue;
            if (place != first.size() && place != i) return first.size();
            place = i;
        }
    }
    return place;
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
    if (found.size() > kAxes.size()) return {};
    const std::size_t place = placeOfAxis(names, found);
    if (place == names[found.front()].size()) return {};
    const auto axisOf = [&](std::size_t one) { return kAxes.find(small(names[one][place])); };
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
