// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/picture/Curve.h"
#include "host/recording/RecordingSink.h"
#include "host/recording/RowWatcher.h"

#include <cstddef>
#include <vector>

namespace Quillmere::Host {

/// What a sink writes, as curves. Memory grows with the columns, not with the rows.
class QUILLMERE_API ResultCurves final : public RowWatcher {
public:
    /// More columns are left out.
    static constexpr std::size_t kMostColumns = 1024;

    /// Looks at the sink's rows from then on. Requires: its links are made, and both live until its run has
    /// ended. [setup]
    explicit ResultCurves(RecordingSink& sink);

    /// Of a pin to which spectra come: the rows a second of what they are made of. [setup]
    void setRowRate(std::size_t pin, double rate) { rowRates.at(pin) = rate; }

    void takeRow(double time, const std::vector<const Core::MatrixXd*>& samples) override;

    /// The curves of all columns, as they stand in the result. Requires: the run has ended.
    CurveTable getTable() const;

private:
    void grow(std::size_t pin, std::size_t count);

    std::string name;
    std::vector<TableWriter::Group> groups;
    std::vector<std::vector<Curve>> curves; ///< Of each pin; there are as many as its samples have elements.
    std::vector<double> rowRates;           ///< Of each pin; 0 where nobody knows.
    std::vector<std::size_t> elements;      ///< Of the largest sample of each pin.
    std::size_t columns = 0;
    std::size_t columnsLeftOut = 0;
    std::uint64_t rows = 0;
};

} // namespace Quillmere::Host
