// SPDX-License-Identifier: MIT
#include "host/recording/ColumnFinder.h"

#include "host/text/NearestName.h"
#include "host/text/Printable.h"
#include "host/recording/Dialect.h"
#include "host/recording/UnitText.h"

namespace Quillmere::Host {

ColumnFinder::ColumnFinder(std::string filePath, const std::vector<std::string>& columnNames)
    : path(std::move(filePath)), names(columnNames) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        const auto [column, isNew] = columns.try_emplace(names[i], Found{.place = i});
        if (!isNew) column->second.isTwice = true;
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        std::string label = nameWithoutUnit(names[i]);
        if (label.size() == names[i].size()) continue;
        const auto [column, isNew] = labels.try_emplace(std::move(label), Found{.place = i});
        if (!isNew) column->second.isTwice = true;
    }
}

std::optional<std::size_t> ColumnFinder::find(const std::string& name, const Place& where,
                                              Complaints& complaints) const {
    const auto found = columns.find(name);
    const auto label = found == columns.end() ? labels.find(name) : labels.end();
    if (label != labels.end() && !label->second.isTwice) return label->second.place;
    if (found == columns.end()) {
        refuse(name, where, complaints);
        return std::nullopt;
    }
    if (found->second.isTwice)
        complaints.add(where, "the column '" + printable(name, kLongestName) + "' twice in " + path,
                       "a name that one column has");
    return found->second.place;
}

void ColumnFinder::refuse(const std::string& name, const Place& where, Complaints& complaints) const {
    const std::string column = "column '" + printable(name, kLongestName) + "'";
    const std::string separator = complaints.getIsFull() ? "" : separatorOf(names, name);
    if (separator.empty())
        refuseName(complaints, where, name, "no " + column, "one of " + path + ": ", [&] { return names; });
    else
        complaints.add(where, "no " + column + " in " + path + ", which looks separated by " + separator,
                       "commas between its cells");
}

} // namespace Quillmere::Host
