// SPDX-License-Identifier: MIT
#include "host/text/Complaint.h"

#include "host/text/NearestName.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace Quillmere::Host {

namespace {
// Who complains shortens what others wrote to `kLongestName`; these bounds keep every message readable all
// the same.
constexpr std::size_t kLongestPlace = 1000; // of a path, or an option with its value
constexpr std::size_t kLongestPart = 2000;  // of a sentence, which may list a dozen names

template <class Things>
void appendLines(std::string& text, const Things& things) {
    for (const auto& thing : things) {
        if (!text.empty()) text += '\n';
        text += thing.getText();
    }
}

std::string joined(const std::vector<Complaint>& complaints, const std::vector<Warning>& warnings,
                   std::size_t more) {
    std::string text;
    appendLines(text, complaints);
    appendLines(text, warnings);
    if (more > 0) text += "\nand " + std::to_string(more) + " more";
    return text;
}

/// `file:line:column: `, as far as that is known.
std::string textOf(const Place& place) {
    std::string text = printable(place.file, kLongestPlace);
    if (place.line > 0) text.append(":").append(std::to_string(place.line));
    if (place.column > 0) text.append(":").append(std::to_string(place.column));
    return text.empty() ? text : text + ": ";
}

std::vector<Complaint> withWarnings(std::vector<Complaint> complaints, const std::vector<Warning>& warnings) {
    for (const Warning& warning : warnings)
        complaints.push_back(warning.getComplaint());
    return complaints;
}

template <class Things>
Things sortedByPlace(Things things) {
    std::stable_sort(things.begin(), things.end(), [](const auto& a, const auto& b) {
        return std::tie(a.where.line, a.where.column) < std::tie(b.where.line, b.where.column);
    });
    return things;
}
} // namespace

Complaint Complaint::unknown(Place where, std::string found, const std::string& name,
                             const std::vector<std::string>& known, const std::string& expected,
                             const std::string& otherwise) {
    constexpr std::size_t kFew = 3; // of many, in front of the one that is meant
    const bool hasNone = known.empty() && !otherwise.empty();
    std::string nearest = nearestName(name, known);
    const std::size_t most = known.size() > kMostNames && !nearest.empty() ? kFew : kMostNames;
    return {std::move(where), std::move(found), hasNone ? otherwise : expected + listOfNames(known, most),
            std::move(nearest)};
}

Complaint Complaint::sentence(Place where, std::string found, std::string expected, Form form) {
    Complaint complaint(std::move(where), std::move(found), std::move(expected));
    complaint.form = form;
    return complaint;
}

std::string Complaint::getText() const {
    std::string text = textOf(where);
    if (!part.empty()) text += printable(part, kLongestPart) + ": ";
    if (form == Form::Parts) text += "found ";
    text += printable(found, kLongestPart);
    if (form == Form::Sentence) return text;
    text += "; expected " + printable(expected, kLongestPart);
    if (!suggestion.empty()) text += "; did you mean " + printable(suggestion, kLongestPart) + "?";
    return text;
}

std::string Warning::getText() const {
    return textOf(where) + "warning: " + printable(text, kLongestPart);
}

Complaint Warning::getComplaint() const {
    return {where, text, "nothing to warn of, since warnings are taken for errors"};
}

void Complaints::add(const Place& where, std::string found, std::string expected, std::string suggestion) {
    add({where, std::move(found), std::move(expected), std::move(suggestion)});
}

void Complaints::add(Complaint complaint) {
    if (getIsFull())
        ++more;
    else
        list.push_back(std::move(complaint));
}

void Complaints::add(const Complaints& others) {
    for (const Complaint& other : others.list)
        add(other);
    for (const Warning& other : others.warnings)
        warn(other.where, other.text);
    more += others.more;
    moreWarnings += others.moreWarnings;
}

void Complaints::warn(const Place& where, std::string text) {
    if (warnings.size() >= kMostKept)
        ++moreWarnings;
    else
        warnings.push_back({where, std::move(text)});
}

std::vector<Complaint> Complaints::getSorted() const {
    return sortedByPlace(list);
}

std::vector<Warning> Complaints::getSortedWarnings() const {
    return sortedByPlace(warnings);
}

void Complaints::raise(bool isStrict) const {
    const bool isRaised = getIsRefusal(isStrict);
    if (isRaised && isStrict) throw GraphException(getSorted(), getSortedWarnings(), more + moreWarnings);
    if (isRaised) throw GraphException(getSorted(), {}, more);
}

GraphException::GraphException(const std::vector<Complaint>& list, const std::vector<Warning>& warnings,
                               std::size_t more)
    : HostException(joined(list, warnings, more), withWarnings(list, warnings)) {}

} // namespace Quillmere::Host
