// SPDX-License-Identifier: MIT
#include "host/text/NearestName.h"

#include "host/text/Printable.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

namespace Quillmere::Host {

namespace {

/// Nobody types a longer name, and comparing two takes as long as the product of their lengths.
constexpr std::size_t kLongestMeant = 100;

/// What is left of a name when nobody minds case and separators.
std::string folded(const std::string& name) {
    std::string text;
    for (const char c : name)
        if (c != ' ' && c != '_' && c != '-')
            text += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

/// Edits between two texts: insertions, deletions, changes and swaps of neighbours.
std::size_t distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> before(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> current(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        last[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        current[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t change = a[i - 1] == b[j - 1] ? 0 : 1;
            current[j] = std::min({last[j] + 1, current[j - 1] + 1, last[j - 1] + change});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                current[j] = std::min(current[j], before[j - 2] + 1);
        }
        std::swap(before, last);
        std::swap(last, current);
    }
    return last[b.size()];
}

/// The one name of which what was written is the begin or the end, by `getIsPart` of folded names.
template <class Part>
std::string onlyWhole(const std::string& wanted, const std::vector<std::string>& known, Part getIsPart) {
    constexpr std::size_t kShortest = 3;
    const auto completes = [&](const std::string& candidate) {
        return candidate.size() <= kLongestMeant && getIsPart(folded(candidate));
    };
    if (wanted.size() < kShortest || std::count_if(known.begin(), known.end(), completes) != 1) return {};
    return *std::find_if(known.begin(), known.end(), completes);
}

} // namespace

std::string nearestName(const std::string& name, const std::vector<std::string>& known) {
    if (name.size() > kLongestMeant) return {};
    const std::string wanted = folded(name);
    std::string nearest;
    std::size_t least = name.size() + 1;
    for (const std::string& candidate : known) {
        if (candidate.size() > kLongestMeant) continue;
        const std::string text = folded(candidate);
        const auto [shorter, longer] = std::minmax({wanted.size(), text.size()});
        const std::size_t most = std::max<std::size_t>(1, longer / 3);
        if (longer - shorter > most) continue; // so many letters are left out at least
        const std::size_t edits = distance(wanted, text);
        if (edits > most) continue;
        if (edits >= longer) continue; // nothing in common
        if (edits < least) {
            least = edits;
            nearest = candidate;
        }
    }
    if (nearest.empty())
        nearest =
            onlyWhole(wanted, known, [&](const std::string& whole) { return whole.starts_with(wanted); });
    if (nearest.empty())
        nearest = onlyWhole(wanted, known, [&](const std::string& whole) { return whole.ends_with(wanted); });
    return nearest;
}

std::string listOfNames(const std::vector<std::string>& names, std::size_t most) {
    if (names.empty()) return "nothing";
    std::string text = printable(names.front(), kLongestName);
    const std::size_t shown = std::min(names.size(), most);
    for (std::size_t i = 1; i < shown; ++i)
        text += (i + 1 == names.size() ? " and " : ", ") + printable(names[i], kLongestName);
    if (names.size() > shown) text += " and " + std::to_string(names.size() - shown) + " more";
    return text;
}

} // namespace Quillmere::Host
