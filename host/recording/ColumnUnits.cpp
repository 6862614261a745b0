// SPDX-License-Identifier: MIT
#include "host/recording/ColumnUnits.h"

#include "host/recording/ColumnFinder.h"
#include "host/recording/ColumnPattern.h"
#include "host/recording/UnitText.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace Quillmere::Host {

namespace {

/// Deals what a graph says out to the columns.
class UnitDealer {
public:
    UnitDealer(std::vector<std::string> columnNames, std::string filePath, Complaints& list)
        : names(std::move(columnNames)), path(std::move(filePath)), finder(path, names), complaints(list),
          claims(names.size()) {}

    void deal(const StatedUnit& stated) {
        const std::string& name = stated.column.name;
        const bool isPattern =
            name.find('*') != std::string::npos && std::find(names.begin(), names.end(), name) == names.end();
        if (isPattern)
            dealByPattern(stated);
        else if (const auto column = finder.find(name, stated.column.where, complaints))
            claim(*column, stated, false);
    }
    /// Null where the graph says nothing.
    const StatedUnit* getUnit(std::size_t column) const { return claims[column].stated; }

private:
    struct Claim {
        const StatedUnit* stated = nullptr;
        bool isByPattern = false;
    };

    void dealByPattern(const StatedUnit& stated) {
        const std::string& pattern = stated.column.name;
        bool hasAny = false;
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (!getFitsPattern(names[i], pattern)) continue;
            hasAny = true;
            claim(i, stated, true);
        }
        if (!hasAny)
            refuseName(complaints, stated.column.where, pattern,
                       "no column that fits '" + printable(pattern, kLongestName) + "'",
                       "one of " + path + ": ", [&] { return names; });
    }

    void claim(std::size_t column, const StatedUnit& stated, bool isByPattern) {
        Claim& known = claims[column];
        const bool isTaken = known.stated != nullptr;
        if (isTaken && isByPattern && !known.isByPattern) return;
        if (isTaken && isByPattern == known.isByPattern && known.stated->unit.unit != stated.unit.unit)
            complaints.add(stated.unit.where,
                           stated.unit.text + " for the column '" + printable(names[column], kLongestName) +
                               "', for which '" + printable(known.stated->column.name, kLongestName) +
                               "' has " + known.stated->unit.text,
                           "one unit for each column");
        known.stated = &stated;
        known.isByPattern = isByPattern;
    }

    const std::vector<std::string> names;
    const std::string path;
    const ColumnFinder finder;
    Complaints& complaints;
    std::vector<Claim> claims;
};

} // namespace

std::vector<ColumnUnit> findUnits(const std::vector<RecordingReader::Column>& columns,
                                  const std::vector<StatedUnit>& stated, const std::string& path,
                                  Complaints& complaints) {
    std::vector<ColumnUnit> units(columns.size());
    std::vector<std::string> names;
    std::unordered_map<std::string_view, const Unit*> known; // of a hundred thousand columns a few units
    for (std::size_t i = 0; i < columns.size(); ++i) {
        names.push_back(columns[i].name);
        if (getSaysNoUnit(columns[i].unit)) continue;
        units[i].text = columns[i].unit;
        const auto [unit, isNew] = known.try_emplace(columns[i].unit, nullptr);
        if (isNew) unit->second = findUnit(columns[i].unit);
        units[i].unit = unit->second;
    }
    if (stated.empty()) return units;
    UnitDealer dealer(std::move(names), path, complaints);
    for (const StatedUnit& one : stated)
        dealer.deal(one);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const StatedUnit* const said = dealer.getUnit(i);
        if (said == nullptr) continue;
        if (units[i].unit != said->unit.unit) units[i].overruled = units[i].text;
        units[i].text = said->unit.text;
        units[i].unit = said->unit.unit;
    }
    return units;
}

void refuseUnitOfTime(const std::string& name, const std::vector<StatedUnit>& stated,
                      Complaints& complaints) {
    for (const StatedUnit& one : stated)
        if (one.column.name == name || one.column.name == nameWithoutUnit(name))
            complaints.add(one.column.where,
                           "a unit for the column of times '" + printable(name, kLongestName) + "'",
                           "'timeUnit' for that");
}

} // namespace Quillmere::Host
