// SPDX-License-Identifier: MIT
#include "host/recording/UnitSettings.h"

#include <utility>

namespace Quillmere::Host {

std::optional<NamedUnit> takeUnit(const Value& value, Complaints& complaints) {
    const auto text = toText(value, complaints);
    if (!text) return std::nullopt;
    const Unit* const unit = findUnit(*text);
    if (unit == nullptr) {
        complaints.add(value.where, "the unit " + value.describe(), kSomeUnits, nearestUnit(*text));
        return std::nullopt;
    }
    NamedUnit named;
    named.text = *text;
    named.where = value.where;
    named.unit = unit;
    return named;
}

std::vector<StatedUnit> takeUnits(const Value& value, Complaints& complaints) {
    std::vector<StatedUnit> stated;
    if (value.kind != Value::Kind::Map) {
        complaints.add(value.where, value.describe(),
                       "the unit of each column, as in {ax: mg, \"gyr*\": deg/s}");
        return stated;
    }
    for (const Value::Entry& entry : value.entries) {
        auto unit = takeUnit(entry.value, complaints);
        if (!unit) continue;
        StatedUnit& one = stated.emplace_back();
        one.column.name = entry.key;
        one.column.where = entry.where;
        one.unit = std::move(*unit);
    }
    return stated;
}

} // namespace Quillmere::Host
