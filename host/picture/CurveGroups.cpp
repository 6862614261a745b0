// SPDX-License-Identifier: MIT
#include "host/picture/CurveGroups.h"

#include <algorithm>
#include <cstddef>
#include <set>

namespace Quillmere::Host {

std::string pinOf(const std::string& name) {
    const std::size_t bracket = name.find_last_of('[');
    const bool isCounted = bracket != std::string::npos && bracket > 0 && name.back() == ']' &&
                           bracket + 2 < name.size() &&
                           std::all_of(name.begin() + static_cast<std::ptrdiff_t>(bracket) + 1,
                                       name.end() - 1, [](char c) { return c >= '0' && c <= '9'; });
    return isCounted ? name.substr(0, bracket) : "";
}

std::vector<AxisGroup> axisGroupsOf(const CurveTable& table, const std::vector<bool>& isTaken) {
    std::vector<RecordingReader::Column> columns(table.curves.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        columns[i].name = table.curves[i].name;
        if (isTaken[i]) columns[i].kind = RecordingReader::Column::Kind::Other;
    }
    return findAxisGroups(columns);
}

std::vector<bool> levelsOf(const CurveTable& table) {
    std::vector<bool> areLevels;
    for (const Curve& curve : table.curves)
        areLevels.push_back(curve.getStyle(table.rows) == Curve::Style::Level);
    const std::vector<bool> byStyle = areLevels;
    for (const AxisGroup& group : axisGroupsOf(table, std::vector<bool>(byStyle.size(), false)))
        if (!std::all_of(group.columns.begin(), group.columns.end(),
                         [&](std::size_t curve) { return byStyle[curve]; }))
            for (const std::size_t curve : group.columns)
                areLevels[curve] = false;
    std::set<std::string> vectors; // pins with an element that is no level
    for (std::size_t i = 0; i < byStyle.size(); ++i)
        if (!byStyle[i]) vectors.insert(pinOf(table.curves[i].name));
    vectors.erase("");
    for (std::size_t i = 0; i < byStyle.size(); ++i)
        if (byStyle[i] && vectors.count(pinOf(table.curves[i].name)) > 0 &&
            Curve::getIsConstant(table.curves[i].envelope))
            areLevels[i] = false;
    return areLevels;
}

} // namespace Quillmere::Host
