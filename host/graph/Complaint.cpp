// SPDX-License-Identifier: MIT
#include "host/graph/Complaint.h"

#include <algorithm>
#include <tuple>

namespace Quillmere::Host {

namespace {
std::string joined(const std::vector<Complaint>& complaints) {
    std::string text;
    for (const Complaint& complaint : complaints) {
        if (!text.empty()) text += '\n';
        text += complaint.getText();
    }
    return text;
}
} // namespace

std::string Complaint::getText() const {
    std::string text = where.file;
    if (where.line > 0)
        text.append(":").append(std::to_string(where.line)).append(":").append(std::to_string(where.column));
    text += ": found " + found + "; expected " + expected;
    if (!suggestion.empty()) text += "; did you mean " + suggestion + "?";
    return text;
}

void Complaints::add(const Place& where, std::string found, std::string expected, std::string suggestion) {
    list.push_back({where, std::move(found), std::move(expected), std::move(suggestion)});
}

void Complaints::add(const Complaints& others) {
    list.insert(list.end(), others.list.begin(), others.list.end());
}

std::vector<Complaint> Complaints::getSorted() const {
    std::vector<Complaint> sorted = list;
    std::stable_sort(sorted.begin(), sorted.end(), [](const Complaint& a, const Complaint& b) {
        return std::tie(a.where.line, a.where.column) < std::tie(b.where.line, b.where.column);
    });
    return sorted;
}

void Complaints::raise() const {
    if (!list.empty()) throw GraphException(getSorted());
}

GraphException::GraphException(std::vector<Complaint> list)
    : std::runtime_error(joined(list)), complaints(std::move(list)) {}

} // namespace Quillmere::Host
