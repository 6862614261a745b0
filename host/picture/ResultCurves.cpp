// SPDX-License-Identifier: MIT
#include "host/picture/ResultCurves.h"

#include <algorithm>
#include <cmath>

namespace Quillmere::Host {

ResultCurves::ResultCurves(RecordingSink& sink)
    : name(sink.getName()), groups(sink.getGroups()), curves(groups.size()), rowRates(groups.size(), 0.0),
      elements(groups.size(), 0) {
    sink.addWatcher(*this);
}

void ResultCurves::takeRow(double time, const std::vector<const Core::MatrixXd*>& samples) {
    if (!std::isfinite(time)) return;
    ++rows;
    for (std::size_t pin = 0; pin < std::min(samples.size(), curves.size()); ++pin) {
        if (samples[pin] == nullptr) continue;
        const auto count = static_cast<std::size_t>(samples[pin]->size());
        elements[pin] = std::max(elements[pin], count);
        if (count > curves[pin].size()) grow(pin, count);
        const std::size_t shown = std::min(count, curves[pin].size());
        for (std::size_t i = 0; i < shown; ++i)
            curves[pin][i].envelope.take(time, samples[pin]->data()[i]);
    }
}

/// How wide a pin is, its first sample tells, and a later one that is wider.
void ResultCurves::grow(std::size_t pin, std::size_t count) {
    const std::size_t wanted = count - curves[pin].size();
    const std::size_t taken = std::min(wanted, kMostColumns - columns);
    columnsLeftOut = std::max(columnsLeftOut, wanted - taken);
    columns += taken;
    const TableWriter::Group& group = groups[pin];
    for (std::size_t i = 0; i < taken; ++i) {
        const std::size_t element = curves[pin].size();
        const bool isNamed = element < group.columns.size();
        curves[pin].emplace_back(isNamed ? group.columns[element]
                                         : group.name + "[" + std::to_string(element) + "]",
                                 group.unit, mostPiecesOf(count * curves.size()));
    }
}

CurveTable ResultCurves::getTable() const {
    CurveTable table;
    table.name = name;
    table.rows = rows;
    table.columnsLeftOut = columnsLeftOut;
    for (std::size_t pin = 0; pin < curves.size(); ++pin)
        for (const Curve& curve : curves[pin]) {
            table.curves.push_back(curve);
            table.curves.back().hertzApart = rowRates[pin] / (2.0 * static_cast<double>(elements[pin]));
        }
    return table;
}

} // namespace Quillmere::Host
