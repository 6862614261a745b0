// SPDX-License-Identifier: MIT
#include "host/graph/Complaint.h"

#include <algorithm>
#include <tuple>

namespace Quillmere::Host {

namespace {
template <class Things>
void appendLines(std::string& text, const Things& things) {
    for (const auto& thing : things) {
        if (!text.empty()) text += '\n';
        text += thing.getText();
    }
}

std::string joined(const std::vector<Complaint>& complaints, const std::vector<Warning>& warnings) {
    std::string text;
    appendLines(text, complaints);
    appendLines(text, warnings);
    return text;
}

/// `file:line:column: `, as far as that is known.
std::string textOf(const Place& place) {
    std::string text = place.file;
    if (place.line > 0)
        text.append(":").append(std::to_string(place.line)).append(":").append(std::to_string(place.column));
    return text.empty() ? text : text + ": ";
}

template <class Things>
Things sortedByPlace(Things things) {
    std::stable_sort(things.begin(), things.end(), [](const auto& a, const auto& b) {
        return std::tie(a.where.line, a.where.column) < std::tie(b.where.line, b.where.column);
    });
    return things;
}
} // namespace

std::string Complaint::getText() const {
    std::string text = textOf(where) + "found " + found + "; expected " + expected;
    if (!suggestion.empty()) text += "; did you mean " + suggestion + "?";
    return text;
}

std::string Warning::getText() const {
    return textOf(where) + "warning: " + text;
}

void Complaints::add(const Place& where, std::string found, std::string expected, std::string suggestion) {
    list.push_back({where, std::move(found), std::move(expected), std::move(suggestion)});
}

void Complaints::add(const Complaints& others) {
    list.insert(list.end(), others.list.begin(), others.list.end());
    warnings.insert(warnings.end(), others.warnings.begin(), others.warnings.end());
}

void Complaints::warn(const Place& where, std::string text) {
    warnings.push_back({where, std::move(text)});
}

std::vector<Complaint> Complaints::getSorted() const {
    return sortedByPlace(list);
}

std::vector<Warning> Complaints::getSortedWarnings() const {
    return sortedByPlace(warnings);
}

void Complaints::raise(bool isStrict) const {
    const bool isRaised = !list.empty() || (isStrict && !warnings.empty());
    if (isRaised) throw GraphException(getSorted(), isStrict ? getSortedWarnings() : std::vector<Warning>{});
}

GraphException::GraphException(std::vector<Complaint> list, const std::vector<Warning>& warnings)
    : std::runtime_error(joined(list, warnings)), complaints(std::move(list)) {}

} // namespace Quillmere::Host
